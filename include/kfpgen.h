/*
 * kfpgen.h - fixed-size signal transforms (libkfpgeny8).
 *
 * Complex and real DFTs of every length 2..64, Hartley transforms 2..64,
 * Walsh-Hadamard transforms of orders 1..13 and a planned type-IV DCT.
 * Every function returns a status (0 on success, a negative Status* value on
 * failure) and never prints, aborts or keeps global state. A failed check
 * leaves the output untouched. Any array alignment is accepted; 16-byte
 * aligned arrays take the fastest path. pDst may equal pSrc everywhere.
 *
 * The sized kernels are declared through the X-macro KFPG_FOR_LENGTHS, which
 * expands a declaration once per length 2..64: e.g. the complex family
 * declares kfpgDFTFwd_CToC_2_32fc ... kfpgDFTFwd_CToC_64_32fc.
 */
#ifndef KFPGEN_H
#define KFPGEN_H

#ifdef __cplusplus
extern "C" {
#endif

#if defined(KFPG_BUILDING_LIBRARY)
#define KFPG_API __attribute__((visibility("default")))
#else
#define KFPG_API
#endif

/* Element types: real single/double, and complex as interleaved (re, im). */
typedef float kfp32f;
typedef double kfp64f;
typedef struct { kfp32f re, im; } kfp32fc;
typedef struct { kfp64f re, im; } kfp64fc;

/* Status values: every function except kfpgenGetLibVersion returns one. */
typedef int KfpStatus;
enum {
    StatusOk = 0,
    StatusContextError = -5, /* DCT-IV plan (DCT4Spec) with an unknown rule */
    StatusSizeError = -6,    /* length or order outside the supported range */
    StatusNullPointer = -8,  /* a required pointer is null */
    StatusFlagError = -16    /* scaling flag is not one of the four below */
};

/* Scaling flags. The factor multiplies every output component:
 *                  forward   inverse   Hartley / WHT
 *   ScaleFwdByN    1/N       1         1/N
 *   ScaleInvByN    1         1/N       1/N
 *   ScaleBySqrtN   1/sqrt(N) 1/sqrt(N) 1/sqrt(N)
 *   ScaleNone      1         1         1
 * Any other value (0, 3, negative, ...) gives StatusFlagError. */
enum { ScaleFwdByN = 1, ScaleInvByN = 2, ScaleBySqrtN = 4, ScaleNone = 8 };

/* Constant version record owned by the library. */
typedef struct {
    int major;          /* 6 */
    int minor;          /* 1 */
    int majorBuild;     /* 137 */
    int build;          /* 336 */
    char targetCpu[4];  /* "y8" */
    const char* name;   /* "libkfpgeny8.so.6.1", with "+" on processors with core feature 0x80 */
    const char* version;
    const char* buildDate;
} LibVersion;

/* Returns the version record; never null, never fails. */
KFPG_API const LibVersion* kfpgenGetLibVersion(void);

#define KFPG_FOR_LENGTHS(X) \
    X(2) X(3) X(4) X(5) X(6) X(7) X(8) X(9) X(10) X(11) X(12) X(13) X(14) X(15) X(16) X(17) \
    X(18) X(19) X(20) X(21) X(22) X(23) X(24) X(25) X(26) X(27) X(28) X(29) X(30) X(31) X(32) \
    X(33) X(34) X(35) X(36) X(37) X(38) X(39) X(40) X(41) X(42) X(43) X(44) X(45) X(46) X(47) \
    X(48) X(49) X(50) X(51) X(52) X(53) X(54) X(55) X(56) X(57) X(58) X(59) X(60) X(61) X(62) \
    X(63) X(64)

/* ---- Complex DFT, lengths 2..64 ----------------------------------------
 * Forward: X[k] = s * sum x[n] exp(-2 pi i n k / N); inverse uses +i.
 * Natural-order output. Checks: pSrc null, pDst null, flag. */
#define KFPG_DECLARE_CDFT(N) \
    KFPG_API KfpStatus kfpgDFTFwd_CToC_##N##_32fc(const kfp32fc* pSrc, kfp32fc* pDst, int flag); \
    KFPG_API KfpStatus kfpgDFTFwd_CToC_##N##_64fc(const kfp64fc* pSrc, kfp64fc* pDst, int flag); \
    KFPG_API KfpStatus kfpgDFTInv_CToC_##N##_32fc(const kfp32fc* pSrc, kfp32fc* pDst, int flag); \
    KFPG_API KfpStatus kfpgDFTInv_CToC_##N##_64fc(const kfp64fc* pSrc, kfp64fc* pDst, int flag);
KFPG_FOR_LENGTHS(KFPG_DECLARE_CDFT)
#undef KFPG_DECLARE_CDFT

/* ---- Real DFT, lengths 2..64, packed spectra ----------------------------
 * CCS:  (R0, 0, R1, I1, ..., R_{N/2}[, 0])   N+2 elements (even N), N+1 (odd N)
 * Pack: (R0, R1, I1, ..., [R_{N/2}])          N elements
 * Perm: (R0, [R_{N/2},] R1, I1, ...)          N elements
 * The inverse kernels never read the imaginary parts of X[0] and X[N/2]. */
#define KFPG_DECLARE_RDFT_T(N, T) \
    KFPG_API KfpStatus kfpgDFTFwd_RToPerm_##N##_##T(const kfp##T* pSrc, kfp##T* pDst, int flag); \
    KFPG_API KfpStatus kfpgDFTFwd_RToPack_##N##_##T(const kfp##T* pSrc, kfp##T* pDst, int flag); \
    KFPG_API KfpStatus kfpgDFTFwd_RToCCS_##N##_##T(const kfp##T* pSrc, kfp##T* pDst, int flag); \
    KFPG_API KfpStatus kfpgDFTInv_PermToR_##N##_##T(const kfp##T* pSrc, kfp##T* pDst, int flag); \
    KFPG_API KfpStatus kfpgDFTInv_PackToR_##N##_##T(const kfp##T* pSrc, kfp##T* pDst, int flag); \
    KFPG_API KfpStatus kfpgDFTInv_CCSToR_##N##_##T(const kfp##T* pSrc, kfp##T* pDst, int flag);
#define KFPG_DECLARE_RDFT(N) KFPG_DECLARE_RDFT_T(N, 32f) KFPG_DECLARE_RDFT_T(N, 64f)
KFPG_FOR_LENGTHS(KFPG_DECLARE_RDFT)
#undef KFPG_DECLARE_RDFT
#undef KFPG_DECLARE_RDFT_T

/* ---- Hartley transform, lengths 2..64 -----------------------------------
 * H[k] = s * sum x[n] (cos + sin)(2 pi n k / N); self-inverse up to 1/N. */
#define KFPG_DECLARE_DHT(N) \
    KFPG_API KfpStatus kfpgHartley_##N##_32f(const kfp32f* pSrc, kfp32f* pDst, int flag); \
    KFPG_API KfpStatus kfpgHartley_##N##_64f(const kfp64f* pSrc, kfp64f* pDst, int flag);
KFPG_FOR_LENGTHS(KFPG_DECLARE_DHT)
#undef KFPG_DECLARE_DHT

/* ---- Generic entries by length (2..64, else StatusSizeError first) ------ */
KFPG_API KfpStatus kfpgDFTFwd_CToC_32fc(const kfp32fc* pSrc, kfp32fc* pDst, int len, int flag);
KFPG_API KfpStatus kfpgDFTFwd_CToC_64fc(const kfp64fc* pSrc, kfp64fc* pDst, int len, int flag);
KFPG_API KfpStatus kfpgDFTInv_CToC_32fc(const kfp32fc* pSrc, kfp32fc* pDst, int len, int flag);
KFPG_API KfpStatus kfpgDFTInv_CToC_64fc(const kfp64fc* pSrc, kfp64fc* pDst, int len, int flag);
KFPG_API KfpStatus kfpgHartley_32f(const kfp32f* pSrc, kfp32f* pDst, int len, int flag);
KFPG_API KfpStatus kfpgHartley_64f(const kfp64f* pSrc, kfp64f* pDst, int len, int flag);
KFPG_API KfpStatus kfpgDFTFwd_RToPerm_32f(const kfp32f* pSrc, kfp32f* pDst, int len, int flag);
KFPG_API KfpStatus kfpgDFTFwd_RToPerm_64f(const kfp64f* pSrc, kfp64f* pDst, int len, int flag);
KFPG_API KfpStatus kfpgDFTFwd_RToPack_32f(const kfp32f* pSrc, kfp32f* pDst, int len, int flag);
KFPG_API KfpStatus kfpgDFTFwd_RToPack_64f(const kfp64f* pSrc, kfp64f* pDst, int len, int flag);
KFPG_API KfpStatus kfpgDFTFwd_RToCCS_32f(const kfp32f* pSrc, kfp32f* pDst, int len, int flag);
KFPG_API KfpStatus kfpgDFTFwd_RToCCS_64f(const kfp64f* pSrc, kfp64f* pDst, int len, int flag);
KFPG_API KfpStatus kfpgDFTInv_PermToR_32f(const kfp32f* pSrc, kfp32f* pDst, int len, int flag);
KFPG_API KfpStatus kfpgDFTInv_PermToR_64f(const kfp64f* pSrc, kfp64f* pDst, int len, int flag);
KFPG_API KfpStatus kfpgDFTInv_PackToR_32f(const kfp32f* pSrc, kfp32f* pDst, int len, int flag);
KFPG_API KfpStatus kfpgDFTInv_PackToR_64f(const kfp64f* pSrc, kfp64f* pDst, int len, int flag);
KFPG_API KfpStatus kfpgDFTInv_CCSToR_32f(const kfp32f* pSrc, kfp32f* pDst, int len, int flag);
KFPG_API KfpStatus kfpgDFTInv_CCSToR_64f(const kfp64f* pSrc, kfp64f* pDst, int len, int flag);

/* ---- Walsh-Hadamard transform, orders 1..13 (N = 2^order) ---------------
 * y[k] = s * sum x[n] (-1)^popcount(k & n), natural (Hadamard) order.
 * pBuffer: work buffer of kfpgWHTGetBufferSize bytes, 16-byte aligned, for
 * orders 8..13 (ignored below); null makes the call allocate its own. */
#define KFPG_DECLARE_WHT(K) \
    KFPG_API KfpStatus kfpgWHT_##K##_32f(const kfp32f* pSrc, kfp32f* pDst, int flag, unsigned char* pBuffer); \
    KFPG_API KfpStatus kfpgWHT_##K##_64f(const kfp64f* pSrc, kfp64f* pDst, int flag, unsigned char* pBuffer);
KFPG_DECLARE_WHT(1) KFPG_DECLARE_WHT(2) KFPG_DECLARE_WHT(3) KFPG_DECLARE_WHT(4) KFPG_DECLARE_WHT(5)
KFPG_DECLARE_WHT(6) KFPG_DECLARE_WHT(7) KFPG_DECLARE_WHT(8) KFPG_DECLARE_WHT(9) KFPG_DECLARE_WHT(10)
KFPG_DECLARE_WHT(11) KFPG_DECLARE_WHT(12) KFPG_DECLARE_WHT(13)
#undef KFPG_DECLARE_WHT
/* Work-buffer bytes for an order (0 for orders 1..7); order outside 1..13: StatusSizeError. */
KFPG_API KfpStatus kfpgWHTGetBufferSize_32f(int order, int* pSize);
KFPG_API KfpStatus kfpgWHTGetBufferSize_64f(int order, int* pSize);
/* Generic entry by order; the order is checked first. */
KFPG_API KfpStatus kfpgWHT_32f(const kfp32f* pSrc, kfp32f* pDst, int order, int flag, unsigned char* pBuffer);
KFPG_API KfpStatus kfpgWHT_64f(const kfp64f* pSrc, kfp64f* pDst, int order, int flag, unsigned char* pBuffer);

/* ---- Planned DCT-IV -----------------------------------------------------
 * y[k] = sum x[n] cos(pi (2n+1)(2k+1) / (4N)), unscaled.
 * Accepted lengths: powers of two from 2, and the odd lengths 2^k + 1 from 33
 * (32f) or 9 (64f) upward, up to 2^26 (32f) or 2^25 (64f), whose blocks
 * still fit an int size; the odd lengths are computed by direct O(N^2)
 * evaluation and are slow. Usage: GetSize, then Init into a block of that
 * many bytes (any alignment) or InitAlloc, then DCT4 any number of times,
 * then Free (InitAlloc only). One plan of a length other than
 * 2..32 must not serve two transforms at once: it holds a work array. */
typedef struct DCT4Spec_32f DCT4Spec_32f;
typedef struct DCT4Spec_64f DCT4Spec_64f;
KFPG_API KfpStatus kfpgDCT4GetSize_32f(int len, int* pSize);
KFPG_API KfpStatus kfpgDCT4Init_32f(DCT4Spec_32f** ppSpec, int len, unsigned char* pMem);
KFPG_API KfpStatus kfpgDCT4InitAlloc_32f(DCT4Spec_32f** ppSpec, int len);
KFPG_API KfpStatus kfpgDCT4Free_32f(DCT4Spec_32f* pSpec);
KFPG_API KfpStatus kfpgDCT4_32f(const kfp32f* pSrc, kfp32f* pDst, const DCT4Spec_32f* pSpec);
KFPG_API KfpStatus kfpgDCT4GetSize_64f(int len, int* pSize);
KFPG_API KfpStatus kfpgDCT4Init_64f(DCT4Spec_64f** ppSpec, int len, unsigned char* pMem);
KFPG_API KfpStatus kfpgDCT4InitAlloc_64f(DCT4Spec_64f** ppSpec, int len);
KFPG_API KfpStatus kfpgDCT4Free_64f(DCT4Spec_64f* pSpec);
KFPG_API KfpStatus kfpgDCT4_64f(const kfp64f* pSrc, kfp64f* pDst, const DCT4Spec_64f* pSpec);

#ifdef __cplusplus
}
#endif

#endif /* KFPGEN_H */
