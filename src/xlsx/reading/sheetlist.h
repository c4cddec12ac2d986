// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QVector>

#include "xlsx/reading/xmlcursor.h"

/// The sheets of a workbook in its order, and what counts for all of them:
///
///     <workbook xmlns:r="…/relationships">
///       <workbookPr date1904="0"/>
///       <sheets>
///         <sheet name="Data" sheetId="1" r:id="rId1"/>
///         <sheet name="Old" sheetId="2" state="hidden" r:id="rId2"/>
///       </sheets>
///     </workbook>
class SheetList
{
public:
    struct Sheet {
        /// Identifier of the relationship that leads to the sheet's part; empty without one.
        QByteArray relationship;
        bool visible = true;
    };

    void read(XmlCursor *xml);

    const QVector<Sheet> &sheets() const { return m_sheets; }
    /// Whether days are counted from the year 1904 on instead of 1900.
    bool is1904() const { return m_is1904; }

private:
    void readProperties(XmlCursor *xml);
    void readSheet(XmlCursor *xml);

    QVector<Sheet> m_sheets;
    bool m_is1904 = false;
};
