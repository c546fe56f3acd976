#include "dct4/arena.h"

#include <cstring>

namespace kfpg::dct4 {

namespace {
void setNext(Arena* arena, unsigned char* next) { std::memcpy(static_cast<void*>(arena), &next, sizeof next); }
}  // namespace

unsigned char* arenaNext(const Arena* arena) {
    unsigned char* next;
    std::memcpy(&next, static_cast<const void*>(arena), sizeof next);
    return next;
}

std::uint64_t kfpgAlignSize32Bytes(std::uint64_t bytes) { return (bytes + 31) & ~std::uint64_t{31}; }

void* kfpgArenaMalloc(Arena* arena, std::uint64_t bytes) {
    unsigned char* taken = arenaNext(arena);
    setNext(arena, taken + kfpgAlignSize32Bytes(bytes));
    return taken;
}

void kfpgArenaFree(Arena* arena, void* /*ptr*/, std::uint64_t bytes) {
    setNext(arena, arenaNext(arena) - kfpgAlignSize32Bytes(bytes));
}

Arena* arenaInBlock(unsigned char* block) {
    auto* arena = reinterpret_cast<Arena*>(block);
    const auto address = static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(block));
    setNext(arena, block + 64 - address % 32);
    return arena;
}

}  // namespace kfpg::dct4
