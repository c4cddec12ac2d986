// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QVector>

#include "xlsx/reading/memorybudget.h"
#include "xlsx/reading/textcollector.h"
#include "xlsx/reading/xmlreader.h"

/// The texts that cells refer to by their index.
class SharedStrings : public XmlReader
{
public:
    /// Takes the memory of the texts from \p budget.
    explicit SharedStrings(MemoryBudget *budget);

    const QVector<QString> &texts() const { return m_texts; }

private:
    void enter(int node, const XmlAttributes &attributes) override;
    void leave(int node) override;
    void text(int node, const char *data, int size) override;

    MemoryBudget *m_budget;
    QVector<QString> m_texts;
    TextCollector m_text;
};
