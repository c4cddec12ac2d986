// SPDX-License-Identifier: GPL-3.0-or-later
#include "workbooks/analysisworkbook.h"

#include "analysis/kvadrants.h"
#include "settings/cconfig.h"
#include "workbooks/analysistexts.h"
#include "workbooks/idealsheet.h"
#include "workbooks/methodsheets.h"
#include "workbooks/pairsheets.h"
#include "workbooks/workbookorigin.h"
#include "xlsx/writing/workbookwriter.h"

namespace
{

/// A row per patient with the numbers that \p numbersOf gives for the patient's scores.
template<typename NumbersOf>
PatientTable tableOf(const QVector<PatientScoreRecord> &scores, const NumbersOf &numbersOf)
{
    PatientTable table;
    table.reserve(scores.size());
    for (const PatientScoreRecord &score : scores) {
        const auto numbers = numbersOf(score);
        table.append(QVector<int>(numbers.begin(), numbers.end()));
    }
    return table;
}

} // namespace

std::vector<CellSheet> analysisSheets(const QVector<PatientRecord> &patients,
                                      const QVector<PatientScoreRecord> &scores,
                                      const PatientScoreRecord &medianCenter)
{
    const auto worseTable = [&](ScoreList list) {
        return tableOf(scores, [&](const PatientScoreRecord &score) {
            return worseFlags(score, medianCenter, list);
        });
    };
    const PatientTable kvadrantTable = tableOf(scores, [&](const PatientScoreRecord &score) {
        return pairKvadrants(score, medianCenter);
    });
    const QString skipText = QString::number(CConfig::instance().skip());
    const QStringList pairLabels = AnalysisTexts::pairLabels(skipText);

    std::vector<CellSheet> sheets;
    addPairSheets(sheets, patients, kvadrantTable, pairLabels);
    addMethodSheets(sheets, patients, worseTable(&PatientScoreRecord::convergence),
                    worseTable(&PatientScoreRecord::variability), skipText);
    sheets.push_back(idealSheet(patients, kvadrantTable, pairLabels));
    return sheets;
}

void writeAnalysisWorkbook(const QString &fileName, const QVector<PatientRecord> &patients,
                           const QVector<PatientScoreRecord> &scores,
                           const PatientScoreRecord & /*averageCenter*/,
                           const PatientScoreRecord &medianCenter)
{
    WorkbookWriter workbook;
    for (const CellSheet &sheet : analysisSheets(patients, scores, medianCenter)) {
        workbook.addSheet(sheet);
    }
    nameOrigin(workbook);
    workbook.save(fileName);
}
