// What the real-data families (forward and inverse real DFT, Hartley) share
// once their DAG is built: the emitted body of a kernel that reads pSrc and
// writes pDst element by element, and the exported function around it
// (argument checks, flag decoding, the scale factor).
#pragma once

#include <string>

#include "dag.h"
#include "emit.h"

namespace kfpg::gen {

// Body of a kernel from a one-lane real DAG (Signs::Separate) whose inputs
// are elements of pSrc and whose outputs are elements of pDst: 128-bit
// vector code with two values of the transform per vector (pair_lanes.h),
// every input loaded before the first store, every output multiplied by the
// factor as it is stored. Needs <emmintrin.h>.
EmitResult emitRealKernelBody(const Dag& dag, Precision precision);

enum class RealDirection { Forward, Inverse, SelfInverse };

struct RealKernelText {
    std::string name;       // exported name, e.g. kfpgDFTFwd_RToCCS_8_32f
    int n;                  // transform length (for the factors 1/n, 1/sqrt(n))
    Precision precision;
    RealDirection direction;
    std::string body;       // from emitRealKernelBody
    std::string after;      // statements after the body (e.g. literal zero stores)
};

// The exported function: pSrc and pDst checked for null, the flag decoded
// into `factor` (StatusFlagError for anything but the four flags), the body.
std::string realKernelFunction(const RealKernelText& k);

}  // namespace kfpg::gen
