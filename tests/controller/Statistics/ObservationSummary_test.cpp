#include "Statistics/ObservationSummary.h"
