// SPDX-License-Identifier: GPL-3.0-or-later
#include "workbooks/idealsheet.h"

#include "analysis/kvadrants.h"
#include "workbooks/analysistexts.h"

CellSheet idealSheet(const QVector<PatientRecord> &patients, const PatientTable &kvadrantTable,
                     const QStringList &labels)
{
    // Required as is: the share takes the place of the last pair, but still counts it.
    constexpr int lastPair = pairCount - 1;
    const auto patientCells = [&patients, kvadrantTable](int patient, RowCells &cells) {
        const int ideal = patients.at(patient).idealKvadrant;
        int column = 1;
        cells.text(column++, patients.at(patient).id);
        cells.number(column++, ideal);
        int hitCount = 0;
        for (int pair = 0; pair < pairCount; ++pair) {
            // noIdealKvadrant is no pair's kvadrant.
            const int hit = kvadrantTable.at(patient).at(pair) == ideal ? 1 : 0;
            hitCount += hit;
            if (pair != lastPair) {
                cells.number(column++, hit);
            }
        }
        cells.number(column, double(hitCount) / pairCount);
    };
    const Headings headings = QStringList(AnalysisTexts::patientId)
        << QStringLiteral("Ideal kvadrant") << labels.mid(0, lastPair) << AnalysisTexts::share;
    return patientSheet(QStringLiteral("IdealCompare"), {headings}, int(patients.size()),
                        patientCells);
}
