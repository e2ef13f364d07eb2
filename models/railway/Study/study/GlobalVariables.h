#pragma once

#include "Study/PrimitiveType.h"

/// The railway's parameters. They hold zero until the study writes them, and they have their final values before any
/// model object is built.

extern Double MAnetDelay;                 // network delay of a movement authority, time units
extern Double RBCprocessingTime;          // the trackside controller's time for one report, time units
extern Double TPRUpdatePeriod;            // period of the train position reports, time units
extern Double TPRnetDelay;                // network delay of a train position report, time units
extern Double integrityNotConfirmedProb;  // probability that a report carries no integrity confirmation
extern Int lineLength;                    // length of the line
extern Short maxTrainSpeed;               // maximum speed of a train, length per time unit
extern Short nTrains;                     // number of trains, and so of replicas
extern Double netNotDeliveryProb;         // probability that the network loses a message
extern Double positionUpdatePeriod;       // period of a train's position update, time units
extern Int safetyMargin;                  // margin added to the head of the next train's area
extern Int trainLength;                   // length of a train
