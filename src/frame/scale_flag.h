// Decoding of a scaling flag into the factor a kernel multiplies its outputs by.
#pragma once

#include "kfpgen.h"

namespace kfpg {

enum class ScaleDirection { Forward, Inverse, SelfInverse };

// factors = the kernel's own {1, 1/N, 1/sqrt(N)}. Returns false for a flag
// that is not one of the four scaling flags.
template <class T>
inline bool scaleFactor(int flag, ScaleDirection direction, const T (&factors)[3], T& factor) {
    switch (flag) {
        case ScaleFwdByN: factor = direction == ScaleDirection::Inverse ? factors[0] : factors[1]; return true;
        case ScaleInvByN: factor = direction == ScaleDirection::Forward ? factors[0] : factors[1]; return true;
        case ScaleBySqrtN: factor = factors[2]; return true;
        case ScaleNone: factor = factors[0]; return true;
        default: return false;
    }
}

}  // namespace kfpg
