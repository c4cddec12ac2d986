// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/parsermemory.h"

#include <cstdlib>

namespace
{

// Precedes each block, padded so that the block stays aligned.
struct alignas(std::max_align_t) Head {
    qint64 size;
};

Head *headOf(void *block)
{
    return block == nullptr ? nullptr : static_cast<Head *>(block) - 1;
}

} // namespace

thread_local qint64 ParserMemory::s_limit = 0;
thread_local qint64 ParserMemory::s_used = 0;

void *ParserMemory::reallocate(void *block, std::size_t size)
{
    Head *const head = headOf(block);
    const qint64 growth = static_cast<qint64>(size) - (head == nullptr ? 0 : head->size);
    auto *const moved = s_used + growth > s_limit
        ? nullptr
        : static_cast<Head *>(std::realloc(head, sizeof(Head) + size));
    if (moved == nullptr) {
        return nullptr;
    }
    moved->size = static_cast<qint64>(size);
    s_used += growth;
    return moved + 1;
}

void ParserMemory::free(void *block)
{
    if (Head *const head = headOf(block); head != nullptr) {
        s_used -= head->size;
        std::free(head);
    }
}
