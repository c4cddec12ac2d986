// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QFile>

/// Compound files, the form of old workbooks and of encrypted new ones.
namespace CompoundFile
{

/// The bytes at the start of each compound file.
QByteArray signature();

/// Whether the compound file \p file has a stream for an encrypted package, even if it is damaged
/// otherwise.
bool isEncryptedPackage(QFile *file);

} // namespace CompoundFile
