#include "Statistics/Intervals.h"
