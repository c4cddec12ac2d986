// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>

struct Method;

/// Texts of several sheets of the analysis workbook. None is ever translated.
namespace AnalysisTexts
{

inline const QString patientId = QStringLiteral("Patient ID");
inline const QString reference = QStringLiteral("Reference: ");
inline const QString share = QStringLiteral("% same as reference");

// Of the notes.
inline constexpr const char *information = "Information";
inline constexpr const char *patientColumn = "First column: Patient ID";
inline constexpr const char *referenceColumn = "Second column: Reference value";
inline constexpr const char *sameOrDifferent = "1 - same, 0 - different";

/// What the sheets of single methods call \p method, with \p skipText, the offset, where it
/// belongs.
QString methodLabel(const Method &method, const QString &skipText);

/// What all sheets call the pairs of methods, by pair index; \p skipText as above.
QStringList pairLabels(const QString &skipText);

} // namespace AnalysisTexts
