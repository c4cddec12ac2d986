// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "support/mainwindowtester.h"

/// The patients "a" to "e" of "five.xlsx".
QVector<PatientRecord> fivePatients();

/// A window with the five patients open, and the gestures of a user.
class GraphTester : public StartedTester
{
public:
    explicit GraphTester(const QByteArray &config = settingsText());

    void select(const QVector<int> &rows) const;
    void press(const char *buttonText) const;
    /// Types \p name into the next name dialog and accepts it; a null name leaves the offered one.
    /// Notes the offered one in offeredNames.
    void expectName(const QString &name = QString());
    void makeGraph(const QVector<int> &rows, const QString &name = QString());

    QStringList offeredNames;
};

/// Median or mean of five values.
double centerOfFive(QVector<double> values, bool median);
