#pragma once

#include <QVector>

#include "patientrecord.h"
#include "patientscorerecord.h"

/// The results of every patient by all six methods, in patient order.
QVector<PatientScoreRecord> scoresOf(const QVector<PatientRecord> &patients);

/// Positions of the patients that have fewer than fewestValues values.
QVector<int> patientsWithTooFewValues(const QVector<PatientRecord> &patients);
