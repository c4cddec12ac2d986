// SPDX-License-Identifier: GPL-3.0-or-later
#include "analysis/methodlabels.h"

#include <QtGlobal>

namespace
{

// The arrays take their size from their rows, so that a missing row is noticed below.
constexpr std::array convergenceRows = {
    Method{QT_TRANSLATE_NOOP("MainWindow", "Median difference"),
           QT_TRANSLATE_NOOP("SettingsDialog", "Median difference"),
           QT_TRANSLATE_NOOP("CPatientScore", "Median difference (x)"),
           QT_TRANSLATE_NOOP("ResultSubWindow", "Median difference"), "Median difference",
           "Median difference", "Median difference", false},
    Method{QT_TRANSLATE_NOOP("MainWindow", "Linear least squares"),
           QT_TRANSLATE_NOOP("SettingsDialog", "Linear least squares"),
           QT_TRANSLATE_NOOP("CPatientScore", "Linear least squares (x)"),
           QT_TRANSLATE_NOOP("ResultSubWindow", "Linear least squares fitting"),
           "Linear least squares", "Simple linear regression", "Simple linear regression", false},
    Method{QT_TRANSLATE_NOOP("MainWindow", "C*e^(k*x)"),
           QT_TRANSLATE_NOOP("SettingsDialog", "C*e^(k*x)"),
           QT_TRANSLATE_NOOP("CPatientScore", "C*e^(k*x) (x)"),
           QT_TRANSLATE_NOOP("ResultSubWindow", "C*e^(k*x)"), "C*e^(k*x)", "C*e^(k*x)", "C*e^(k*x)",
           false},
};

constexpr std::array variabilityRows = {
    Method{QT_TRANSLATE_NOOP("MainWindow", "Standard deviation"),
           QT_TRANSLATE_NOOP("SettingsDialog", "Standard deviation"),
           QT_TRANSLATE_NOOP("CPatientScore", "Standard deviation (y)"),
           QT_TRANSLATE_NOOP("ResultSubWindow", "Standard deviation"), "Standard deviation",
           "Standard deviation", "Standard Deviation", false},
    Method{QT_TRANSLATE_NOOP("MainWindow", "Difference standard deviation offset"),
           QT_TRANSLATE_NOOP("SettingsDialog", "Difference standard deviation offset"),
           QT_TRANSLATE_NOOP("CPatientScore", "Difference standard deviation offset (y)"),
           QT_TRANSLATE_NOOP("ResultSubWindow", "Difference standard deviation offset"),
           "Standard deviation difference offset", "Difference standard deviation offset ",
           "Difference standard Deviation + offset ", true},
    Method{QT_TRANSLATE_NOOP("MainWindow", "Interquartile range"),
           QT_TRANSLATE_NOOP("SettingsDialog", "Interquartile range"),
           QT_TRANSLATE_NOOP("CPatientScore", "Interquartile range (y)"),
           QT_TRANSLATE_NOOP("ResultSubWindow", "Interquartile range"), "Interquartile range",
           "Interquartile range", "Interquartile range", false},
};

// A row that ends too early leaves null pointers at its end.
template<size_t count>
constexpr bool isComplete(const std::array<Method, count> &rows)
{
    for (const Method &row : rows) {
        for (const char *label : {row.window, row.dialog, row.scoreTable, row.plot,
                                  row.dataWorkbook, row.analysisWorkbook, row.analysisPair}) {
            if (!label) {
                return false;
            }
        }
    }
    return count == methodCount;
}
static_assert(isComplete(convergenceRows), "a convergence method lacks its row or a label");
static_assert(isComplete(variabilityRows), "a variability method lacks its row or a label");

} // namespace

const Methods convergenceMethods = convergenceRows;
const Methods variabilityMethods = variabilityRows;
