/*
 * kfpcore.h - the core services that the transform libraries import:
 * aligned allocation and a processor-feature query.
 */
#ifndef KFPCORE_H
#define KFPCORE_H

#ifdef __cplusplus
extern "C" {
#endif

#if defined(KFP_BUILDING_CORE)
#define KFPCORE_API __attribute__((visibility("default")))
#else
#define KFPCORE_API
#endif

/* Processor-feature masks for ownGetFeature. Each is one CPUID feature; the
 * AVX-family bits also require the operating system to save the wide
 * registers (XGETBV), so they report what code can really use. */
#define KFP_FEATURE_MMX     0x001
#define KFP_FEATURE_SSE     0x002
#define KFP_FEATURE_SSE2    0x004
#define KFP_FEATURE_SSE3    0x008
#define KFP_FEATURE_SSSE3   0x010
#define KFP_FEATURE_SSE41   0x020
#define KFP_FEATURE_SSE42   0x040
#define KFP_FEATURE_AVX     0x080 /* 256-bit float vectors usable */
#define KFP_FEATURE_AVX2    0x100
#define KFP_FEATURE_FMA     0x200
#define KFP_FEATURE_AVX512F 0x400

/* Returns a block of `bytes` bytes aligned to 64 bytes (so also to 16 for
 * vector access), or null when bytes <= 0 or memory is exhausted. */
KFPCORE_API void* kfpMalloc(int bytes);
/* Releases a block from kfpMalloc; null is accepted and ignored. */
KFPCORE_API void kfpFree(void* ptr);
/* Non-zero when the running processor has every feature in `mask`. */
KFPCORE_API int ownGetFeature(int mask);

#ifdef __cplusplus
}
#endif

#endif /* KFPCORE_H */
