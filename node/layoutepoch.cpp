#include "node/layoutepoch.h"

u64 gVemLayoutEpoch = 0;
