// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractTableModel>
#include <QVector>

#include "analysis/patientscorerecord.h"

/// The score table: one row per method, one column per patient, each cell coloured by the side of
/// the center on which its value lies.
///
/// Every row is compared with the center of its own method. The only setting that counts is the
/// choice of center, read on every call. The model refers to lists that its owner keeps, and does
/// not announce when they change.
class CPatientScore : public QAbstractTableModel
{
    Q_OBJECT

public:
    /// All arguments must outlive the model.
    CPatientScore(PatientScoreRecord &average, QVector<PatientScoreRecord> &scoreList,
                  PatientScoreRecord &median);

    /// Always 6: the convergence methods, then the variability methods.
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    /// Display role: the value with six significant digits. Background role: red above the center
    /// (worse), green below it, blue on it or if either is NaN.
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    /// Display role only: identifiers across, methods down.
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    /// Assigns to the objects referred to. Emits nothing: a view shows it on its next repaint.
    void update(const QVector<PatientScoreRecord> &scoreList, const PatientScoreRecord &median,
                const PatientScoreRecord &average);

private:
    PatientScoreRecord &averageCenter;
    QVector<PatientScoreRecord> &scores;
    PatientScoreRecord &medianCenter;
};
