#pragma once

#include <QByteArray>
#include <QSaveFile>
#include <QString>

/// Replaces the file \p fileName by one that holds \p content, or leaves it untouched and returns
/// false: nothing is ever half written, and no other file stays behind. What exists under that name
/// and is no regular file (a directory, a pipe, a device, a link in a loop) is left alone; other
/// links are followed.
bool saveAtomically(const QString &fileName, const QByteArray &content);

/// Opens \p file, which must not be open yet, and commits \p content. When one step fails, or the
/// file takes no more bytes, nothing is committed and the result is false.
bool commitContent(QSaveFile &file, const QByteArray &content);
