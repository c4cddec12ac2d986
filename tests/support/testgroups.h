// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPair>
#include <QString>
#include <QVector>

#include "analysis/patientrecord.h"
#include "analysis/patientscorerecord.h"

/// Patients, with everything that goes into the workbooks.
struct TestGroup {
    QVector<PatientRecord> patients;
    QVector<PatientScoreRecord> scores;
    PatientScoreRecord averageCenter;
    PatientScoreRecord medianCenter;

    /// \p count patients with 2 to 20 values each, with all marks among them, and their results.
    static TestGroup ofSize(int count);
    /// The patients with these values, unmarked and named "A", "B" and so on, and their results.
    static TestGroup ofValues(const QVector<QVector<double>> &values);
    /// Patients named the same way, with these results.
    static TestGroup ofScores(const QVector<QVector<double>> &convergence,
                              const QVector<QVector<double>> &variability);

    /// Test data: the rows of "patientCount" for groups of one, two, some and many patients.
    static void addSizes();
    /// Test data: offsets as written in the settings file ("skip"), and what a workbook makes of
    /// them ("text").
    static void addOffsets(const QVector<QPair<const char *, const char *>> &offsets);

    /// Computes the results from the values, with the settings as they are.
    void analyse();
    /// Computes the centers from the results.
    void center();
};
