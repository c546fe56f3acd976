// Environment operations of the 32f DCT-IV (4-lane vector groups).
#include <limits>

#include "dct4/direct.h"
#include "dct4/env_ops.h"
#include "dct4/codelets.h"
#include "dct4/trig.h"

#define KFPG_OWN(op) owngDCT4_32fw7_##op
#define KFPG_STAGE(stage) owngDCT4_##stage##_32f
using Real = float;
#include "dct4/env_ops.inc"
