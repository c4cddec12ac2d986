// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>

#include "analysis/patientscorerecord.h"

/// One method, and its label in each place.
///
/// Required as is: each place has its own wording, and readers of the saved workbooks rely on it.
struct Method {
    /// The value label of the window; source text in the context MainWindow.
    const char *window;
    /// The item of the settings dialog; source text in the context SettingsDialog.
    const char *dialog;
    /// The header of the score table, with the axis of the result plot in brackets; source text in
    /// the context CPatientScore.
    const char *scoreTable;
    /// The line at the bottom of the result plot; source text in the context ResultSubWindow.
    const char *plot;
    /// The label of the data workbook, never translated.
    const char *dataWorkbook;
    /// The label on the sheets of single methods of the analysis workbook, never translated.
    const char *analysisWorkbook;
    /// The half of a pair's label in the analysis workbook, never translated.
    const char *analysisPair;
    /// Whether the offset of the settings goes into the labels of both workbooks.
    bool labelHasOffset;
};

/// The methods by their index: ConvergenceMethod, VariabilityMethod.
using Methods = std::array<Method, methodCount>;
extern const Methods convergenceMethods;
extern const Methods variabilityMethods;
