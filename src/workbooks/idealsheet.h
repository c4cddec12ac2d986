// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "workbooks/patientsheet.h"

/// The sheet "IdealCompare": the kvadrant that the user marked as ideal for each patient, for each
/// pair but the last 1 where its kvadrant is that one and 0 where it is not, and the share of all
/// nine pairs where it is. \p kvadrantTable and \p labels as for addPairSheets().
CellSheet idealSheet(const QVector<PatientRecord> &patients, const PatientTable &kvadrantTable,
                     const QStringList &labels);
