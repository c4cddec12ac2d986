// SPDX-License-Identifier: GPL-3.0-or-later
#include <cmath>

#include <QComboBox>
#include <QMdiSubWindow>
#include <QPainter>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>

#include "graphs/resultsubwindow.h"
#include "settingsdialog.h"
#include "support/graphtester.h"
#include "support/recordingpaintdevice.h"

namespace
{

QByteArray bits(const QVector<double> &values)
{
    return {reinterpret_cast<const char *>(values.constData()),
            values.size() * int(sizeof(double))};
}

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

/// The colours of all cells of the score table.
QStringList allColors(const GraphTester &tester)
{
    QStringList colors;
    for (int row = 0; row < 6; ++row) {
        for (int column = 0; column < 5; ++column) {
            colors << tester.scoreModel()
                          ->index(row, column)
                          .data(Qt::BackgroundRole)
                          .value<QColor>()
                          .name();
        }
    }
    return colors;
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
        const QStringList scores = MainWindowTester::tableTexts(*tester.scoreTable());
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
        QCOMPARE(tester.answers.unexpected(), QStringList());
        QCOMPARE(tester.readFile("config.ini"), settingsText());
        QCOMPARE(tester.labelTexts(), labels);
        QCOMPARE(MainWindowTester::tableTexts(*tester.scoreTable()), scores);
    }

