// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include "xlsx/reading/workbooklimits.h"

/// What cells and texts may still take of WorkbookLimits::memory.
class MemoryBudget
{
public:
    explicit MemoryBudget(const WorkbookLimits &limits)
        : m_limits(limits), m_left(limits.memory) { }

    /// Takes the share of a cell, and of its row if it is the first there; false if there is not
    /// enough left.
    bool takeCell(bool newRow) { return take(m_limits.cellCost + (newRow ? m_limits.rowCost : 0)); }

    /// Takes the share of \p text; false if there is not enough left.
    bool takeText(const QString &text)
    {
        return take(m_limits.textCost + text.size() * static_cast<qint64>(sizeof(QChar)));
    }

private:
    bool take(qint64 bytes)
    {
        m_left -= bytes;
        return m_left >= 0;
    }

    WorkbookLimits m_limits;
    qint64 m_left;
};
