// SPDX-License-Identifier: GPL-3.0-or-later
#include <cmath>

#include <QComboBox>
#include <QPainter>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>

#include "analysis/patientanalysis.h"
#include "graphs/resultsubwindow.h"
#include "settings/cconfig.h"
#include "settingsdialog.h"
#include "support/graphtester.h"
#include "support/recordingpaintdevice.h"

namespace
{

/// Sets the widgets of the next settings dialog and presses "Ok".
void expectSettings(GraphTester &tester, int convergence, int variance, bool median, int offset)
{
    tester.answers.expect<SettingsDialog>([=](SettingsDialog &dialog) {
        const auto combo = [&dialog](const char *name) {
            return dialog.findChild<QComboBox *>(name);
        };
        combo("convergenceCombo")->setCurrentIndex(convergence);
        combo("varianceCombo")->setCurrentIndex(variance);
        dialog.findChild<QAbstractButton *>(median ? "medianCheck" : "averageCheck")->click();
        dialog.findChild<QSpinBox *>("offsetSpin")->setValue(offset);
        QTest::mouseClick(dialog.findChild<QPushButton *>("okButton"), Qt::LeftButton);
    });
}

QStringList rowColors(const GraphTester &tester, int row)
{
    QStringList colors;
    for (int column = 0; column < 5; ++column) {
        const QModelIndex cell = tester.scoreModel()->index(row, column);
        colors << cell.data(Qt::BackgroundRole).value<QColor>().name();
    }
    return colors;
}

QStringList allColors(const GraphTester &tester)
{
    QStringList colors;
    for (int row = 0; row < 6; ++row) {
        colors << rowColors(tester, row);
    }
    return colors;
}

/// Green below the center of the five values, red above it, blue on it.
QStringList expectedColors(const QVector<double> &values, bool median)
{
    const double center = centerOfFive(values, median);
    QStringList colors;
    for (const double value : values) {
        colors << (value < center ? "#aad083" : value > center ? "#e79292" : "#647b98");
    }
    return colors;
}

/// The results of the five patients by one method, 0 to 5.
QVector<double> resultsOfFive(int method)
{
    QVector<double> results;
    for (const PatientScoreRecord &score : scoresOf(fivePatients())) {
        results << (method < 3 ? score.convergence : score.variability).at(method % 3);
    }
    return results;
}

/// The population deviation of all steps of each of the five patients.
QVector<double> stepDeviationsOfFive()
{
    QVector<double> deviations;
    for (const PatientRecord &patient : fivePatients()) {
        const QVector<double> &values = patient.values;
        const auto count = double(values.size() - 1);
        const double mean = (values.first() - values.last()) / count;
        double squares = 0;
        for (int step = 0; step < count; ++step) {
            const double difference = values.at(step) - values.at(step + 1) - mean;
            squares += difference * difference;
        }
        deviations << std::sqrt(squares / count);
    }
    return deviations;
}

/// The texts of a new graph of the group, both centers among them.
QStringList drawnCenters(const GraphTester &tester)
{
    tester.trigger("Groups graph");
    RecordingPaintDevice device;
    QPainter painter(&device);
    qobject_cast<ResultSubWindow *>(tester.subWindows().last()->widget())
        ->drawGraph(&painter, 700, 400);
    painter.end();
    return device.summaries();
}

/// All that depends on the settings, in the window and in a new graph.
QStringList everythingShown(const GraphTester &tester)
{
    return tester.labelTexts() + tester.patientTexts() + tester.scoreTexts() + allColors(tester)
        + drawnCenters(tester);
}

} // namespace

