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
    /// Counts a use of \p text, new or not, and returns its index.
    int enter(const QString &text);

    /// The index of \p text, which was entered, from 0.
    int indexOf(const QString &text) const { return m_indexes.value(text); }

    /// Bytes of all pieces together. All texts have to be entered before.
    qint64 size() const;

    /// Puts the next piece, of some texts, in place of what \p xml holds; false behind the last
    /// one. All texts have to be entered before.
    bool next(QByteArray *xml);

private:
    QByteArray head() const;

    QHash<QString, int> m_indexes;
    QVector<QString> m_texts;
    qint64 m_uses = 0;
    int m_written = -1;
};
