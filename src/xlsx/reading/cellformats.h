// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QVector>

#include "xlsx/reading/numberformats.h"
#include "xlsx/reading/xmlcursor.h"

/// Which cell formats of a workbook are dates:
///
///     <styleSheet>
///       <numFmts><numFmt numFmtId="164" formatCode="d.m.yyyy"/></numFmts>
///       <cellXfs>
///         <xf numFmtId="0"/>
///         <xf numFmtId="164"><alignment wrapText="1"/></xf>
///       </cellXfs>
///     </styleSheet>
class CellFormats
{
public:
    void read(XmlCursor *xml);

    /// The kind of the cell format \p index, or Missing if the workbook lacks it or the number
    /// format that it names. Without any formats 0 is that of numbers.
    NumberFormats::Kind kind(int index) const;

private:
    void readNumberFormat(XmlCursor *xml);
    void readCellFormats(XmlCursor *xml);
    void readCellFormat(XmlCursor *xml);
    void readAlternatives(XmlCursor *xml);

    QHash<int, NumberFormats::Kind> m_custom;
    QVector<int> m_formats;
};
