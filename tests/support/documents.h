// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

/// The documents of the project, for the tests that check them.
namespace Documents
{

/// Path of \p name in the source folder.
QString path(const QString &name);

/// Content of the file \p name of the source folder; empty if there is none.
QString read(const QString &name);

/// The same with each run of white space as one blank and without the marks of quoted lines, so
/// that a sentence is found however its lines break.
QString flat(const QString &name);

/// All documents, as names in the source folder.
QStringList all();

/// The text between \p left and \p right in \p text, on one line each, in order.
QStringList between(const QString &text, const QString &left, const QString &right);

/// The cells of the table rows of \p text, without white space at their ends.
QVector<QStringList> tableRows(const QString &text);

} // namespace Documents
