// Environment operations of the 64f DCT-IV (2-lane vector groups).
#include <limits>

#include "dct4/direct.h"
#include "dct4/env_ops.h"
#include "dct4/codelets.h"
#include "dct4/trig.h"

#define KFPG_OWN(op) owngDCT4_64fw7_##op
#define KFPG_STAGE(stage) owngDCT4_##stage##_64f
#define KFPG_DCT4_HAS_OUTPUT_2
using Real = double;
#include "dct4/env_ops.inc"
