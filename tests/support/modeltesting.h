// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>
#include <QTranslator>

#include "analysis/patientrecord.h"
#include "analysis/patientscorerecord.h"
#include "settings/cconfig.h"

enum Center { Average = 0, Median = 1 };

inline void configure(int convergence, int variance, Center center)
{
    CConfig::instance().saveConfig(convergence, variance, center, 3, 1);
}

/// The lists that the models refer to, at first without patients.
struct ModelLists {
    QVector<PatientRecord> patients;
    QVector<PatientScoreRecord> scores;
    PatientScoreRecord average = {{}, {10, 20, 30}, {40, 50, 60}};
    PatientScoreRecord median = {{}, {1, 2, 3}, {4, 5, 6}};

    void add(const QString &id, const QVector<double> &convergence,
             const QVector<double> &variability)
    {
        patients.append({id, {50, 60}, PatientRecord::noIdealKvadrant});
        scores.append({id, convergence, variability});
    }
    /// One patient, whose results are both centers.
    void addCenter()
    {
        average = median = {{}, {-2.5, 5.5, 0.001}, {7.4, 8.5, 3}};
        add("a", median.convergence, median.variability);
    }
};

/// Checks the size of \p model, also below an index: the models do not look at the parent.
inline void compareSize(const QAbstractItemModel &model, int rows, int columns)
{
    for (const QModelIndex &parent : {QModelIndex(), model.index(0, 0)}) {
        QCOMPARE(model.rowCount(parent), rows);
        QCOMPARE(model.columnCount(parent), columns);
    }
    QCOMPARE(model.QObject::parent(), nullptr);
}

/// Updates \p model, which has one patient. In the first methods the new convergence is below the
/// median and above the average, the new variability the other way round.
template<typename Model>
void compareUpdate(Model &model, const ModelLists &lists)
{
    qRegisterMetaType<Qt::Orientation>();
    const QSignalSpy data(&model, &QAbstractItemModel::dataChanged);
    const QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
    const QSignalSpy header(&model, &QAbstractItemModel::headerDataChanged);
    const QVector<PatientScoreRecord> scores = {{"a", {0.5, 8, 8}, {3.5, 8, 8}}};
    const PatientScoreRecord median = {{}, {1, 1, 1}, {3, 3, 3}};
    const PatientScoreRecord average = {{}, {0, 0, 0}, {4, 4, 4}};
    model.update(scores, median, average);
    QCOMPARE(lists.scores.at(0).convergence, scores.at(0).convergence);
    QCOMPARE(lists.median.variability, median.variability);
    QCOMPARE(lists.average.variability, average.variability);
    QCOMPARE(data.count() + reset.count() + header.count(), 0);
}

/// Updates \p model with the lists that it refers to already.
template<typename Model>
void compareUpdateWithOwnLists(Model &model, const ModelLists &lists)
{
    const auto size = lists.scores.size();
    model.update(lists.scores, lists.median, lists.average);
    QCOMPARE(lists.scores.size(), size);
    QCOMPARE(lists.median.convergence, QVector<double>({1, 2, 3}));
    QCOMPARE(lists.average.convergence, QVector<double>({10, 20, 30}));
}

/// Translates to "<context:source>".
class EchoTranslator : public QTranslator
{
public:
    QString translate(const char *context, const char *source, const char * /*hint*/,
                      int /*n*/) const override
    {
        return QString("<%1:%2>").arg(context, source);
    }
    bool isEmpty() const override { return false; }
};

/// A model that has no rows below an index, as QAbstractItemModelTester asks. The models do not
/// look at the parent.
template<typename Model>
class ChildlessModel : public Model
{
public:
    using Model::Model;
    int rowCount(const QModelIndex &parent) const override
    {
        return parent.isValid() ? 0 : Model::rowCount(parent);
    }
};

/// Runs QAbstractItemModelTester on \p model, which refers to \p lists.
template<typename Model>
void runModelTester(Model &&model, const ModelLists &lists)
{
    const QAbstractItemModelTester tester(&model,
                                          QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.update(lists.scores, lists.median, lists.average);
    Q_EMIT model.layoutAboutToBeChanged();
    Q_EMIT model.layoutChanged();
}
