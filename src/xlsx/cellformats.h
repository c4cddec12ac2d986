// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QVector>

#include "xlsx/numberformats.h"
#include "xlsx/xmlreader.h"

/// Which cell formats of a workbook are dates.
class CellFormats : public XmlReader
{
public:
    CellFormats();

    /// Number of cell formats; at least one, since cells without a format have the first.
    int count() const { return qMax(1, m_formats.size()); }
    /// The kind of the cell format \p index, from 0 to count() - 1.
    NumberFormats::Kind kind(int index) const;

private:
    void enter(int node, const XmlAttributes &attributes) override;
    void addNumberFormat(const XmlAttributes &attributes);
    void addCellFormat(const XmlAttributes &attributes);

    QHash<int, NumberFormats::Kind> m_custom;
    QVector<int> m_formats;
    bool m_hasFormats = false;
};
