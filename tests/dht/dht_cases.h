// Shared by the Hartley tests: the sized kernels and generic entries by
// precision and length, the parameter list of all 126 cases, and the
// long-double reference scaled for a flag.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kfpgen.h"
#include "real_kernel_cases.h"
#include "reference.h"

namespace kfpg::test::dht {

template <class T>
using Sized = RealSized<T>;
template <class T>
using Generic = RealGeneric<T>;

#define KFPG_TEST_DHT32(N) kfpgHartley_##N##_32f,
#define KFPG_TEST_DHT64(N) kfpgHartley_##N##_64f,

template <class T>
struct Kernels;

template <>
struct Kernels<float> {
    static Sized<float> sized(int n) {
        static const Sized<float> kernels[] = {KFPG_FOR_LENGTHS(KFPG_TEST_DHT32)};
        return kernels[n - 2];
    }
    static constexpr Generic<float> generic = kfpgHartley_32f;
    static constexpr double bound = 4e-7;
};

template <>
struct Kernels<double> {
    static Sized<double> sized(int n) {
        static const Sized<double> kernels[] = {KFPG_FOR_LENGTHS(KFPG_TEST_DHT64)};
        return kernels[n - 2];
    }
    static constexpr Generic<double> generic = kfpgHartley_64f;
    static constexpr double bound = 1e-15;
};

struct Case {
    int n;
    bool f64;
};

inline std::vector<Case> allCases() {
    std::vector<Case> cases;
    for (bool f64 : {false, true})
        for (int n = 2; n <= 64; ++n) cases.push_back({n, f64});
    return cases;
}

inline std::string caseName(const ::testing::TestParamInfo<Case>& info) {
    return std::to_string(info.param.n) + (info.param.f64 ? "_64f" : "_32f");
}

// The reference DHT of the kernel's exact input, scaled for the flag.
template <class T>
std::vector<ref::Real> expected(const std::vector<T>& x, int flag) {
    auto h = ref::hartley(std::vector<ref::Real>(x.begin(), x.end()));
    const ref::Real s = ref::scaleFactor(flag, static_cast<long>(x.size()), ref::Direction::SelfInverse);
    for (auto& v : h) v *= s;
    return h;
}

template <class T>
std::vector<T> run(const std::vector<T>& x, int flag = ScaleNone) {
    std::vector<T> y(x.size());
    EXPECT_EQ(Kernels<T>::sized(static_cast<int>(x.size()))(x.data(), y.data(), flag), StatusOk);
    return y;
}


}  // namespace kfpg::test::dht
