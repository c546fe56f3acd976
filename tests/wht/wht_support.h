// Shared pieces of the WHT tests: the kernel tables, the order x precision
// parameter, inputs exact in both precisions and a cached reference.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <map>
#include <limits>
#include <string>
#include <vector>

#include "buffers.h"
#include "kfpgen.h"
#include "reference.h"

namespace kfpg::test::wht {

using ref::Real;

template <class T>
using Kernel = KfpStatus (*)(const T*, T*, int, unsigned char*);

template <class T>
Kernel<T> kernel(int order);

template <class T>
KfpStatus generic(const T* src, T* dst, int order, int flag, unsigned char* buffer);

template <class T>
KfpStatus bufferSize(int order, int* size);

struct Case {
    int order;
    bool dbl;
    long n() const { return 1L << order; }
};

#define KFPG_WHT_ORDERS(X, T) \
    X(1, T), X(2, T), X(3, T), X(4, T), X(5, T), X(6, T), X(7, T), X(8, T), X(9, T), X(10, T), X(11, T), X(12, T), X(13, T)
#define KFPG_WHT_KERNEL(K, T) kfpgWHT_##K##_##T

template <>
inline Kernel<kfp32f> kernel<kfp32f>(int order) {
    static const Kernel<kfp32f> table[] = {KFPG_WHT_ORDERS(KFPG_WHT_KERNEL, 32f)};
    return table[order - 1];
}

template <>
inline Kernel<kfp64f> kernel<kfp64f>(int order) {
    static const Kernel<kfp64f> table[] = {KFPG_WHT_ORDERS(KFPG_WHT_KERNEL, 64f)};
    return table[order - 1];
}

template <>
inline KfpStatus generic<kfp32f>(const kfp32f* src, kfp32f* dst, int order, int flag, unsigned char* buffer) {
    return kfpgWHT_32f(src, dst, order, flag, buffer);
}

template <>
inline KfpStatus generic<kfp64f>(const kfp64f* src, kfp64f* dst, int order, int flag, unsigned char* buffer) {
    return kfpgWHT_64f(src, dst, order, flag, buffer);
}

template <>
inline KfpStatus bufferSize<kfp32f>(int order, int* size) {
    return kfpgWHTGetBufferSize_32f(order, size);
}

template <>
inline KfpStatus bufferSize<kfp64f>(int order, int* size) {
    return kfpgWHTGetBufferSize_64f(order, size);
}

inline std::vector<Case> allCases() {
    std::vector<Case> cases;
    for (bool dbl : {false, true})
        for (int order = 1; order <= 13; ++order) cases.push_back({order, dbl});
    return cases;
}

inline std::string caseName(const ::testing::TestParamInfo<Case>& info) {
    return "order" + std::to_string(info.param.order) + (info.param.dbl ? "_64f" : "_32f");
}

// Random values in [-1, 1) rounded to float, so that both precisions
// transform the very same numbers and share one reference.
inline const std::vector<Real>& input(int order) {
    static std::map<int, std::vector<Real>> cache;
    auto& x = cache[order];
    if (x.empty())
        for (Real v : ref::randomReals(1UL << order, 1000u + order)) x.push_back(static_cast<float>(v));
    return x;
}

// Unscaled WHT of input(order), computed once per order.
inline const std::vector<Real>& reference(int order) {
    static std::map<int, std::vector<Real>> cache;
    auto& y = cache[order];
    if (y.empty()) y = ref::walshHadamard(input(order));
    return y;
}

// Runs body<float> or body<double> for the case's precision.
#define KFPG_WHT_FOR_PRECISION(c, body) ((c).dbl ? body<double>(c) : body<float>(c))


// The scale factor the kernel must use: 1/N, 1/sqrt(N) (computed in double),
// rounded to T.
template <class T>
T factor(int flag, int order) {
    const double n = static_cast<double>(1L << order);
    if (flag == ScaleBySqrtN) return static_cast<T>(1.0 / std::sqrt(n));
    if (flag == ScaleFwdByN || flag == ScaleInvByN) return static_cast<T>(1.0 / n);
    return 1;
}

// Error bound for a relative L2 comparison: grows with the number of stages.
template <class T>
double bound(int order) {
    return (order + 1) * static_cast<double>(std::numeric_limits<T>::epsilon());
}

// Copies into and out of arrays at any byte offset (a double at 4 mod 8
// must not be accessed as a double by the test itself).
template <class T>
void store(T* to, const std::vector<T>& from) {
    std::memcpy(static_cast<void*>(to), from.data(), from.size() * sizeof(T));
}
template <class T>
std::vector<T> load(const T* from, long n) {
    std::vector<T> out(n);
    std::memcpy(out.data(), static_cast<const void*>(from), n * sizeof(T));
    return out;
}

// Calls the sized kernel on x placed at the given byte offsets from a 64-byte
// boundary, with a caller buffer of the reported size (or null), and returns
// the output.
template <class T>
std::vector<T> transform(int order, const std::vector<T>& x, int flag, std::size_t srcOffset = 0,
                         std::size_t dstOffset = 0, bool nullBuffer = false) {
    const long n = 1L << order;
    OffsetArray<T> src(n, srcOffset), dst(n, dstOffset);
    store(src.data(), x);
    int bytes = 0;
    EXPECT_EQ(bufferSize<T>(order, &bytes), StatusOk);
    OffsetArray<unsigned char> buffer(bytes, 0);
    EXPECT_EQ(kernel<T>(order)(src.data(), dst.data(), flag, nullBuffer ? nullptr : buffer.data()), StatusOk);
    return load(dst.data(), n);
}

template <class T>
std::vector<T> narrow(const std::vector<Real>& x) {
    return std::vector<T>(x.begin(), x.end());
}

template <class T>
bool sameBits(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

}  // namespace kfpg::test::wht
