#pragma once

// All that a model is written with: this kit, and the engine's names that stand in a model's code.

#include "BaseClasses/PostselectGroup.h"
#include "BaseClasses/PreselectGroup.h"
#include "BaseClasses/SAN/Place.h"
#include "BaseClasses/state/ExtendedPlace.h"
#include "Modelling/ActivityBuilder.h"
#include "Modelling/ArrayVariable.h"
#include "Modelling/AtomicModel.h"
#include "Modelling/Experiments.h"
#include "Modelling/Field.h"
#include "Modelling/JoinModel.h"
#include "Modelling/Parameter.h"
#include "Modelling/RepModel.h"
#include "Modelling/RewardModel.h"
#include "Modelling/StructVariable.h"
#include "Modelling/StudyEntry.h"
#include "Modelling/Variable.h"
#include "Simulator/UserDistributions.h"
