// Direct O(N^2) DCT-IV evaluation, used for the odd lengths 2^k + 1 whose
// split plan does not compute their transform.
#pragma once

#include <cmath>
#include <cstdint>

#include <type_traits>

namespace kfpg::dct4 {

constexpr long double kPi = 3.141592653589793238462643383279502884L;

// Accumulator of the direct evaluation: wider than the element type.
template <class Real>
using DirectAccumulator = std::conditional_t<std::is_same_v<Real, float>, double, long double>;

// cos(pi (2j+1) / (4N)), j < N: every magnitude the DCT-IV kernel takes.
template <class Real>
Real oddCosine(std::int64_t j, std::int64_t n) {
    return static_cast<Real>(std::cos(static_cast<long double>(2 * j + 1) * (kPi / static_cast<long double>(4 * n))));
}

// y[k] = sum x[n] cos(pi (2n+1)(2k+1) / (4N)) with (2n+1)(2k+1) reduced
// exactly modulo 8N and folded onto the N magnitudes of oddCosine. Out of
// place the work array (N elements) holds those magnitudes; in place it holds
// a copy of x and each magnitude is evaluated where it is used. Both orders
// of evaluation give bit-identical results.
template <class Real>
void directOddDct4(const Real* x, Real* y, int len, Real* work) {
    const std::int64_t n = len, period = 8 * n;
    const bool inPlace = x == y;
    if (inPlace) {
        for (std::int64_t i = 0; i < n; ++i) work[i] = x[i];
        x = work;
    } else {
        for (std::int64_t j = 0; j < n; ++j) work[j] = oddCosine<Real>(j, n);
    }
    for (std::int64_t k = 0; k < n; ++k) {
        const std::int64_t step = 2 * (2 * k + 1) % period;
        std::int64_t t = 2 * k + 1;
        DirectAccumulator<Real> acc = 0;
        for (std::int64_t i = 0; i < n; ++i) {
            std::int64_t u = t > 4 * n ? period - t : t;  // cos is even with period 8N
            const bool negative = u > 2 * n;              // cos(pi - a) = -cos(a)
            if (negative) u = 4 * n - u;
            const Real c = inPlace ? oddCosine<Real>((u - 1) / 2, n) : work[(u - 1) / 2];
            acc += static_cast<DirectAccumulator<Real>>(negative ? -c : c) * x[i];
            t += step;
            if (t >= period) t -= period;
        }
        y[k] = static_cast<Real>(acc);
    }
}

}  // namespace kfpg::dct4
