// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QVector>

#include "xlsx/reading/xmlreader.h"

/// The sheets of a workbook in its order, and what counts for all of them.
class SheetList : public XmlReader
{
public:
    struct Sheet {
        /// Identifier of the relationship that leads to the sheet's part; empty without one.
        QByteArray relationship;
        bool visible = true;
    };

    SheetList();

    const QVector<Sheet> &sheets() const { return m_sheets; }
    /// Whether days are counted from the year 1904 on instead of 1900.
    bool is1904() const { return m_is1904; }

private:
    void enter(int node, const XmlAttributes &attributes) override;
    void addSheet(const XmlAttributes &attributes);

    QVector<Sheet> m_sheets;
    bool m_is1904 = false;
    bool m_hasSheets = false;
};
