// Generic Hartley entries: the length picks the sized kernel.
#include "frame/length_dispatch.h"

namespace {

#define KFPG_DHT_32F(N) kfpgHartley_##N##_32f,
#define KFPG_DHT_64F(N) kfpgHartley_##N##_64f,

const kfpg::LengthTable<kfp32f, kfp32f> kHartley32f = {KFPG_FOR_LENGTHS(KFPG_DHT_32F)};
const kfpg::LengthTable<kfp64f, kfp64f> kHartley64f = {KFPG_FOR_LENGTHS(KFPG_DHT_64F)};

}  // namespace

extern "C" KfpStatus kfpgHartley_32f(const kfp32f* pSrc, kfp32f* pDst, int len, int flag) {
    return kfpg::dispatchByLength(kHartley32f, pSrc, pDst, len, flag);
}

extern "C" KfpStatus kfpgHartley_64f(const kfp64f* pSrc, kfp64f* pDst, int len, int flag) {
    return kfpg::dispatchByLength(kHartley64f, pSrc, pDst, len, flag);
}
