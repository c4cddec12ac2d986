// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "workbooks/patientsheet.h"

/// The sheet "IdealCompare": for each patient the kvadrant that the user marked as ideal; for each
/// pair except the last 1 if it gives that kvadrant and 0 if not; and the share of all nine pairs
/// that give it. \p kvadrantTable and \p labels as for addPairSheets().
CellSheet idealSheet(const QVector<PatientRecord> &patients, const PatientTable &kvadrantTable,
                     const QStringList &labels);
