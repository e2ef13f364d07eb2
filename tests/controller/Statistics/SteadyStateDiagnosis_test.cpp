#include "Statistics/SteadyStateDiagnosis.h"
