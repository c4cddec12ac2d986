// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "workbooks/patientsheet.h"

/// Adds the sheets "Median", "Compare 1" to "Compare 9" and "AnovaMedian": the kvadrants of each
/// patient under the nine pairs of methods, how far the pairs agree, and the kvadrants of every two
/// pairs side by side. \p kvadrantTable has a kvadrant per pair, by pair index, and \p labels are
/// those of the pairs.
void addPairSheets(std::vector<CellSheet> &sheets, const QVector<PatientRecord> &patients,
                   const PatientTable &kvadrantTable, const QStringList &labels);
