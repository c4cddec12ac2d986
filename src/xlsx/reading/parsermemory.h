// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>

#include <QtGlobal>

/// The memory of XML parsers, which is bounded. The functions are those that a parser calls; they
/// know no object, so that the bytes in use and their limit belong to a thread.
class ParserMemory
{
public:
    /// From now on parsers of this thread get at most \p bytes together.
    static void limitTo(qint64 bytes) { s_limit = bytes; }

    /// A block of \p size bytes; null beyond the limit.
    static void *allocate(std::size_t size) { return reallocate(nullptr, size); }
    /// The block \p block, or a new one for null, with \p size bytes from now on. Null beyond the
    /// limit, and \p block stays as it is.
    static void *reallocate(void *block, std::size_t size);
    static void free(void *block);

private:
    static thread_local qint64 s_limit;
    static thread_local qint64 s_used;
};
