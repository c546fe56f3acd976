// The scale factor a flag selects for a WHT of order K, in the kernel's own
// precision: 1 for ScaleNone, 1/sqrt(N) for ScaleBySqrtN, 1/N for both
// ScaleFwdByN and ScaleInvByN (the transform is its own inverse).
#pragma once

#include "kfpgen.h"

namespace kfpg::wht {

// 2^-e, exact in both precisions for the exponents used here.
template <class T>
constexpr T powerOfHalf(int e) {
    T v = 1;
    for (int i = 0; i < e; ++i) v /= 2;
    return v;
}

// 1/sqrt(2^K), computed in double and rounded to T.
template <class T, int K>
constexpr T inverseSqrtN() {
    return static_cast<T>(1.0 / __builtin_sqrt(static_cast<double>(1L << K)));
}

// Decodes the flag in the order 8, 4, 1, 2; false for any other value.
template <class T, int K>
inline bool scaleFor(int flag, T& s) {
    if (flag == ScaleNone)
        s = 1;
    else if (flag == ScaleBySqrtN)
        s = inverseSqrtN<T, K>();
    else if (flag == ScaleFwdByN || flag == ScaleInvByN)
        s = powerOfHalf<T>(K);
    else
        return false;
    return true;
}

static_assert(inverseSqrtN<float, 1>() == 0.70710677f);
static_assert(inverseSqrtN<double, 13>() == 0.011048543456039804);

}  // namespace kfpg::wht
