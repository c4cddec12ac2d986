// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// Files as the tests of saving make them and look at them.
namespace SavedFiles
{

void write(const QString &name, const QByteArray &content);

/// What the file holds; "cannot be read" if it cannot.
QByteArray contentOf(const QString &name);

/// Everything in the folder, hidden files and links included.
QStringList namesIn(const QString &folder);

/// Some hundred thousand bytes that say where they belong.
QByteArray longContent();

} // namespace SavedFiles
