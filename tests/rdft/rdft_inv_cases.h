// Shared by the inverse real DFT tests: every sized kernel and generic entry
// by layout, precision and length (the forward ones too, for round trips), and
// random half spectra in each layout with their long-double inverse.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "kfpgen.h"
#include "rdft_cases.h"
#include "reference.h"

namespace kfpg::test::rdft {

#define KFPG_TEST_INV(N, L, T) kfpgDFTInv_##L##ToR_##N##_##T,
#define KFPG_TEST_INV_CCS32(N) KFPG_TEST_INV(N, CCS, 32f)
#define KFPG_TEST_INV_PACK32(N) KFPG_TEST_INV(N, Pack, 32f)
#define KFPG_TEST_INV_PERM32(N) KFPG_TEST_INV(N, Perm, 32f)
#define KFPG_TEST_INV_CCS64(N) KFPG_TEST_INV(N, CCS, 64f)
#define KFPG_TEST_INV_PACK64(N) KFPG_TEST_INV(N, Pack, 64f)
#define KFPG_TEST_INV_PERM64(N) KFPG_TEST_INV(N, Perm, 64f)

template <class T>
struct InverseKernels;

template <>
struct InverseKernels<float> {
    static Sized<float> sized(int n, Layout layout) {
        static const Sized<float> ccs[] = {KFPG_FOR_LENGTHS(KFPG_TEST_INV_CCS32)};
        static const Sized<float> pack[] = {KFPG_FOR_LENGTHS(KFPG_TEST_INV_PACK32)};
        static const Sized<float> perm[] = {KFPG_FOR_LENGTHS(KFPG_TEST_INV_PERM32)};
        return (layout == Layout::CCS ? ccs : layout == Layout::Pack ? pack : perm)[n - 2];
    }
    static Generic<float> generic(Layout layout) {
        return layout == Layout::CCS ? kfpgDFTInv_CCSToR_32f : layout == Layout::Pack ? kfpgDFTInv_PackToR_32f : kfpgDFTInv_PermToR_32f;
    }
    static Sized<float> forward(int n, Layout layout) {
        static const Sized<float> table[] = {
#define KFPG_TEST_FWD32(N) kfpgDFTFwd_RToCCS_##N##_32f, kfpgDFTFwd_RToPack_##N##_32f, kfpgDFTFwd_RToPerm_##N##_32f,
            KFPG_FOR_LENGTHS(KFPG_TEST_FWD32)};
        return table[3 * (n - 2) + static_cast<int>(layout)];
    }
    static constexpr double bound = 4e-7;
};

template <>
struct InverseKernels<double> {
    static Sized<double> sized(int n, Layout layout) {
        static const Sized<double> ccs[] = {KFPG_FOR_LENGTHS(KFPG_TEST_INV_CCS64)};
        static const Sized<double> pack[] = {KFPG_FOR_LENGTHS(KFPG_TEST_INV_PACK64)};
        static const Sized<double> perm[] = {KFPG_FOR_LENGTHS(KFPG_TEST_INV_PERM64)};
        return (layout == Layout::CCS ? ccs : layout == Layout::Pack ? pack : perm)[n - 2];
    }
    static Generic<double> generic(Layout layout) {
        return layout == Layout::CCS ? kfpgDFTInv_CCSToR_64f : layout == Layout::Pack ? kfpgDFTInv_PackToR_64f : kfpgDFTInv_PermToR_64f;
    }
    static Sized<double> forward(int n, Layout layout) {
        static const Sized<double> table[] = {
#define KFPG_TEST_FWD64(N) kfpgDFTFwd_RToCCS_##N##_64f, kfpgDFTFwd_RToPack_##N##_64f, kfpgDFTFwd_RToPerm_##N##_64f,
            KFPG_FOR_LENGTHS(KFPG_TEST_FWD64)};
        return table[3 * (n - 2) + static_cast<int>(layout)];
    }
    static constexpr double bound = 1e-15;
};

// A random half spectrum in the case's layout; the ignored CCS elements hold `junk`.
template <class T>
std::vector<T> randomSpectrum(const Case& c, unsigned seed, T junk = std::numeric_limits<T>::quiet_NaN()) {
    const auto r = ref::randomReals(static_cast<std::size_t>(c.packedCount()), seed);
    std::vector<T> s(r.begin(), r.end());
    for (int e = 0; e < c.packedCount(); ++e)
        if (c.ignored(e)) s[e] = junk;
    return s;
}

// The long-double inverse of the kernel's exact input, scaled for the flag.
template <class T>
std::vector<ref::Real> expectedSignal(const Case& c, const T* spectrum, int flag) {
    std::vector<ref::Real> packed(spectrum, spectrum + c.packedCount());
    for (int e = 0; e < c.packedCount(); ++e)
        if (c.ignored(e)) packed[e] = 0;
    auto x = ref::realDftUnpack(packed, c.n, c.layout);
    const ref::Real s = ref::scaleFactor(flag, c.n, ref::Direction::Inverse);
    for (auto& v : x) v *= s;
    return x;
}


}  // namespace kfpg::test::rdft
