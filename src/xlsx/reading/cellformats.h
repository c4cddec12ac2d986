// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QVector>

#include "xlsx/reading/numberformats.h"
#include "xlsx/reading/xmlreader.h"

/// Which cell formats of a workbook are dates.
class CellFormats : public XmlReader
{
public:
    CellFormats();

    /// The kind of the cell format \p index. An index beyond the table has no format, nor has a
    /// number format that the workbook does not declare: both show a number as a number.
    NumberFormats::Kind kind(int index) const;

private:
    void enter(int node, const XmlAttributes &attributes) override;
    void addNumberFormat(const XmlAttributes &attributes);
    void addCellFormat(const XmlAttributes &attributes);

    QHash<int, NumberFormats::Kind> m_custom;
    QVector<int> m_formats;
    bool m_hasFormats = false;
};
