// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QFile>

/// Compound files, in which old workbooks are kept, and encrypted new ones.
namespace CompoundFile
{

/// The bytes at the start of each compound file.
QByteArray signature();

/// Whether the compound file \p file has a stream for an encrypted package, however it is damaged
/// otherwise.
bool isEncryptedPackage(QFile *file);

} // namespace CompoundFile