/// What changes in the window when the settings do.
class TestSettingsCommand : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cancelledSettingsChangeNothing()
    {
        GraphTester tester;
        const QStringList labels = tester.labelTexts();
        const QStringList scores = tester.scoreTexts();
        for (const bool byWindow : {false, true}) {
            tester.answers.expect<SettingsDialog>([byWindow](SettingsDialog &dialog) {
                dialog.findChild<QSpinBox *>()->setValue(0);
                dialog.findChildren<QComboBox *>().first()->setCurrentIndex(2);
                if (byWindow) {
                    dialog.close();
                } else {
                    dialog.reject();
                }
            });
            tester.trigger("Settings");
        }
        QCOMPARE(tester.readFile("config.ini"), settingsText());
        QCOMPARE(tester.labelTexts(), labels);
        QCOMPARE(tester.scoreTexts(), scores);
    }

    void acceptedSettingsFollowInTheTables()
    {
        GraphTester tester;
        expectSettings(tester, 1, 2, false, 3);
        tester.trigger("Settings");
        const QStringList labels = tester.labelTexts();
        for (const char *value : {"Linear least squares", "Interquartile range", "Average", "3"}) {
            QCOMPARE(labels.count(value), 1);
        }
        QCOMPARE(tester.readFile("config.ini"), settingsText(1, 2, 0));
        QStringList expected;
        const QVector<double> x = resultsOfFive(1);
        const QVector<double> y = resultsOfFive(5);
        for (int patient = 0; patient < 5; ++patient) {
            expected << fivePatients().at(patient).id
                    + (x.at(patient) < centerOfFive(x, false) ? " B/" : " W/")
                    + (y.at(patient) < centerOfFive(y, false) ? "B" : "W");
        }
        QCOMPARE(tester.patientTexts(), expected);
    }

    void offsetChangesOneColumnAndItsCenters_data()
    {
        QTest::addColumn<bool>("median");
        QTest::newRow("median") << true;
        QTest::newRow("average") << false;
    }

    void offsetChangesOneColumnAndItsCenters()
    {
        QFETCH(bool, median);
        GraphTester tester(settingsText(0, 1, median));
        const QStringList textsBefore = tester.scoreTexts();
        const QStringList colorsBefore = allColors(tester);
        expectSettings(tester, 0, 1, median, 0);
        tester.trigger("Settings");

        const QVector<double> deviations = stepDeviationsOfFive();
        QStringList row;
        QStringList expectedMarks;
        for (const double deviation : deviations) {
            row << QString::number(deviation);
            expectedMarks << (deviation < centerOfFive(deviations, median) ? "B" : "W");
        }
        QStringList expected = textsBefore;
        expected[4] = row.join(' ');
        QVERIFY(expected != textsBefore);
        QCOMPARE(tester.scoreTexts(), expected);
        QCOMPARE(rowColors(tester, 4), expectedColors(deviations, median));
        QStringList marks;
        for (const QString &patient : tester.patientTexts()) {
            marks << patient.right(1);
        }
        QCOMPARE(marks, expectedMarks);
        // The other methods keep their colours.
        QCOMPARE(allColors(tester).mid(0, 20), colorsBefore.mid(0, 20));
        QCOMPARE(rowColors(tester, 5), colorsBefore.mid(25));
    }

    void acceptedSettingsComputeAgain_data()
    {
        QTest::addColumn<int>("convergence");
        QTest::addColumn<int>("variability");
        QTest::addColumn<bool>("median");
        for (const bool median : {true, false}) {
            const char *center = median ? "median" : "average";
            QTest::addRow("unchanged, %s", center) << 0 << 0 << median;
            QTest::addRow("other methods, %s", center) << 1 << 2 << median;
        }
    }

    // Even if the offset stays as the dialog shows it: results and centers of another offset become
    // right.
    void acceptedSettingsComputeAgain()
    {
        QFETCH(int, convergence);
        QFETCH(int, variability);
        QFETCH(bool, median);
        QStringList expected;
        {
            const GraphTester fresh(settingsText(convergence, variability, median));
            expected = everythingShown(fresh);
        }
        GraphTester tester(settingsText(0, 0, median, 0));
        // The window does not notice.
        CConfig::instance().saveConfig(0, 0, median, 3, 1);
        QVERIFY(everythingShown(tester) != expected);
        tester.writeFile("config.ini", "gone");
        expectSettings(tester, convergence, variability, median, 3);
        tester.trigger("Settings");
        QCOMPARE(everythingShown(tester), expected);
        QCOMPARE(tester.readFile("config.ini"), settingsText(convergence, variability, median));
    }

    void changeOfTheCenterShowsInThePaintedTable()
    {
        GraphTester tester;
        QTableView *table = tester.scoreTable();
        const auto painted = [table] {
            const QImage image = table->viewport()->grab().toImage();
            QStringList colors;
            for (int row = 0; row < 6; ++row) {
                for (int column = 0; column < 5; ++column) {
                    const QPoint corner =
                        table->visualRect(table->model()->index(row, column)).topLeft();
                    if (table->viewport()->rect().contains(corner + QPoint(2, 2))) {
                        colors << image.pixelColor(corner + QPoint(2, 2)).name();
                    }
                }
            }
            return colors;
        };
        const auto expected = [](bool median) {
            QStringList colors;
            for (int method = 0; method < 6; ++method) {
                colors << expectedColors(resultsOfFive(method), median);
            }
            return colors;
        };
        tester.window->resize(1600, 1200);
        table->parentWidget()->setMinimumHeight(600);
        QCoreApplication::processEvents();
        QCOMPARE(painted().size(), 30);
        QCOMPARE(painted(), expected(true));
        expectSettings(tester, 0, 0, false, 3);
        tester.trigger("Settings");
        QCOMPARE(painted(), expected(false));
        QVERIFY(expected(false) != expected(true));
    }

    void settingsWithoutAFileChangeOnlyTheLabels()
    {
        GraphTester tester;
        tester.trigger("Close file");
        QStringList labels = tester.labelTexts();
        expectSettings(tester, 2, 1, false, 12);
        tester.trigger("Settings");
        QCOMPARE(tester.readFile("config.ini"), settingsText(2, 1, 0, 12));
        const QStringList values = {"C*e^(k*x)", "Difference standard deviation offset", "Average",
                                    "12"};
        const QStringList captions = {"Convergence:", "Variability:", "Center method:", "Offset:"};
        for (int i = 0; i < values.size(); ++i) {
            labels[labels.indexOf(captions.at(i)) + 1] = values.at(i);
        }
        QCOMPARE(tester.labelTexts(), labels);
        QVERIFY(tester.patientTable()->model() == nullptr);
        QVERIFY(tester.scoreTable()->model() == nullptr);
        QVERIFY(!tester.isFileOpen());
        QVERIFY(!tester.button("Show graph")->isEnabled());
        QVERIFY(!tester.button("Reset selection")->isEnabled());
        QCOMPARE(tester.window->windowTitle(), "Glymark");
        QCOMPARE(tester.subWindows().size(), 0);
    }

    void settingsLeaveOpenGraphsAlone()
    {
        GraphTester tester;
        tester.trigger("Groups graph");
        QWidget *graph = tester.subWindows().first()->widget();
        const QImage before = graph->grab().toImage();
        expectSettings(tester, 1, 2, false, 0);
        tester.trigger("Settings");
        QCOMPARE(graph->grab().toImage(), before);
        // A graph made now uses the new settings.
        tester.trigger("Groups graph");
        QWidget *second = tester.subWindows().last()->widget();
        second->resize(graph->size());
        QVERIFY(second->grab().toImage() != before);
    }

    void marksSurviveTheSettings()
    {
        GraphTester tester;
        tester.mark(3, 4);
        expectSettings(tester, 1, 1, true, 1);
        tester.trigger("Settings");
        QCOMPARE(tester.idealKvadrants(), QVector<int>({-1, -1, -1, 4, -1}));
    }
};

QTEST_MAIN(TestSettingsCommand)
#include "tst_settingscommand.moc"
