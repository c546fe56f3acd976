#include "kfpcore.h"

#include <cpuid.h>
#include <cstdint>
#include <cstdlib>

namespace {

constexpr std::size_t kAlignment = 64;

// XCR0 bits 1 and 2: the OS saves SSE and AVX state on context switches.
// Bits 5..7: it also saves the AVX-512 opmask and upper register state.
bool osSavesAvxState(unsigned ecx1) {
    if (!(ecx1 & bit_OSXSAVE)) return false;
    unsigned lo, hi;
    __asm__("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
    return (lo & 0x6) == 0x6;
}

bool osSavesAvx512State() {
    unsigned lo, hi;
    __asm__("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
    return (lo & 0xe6) == 0xe6;
}

int featureBits() {
    unsigned a, b, c, d;
    if (!__get_cpuid(1, &a, &b, &c, &d)) return 0;
    int f = 0;
    if (d & bit_MMX) f |= KFP_FEATURE_MMX;
    if (d & bit_SSE) f |= KFP_FEATURE_SSE;
    if (d & bit_SSE2) f |= KFP_FEATURE_SSE2;
    if (c & bit_SSE3) f |= KFP_FEATURE_SSE3;
    if (c & bit_SSSE3) f |= KFP_FEATURE_SSSE3;
    if (c & bit_SSE4_1) f |= KFP_FEATURE_SSE41;
    if (c & bit_SSE4_2) f |= KFP_FEATURE_SSE42;
    const bool avxOs = osSavesAvxState(c);
    if (avxOs && (c & bit_AVX)) f |= KFP_FEATURE_AVX;
    if (avxOs && (c & bit_FMA)) f |= KFP_FEATURE_FMA;
    unsigned a7, b7, c7, d7;
    if (avxOs && __get_cpuid_count(7, 0, &a7, &b7, &c7, &d7)) {
        if (b7 & bit_AVX2) f |= KFP_FEATURE_AVX2;
        if ((b7 & bit_AVX512F) && osSavesAvx512State()) f |= KFP_FEATURE_AVX512F;
    }
    return f;
}

}  // namespace

extern "C" void* kfpMalloc(int bytes) {
    if (bytes <= 0) return nullptr;
    const std::size_t rounded = (static_cast<std::size_t>(bytes) + kAlignment - 1) & ~(kAlignment - 1);
    return std::aligned_alloc(kAlignment, rounded);
}

extern "C" void kfpFree(void* ptr) { std::free(ptr); }

extern "C" int ownGetFeature(int mask) {
    return mask != 0 && (featureBits() & mask) == mask;
}
