// Shared by the real DFT tests of both directions: the parameter list of all
// 378 kernels of a direction (length, precision, layout) and what a layout
// holds.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "real_kernel_cases.h"
#include "reference.h"

namespace kfpg::test::rdft {

using ref::Layout;

template <class T>
using Sized = RealSized<T>;
template <class T>
using Generic = RealGeneric<T>;

struct Case {
    int n;
    bool f64;
    Layout layout;
    // Elements of the packed spectrum: written by a forward kernel, the
    // source of an inverse one (a CCS array holds two or one more than the
    // inverse reads).
    int packedCount() const { return static_cast<int>(ref::packedLength(n, layout)); }
    // The CCS elements an inverse kernel never loads: Im X[0] and, for even n, Im X[n/2].
    bool ignored(int e) const { return layout == Layout::CCS && (e == 1 || (n % 2 == 0 && e == n + 1)); }
    // One past the last element an inverse kernel loads.
    int readEnd() const { return layout == Layout::CCS && n % 2 == 0 ? n + 1 : packedCount(); }
};

inline std::vector<Case> allCases() {
    std::vector<Case> cases;
    for (bool f64 : {false, true})
        for (Layout layout : {Layout::CCS, Layout::Pack, Layout::Perm})
            for (int n = 2; n <= 64; ++n) cases.push_back({n, f64, layout});
    return cases;
}

// The CCS cases only: the checks of the CCS zeros and of the layouts against each other.
inline std::vector<Case> ccsCases() {
    std::vector<Case> cases;
    for (const Case& c : allCases())
        if (c.layout == Layout::CCS) cases.push_back(c);
    return cases;
}

inline std::string caseName(const ::testing::TestParamInfo<Case>& info) {
    static const char* const names[] = {"CCS", "Pack", "Perm"};
    const Case& c = info.param;
    return std::string(names[static_cast<int>(c.layout)]) + "_" + std::to_string(c.n) + (c.f64 ? "_64f" : "_32f");
}

}  // namespace kfpg::test::rdft
