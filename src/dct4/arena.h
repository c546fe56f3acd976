// Bump arena inside a DCT-IV plan block. The arena pointer is the
// address of the block's first 8 bytes, which hold the next free address.
// Every request is rounded up to 32 bytes, so every object, table and work
// array starts on a 32-byte boundary. The arena is a stack: releasing is only
// correct in the reverse order of taking, and nothing is checked.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kfpg::dct4 {

// The first 8 bytes of the block; the block, and so the arena, may sit at
// any address, so the next free address is read and written with memcpy.
struct Arena {
    unsigned char* next;
};

unsigned char* arenaNext(const Arena* arena);

// (bytes + 31) with the low five bits cleared.
std::uint64_t kfpgAlignSize32Bytes(std::uint64_t bytes);
// Returns the next free address and advances it by the rounded byte count.
void* kfpgArenaMalloc(Arena* arena, std::uint64_t bytes);
// Moves the next free address back by the rounded byte count; ptr is unused.
void kfpgArenaFree(Arena* arena, void* ptr, std::uint64_t bytes);

// Sets up the arena at the start of a block: the first object goes on the
// 32-byte boundary 33..64 bytes after the block's start.
Arena* arenaInBlock(unsigned char* block);

}  // namespace kfpg::dct4
