// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/testgroups.h"

#include <utility>

#include <QTest>

#include "analysis/centers.h"
#include "analysis/convergence.h"
#include "analysis/variability.h"

namespace
{

QString letter(int index)
{
    return {QChar::fromLatin1(char('A' + index))};
}

} // namespace

TestGroup TestGroup::ofSize(int count)
{
    TestGroup group;
    for (int patient = 0; patient < count; ++patient) {
        QVector<double> values;
        const int length = 2 + patient * 7 % 19;
        for (int i = 0; i < length; ++i) {
            // Thirds, so that a value takes all digits of a double.
            values.append(40 + (patient * 31 + i * 17 + i * i * patient) % 97 / 3.0);
        }
        const int ideal = patient % 5 == 0 ? PatientRecord::noIdealKvadrant : patient % 5;
        group.patients.append({QString("Patient %1").arg(patient + 1), values, ideal});
    }
    group.analyse();
    return group;
}

TestGroup TestGroup::ofValues(const QVector<QVector<double>> &values)
{
    TestGroup group;
    for (int patient = 0; patient < values.size(); ++patient) {
        group.patients.append(
            {letter(patient), values.at(patient), PatientRecord::noIdealKvadrant});
    }
    group.analyse();
    return group;
}

TestGroup TestGroup::ofScores(const QVector<QVector<double>> &convergence,
                              const QVector<QVector<double>> &variability)
{
    TestGroup group;
    for (int patient = 0; patient < convergence.size(); ++patient) {
        group.patients.append({letter(patient), {1, 2}, PatientRecord::noIdealKvadrant});
        group.scores.append({letter(patient), convergence.at(patient), variability.at(patient)});
    }
    group.center();
    return group;
}

void TestGroup::addSizes()
{
    QTest::addColumn<int>("patientCount");
    for (const int patientCount : {1, 2, 4, 40}) {
        QTest::addRow("%d patients", patientCount) << patientCount;
    }
}

void TestGroup::addOffsets(const QVector<QPair<const char *, const char *>> &offsets)
{
    QTest::addColumn<QByteArray>("skip");
    QTest::addColumn<QString>("text");
    for (const auto &[skip, text] : offsets) {
        QTest::newRow(skip) << QByteArray(skip) << QString(text);
    }
}

void TestGroup::analyse()
{
    scores.clear();
    for (const PatientRecord &record : std::as_const(patients)) {
        scores.append({record.id, convergenceValues(record), variabilityValues(record)});
    }
    center();
}

void TestGroup::center()
{
    averageCenter = {{}, convergenceAverages(scores), variabilityAverages(scores)};
    medianCenter = {{}, convergenceMedians(scores), variabilityMedians(scores)};
}
