// What a WHT kernel path is made of. A path is a type with static member
// functions, one type per order, element type and access to the caller's
// arrays (aligned or unaligned 16-byte vector loads and stores); the work
// buffer is always accessed aligned.
//
// Orders 1..7:
//   static void line(const T* src, T* dst, T s);
//     the whole transform; reads every element of src before it writes dst
//     (which may equal src), each output multiplied by s.
// Orders 8..13 (rows of 2^row elements, see Passes):
//   static void row(const T* src, T* dst);
//     unscaled WHT of one row of src into the aligned row dst.
//   static void cross(const T* src, T* dst);            three-pass orders
//     unscaled 2^cross-point WHT across the rows of a super-block for one
//     vector of columns: element i at src + i * 2^row, aligned, to dst
//     (which is src: every element is read before the first store).
//   static void column(const T* src, T* dst, T s);
//     the final 2^last-point WHT for one vector of columns across the rows
//     (two-pass) or super-blocks (three-pass), read aligned from the buffer
//     and stored times s into dst at the same offsets.
#pragma once

namespace kfpg::wht {

// Elements per 16-byte vector.
template <class T>
constexpr long kLanes = 16 / static_cast<long>(sizeof(T));

}  // namespace kfpg::wht
