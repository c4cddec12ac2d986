// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/testgroups.h"

#include <utility>

#include <QTest>

#include "analysis/centers.h"
#include "analysis/convergence.h"
#include "analysis/variability.h"

namespace
{

PatientRecord patient(const QString &id, const QVector<double> &values, int ideal)
{
    PatientRecord record;
    record.id = id;
    record.values = values;
    record.idealKvadrant = ideal;
    return record;
}

QString letter(int index)
{
    return {QChar::fromLatin1(char('A' + index))};
}

} // namespace

TestGroup TestGroup::ofSize(int count)
{
    TestGroup group;
    for (int k = 0; k < count; ++k) {
        QVector<double> values;
        const int length = 2 + k * 7 % 19;
        for (int i = 0; i < length; ++i) {
            // Thirds, so that a value takes all digits of a double.
            values.append(40 + (k * 31 + i * 17 + i * i * k) % 97 / 3.0);
        }
        const int ideal = k % 5 == 0 ? PatientRecord::noIdealKvadrant : k % 5;
        group.patients.append(patient(QString("Patient %1").arg(k + 1), values, ideal));
    }
    group.analyse();
    return group;
}

TestGroup TestGroup::ofValues(const QVector<QVector<double>> &values)
{
    TestGroup group;
    for (int k = 0; k < values.size(); ++k) {
        group.patients.append(patient(letter(k), values.at(k), PatientRecord::noIdealKvadrant));
    }
    group.analyse();
    return group;
}

TestGroup TestGroup::ofScores(const QVector<QVector<double>> &convergence,
                              const QVector<QVector<double>> &variability)
{
    TestGroup group;
    for (int k = 0; k < convergence.size(); ++k) {
        group.patients.append(patient(letter(k), {1, 2}, PatientRecord::noIdealKvadrant));
        group.scores.append({letter(k), convergence.at(k), variability.at(k)});
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
