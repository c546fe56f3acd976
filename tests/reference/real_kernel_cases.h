// What the tests of the real-data kernel families (real DFT both ways,
// Hartley) share: the precision of a case, random inputs, byte images for
// bit-for-bit comparisons, and the flags to try.
#pragma once

#include <cstddef>
#include <vector>

#include "kfpgen.h"
#include "reference.h"

namespace kfpg::test {

template <class T>
using RealSized = KfpStatus (*)(const T*, T*, int);
template <class T>
using RealGeneric = KfpStatus (*)(const T*, T*, int, int);

// Calls body(float{}) or body(double{}) for a case's precision (its `f64`).
template <class Case, class Body>
void withPrecision(const Case& c, Body body) {
    if (c.f64)
        body(double{});
    else
        body(float{});
}

// Random input of n elements in the kernel's precision.
template <class T>
std::vector<T> randomInput(int n, unsigned seed) {
    const auto r = ref::randomReals(static_cast<std::size_t>(n), seed);
    return std::vector<T>(r.begin(), r.end());
}

template <class T>
std::vector<unsigned char> bytesOf(const T* p, std::size_t count) {
    const auto* b = reinterpret_cast<const unsigned char*>(p);
    return std::vector<unsigned char>(b, b + count * sizeof(T));
}

constexpr int kFlags[] = {ScaleFwdByN, ScaleInvByN, ScaleBySqrtN, ScaleNone};
constexpr int kBadFlags[] = {0, 3, 5, 6, 16, -1, -2147483647 - 1};

}  // namespace kfpg::test
