// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QVector>

/// The texts of a workbook, each held once, and their XML, made piece by piece.
///
/// Shared texts and texts in their cells cost the same, in time and in the size of the file, but
/// only in shared ones all readers decode the escapes.
class SharedStringsWriter
{
public:
    /// The place of \p text in the list, from 0; a new text goes to its end.
    int indexOf(const QString &text);

    /// Puts the next piece, of some texts, in place of what \p xml holds; false behind the last
    /// one. All texts have to be entered before.
    bool next(QByteArray *xml);

private:
    QHash<QString, int> m_indexes;
    QVector<QString> m_texts;
    qint64 m_uses = 0;
    int m_written = -1;
};
