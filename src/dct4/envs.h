// The objects a DCT-IV plan (DCT4Spec) is made of. Every environment and
// index-function object starts with the EnvHeader fields (del, size, plan or
// at, arena); the fields after it are listed per kind. All of them live in
// the caller's block, taken from its arena. Real is float (32f) or double
// (64f); the layouts are the same in both precisions.
#pragma once

#include <cstddef>
#include <cstdint>

#include "dct4/env_list.h"
#include "kfpgen.h"

namespace kfpg::dct4 {

using PlanFn = KfpStatus (*)(void* self);
template <class Real>
using AtFn = Real (*)(const void* self, int i, int j, int k);

// Root: the DCT4Spec itself.
template <class Real>
struct Env1 {
    void (*del)(void*);
    std::int32_t size;
    PlanFn plan;
    Arena* arena;
    EnvList* children;
    EnvList* stage2;
    EnvList* stage1;
    Real* work;
    std::int32_t rule;  // 1..5 direct 2..32, 6 split, 0 unplanned
    std::int32_t divisor;
    std::int32_t len;
};

// Output-side stage wrapper of the root.
template <class Real>
struct Env2 {
    void (*del)(void*);
    std::int32_t size;
    PlanFn plan;
    Arena* arena;
    EnvList* children;
    EnvList* stage;
    Real* buffer;
    std::int32_t rule, d, len, twoD, m, len2, lastIndex, subSize;
    void* twiddle;  // envfCompose
};

// Input-side stage wrapper of the root.
template <class Real>
struct Env3 {
    void (*del)(void*);
    std::int32_t size;
    PlanFn plan;
    Arena* arena;
    EnvList* children;
    EnvList* stage;
    Real* buffer;
    std::int32_t rule, subSize, len, lastIndex, twoD, d, len2, d2;
};

// Output-side kernel of the root: rotations, then a DCT-II/DST-II pair of size d.
template <class Real>
struct Env4 {
    void (*del)(void*);
    std::int32_t size;
    PlanFn plan;
    Arena* arena;
    EnvList* children;
    Real* table;
    std::int32_t rule, d, len, twoD, eightD, groups, len2, lastIndex, subSize;
    void* twiddle;  // envfsplit
};

// Input-side sub-transforms of size M on d interleaved lanes (also env9's shape).
template <class Real>
struct Env5 {
    void (*del)(void*);
    std::int32_t size;
    PlanFn plan;
    Arena* arena;
    EnvList* children;
    EnvList* stage;
    Real* buffer;
    std::int32_t rule, subSize, len, lastIndex, twoD, groups, len2, d;
};

// Recursive two-stage split of a size-M sub-transform.
template <class Real>
struct Env7 {
    void (*del)(void*);
    std::int32_t size;
    PlanFn plan;
    Arena* arena;
    EnvList* children;
    EnvList* stage2;
    EnvList* stage1;
    Real* work;
    std::int32_t rule, subSize, divisor;
    std::int32_t len, len2, stride, workLen, interleave;
};

// Output side of a recursive split: twiddles and a complex DFT of size d'.
template <class Real>
struct Env8 {
    void (*del)(void*);
    std::int32_t size;
    PlanFn plan;
    Arena* arena;
    EnvList* children;
    Real* table;
    std::int32_t rule, divisor;
    std::int32_t workLen, interleave, rowLanes, groups, workLen2, half, last, interleave2, subSize;
    void* twiddle;  // envlambda
};

// Input side of a recursive split: sub-transforms of size M/d'.
template <class Real>
struct Env9 {
    void (*del)(void*);
    std::int32_t size;
    PlanFn plan;
    Arena* arena;
    EnvList* children;
    EnvList* stage;
    Real* buffer;
    std::int32_t rule, subSize;
    std::int32_t len, len2, stride, parentStride, divisor, workLen, interleave, parentInterleave;
};

struct EnvLambda {
    void (*del)(void*);
    std::int32_t size;
    void* at;
    Arena* arena;
    std::int32_t a, b;
};

struct EnvFSplit {
    void (*del)(void*);
    std::int32_t size;
    void* at;
    Arena* arena;
    std::int32_t twoD, groups;
    void* inner;
};

struct EnvFCompose {
    void (*del)(void*);
    std::int32_t size;
    void* at;
    Arena* arena;
    std::int32_t twoD, eightN, m, d, twoD2;
};

// Calls an index-function object's own at operation (three integers in, one real out).
template <class Real>
Real owng_TFunc_IIIR_at(const void* object, int i, int j, int k) {
    return reinterpret_cast<AtFn<Real>>(static_cast<const EnvHeader*>(object)->op)(object, i, j, k);
}

KfpStatus divisorsIntNonTriv(std::int32_t* out, std::int32_t n);
int chooseRule(int n);

// Sizes handed to the arena, and their offsets.
static_assert(sizeof(EnvList) == 24);
static_assert(sizeof(Env1<float>) == 80 && offsetof(Env1<float>, len) == 72);
static_assert(sizeof(Env2<float>) == 96 && offsetof(Env2<float>, twiddle) == 88);
static_assert(sizeof(Env3<float>) == 88);
static_assert(sizeof(Env4<float>) == 96 && offsetof(Env4<float>, twiddle) == 88);
static_assert(sizeof(Env5<float>) == 88);
static_assert(sizeof(Env7<double>) == 96 && offsetof(Env7<double>, interleave) == 92);
static_assert(sizeof(Env8<float>) == 104 && offsetof(Env8<float>, twiddle) == 96);
static_assert(sizeof(Env9<float>) == 96 && offsetof(Env9<float>, parentInterleave) == 92);
static_assert(sizeof(EnvLambda) == 40 && sizeof(EnvFSplit) == 48 && sizeof(EnvFCompose) == 56);
static_assert(offsetof(Env1<float>, arena) == offsetof(EnvHeader, arena));

}  // namespace kfpg::dct4
