// The straight-line pieces the WHT kernels are built from. Each is a
// template over the order K (2^K points), the element type and the access
// to the caller's arrays; the work buffer is always accessed aligned.
#pragma once

namespace kfpg::wht {

// How a piece accesses the caller's pSrc or pDst: 16-byte aligned vector
// loads and stores, or unaligned ones.
enum class Access { Aligned, Unaligned };

// Elements per 16-byte vector.
template <class T>
constexpr long kLanes = 16 / sizeof(T);

// Whole transform of order K: reads all 2^K elements of src before it writes
// dst (which may equal src), every output multiplied by s.
template <int K, class T, Access A>
void lineWht(const T* src, T* dst, T s);

// Unscaled 2^K-point WHT of a contiguous row of src into the aligned row dst.
template <int K, class T, Access A>
void rowWht(const T* src, T* dst);

// 2^K-point WHT across rows for one vector of columns: element i is the
// vector at src + i * stride (aligned); the results times s are stored at
// dst + i * stride.
template <int K, class T, Access A>
void columnWht(const T* src, T* dst, long stride, T s);

// Unscaled 2^K-point WHT across rows for one vector of columns, aligned
// work buffer to aligned work buffer.
template <int K, class T>
void crossWht(const T* src, T* dst, long stride);

}  // namespace kfpg::wht
