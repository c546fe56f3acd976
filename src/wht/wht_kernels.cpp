// The exported kernels kfpgWHT_<order>_32f/_64f.
#include "wht/wht_kernel.h"
#include "wht/wht_leaves_interim.h"

using kfpg::wht::interim::Path;

#define KFPG_WHT_BOTH_TYPES(K) \
    KFPG_WHT_TWO_PATHS(K, kfp32f, 32f, Path<K KFPG_COMMA kfp32f>, Path<K KFPG_COMMA kfp32f>) \
    KFPG_WHT_TWO_PATHS(K, kfp64f, 64f, Path<K KFPG_COMMA kfp64f>, Path<K KFPG_COMMA kfp64f>)
#define KFPG_COMMA ,

KFPG_WHT_ONE_PATH(1, kfp32f, 32f, Path<1 KFPG_COMMA kfp32f>)
KFPG_WHT_ONE_PATH(2, kfp32f, 32f, Path<2 KFPG_COMMA kfp32f>)
KFPG_WHT_ONE_PATH(3, kfp32f, 32f, Path<3 KFPG_COMMA kfp32f>)
KFPG_WHT_ONE_PATH(1, kfp64f, 64f, Path<1 KFPG_COMMA kfp64f>)
KFPG_WHT_ONE_PATH(2, kfp64f, 64f, Path<2 KFPG_COMMA kfp64f>)
KFPG_WHT_INNER_TWO_PATHS(3, kfp64f, 64f, Path<3 KFPG_COMMA kfp64f>, Path<3 KFPG_COMMA kfp64f>)
KFPG_WHT_BOTH_TYPES(4) KFPG_WHT_BOTH_TYPES(5) KFPG_WHT_BOTH_TYPES(6) KFPG_WHT_BOTH_TYPES(7)
KFPG_WHT_BOTH_TYPES(8) KFPG_WHT_BOTH_TYPES(9) KFPG_WHT_BOTH_TYPES(10) KFPG_WHT_BOTH_TYPES(11)
KFPG_WHT_BOTH_TYPES(12) KFPG_WHT_BOTH_TYPES(13)
