#include "railway/Study/study/GlobalVariables.h"

Double MAnetDelay;
Double RBCprocessingTime;
Double TPRUpdatePeriod;
Double TPRnetDelay;
Double integrityNotConfirmedProb;
Int lineLength;
Short maxTrainSpeed;
Short nTrains;
Double netNotDeliveryProb;
Double positionUpdatePeriod;
Int safetyMargin;
Int trainLength;
