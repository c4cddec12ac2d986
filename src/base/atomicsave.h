// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include "base/devicecontent.h"

/// Replaces the file \p fileName by one that holds what \p write writes, on the disk, or leaves it
/// as it was and returns false; no other file stays behind. What exists under that name and is no
/// regular file (a directory, a pipe, a device, a link in a loop) is left alone, and so is a file
/// that cannot be written; other links are followed.
///
/// The new content goes into a new file, which then takes the name of the old one. Where that would
/// change the owner, the group, the permissions, the access list or the attributes, or part the
/// names of one file, and where the folder refuses it, the old file is overwritten instead. Should
/// that fail, the old content is put back. Only a kill meanwhile, or a disk that takes no writes
/// any more, leaves a mixture; then the new file stays beside it, whole, as "glymark-<digits>.tmp",
/// unless the folder refuses that too.
///
/// Where the system offers no comparison, the new file takes the old one's permissions only.
bool saveAtomically(const QString &fileName, const ContentWriter &write);
bool saveAtomically(const QString &fileName, const QByteArray &content);
