// The packed half-spectrum layouts of the real DFT (CCS, Pack, Perm): where
// R_k and I_k of a length-n spectrum sit, for the forward family that stores
// them and the inverse family that loads them.
#pragma once

#include <array>

namespace kfpg::gen {

enum class Layout { CCS, Pack, Perm };
inline constexpr std::array<Layout, 3> kLayouts{Layout::CCS, Layout::Pack, Layout::Perm};

inline const char* layoutName(Layout layout) {
    static const char* const names[] = {"CCS", "Pack", "Perm"};
    return names[static_cast<int>(layout)];
}

// Whether I_k is a stored value: not for k = 0 nor for the Nyquist value.
inline bool hasImaginary(int n, int k) { return k > 0 && 2 * k != n; }

// Element of R_k (part 0) or I_k (part 1), k = 0..n/2.
inline int packedElement(Layout layout, int n, int k, int part) {
    const bool nyquist = n % 2 == 0 && k == n / 2;
    if (k == 0 || nyquist) {
        if (layout == Layout::CCS) return 2 * k;
        if (k == 0) return 0;
        return layout == Layout::Pack ? n - 1 : 1;
    }
    if (layout == Layout::CCS) return 2 * k + part;
    const int shift = layout == Layout::Perm && n % 2 == 0 ? 1 : 0;
    return 2 * k - 1 + part + shift;
}

}  // namespace kfpg::gen
