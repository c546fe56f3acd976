// The operations of every environment kind, named owngDCT4_<precision>w7_<kind>_<op>
// (precision 32f or 64f). __init__ fills an object taken from the arena,
// plan builds its children and tables, mem returns the bytes that __init__
// plus plan take (StatusSizeError when plan would fail), compute runs the
// node, __del__ gives back what the object owns (not the object itself).
// env5 compute runs a recursive split through `scratch` (N elements) instead
// of the split's own work array when scratch is not null.
#pragma once

#include "dct4/envs.h"

#define KFPG_DCT4_DECLARE_OPS(P, Real)                                                                          \
    Env1<Real>* owngDCT4_##P##w7_env1___init__(void* mem, Arena* arena, int len);                             \
    KfpStatus owngDCT4_##P##w7_env1_plan(void* self);                                                          \
    int owngDCT4_##P##w7_env1_mem(int len);                                                                    \
    KfpStatus owngDCT4_##P##w7_env1_compute(const Env1<Real>* self, Real* dst, const Real* src);              \
    void owngDCT4_##P##w7_env1___del__(void* self);                                                            \
    Env2<Real>* owngDCT4_##P##w7_env2___init__(void* mem, Arena* arena, int d, int len, int twoD, int m,       \
                                               int len2, int lastIndex, int subSize, void* twiddle);          \
    KfpStatus owngDCT4_##P##w7_env2_plan(void* self);                                                          \
    int owngDCT4_##P##w7_env2_mem(int d, int len, int twoD, int m, int len2, int lastIndex, int subSize);      \
    void owngDCT4_##P##w7_env2___del__(void* self);                                                            \
    Env3<Real>* owngDCT4_##P##w7_env3___init__(void* mem, Arena* arena, int subSize, int len, int lastIndex,   \
                                               int twoD, int d, int len2, int d2);                             \
    KfpStatus owngDCT4_##P##w7_env3_plan(void* self);                                                          \
    int owngDCT4_##P##w7_env3_mem(int subSize, int len, int lastIndex, int twoD, int d, int len2, int d2);     \
    void owngDCT4_##P##w7_env3___del__(void* self);                                                            \
    Env4<Real>* owngDCT4_##P##w7_env4___init__(void* mem, Arena* arena, int d, int len, int twoD, int eightD,  \
                                               int groups, int len2, int lastIndex, int subSize,               \
                                               void* twiddle);                                                 \
    KfpStatus owngDCT4_##P##w7_env4_plan(void* self);                                                          \
    int owngDCT4_##P##w7_env4_mem(int d, int len, int twoD, int eightD, int groups, int len2, int lastIndex,   \
                                  int subSize);                                                                \
    KfpStatus owngDCT4_##P##w7_env4_compute(const Env4<Real>* self, Real* dst, const Real* src);              \
    void owngDCT4_##P##w7_env4___del__(void* self);                                                            \
    Env5<Real>* owngDCT4_##P##w7_env5___init__(void* mem, Arena* arena, int subSize, int len, int lastIndex,   \
                                               int twoD, int groups, int len2, int d);                         \
    KfpStatus owngDCT4_##P##w7_env5_plan(void* self);                                                          \
    int owngDCT4_##P##w7_env5_mem(int subSize, int len, int lastIndex, int twoD, int groups, int len2, int d); \
    KfpStatus owngDCT4_##P##w7_env5_compute(const Env5<Real>* self, Real* dst, const Real* src, int rootD,    \
                                            Real* scratch);                                                    \
    void owngDCT4_##P##w7_env5___del__(void* self);                                                            \
    Env7<Real>* owngDCT4_##P##w7_env7___init__(void* mem, Arena* arena, int subSize, int len, int len2,        \
                                               int stride, int workLen, int interleave);                       \
    KfpStatus owngDCT4_##P##w7_env7_plan(void* self);                                                          \
    int owngDCT4_##P##w7_env7_mem(int subSize, int len, int len2, int stride, int workLen, int interleave);    \
    KfpStatus owngDCT4_##P##w7_env7_compute(const Env7<Real>* self, Real* dst, const Real* src, int rootD);   \
    void owngDCT4_##P##w7_env7___del__(void* self);                                                            \
    Env8<Real>* owngDCT4_##P##w7_env8___init__(void* mem, Arena* arena, int divisor, int workLen,             \
                                               int interleave, int rowLanes, int groups, int workLen2,         \
                                               int half, int last, int interleave2, int subSize,               \
                                               void* twiddle);                                                 \
    KfpStatus owngDCT4_##P##w7_env8_plan(void* self);                                                          \
    int owngDCT4_##P##w7_env8_mem(int divisor, int workLen, int interleave, int rowLanes, int groups,          \
                                  int workLen2, int half, int last, int interleave2, int subSize);             \
    KfpStatus owngDCT4_##P##w7_env8_compute(const Env8<Real>* self, Real* dst, const Real* src);              \
    void owngDCT4_##P##w7_env8___del__(void* self);                                                            \
    Env9<Real>* owngDCT4_##P##w7_env9___init__(void* mem, Arena* arena, int subSize, int len, int len2,        \
                                               int stride, int parentStride, int divisor, int workLen,         \
                                               int interleave, int parentInterleave);                          \
    KfpStatus owngDCT4_##P##w7_env9_plan(void* self);                                                          \
    int owngDCT4_##P##w7_env9_mem(int subSize, int len, int len2, int stride, int parentStride, int divisor,   \
                                  int workLen, int interleave, int parentInterleave);                          \
    KfpStatus owngDCT4_##P##w7_env9_compute(const Env9<Real>* self, Real* dst, const Real* src, int rootD);   \
    void owngDCT4_##P##w7_env9___del__(void* self);                                                            \
    EnvLambda* owngDCT4_##P##w7_envlambda___init__(void* mem, Arena* arena, int a, int b);                    \
    Real owngDCT4_##P##w7_envlambda_at(const void* self, int i, int j, int k);                                 \
    void owngDCT4_##P##w7_envlambda___del__(void* self);                                                       \
    EnvFSplit* owngDCT4_##P##w7_envfsplit___init__(void* mem, Arena* arena, int twoD, int groups, void* inner); \
    Real owngDCT4_##P##w7_envfsplit_at(const void* self, int i, int j, int k);                                 \
    void owngDCT4_##P##w7_envfsplit___del__(void* self);                                                       \
    EnvFCompose* owngDCT4_##P##w7_envfCompose___init__(void* mem, Arena* arena, int twoD, int eightN, int m,  \
                                                       int d, int twoD2);                                      \
    Real owngDCT4_##P##w7_envfCompose_at(const void* self, int i, int j, int k);                               \
    void owngDCT4_##P##w7_envfCompose___del__(void* self);

namespace kfpg::dct4 {
KFPG_DCT4_DECLARE_OPS(32f, float)
KFPG_DCT4_DECLARE_OPS(64f, double)
}  // namespace kfpg::dct4
