// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QVector>

#include "xlsx/reading/xmlreader.h"

/// The list of what the parts of a package are, which it holds beside the relationships.
class ContentTypes : public XmlReader
{
public:
    ContentTypes();

    /// Name of the part that holds the list.
    static QByteArray part();

    /// The parts that are worksheets or formats by this list, without a slash in front.
    const QVector<QByteArray> &sheetsAndStyles() const { return m_sheetsAndStyles; }

private:
    void enter(int node, const XmlAttributes &attributes) override;

    QVector<QByteArray> m_sheetsAndStyles;
};
