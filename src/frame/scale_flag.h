// Decoding of a scaling flag into the factor a kernel multiplies its outputs by.
#pragma once

#include "kfpgen.h"

namespace kfpg {

enum class ScaleDirection { Forward, Inverse, SelfInverse };

// A kernel's factor for every flag value, indexed by the flag itself (the
// scaling flags are the bits 1, 2, 4, 8): decoding is one range and bit
// test and one load, without a chain of compares on the call path.
template <class T>
struct FlagFactors {
    T byFlag[ScaleNone + 1];
};

// factors = the kernel's own {1, 1/N, 1/sqrt(N)}.
template <class T>
constexpr FlagFactors<T> flagFactors(ScaleDirection direction, T one, T byN, T bySqrtN) {
    FlagFactors<T> f{};
    f.byFlag[ScaleFwdByN] = direction == ScaleDirection::Inverse ? one : byN;
    f.byFlag[ScaleInvByN] = direction == ScaleDirection::Forward ? one : byN;
    f.byFlag[ScaleBySqrtN] = bySqrtN;
    f.byFlag[ScaleNone] = one;
    return f;
}

// Returns false for a flag that is not one of the four scaling flags.
template <class T>
inline bool scaleFactor(int flag, const FlagFactors<T>& factors, T& factor) {
    constexpr unsigned kScaleFlags = 1u << ScaleFwdByN | 1u << ScaleInvByN | 1u << ScaleBySqrtN | 1u << ScaleNone;
    if (static_cast<unsigned>(flag) > ScaleNone || !(kScaleFlags >> flag & 1u)) return false;
    factor = factors.byFlag[flag];
    return true;
}

}  // namespace kfpg
