#include "dct4/arena.h"

namespace kfpg::dct4 {

std::uint64_t kfpgAlignSize32Bytes(std::uint64_t bytes) { return (bytes + 31) & ~std::uint64_t{31}; }

void* kfpgArenaMalloc(Arena* arena, std::uint64_t bytes) {
    unsigned char* taken = arena->next;
    arena->next += kfpgAlignSize32Bytes(bytes);
    return taken;
}

void kfpgArenaFree(Arena* arena, void* /*ptr*/, std::uint64_t bytes) { arena->next -= kfpgAlignSize32Bytes(bytes); }

Arena* arenaInBlock(unsigned char* block) {
    auto* arena = reinterpret_cast<Arena*>(block);
    const auto address = static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(block));
    arena->next = block + 64 - address % 32;
    return arena;
}

}  // namespace kfpg::dct4
