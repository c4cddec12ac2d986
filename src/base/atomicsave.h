// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

#include "base/devicecontent.h"

/// Replaces the file \p fileName by one that holds what \p write writes, on the disk, or leaves it
/// as it was and returns false; no other file is left. Whatever has that name and is not a regular
/// file (a directory, a pipe, a device, a link in a loop) is left alone, and so is a file that
/// cannot be written; other links are followed.
///
/// The new content goes into a new file, which then takes the name of the old one. If that would
/// change the owner, the group, the permissions, the access list or the attributes, or separate the
/// names of one file, or if the folder refuses it, the old file is overwritten instead. If that
/// fails, the old content is put back. Only a kill meanwhile, or a disk that takes no more writes,
/// leaves a mixture; then the new file stays beside it, whole, as "glymark-<digits>.tmp", unless
/// the folder refuses that too.
///
/// If the system offers no comparison, the new file takes only the old one's permissions.
bool saveAtomically(const QString &fileName, const ContentWriter &write);
bool saveAtomically(const QString &fileName, const QByteArray &content);
