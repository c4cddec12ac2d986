// SPDX-License-Identifier: GPL-3.0-or-later
#include "workbooks/analysistexts.h"

#include "analysis/methodlabels.h"

namespace AnalysisTexts
{

namespace
{

QString withOffset(const Method &method, const char *label, const QString &skipText)
{
    return QLatin1String(label) + (method.labelHasOffset ? skipText : QString());
}

} // namespace

QString methodLabel(const Method &method, const QString &skipText)
{
    return withOffset(method, method.analysisWorkbook, skipText);
}

QStringList pairLabels(const QString &skipText)
{
    QStringList labels;
    for (const Method &convergence : convergenceMethods) {
        for (const Method &variability : variabilityMethods) {
            labels.append(withOffset(convergence, convergence.analysisPair, skipText)
                          + QLatin1String(" + ")
                          + withOffset(variability, variability.analysisPair, skipText));
        }
    }
    return labels;
}

} // namespace AnalysisTexts
