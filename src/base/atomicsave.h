// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include <QByteArray>
#include <QSaveFile>
#include <QString>

/// Writes a content into the device, which can be sought in and is empty; returns whether all of it
/// was taken. It may be asked twice, each time for the same bytes.
using ContentWriter = std::function<bool(QIODevice &device)>;

/// Writes \p length bytes, however few the device takes at a time; false if it takes no more.
bool writeAll(QIODevice &device, const char *data, qint64 length);

/// Replaces the file \p fileName by one that holds what \p write writes, or leaves it untouched and
/// returns false: nothing is ever half written, and no other file stays behind. What exists under
/// that name and is no regular file (a directory, a pipe, a device, a link in a loop) is left
/// alone; other links are followed.
///
/// Where the folder takes no new file beside one that can be written, that one is overwritten, with
/// a content that is ready in memory. Should that fail, the old content is put back.
bool saveAtomically(const QString &fileName, const ContentWriter &write);
bool saveAtomically(const QString &fileName, const QByteArray &content);

/// Opens \p file, which must not be open yet, and commits what \p write writes. When one step
/// fails, or the file takes no more bytes, nothing is committed and the result is false.
bool commitContent(QSaveFile &file, const ContentWriter &write);

/// Puts \p content in place of what \p file holds, which is open for reading and writing without a
/// buffer. When one step fails, the old content is put back and the result is false.
bool replaceContent(QFileDevice &file, const QByteArray &content);
