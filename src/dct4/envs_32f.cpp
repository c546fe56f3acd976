// Environment operations of the 32f DCT-IV (4-lane vector groups).
#include "dct4/direct.h"
#include "dct4/env_ops.h"
#include "dct4/stages.h"
#include "dct4/trig.h"

#define KFPG_OWN(op) owngDCT4_32fw7_##op
using Real = float;
#include "dct4/env_ops.inc"
