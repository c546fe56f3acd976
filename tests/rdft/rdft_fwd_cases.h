// Shared by the forward real DFT tests: every sized kernel and generic entry
// by layout, precision and length, and the reference spectrum.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "kfpgen.h"
#include "rdft_cases.h"
#include "reference.h"

namespace kfpg::test::rdft {

#define KFPG_TEST_RDFT(N, L, T) kfpgDFTFwd_RTo##L##_##N##_##T,
#define KFPG_TEST_CCS32(N) KFPG_TEST_RDFT(N, CCS, 32f)
#define KFPG_TEST_PACK32(N) KFPG_TEST_RDFT(N, Pack, 32f)
#define KFPG_TEST_PERM32(N) KFPG_TEST_RDFT(N, Perm, 32f)
#define KFPG_TEST_CCS64(N) KFPG_TEST_RDFT(N, CCS, 64f)
#define KFPG_TEST_PACK64(N) KFPG_TEST_RDFT(N, Pack, 64f)
#define KFPG_TEST_PERM64(N) KFPG_TEST_RDFT(N, Perm, 64f)

template <class T>
struct Kernels;

template <>
struct Kernels<float> {
    static Sized<float> sized(int n, Layout layout) {
        static const Sized<float> ccs[] = {KFPG_FOR_LENGTHS(KFPG_TEST_CCS32)};
        static const Sized<float> pack[] = {KFPG_FOR_LENGTHS(KFPG_TEST_PACK32)};
        static const Sized<float> perm[] = {KFPG_FOR_LENGTHS(KFPG_TEST_PERM32)};
        return (layout == Layout::CCS ? ccs : layout == Layout::Pack ? pack : perm)[n - 2];
    }
    static Generic<float> generic(Layout layout) {
        return layout == Layout::CCS ? kfpgDFTFwd_RToCCS_32f : layout == Layout::Pack ? kfpgDFTFwd_RToPack_32f : kfpgDFTFwd_RToPerm_32f;
    }
    static constexpr double bound = 4e-7;
};

template <>
struct Kernels<double> {
    static Sized<double> sized(int n, Layout layout) {
        static const Sized<double> ccs[] = {KFPG_FOR_LENGTHS(KFPG_TEST_CCS64)};
        static const Sized<double> pack[] = {KFPG_FOR_LENGTHS(KFPG_TEST_PACK64)};
        static const Sized<double> perm[] = {KFPG_FOR_LENGTHS(KFPG_TEST_PERM64)};
        return (layout == Layout::CCS ? ccs : layout == Layout::Pack ? pack : perm)[n - 2];
    }
    static Generic<double> generic(Layout layout) {
        return layout == Layout::CCS ? kfpgDFTFwd_RToCCS_64f : layout == Layout::Pack ? kfpgDFTFwd_RToPack_64f : kfpgDFTFwd_RToPerm_64f;
    }
    static constexpr double bound = 1e-15;
};

// The reference spectrum of the kernel's exact input in the case's layout,
// scaled for the flag, as many elements as the kernel writes.
template <class T>
std::vector<ref::Real> expected(const Case& c, const T* x, int flag) {
    auto packed = ref::realDftPacked(std::vector<ref::Real>(x, x + c.n), c.layout);
    const ref::Real s = ref::scaleFactor(flag, c.n, ref::Direction::Forward);
    for (auto& v : packed) v *= s;
    return packed;
}


}  // namespace kfpg::test::rdft
