#include "Statistics/StoppingRule.h"
