// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "workbooks/patientsheet.h"

/// Adds the sheets "Convergence&Variability", "Covergence compare 1" to "VarAnova": for each family
/// of methods which of a patient's values are worse than the median, how far the methods agree on
/// that, and the flags of every two methods side by side. Both tables have a flag per method, by
/// method index; \p skipText is the offset as the labels show it.
void addMethodSheets(std::vector<CellSheet> &sheets, const QVector<PatientRecord> &patients,
                     const PatientTable &convergenceWorseTable,
                     const PatientTable &variabilityWorseTable, const QString &skipText);
