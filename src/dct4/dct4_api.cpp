// The exported DCT-IV calls: size query, build into the caller's block or an
// allocated one, transform, release. The DCT4Spec handed to the caller
// is the root environment (env1) inside the block.
#include "dct4/env_ops.h"
#include "kfpcore.h"
#include "kfpgen.h"

namespace kfpg::dct4 {
namespace {

// The root operations of one precision.
template <class Real>
struct Root;

template <>
struct Root<float> {
    static constexpr auto init = owngDCT4_32fw7_env1___init__;
    static constexpr auto mem = owngDCT4_32fw7_env1_mem;
    static constexpr auto compute = owngDCT4_32fw7_env1_compute;
};

template <>
struct Root<double> {
    static constexpr auto init = owngDCT4_64fw7_env1___init__;
    static constexpr auto mem = owngDCT4_64fw7_env1_mem;
    static constexpr auto compute = owngDCT4_64fw7_env1_compute;
};

template <class Real>
KfpStatus getSize(int len, int* pSize) {
    const int bytes = Root<Real>::mem(len);
    if (bytes < 0) return StatusSizeError;
    // Room for the arena header and the alignment of the first object.
    *pSize = bytes + 2 * static_cast<int>(kfpgAlignSize32Bytes(1));
    return StatusOk;
}

template <class Real, class Spec>
KfpStatus init(Spec** ppSpec, int len, unsigned char* pMem) {
    if (!ppSpec || !pMem) return StatusNullPointer;
    Arena* arena = arenaInBlock(pMem);
    Env1<Real>* root = Root<Real>::init(kfpgArenaMalloc(arena, sizeof(Env1<Real>)), arena, len);
    const KfpStatus status = root->plan(root);
    if (status != StatusOk) {
        root->del(root);
        kfpgArenaFree(arena, root, sizeof(Env1<Real>));
        return status;
    }
    *ppSpec = reinterpret_cast<Spec*>(root);
    return StatusOk;
}

template <class Real, class Spec>
KfpStatus initAlloc(Spec** ppSpec, int len) {
    if (!ppSpec) return StatusNullPointer;
    int size = 0;
    const KfpStatus sized = getSize<Real>(len, &size);
    if (sized != StatusOk) return sized;
    auto* block = static_cast<unsigned char*>(kfpMalloc(size));
    const KfpStatus built = init<Real>(ppSpec, len, block);
    if (built != StatusOk) kfpFree(block);
    return built;
}

template <class Real, class Spec>
KfpStatus release(Spec* pSpec) {
    if (!pSpec) return StatusNullPointer;
    auto* root = reinterpret_cast<Env1<Real>*>(pSpec);
    Arena* arena = root->arena;
    root->del(root);
    kfpgArenaFree(arena, root, sizeof(Env1<Real>));
    kfpFree(arena);
    return StatusOk;
}

template <class Real, class Spec>
KfpStatus transform(const Real* pSrc, Real* pDst, const Spec* pSpec) {
    if (!pSpec || !pSrc || !pDst) return StatusNullPointer;
    const auto* root = reinterpret_cast<const Env1<Real>*>(pSpec);
    if (root->rule < 1 || root->rule > 6) return StatusContextError;
    return Root<Real>::compute(root, pDst, pSrc);
}

}  // namespace
}  // namespace kfpg::dct4

using namespace kfpg::dct4;

extern "C" {

KfpStatus kfpgDCT4GetSize_32f(int len, int* pSize) { return getSize<float>(len, pSize); }
KfpStatus kfpgDCT4Init_32f(DCT4Spec_32f** ppSpec, int len, unsigned char* pMem) {
    return init<float>(ppSpec, len, pMem);
}
KfpStatus kfpgDCT4InitAlloc_32f(DCT4Spec_32f** ppSpec, int len) { return initAlloc<float>(ppSpec, len); }
KfpStatus kfpgDCT4Free_32f(DCT4Spec_32f* pSpec) { return release<float>(pSpec); }
KfpStatus kfpgDCT4_32f(const kfp32f* pSrc, kfp32f* pDst, const DCT4Spec_32f* pSpec) {
    return transform<float>(pSrc, pDst, pSpec);
}

KfpStatus kfpgDCT4GetSize_64f(int len, int* pSize) { return getSize<double>(len, pSize); }
KfpStatus kfpgDCT4Init_64f(DCT4Spec_64f** ppSpec, int len, unsigned char* pMem) {
    return init<double>(ppSpec, len, pMem);
}
KfpStatus kfpgDCT4InitAlloc_64f(DCT4Spec_64f** ppSpec, int len) { return initAlloc<double>(ppSpec, len); }
KfpStatus kfpgDCT4Free_64f(DCT4Spec_64f* pSpec) { return release<double>(pSpec); }
KfpStatus kfpgDCT4_64f(const kfp64f* pSrc, kfp64f* pDst, const DCT4Spec_64f* pSpec) {
    return transform<double>(pSrc, pDst, pSpec);
}

}  // extern "C"
