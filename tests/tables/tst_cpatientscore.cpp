// SPDX-License-Identifier: GPL-3.0-or-later
#include <cmath>
#include <memory>

#include <QColor>
#include <QtTest>

#include "settings/cconfig.h"
#include "support/modeltesting.h"
#include "support/numbers.h"
#include "support/workingfolder.h"
#include "tables/cpatientscore.h"

using Numbers::infinity;
using Numbers::notANumber;

namespace
{

const QStringList &methods()
{
    static const QStringList all = {
        "Median difference (x)",
        "Linear least squares (x)",
        "C*e^(k*x) (x)",
        "Standard deviation (y)",
        "Difference standard deviation offset (y)",
        "Interquartile range (y)",
    };
    return all;
}

struct Fixture : ModelLists {
    CPatientScore model{average, scores, median};

    [[nodiscard]] QString text(int row, int column) const
    {
        return model.data(model.index(row, column)).toString();
    }
    // "red", "green", "blue" or, for any other colour, its name.
    [[nodiscard]] QString color(int row, int column) const
    {
        const QVariant value = model.data(model.index(row, column), Qt::BackgroundRole);
        if (value.userType() != int(QMetaType::QColor)) {
            return value.typeName();
        }
        const QString name = value.value<QColor>().name();
        return name == "#e79292" ? "red"
            : name == "#aad083"  ? "green"
            : name == "#647b98"  ? "blue"
                                 : name;
    }
    [[nodiscard]] QStringList colors(int column) const
    {
        QStringList all;
        for (int row = 0; row < 6; ++row) {
            all << color(row, column);
        }
        return all;
    }
};

double &cell(PatientScoreRecord &record, int row)
{
    return row < 3 ? record.convergence[row] : record.variability[row - 3];
}

} // namespace

