// Buffer-size query and the generic entry by order.
#include "kfpgen.h"
#include "wht/wht_layout.h"

namespace {

using namespace kfpg::wht;

// Orders outside 1..13 wrap around to large unsigned values.
bool orderOutOfRange(int order) { return static_cast<unsigned>(order) - kMinOrder > unsigned{kMaxOrder - kMinOrder}; }

template <class T>
KfpStatus bufferSize(int order, int* pSize) {
    if (orderOutOfRange(order)) return StatusSizeError;
    *pSize = bufferBytes<T>(order);
    return StatusOk;
}

using Kernel32f = KfpStatus (*)(const kfp32f*, kfp32f*, int, unsigned char*);
using Kernel64f = KfpStatus (*)(const kfp64f*, kfp64f*, int, unsigned char*);

#define KFPG_WHT_ORDERS(X, T) \
    X(1, T), X(2, T), X(3, T), X(4, T), X(5, T), X(6, T), X(7, T), X(8, T), X(9, T), X(10, T), X(11, T), X(12, T), X(13, T)
#define KFPG_WHT_KERNEL(K, T) kfpgWHT_##K##_##T

// Indexed by order - 1.
constexpr Kernel32f kKernels32f[] = {KFPG_WHT_ORDERS(KFPG_WHT_KERNEL, 32f)};
constexpr Kernel64f kKernels64f[] = {KFPG_WHT_ORDERS(KFPG_WHT_KERNEL, 64f)};
static_assert(sizeof kKernels32f / sizeof *kKernels32f == kMaxOrder);
static_assert(sizeof kKernels64f / sizeof *kKernels64f == kMaxOrder);

}  // namespace

extern "C" KfpStatus kfpgWHTGetBufferSize_32f(int order, int* pSize) { return bufferSize<kfp32f>(order, pSize); }
extern "C" KfpStatus kfpgWHTGetBufferSize_64f(int order, int* pSize) { return bufferSize<kfp64f>(order, pSize); }

extern "C" KfpStatus kfpgWHT_32f(const kfp32f* pSrc, kfp32f* pDst, int order, int flag, unsigned char* pBuffer) {
    if (orderOutOfRange(order)) return StatusSizeError;
    return kKernels32f[order - 1](pSrc, pDst, flag, pBuffer);
}

extern "C" KfpStatus kfpgWHT_64f(const kfp64f* pSrc, kfp64f* pDst, int order, int flag, unsigned char* pBuffer) {
    if (orderOutOfRange(order)) return StatusSizeError;
    return kKernels64f[order - 1](pSrc, pDst, flag, pBuffer);
}
