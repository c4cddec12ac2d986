// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractTableModel>
#include <QVector>

#include "analysis/patientrecord.h"
#include "analysis/patientscorerecord.h"

/// The patient table: one row per patient, with identifier and mark.
///
/// The mark ("B/B", "B/W", "W/B", "W/W": better or worse, convergence first) is computed on every
/// read, for the methods and the center that the settings name at that moment. The model refers to
/// lists that its owner keeps, and does not announce when they change.
class CPatientsModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    /// All arguments must outlive the model; \p patientList and \p scoreList hold the same patients
    /// in the same order.
    CPatientsModel(QVector<PatientRecord> &patientList, QVector<PatientScoreRecord> &scoreList,
                   PatientScoreRecord &average, PatientScoreRecord &median);

    int rowCount(const QModelIndex &parent = {}) const override;
    /// Always 2: identifier and mark.
    int columnCount(const QModelIndex &parent = {}) const override;
    /// Display role only. Every column after the first shows the mark.
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    /// Display role of the horizontal header only: the rows have neither labels nor numbers.
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    /// Assigns to the objects referred to. Emits nothing: a view shows it on its next repaint.
    void update(const QVector<PatientScoreRecord> &scoreList, const PatientScoreRecord &median,
                const PatientScoreRecord &average);

    /// The lists referred to, one entry per row.
    QVector<PatientRecord> &patients;
    QVector<PatientScoreRecord> &scores;

private:
    QString markText(const PatientScoreRecord &score) const;

    PatientScoreRecord &averageCenter;
    PatientScoreRecord &medianCenter;
};
