#include "dct4/env_list.h"

namespace kfpg::dct4 {

EnvList* EnvList___init__(EnvList* node, Arena* arena) {
    node->item = nullptr;
    node->next = nullptr;
    node->arena = arena;
    return node;
}

void* EnvList_add(EnvList* list, void* item) {
    EnvList* last = list;
    while (last->next) last = last->next;
    if (!last->item) {
        last->item = item;
        return item;
    }
    auto* node = static_cast<EnvList*>(kfpgArenaMalloc(list->arena, kEnvListNodeBytes));
    EnvList___init__(node, list->arena);
    last->next = node;
    node->item = item;
    return item;
}

void* EnvList_get(const EnvList* list, int index) {
    if (index < 0) return nullptr;
    for (; list && index > 0; --index) list = list->next;
    return list ? list->item : nullptr;
}

int EnvList_add_mem(int count) { return count * static_cast<int>(kfpgAlignSize32Bytes(kEnvListNodeBytes)); }

void EnvList_freeChildren(EnvList* list) {
    if (!list) return;
    for (EnvList* node = list; node; node = node->next) {
        auto* item = static_cast<EnvHeader*>(node->item);
        if (!item) continue;
        item->del(item);
        kfpgArenaFree(list->arena, item, static_cast<std::uint64_t>(item->size));
    }
}

void EnvList___del__(EnvList* list) {
    // Nodes were taken in list order, so give them back from the tail.
    int extra = 0;
    for (EnvList* node = list->next; node; node = node->next) ++extra;
    for (int i = 0; i < extra; ++i) kfpgArenaFree(list->arena, nullptr, kEnvListNodeBytes);
    list->next = nullptr;
}

EnvList* newEnvList(Arena* arena) {
    return EnvList___init__(static_cast<EnvList*>(kfpgArenaMalloc(arena, kEnvListNodeBytes)), arena);
}

void releaseEnvList(EnvList* list, Arena* arena) {
    EnvList___del__(list);
    kfpgArenaFree(arena, list, kEnvListNodeBytes);
}

}  // namespace kfpg::dct4
