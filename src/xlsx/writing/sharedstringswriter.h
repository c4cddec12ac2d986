// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QVector>

/// The texts of a workbook, each held once, and their XML, made piece by piece:
///
///     <?xml version="1.0" encoding="UTF-8" standalone="yes"?>
///     <sst xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main"
///          count="3" uniqueCount="2">
///       <si><t>Patient ID</t></si>
///       <si><t xml:space="preserve"> two  words</t></si>
///     </sst>
///
/// It is one line. \c count tells how often cells use the texts; they do so by index.
/// Texts in their cells would cost the same time and the same bytes, but not all readers decode
/// the escapes there.
class SharedStringsWriter
{
public:
    /// Counts a use of \p text, new or not, and returns its index.
    int enter(const QString &text);

    /// The index, from 0, of \p text, which was entered.
    int indexOf(const QString &text) const { return m_indexes.value(text); }

    /// Bytes of all pieces together. All texts have to be entered first.
    qint64 size() const;

    /// Replaces what \p xml holds by the next piece, which has some of the texts; false after the
    /// last one. All texts have to be entered first.
    bool next(QByteArray *xml);

private:
    QByteArray head() const;

    QHash<QString, int> m_indexes;
    QVector<QString> m_texts;
    qint64 m_uses = 0;
    int m_written = -1;
};
