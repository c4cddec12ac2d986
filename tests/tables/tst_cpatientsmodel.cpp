// SPDX-License-Identifier: GPL-3.0-or-later
#include <cmath>
#include <memory>

#include <QtTest>

#include "support/modeltesting.h"
#include "support/numbers.h"
#include "support/workingfolder.h"
#include "tables/cpatientsmodel.h"

using Numbers::infinity;
using Numbers::notANumber;

namespace
{

struct Fixture : ModelLists {
    CPatientsModel model{patients, scores, average, median};

    [[nodiscard]] QString mark(int row) const { return model.data(model.index(row, 1)).toString(); }
};

} // namespace

class TestCPatientsModel : public QObject
{
    Q_OBJECT

    std::unique_ptr<WorkingFolder> m_folder;

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<WorkingFolder>();
        configure(0, 0, Median);
    }

    void cleanup() { m_folder.reset(); }

    void noPatients()
    {
        const Fixture fixture;
        QCOMPARE(fixture.model.rowCount(), 0);
        QCOMPARE(fixture.model.columnCount(), 2);
        QCOMPARE(fixture.model.headerData(0, Qt::Horizontal).toString(), "Id patient");
        QCOMPARE(fixture.model.headerData(1, Qt::Horizontal).toString(), "Method results");
    }

    void countsOfRowsAndColumns()
    {
        Fixture fixture;
        fixture.add("a", {0, 0, 0}, {0, 0, 0});
        fixture.add("b", {0, 0, 0}, {0, 0, 0});
        compareSize(fixture.model, 2, 2);
    }

    void firstColumnShowsIdentifiers()
    {
        Fixture fixture;
        fixture.add("  A ", {0, 0, 0}, {0, 0, 0});
        const QVariant cell = fixture.model.data(fixture.model.index(0, 0));
        QCOMPARE(cell.userType(), int(QMetaType::QString));
        QCOMPARE(cell.toString(), "  A ");
    }

    void marks_data()
    {
        QTest::addColumn<double>("convergence");
        QTest::addColumn<double>("variability");
        QTest::addColumn<double>("convergenceCenter");
        QTest::addColumn<double>("variabilityCenter");
        QTest::addColumn<QString>("mark");
        const auto row = [](const char *name, double c, double v, double centerC, double centerV,
                            const char *mark) {
            QTest::newRow(name) << c << v << centerC << centerV << mark;
        };
        row("both below", 0, 3, 1, 4, "B/B");
        row("both above", 2, 5, 1, 4, "W/W");
        row("below, above", 0, 5, 1, 4, "B/W");
        row("above, below", 2, 3, 1, 4, "W/B");
        row("both on the center", 1, 4, 1, 4, "W/W");
        row("on the center, below", 1, 3, 1, 4, "W/B");
        row("below, on the center", 0, 4, 1, 4, "B/W");
        row("negative", -2, 3, -1, 4, "B/B");
        row("below by the last bit", std::nextafter(1.0, 0.0), std::nextafter(4.0, 0.0), 1, 4,
            "B/B");
        row("0 and -0", -0.0, 0.0, 0.0, -0.0, "W/W");
        row("convergence NaN", notANumber, 5, 1, 4, "W/W");
        row("variability NaN", 0, notANumber, 1, 4, "B/B");
        row("both NaN", notANumber, notANumber, 1, 4, "W/B");
        row("centers NaN", 0, 5, notANumber, notANumber, "W/B");
        row("all NaN", notANumber, notANumber, notANumber, notANumber, "W/B");
        row("infinite", -infinity, infinity, 1, 4, "B/W");
    }

    void marks()
    {
        QFETCH(const double, convergence);
        QFETCH(const double, variability);
        QFETCH(const double, convergenceCenter);
        QFETCH(const double, variabilityCenter);
        QFETCH(const QString, mark);
        // Under every pair of methods and with either center.
        for (int c = 0; c < 3; ++c) {
            for (int v = 0; v < 3; ++v) {
                for (const Center center : {Average, Median}) {
                    configure(c, v, center);
                    Fixture fixture;
                    fixture.add("a", {7, 7, 7}, {7, 7, 7});
                    PatientScoreRecord &chosen =
                        center == Median ? fixture.median : fixture.average;
                    fixture.scores[0].convergence[c] = convergence;
                    fixture.scores[0].variability[v] = variability;
                    chosen.convergence[c] = convergenceCenter;
                    chosen.variability[v] = variabilityCenter;
                    QCOMPARE(fixture.mark(0), mark);
                    QCOMPARE(fixture.model.data(fixture.model.index(0, 1)).userType(),
                             int(QMetaType::QString));
                }
            }
        }
    }

    void onePatientIsWorseUnderEveryPair()
    {
        Fixture fixture;
        fixture.addCenter();
        for (int pair = 0; pair < 9; ++pair) {
            for (const Center center : {Average, Median}) {
                configure(pair / 3, pair % 3, center);
                QCOMPARE(fixture.mark(0), "W/W");
            }
        }
    }

    void chosenMethodsGiveTheMark()
    {
        Fixture fixture;
        fixture.add("a", {0, 9, 2}, {9, 4, 7});
        const QStringList expected = {
            "B/W", "B/B", "B/W", "W/W", "W/B", "W/W", "B/W", "B/B", "B/W",
        };
        for (int pair = 0; pair < 9; ++pair) {
            configure(pair / 3, pair % 3, Median);
            QCOMPARE(fixture.mark(0), expected.at(pair));
        }
    }

    void chosenCenterGivesTheMark()
    {
        // Convergence 1, 2, 9: the middle patient is on the median (worse) and below the mean.
        Fixture fixture;
        fixture.median = {{}, {2, 0, 0}, {5, 0, 0}};
        fixture.average = {{}, {4, 0, 0}, {5, 0, 0}};
        for (const double value : {1.0, 2.0, 9.0}) {
            fixture.add("a", {value, 0, 0}, {5, 0, 0});
        }
        QCOMPARE(fixture.mark(0), "B/W");
        QCOMPARE(fixture.mark(1), "W/W");
        QCOMPARE(fixture.mark(2), "W/W");
        configure(0, 0, Average);
        QCOMPARE(fixture.mark(0), "B/W");
        QCOMPARE(fixture.mark(1), "B/W");
        QCOMPARE(fixture.mark(2), "W/W");
    }

    void laterColumnsShowTheMarkToo()
    {
        // Only a model with more columns makes such an index.
        class Wide : public CPatientsModel
        {
        public:
            using CPatientsModel::CPatientsModel;
            [[nodiscard]] QModelIndex cell(int row, int column) const
            {
                return createIndex(row, column);
            }
        };
        Fixture fixture;
        fixture.add("a", {0, 0, 0}, {9, 9, 9});
        const Wide model(fixture.patients, fixture.scores, fixture.average, fixture.median);
        QCOMPARE(model.data(model.cell(0, 2)).toString(), "B/W");
        QCOMPARE(model.data(model.cell(0, 1000)).toString(), "B/W");
        QVERIFY(!model.data(model.cell(1, 0)).isValid());
        QVERIFY(!model.data(model.cell(1, 1)).isValid());
    }

    void headers_data()
    {
        QTest::addColumn<int>("section");
        QTest::addColumn<QString>("text");
        QTest::newRow("identifier") << 0 << "Id patient";
        QTest::newRow("mark") << 1 << "Method results";
        QTest::newRow("after the last") << 2 << "Unknown!";
        QTest::newRow("far after the last") << 1000 << "Unknown!";
        QTest::newRow("negative") << -1 << "Unknown!";
    }

    void headers()
    {
        QFETCH(const int, section);
        QFETCH(const QString, text);
        Fixture fixture;
        fixture.add("a", {0, 0, 0}, {0, 0, 0});
        QCOMPARE(fixture.model.headerData(section, Qt::Horizontal).toString(), text);
        QVERIFY(!fixture.model.headerData(section, Qt::Vertical).isValid());
        for (int role = 1; role <= Qt::UserRole; ++role) {
            QVERIFY(!fixture.model.headerData(section, Qt::Horizontal, role).isValid());
            QVERIFY(!fixture.model.headerData(section, Qt::Vertical, role).isValid());
        }
    }

    void otherRolesAreInvalid()
    {
        Fixture fixture;
        fixture.add("a", {0, 0, 0}, {0, 0, 0});
        for (int column = 0; column < 2; ++column) {
            for (int role = 1; role <= Qt::UserRole; ++role) {
                QVERIFY(!fixture.model.data(fixture.model.index(0, column), role).isValid());
            }
        }
    }

    void indexesOutsideAreInvalid()
    {
        Fixture fixture;
        fixture.add("a", {0, 0, 0}, {0, 0, 0});
        QVERIFY(!fixture.model.data({}).isValid());
        // An index from before the list became shorter.
        const QModelIndex old = fixture.model.index(0, 1);
        fixture.patients.clear();
        fixture.scores.clear();
        QVERIFY(!fixture.model.data(old).isValid());
    }

    void cellsAreSelectableAndReadOnly()
    {
        Fixture fixture;
        fixture.add("a", {0, 0, 0}, {0, 0, 0});
        const QModelIndex cell = fixture.model.index(0, 0);
        QVERIFY(fixture.model.flags(cell).testFlag(Qt::ItemIsSelectable));
        QVERIFY(fixture.model.flags(cell).testFlag(Qt::ItemIsEnabled));
        QVERIFY(!fixture.model.flags(cell).testFlag(Qt::ItemIsEditable));
        QVERIFY(!fixture.model.setData(cell, "b"));
        QCOMPARE(fixture.patients.at(0).id, "a");
    }

    void updateAssignsWithoutSignals()
    {
        Fixture fixture;
        fixture.add("a", {9, 9, 9}, {9, 9, 9});
        compareUpdate(fixture.model, fixture);
        QCOMPARE(fixture.mark(0), "B/W");
        configure(0, 0, Average);
        QCOMPARE(fixture.mark(0), "W/B");
    }

    void updateWithItsOwnListsChangesNothing()
    {
        Fixture fixture;
        fixture.add("a", {0, 0, 0}, {9, 9, 9});
        compareUpdateWithOwnLists(fixture.model, fixture);
        QCOMPARE(fixture.mark(0), "B/W");
    }

    void marksFollowTheLists()
    {
        Fixture fixture;
        fixture.add("a", {0, 0, 0}, {9, 9, 9});
        QCOMPARE(&fixture.model.patients, &fixture.patients);
        QCOMPARE(&fixture.model.scores, &fixture.scores);
        QCOMPARE(fixture.mark(0), "B/W");
        fixture.median.convergence[0] = -1;
        QCOMPARE(fixture.mark(0), "W/W");
        fixture.scores[0].variability[0] = 1;
        QCOMPARE(fixture.mark(0), "W/B");
    }

    void textsAreTranslated()
    {
        EchoTranslator echo;
        QVERIFY(QCoreApplication::installTranslator(&echo));
        Fixture fixture;
        fixture.add("a", {0, 0, 0}, {9, 9, 9});
        fixture.add("b", {9, 9, 9}, {0, 0, 0});
        QCOMPARE(fixture.mark(0), "<CPatientsModel:B/><CPatientsModel:W>");
        QCOMPARE(fixture.mark(1), "<CPatientsModel:W/><CPatientsModel:B>");
        QCOMPARE(fixture.model.headerData(0, Qt::Horizontal).toString(),
                 "<CPatientsModel:Id patient>");
        QCOMPARE(fixture.model.headerData(1, Qt::Horizontal).toString(),
                 "<CPatientsModel:Method results>");
        QCOMPARE(fixture.model.headerData(2, Qt::Horizontal).toString(), "Unknown!");
    }

    void passesTheModelTester()
    {
        Fixture fixture;
        fixture.add("a", {0, 0, 0}, {9, 9, 9});
        fixture.add("b", {9, 9, 9}, {0, 0, 0});
        runModelTester(ChildlessModel<CPatientsModel>(fixture.patients, fixture.scores,
                                                      fixture.average, fixture.median),
                       fixture);
    }
};

QTEST_GUILESS_MAIN(TestCPatientsModel)
#include "tst_cpatientsmodel.moc"
