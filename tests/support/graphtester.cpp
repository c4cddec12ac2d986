// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/graphtester.h"

#include <algorithm>
#include <numeric>

#include <QInputDialog>
#include <QPushButton>
#include <QTest>

QVector<PatientRecord> fivePatients()
{
    return {{"a", {50, 60, 55, 70, 62, 61, 48}, PatientRecord::noIdealKvadrant},
            {"b", {70, 68, 65, 66, 60, 58, 55}, PatientRecord::noIdealKvadrant},
            {"c", {48, 52, 50, 55, 53, 58, 57, 60}, PatientRecord::noIdealKvadrant},
            {"d", {90, 70, 60, 55, 50, 50}, PatientRecord::noIdealKvadrant},
            {"e", {61, 60.5, 61.5, 59, 60, 64, 63}, PatientRecord::noIdealKvadrant}};
}

GraphTester::GraphTester(const QByteArray &config) : StartedTester(config)
{
    QVector<TestWorkbooks::Row> rows;
    for (const PatientRecord &patient : fivePatients()) {
        TestWorkbooks::Row row{patient.id};
        for (const double value : patient.values) {
            row << value;
        }
        rows << row;
    }
    openPatients("five.xlsx", rows);
}

void GraphTester::select(const QVector<int> &rows) const
{
    patientTable()->clearSelection();
    for (const int row : rows) {
        patientTable()->selectionModel()->select(patientTable()->model()->index(row, 0),
                                                 QItemSelectionModel::Select
                                                     | QItemSelectionModel::Rows);
    }
}

void GraphTester::press(const char *buttonText) const
{
    QTest::mouseClick(button(buttonText), Qt::LeftButton);
}

void GraphTester::expectName(const QString &name)
{
    answers.expect<QInputDialog>([this, name](QInputDialog &dialog) {
        offeredNames << dialog.textValue();
        if (!name.isNull()) {
            dialog.setTextValue(name);
        }
        dialog.accept();
    });
}

void GraphTester::makeGraph(const QVector<int> &rows, const QString &name)
{
    select(rows);
    expectName(name);
    press("Show graph");
}

double centerOfFive(QVector<double> values, bool median)
{
    if (values.size() != 5) {
        qFatal("no five values");
    }
    std::sort(values.begin(), values.end());
    return median ? values.at(2) : std::accumulate(values.cbegin(), values.cend(), 0.0) / 5;
}
