// Environment operations of the 64f DCT-IV (2-lane vector groups).
#include "dct4/direct.h"
#include "dct4/env_ops.h"
#include "dct4/stages.h"
#include "dct4/trig.h"

#define KFPG_OWN(op) owngDCT4_64fw7_##op
using Real = double;
#include "dct4/env_ops.inc"