    void acceptedSettingsFollowInTheTables()
    {
        GraphTester tester;
        expectSettings(tester, 1, 2, false, 3);
        tester.trigger("Settings");
        QCOMPARE(tester.answers.unexpected(), QStringList());
        const QStringList labels = tester.labelTexts();
        for (const char *value : {"Linear least squares", "Interquartile range", "Average", "3"}) {
            QCOMPARE(labels.count(value), 1);
        }
        QCOMPARE(tester.readFile("config.ini"), settingsText(1, 2, 0));
        // Each mark by the average of its column.
        QStringList expected;
        const auto &scores = tester.patientsModel()->scores;
        double x = 0;
        double y = 0;
        for (const PatientScoreRecord &score : scores) {
            x += score.convergence.at(1);
            y += score.variability.at(2);
        }
        for (const PatientScoreRecord &score : scores) {
            expected << score.id + QString(score.convergence.at(1) < x / 5 ? " B/" : " W/")
                    + QString(score.variability.at(2) < y / 5 ? "B" : "W");
        }
        QCOMPARE(MainWindowTester::tableTexts(*tester.patientTable()), expected);
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
        const auto color = [&tester](int row, int column) {
            return tester.scoreModel()
                ->index(row, column)
                .data(Qt::BackgroundRole)
                .value<QColor>()
                .name();
        };
        const auto otherColors = [&color] {
            QStringList colors;
            for (const int row : {0, 1, 2, 3, 5}) {
                for (int column = 0; column < 5; ++column) {
                    colors << color(row, column);
                }
            }
            return colors;
        };
        const QStringList colorsBefore = otherColors();
        const QVector<PatientScoreRecord> before = tester.patientsModel()->scores;
        const QVector<PatientRecord> patients = tester.patientsModel()->patients;
        expectSettings(tester, 0, 1, median, 0);
        tester.trigger("Settings");
        const QVector<PatientScoreRecord> after = tester.patientsModel()->scores;
        QVector<double> column;
        for (int i = 0; i < before.size(); ++i) {
            QCOMPARE(after.at(i).id, before.at(i).id);
            QCOMPARE(bits(after.at(i).convergence), bits(before.at(i).convergence));
            for (const int same : {0, 2}) {
                QCOMPARE(bits({after.at(i).variability.at(same)}),
                         bits({before.at(i).variability.at(same)}));
            }
            QVERIFY(after.at(i).variability.at(1) != before.at(i).variability.at(1));
            // Population deviation of all steps.
            const QVector<double> &values = patients.at(i).values;
            const auto count = double(values.size() - 1);
            const double mean = (values.first() - values.last()) / count;
            double squares = 0;
            for (int step = 0; step < count; ++step) {
                const double d = values.at(step) - values.at(step + 1) - mean;
                squares += d * d;
            }
            QVERIFY(qAbs(after.at(i).variability.at(1) - std::sqrt(squares / count)) < 1e-12);
            column << after.at(i).variability.at(1);
        }
        QCOMPARE(otherColors(), colorsBefore);
        // The colours of row 4 and the second letters follow the new center.
        const double center = centerOfFive(column, median);
        for (int i = 0; i < column.size(); ++i) {
            const double value = column.at(i);
            QCOMPARE(color(4, i),
                     QString(value < center       ? "#aad083"
                                 : value > center ? "#e79292"
                                                  : "#647b98"));
            QCOMPARE(tester.patientsModel()->index(i, 1).data().toString().right(1),
                     QString(value < center ? "B" : "W"));
        }
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

    // Even where the offset stays: a score and both centers that are wrong beforehand are right
    // afterwards, and what does not depend on the offset is not touched.
    void acceptedSettingsComputeAgain()
    {
        QFETCH(int, convergence);
        QFETCH(int, variability);
        QFETCH(bool, median);
        GraphTester tester(settingsText(0, 0, median));
        const QVector<PatientScoreRecord> before = tester.patientsModel()->scores;
        const QStringList colors = allColors(tester);
        const QStringList graph = drawnCenters(tester);
        QVector<PatientScoreRecord> spoiled = before;
        for (PatientScoreRecord &score : spoiled) {
            score.variability[1] = 1e6;
        }
        const PatientScoreRecord far = {{}, {-1e9, -1e9, -1e9}, {-1e9, -1e9, -1e9}};
        tester.patientsModel()->update(spoiled, far, far);
        QVERIFY(allColors(tester) != colors);
        tester.writeFile("config.ini", "gone");

        expectSettings(tester, convergence, variability, median, 3);
        tester.trigger("Settings");
        QCOMPARE(tester.answers.unexpected(), QStringList());
        for (int i = 0; i < before.size(); ++i) {
            const PatientScoreRecord &after = tester.patientsModel()->scores.at(i);
            QCOMPARE(after.id, before.at(i).id);
            QCOMPARE(bits(after.convergence), bits(before.at(i).convergence));
            QCOMPARE(bits(after.variability), bits(before.at(i).variability));
        }
        QCOMPARE(allColors(tester), colors);
        QCOMPARE(tester.readFile("config.ini"), settingsText(convergence, variability, median));
        if (convergence == 0) {
            QCOMPARE(drawnCenters(tester), graph);
        }
        QStringList marks;
        QVector<double> x;
        QVector<double> y;
        for (const PatientScoreRecord &score : before) {
            x << score.convergence.at(convergence);
            y << score.variability.at(variability);
        }
        for (int i = 0; i < before.size(); ++i) {
            marks << before.at(i).id + (x.at(i) < centerOfFive(x, median) ? " B/" : " W/")
                    + (y.at(i) < centerOfFive(y, median) ? "B" : "W");
        }
        QCOMPARE(MainWindowTester::tableTexts(*tester.patientTable()), marks);
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
        const auto expected = [&tester](bool median) {
            QStringList colors;
            for (int row = 0; row < 6; ++row) {
                QVector<double> values;
                for (const PatientScoreRecord &score : tester.patientsModel()->scores) {
                    values << (row < 3 ? score.convergence : score.variability).at(row % 3);
                }
                const double center = centerOfFive(values, median);
                for (const double value : values) {
                    colors << (value < center ? "#aad083" : value > center ? "#e79292" : "#647b98");
                }
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
        QCOMPARE(tester.answers.unexpected(), QStringList());
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
        QVERIFY(!tester.action("Close file")->isEnabled());
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
        QCOMPARE(tester.marks(), QVector<int>({-1, -1, -1, 4, -1}));
    }
};

QTEST_MAIN(TestSettingsCommand)
#include "tst_settingscommand.moc"
