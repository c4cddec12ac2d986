// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QVector>

#include "xlsx/reading/memorybudget.h"
#include "xlsx/reading/xmlcursor.h"

/// The texts that cells refer to by their index:
///
///     <sst count="3" uniqueCount="2">
///       <si><t>Patient</t></si>
///       <si><r><t>P</t></r><r><t>1</t></r></si>
///     </sst>
class SharedStrings
{
public:
    /// Takes the memory of the texts from \p budget.
    explicit SharedStrings(MemoryBudget *budget) : m_budget(budget) { }

    void read(XmlCursor *xml);

    const QVector<QString> &texts() const { return m_texts; }

private:
    MemoryBudget *m_budget;
    QVector<QString> m_texts;
};
