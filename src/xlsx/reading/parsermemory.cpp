// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/parsermemory.h"

#include <cstdlib>
#include <cstring>

namespace
{

// Before each block stands its size, padded so that the block stays aligned.
constexpr std::size_t headSize = alignof(std::max_align_t);

qint64 sizeOf(const char *head)
{
    qint64 size = 0;
    if (head != nullptr) {
        std::memcpy(&size, head, sizeof size);
    }
    return size;
}

char *headOf(void *block)
{
    return block == nullptr ? nullptr : static_cast<char *>(block) - headSize;
}

} // namespace

thread_local qint64 ParserMemory::s_limit = 0;
thread_local qint64 ParserMemory::s_used = 0;

void *ParserMemory::reallocate(void *block, std::size_t size)
{
    char *const head = headOf(block);
    const qint64 before = sizeOf(head);
    const auto after = static_cast<qint64>(size);
    if (s_used - before + after > s_limit) {
        return nullptr;
    }
    auto *const moved = static_cast<char *>(std::realloc(head, size + headSize));
    if (moved == nullptr) {
        return nullptr;
    }
    std::memcpy(moved, &after, sizeof after);
    s_used += after - before;
    return moved + headSize;
}

void ParserMemory::free(void *block)
{
    char *const head = headOf(block);
    s_used -= sizeOf(head);
    std::free(head);
}
