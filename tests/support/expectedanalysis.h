// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include "support/expectedsheets.h"
#include "support/testgroups.h"

/// What the analysis workbook has to hold.
namespace ExpectedAnalysis
{

/// The workbook of \p group; \p skipText is the offset as the labels show it.
ExpectedSheets::Book book(const TestGroup &group, const QString &skipText);
/// Kvadrant of the patient with the index \p patient under the pair of methods with the index
/// \p pair, both from 0; 0 for a patient that no rule catches.
int kvadrant(const TestGroup &group, int patient, int pair);
/// What the workbook calls a pair of methods.
QString pairLabel(int pair, const QString &skipText);

} // namespace ExpectedAnalysis