class TestCPatientScore : public QObject
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

    void noScores()
    {
        const Fixture fixture;
        QCOMPARE(fixture.model.rowCount(), 6);
        QCOMPARE(fixture.model.columnCount(), 0);
        for (int row = 0; row < 6; ++row) {
            QCOMPARE(fixture.model.headerData(row, Qt::Vertical).toString(), methods().at(row));
        }
        QVERIFY(!fixture.model.headerData(0, Qt::Horizontal).isValid());
    }

    void countsOfRowsAndColumns()
    {
        Fixture fixture;
        fixture.add("a", {1, 2, 3}, {4, 5, 6});
        fixture.add("b", {1, 2, 3}, {4, 5, 6});
        compareSize(fixture.model, 6, 2);
    }

    void rowsShowTheirMethods()
    {
        Fixture fixture;
        fixture.add("a", {0.5, 1.5, 2.5}, {3.5, 4.5, 5.5});
        fixture.add("b", {10.5, 11.5, 12.5}, {13.5, 14.5, 15.5});
        for (int row = 0; row < 6; ++row) {
            QCOMPARE(fixture.text(row, 0), QString("%1.5").arg(row));
            QCOMPARE(fixture.text(row, 1), QString("1%1.5").arg(row));
            QCOMPARE(fixture.model.data(fixture.model.index(row, 0)).userType(),
                     int(QMetaType::QString));
        }
    }

    void numbers_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("text");
        const auto row = [](double value, const char *text) {
            QTest::newRow(text) << value << text;
        };
        row(0.0, "0");
        row(10.0, "10");
        row(-2.5, "-2.5");
        row(0.1234567, "0.123457");
        row(1234567, "1.23457e+06");
        row(123456, "123456");
        row(999999.5, "1e+06");
        row(7.39509972887452, "7.3951");
        row(0.00117255416138, "0.00117255");
        row(-0.000960182856224, "-0.000960183");
        row(0.0001, "0.0001");
        row(0.00001, "1e-05");
        row(1e300, "1e+300");
        row(notANumber, "nan");
        row(infinity, "inf");
        row(-infinity, "-inf");
    }

    void numbers()
    {
        QFETCH(const double, value);
        QFETCH(const QString, text);
        Fixture fixture;
        fixture.add("a", {value, value, value}, {value, value, value});
        for (int row = 0; row < 6; ++row) {
            QCOMPARE(fixture.text(row, 0), text);
        }
    }

    void colors_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<double>("center");
        QTest::addColumn<QString>("color");
        const auto row = [](const char *name, double value, double center, const char *color) {
            QTest::newRow(name) << value << center << color;
        };
        row("above", 2, 1, "red");
        row("below", 1, 2, "green");
        row("on the center", 1, 1, "blue");
        row("above by the last bit", std::nextafter(1.0, 2.0), 1, "red");
        row("below by the last bit", std::nextafter(1.0, 0.0), 1, "green");
        row("negative above", -1, -2, "red");
        row("negative below", -2, -1, "green");
        row("value NaN", notANumber, 1, "blue");
        row("center NaN", 1, notANumber, "blue");
        row("both NaN", notANumber, notANumber, "blue");
        row("infinite", infinity, 1, "red");
        row("both infinite", infinity, infinity, "blue");
    }

    void colors()
    {
        QFETCH(const double, value);
        QFETCH(const double, center);
        QFETCH(const QString, color);
        for (const Center chosen : {Average, Median}) {
            configure(0, 0, chosen);
            for (int row = 0; row < 6; ++row) {
                Fixture fixture;
                fixture.add("a", {7, 7, 7}, {7, 7, 7});
                cell(fixture.scores[0], row) = value;
                cell(chosen == Median ? fixture.median : fixture.average, row) = center;
                QCOMPARE(fixture.color(row, 0), color);
            }
        }
    }

    void eachRowHasItsOwnCenter()
    {
        Fixture fixture;
        fixture.add("a", {2, 2, 2}, {5, 5, 5});
        const QStringList sides = {"red", "blue", "green"};
        QCOMPARE(fixture.colors(0), sides + sides);
    }

    void onePatientIsOnTheCenter()
    {
        Fixture fixture;
        fixture.addCenter();
        for (const Center chosen : {Average, Median}) {
            configure(0, 0, chosen);
            QCOMPARE(fixture.colors(0).count("blue"), 6);
        }
    }

    void chosenMethodsDoNotMatter()
    {
        Fixture fixture;
        fixture.add("a", {2, 2, 2}, {5, 5, 5});
        const QStringList before = fixture.colors(0);
        for (int pair = 0; pair < 9; ++pair) {
            CConfig::instance().saveConfig(pair / 3, pair % 3, Median, pair, pair % 2);
            QCOMPARE(fixture.colors(0), before);
        }
    }

    void chosenCenterChangesOnlyColors()
    {
        Fixture fixture;
        fixture.add("a", {5, 10, 15}, {20, 25, 30});
        QCOMPARE(fixture.colors(0).count("red"), 6);
        const QString before = fixture.text(0, 0);
        configure(0, 0, Average);
        QCOMPARE(fixture.colors(0).count("green"), 6);
        QCOMPARE(fixture.text(0, 0), before);
    }

    void headers()
    {
        Fixture fixture;
        fixture.add(" a ", {1, 2, 3}, {4, 5, 6});
        fixture.add("17", {1, 2, 3}, {4, 5, 6});
        QCOMPARE(fixture.model.headerData(0, Qt::Horizontal).toString(), " a ");
        QCOMPARE(fixture.model.headerData(1, Qt::Horizontal).toString(), "17");
        for (int row = 0; row < 6; ++row) {
            QCOMPARE(fixture.model.headerData(row, Qt::Vertical).toString(), methods().at(row));
        }
    }

    void headersOutsideAreInvalid()
    {
        Fixture fixture;
        fixture.add("a", {1, 2, 3}, {4, 5, 6});
        for (const int section : {-1, 1, 2, 1000}) {
            QVERIFY(!fixture.model.headerData(section, Qt::Horizontal).isValid());
        }
        for (const int section : {-1, 6, 7, 1000}) {
            QVERIFY(!fixture.model.headerData(section, Qt::Vertical).isValid());
        }
    }

    void otherRolesAreInvalid()
    {
        Fixture fixture;
        fixture.add("a", {1, 2, 3}, {4, 5, 6});
        for (int role = 1; role <= Qt::UserRole; ++role) {
            QVERIFY(!fixture.model.headerData(0, Qt::Horizontal, role).isValid());
            QVERIFY(!fixture.model.headerData(0, Qt::Vertical, role).isValid());
            for (int row = 0; row < 6; ++row) {
                QCOMPARE(fixture.model.data(fixture.model.index(row, 0), role).isValid(),
                         role == Qt::BackgroundRole);
            }
        }
    }

    void indexesOutsideAreInvalid()
    {
        // Only a model with more rows makes such an index.
        class Tall : public CPatientScore
        {
        public:
            using CPatientScore::CPatientScore;
            [[nodiscard]] QModelIndex cell(int row, int column) const
            {
                return createIndex(row, column);
            }
        };
        Fixture fixture;
        fixture.add("a", {1, 2, 3}, {4, 5, 6});
        const Tall model(fixture.average, fixture.scores, fixture.median);
        for (const int role : {int(Qt::DisplayRole), int(Qt::BackgroundRole)}) {
            QVERIFY(!model.data({}, role).isValid());
            QVERIFY(!model.data(model.cell(6, 0), role).isValid());
            QVERIFY(!model.data(model.cell(1000, 0), role).isValid());
            QVERIFY(!model.data(model.cell(0, 1), role).isValid());
        }
    }

    void cellsAreReadOnly()
    {
        Fixture fixture;
        fixture.add("a", {1, 2, 3}, {4, 5, 6});
        const QModelIndex index = fixture.model.index(0, 0);
        QVERIFY(!fixture.model.flags(index).testFlag(Qt::ItemIsEditable));
        QVERIFY(!fixture.model.setData(index, 5.0));
        QCOMPARE(fixture.text(0, 0), "1");
    }

    void updateAssignsWithoutSignals()
    {
        Fixture fixture;
        fixture.add("a", {9, 9, 9}, {9, 9, 9});
        compareUpdate(fixture.model, fixture);
        QCOMPARE(fixture.text(0, 0), "0.5");
        QCOMPARE(fixture.color(0, 0), "green");
        configure(0, 0, Average);
        QCOMPARE(fixture.color(0, 0), "red");
    }

    void updateWithItsOwnListsChangesNothing()
    {
        Fixture fixture;
        fixture.add("a", {9, 9, 9}, {9, 9, 9});
        compareUpdateWithOwnLists(fixture.model, fixture);
    }

    void headersAreTranslated()
    {
        EchoTranslator echo;
        QVERIFY(QCoreApplication::installTranslator(&echo));
        Fixture fixture;
        fixture.add("a", {9, 9, 9}, {9, 9, 9});
        for (int row = 0; row < 6; ++row) {
            QCOMPARE(fixture.model.headerData(row, Qt::Vertical).toString(),
                     "<CPatientScore:" + methods().at(row) + '>');
        }
        QCOMPARE(fixture.model.headerData(0, Qt::Horizontal).toString(), "a");
    }

    void passesTheModelTester()
    {
        Fixture fixture;
        fixture.add("a", {0, 0, 0}, {9, 9, 9});
        fixture.add("b", {9, 9, 9}, {0, 0, 0});
        runModelTester(
            ChildlessModel<CPatientScore>(fixture.average, fixture.scores, fixture.median),
            fixture);
    }
};

QTEST_GUILESS_MAIN(TestCPatientScore)
#include "tst_cpatientscore.moc"
