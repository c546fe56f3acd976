// EnvList: singly linked list of object pointers, with nodes taken from the
// arena of the list's head node. The head always exists; an empty list is a
// head whose item is null.
#pragma once

#include "dct4/arena.h"

namespace kfpg::dct4 {

// Layout shared by every environment and index-function object.
struct EnvHeader {
    void (*del)(void* self);  // the kind's release operation
    std::int32_t size;        // bytes taken from the arena for the object
    void* op;                 // plan (environments) or at (index functions)
    Arena* arena;
};

struct EnvList {
    void* item;
    EnvList* next;
    Arena* arena;
};

constexpr int kEnvListNodeBytes = 24;

EnvList* EnvList___init__(EnvList* node, Arena* arena);
void* EnvList_add(EnvList* list, void* item);
void* EnvList_get(const EnvList* list, int index);
int EnvList_add_mem(int count);
void EnvList_freeChildren(EnvList* list);
void EnvList___del__(EnvList* list);

// Takes a head node from the arena and initialises it.
EnvList* newEnvList(Arena* arena);
// EnvList___del__ and then gives the head node back.
void releaseEnvList(EnvList* list, Arena* arena);

}  // namespace kfpg::dct4
