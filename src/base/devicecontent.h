// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include <QFileDevice>

/// Writes a content into the device, which is empty and seekable; returns whether it took all of
/// it.
using ContentWriter = std::function<bool(QIODevice &device)>;

/// Writes \p length bytes, however few the device takes at a time; false if it takes no more.
bool writeAll(QIODevice &device, const char *data, qint64 length);

/// What a file holds after it was overwritten.
enum class Overwritten { New, Old, Mixture };

/// Puts all of \p content in place of what \p file holds. Both are open, \p file for reading and
/// writing without a buffer; \p sync brings it to the disk and returns whether that succeeded. If
/// a step fails, the old content is put back; a mixture is left only where that fails too.
Overwritten overwrite(QFileDevice &file, QIODevice &content, const std::function<bool()> &sync);
