#pragma once

#include "Study/PrimitiveType.h"

/// The queue's parameters. They hold zero until the study writes them, before any model object is built.

extern Double arrivalRate;  // customers per time unit
extern Double serviceRate;  // customers per time unit, while there is one to serve
extern Short capacity;      // customers that there is room for, the one in service included
