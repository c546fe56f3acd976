// Sizes and pass structure of the Walsh-Hadamard kernels, shared by the
// kernels, the buffer-size query and the generic entry.
#pragma once

namespace kfpg::wht {

constexpr int kMinOrder = 1;
constexpr int kMaxOrder = 13;
// Orders up to this one are straight-line code without a work buffer.
constexpr int kMaxLineOrder = 7;

// How a blocked order (8..13) is split, as base-2 logarithms: rows of
// 2^row contiguous elements get their own WHT; a three-pass order then
// combines 2^cross rows into a super-block (cross == 0: two passes); the
// final pass is a 2^last-point WHT across the rows or super-blocks.
struct Passes {
    int row;
    int cross;
    int last;
};

// The split per order, chosen so that a row fits the registers (with some
// spilling for the longest) and a column group of 2^last vectors stays small.
template <class T>
constexpr Passes passesFor(int order) {
    constexpr Passes single[] = {{5, 0, 3}, {6, 0, 3}, {6, 0, 4}, {6, 0, 5}, {6, 3, 3}, {6, 3, 4}};
    constexpr Passes dual[] = {{5, 0, 3}, {5, 0, 4}, {7, 0, 3}, {5, 3, 3}, {5, 3, 4}, {7, 3, 3}};
    return sizeof(T) == 4 ? single[order - 8] : dual[order - 8];
}

// Work-buffer bytes of an order: the N intermediate elements, and for a
// three-pass order one super-block of room after them, into which the
// intermediate array moves when pDst would share its cache sets (see
// wht_blocked.h); 0 below order 8.
template <class T>
constexpr int bufferBytes(int order) {
    if (order <= kMaxLineOrder) return 0;
    const Passes p = passesFor<T>(order);
    const int room = p.cross ? 1 << (p.row + p.cross) : 0;
    return ((1 << order) + room) * static_cast<int>(sizeof(T));
}

static_assert(bufferBytes<float>(8) == 0x400 && bufferBytes<float>(11) == 0x2000);
static_assert(bufferBytes<float>(12) == 0x4800 && bufferBytes<float>(13) == 0x8800);
static_assert(bufferBytes<double>(10) == 0x2000 && bufferBytes<double>(11) == 0x4800);
static_assert(bufferBytes<double>(12) == 0x8800 && bufferBytes<double>(13) == 0x12000);

}  // namespace kfpg::wht
