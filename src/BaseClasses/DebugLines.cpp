#include "BaseClasses/DebugLines.h"

int GlobalDebugLevel = 0;
