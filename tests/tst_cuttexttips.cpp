// SPDX-License-Identifier: GPL-3.0-or-later
// Tool tips with the whole of a text that does not fit.

#include <QApplication>
#include <QHeaderView>
#include <QHelpEvent>
#include <QLabel>
#include <QTest>
#include <QTextDocument>
#include <QToolTip>

#include "support/mainwindowtester.h"

namespace
{

/// Rests the mouse on \p position of \p widget and gives the tool tip, empty for none.
QString tipAt(QWidget *widget, const QPoint &position)
{
    QToolTip::hideText();
    if (!QTest::qWaitFor([] { return !QToolTip::isVisible(); })) {
        qFatal("the last tool tip stays");
    }
    QHelpEvent rest(QEvent::ToolTip, position, widget->mapToGlobal(position));
    QCoreApplication::sendEvent(widget, &rest);
    QTextDocument shown;
    shown.setHtml(QToolTip::text());
    return shown.toPlainText();
}

QString tipOf(QLabel *label)
{
    return tipAt(label, label->rect().center());
}

QString tipOfCell(const QTableView *table, int row, int column)
{
    return tipAt(table->viewport(), table->visualRect(table->model()->index(row, column)).center());
}

QString tipOfHeading(const QHeaderView *header, int section)
{
    const int middle = header->sectionViewportPosition(section) + header->sectionSize(section) / 2;
    const bool isAcross = header->orientation() == Qt::Horizontal;
    return tipAt(header->viewport(), isAcross ? QPoint(middle, 3) : QPoint(3, middle));
}

class Tester : public StartedTester
{
public:
    explicit Tester(const QByteArray &config = settingsText()) : StartedTester(config)
    {
        window->resize(1400, 900);
        QCoreApplication::processEvents();
    }

    QLabel *label(const QString &text) const
    {
        for (QLabel *candidate : window->findChildren<QLabel *>()) {
            if (candidate->text() == text) {
                return candidate;
            }
        }
        qFatal("no label %s", qPrintable(text));
    }

    void openPatient(const QString &identifier)
    {
        openPatients("one.xlsx", {{identifier, 50.0, 60.0, 55.0}});
        QCoreApplication::processEvents();
    }
};

const QString longName = "Dvorakova, Marie Magdalena, born 1949-05-17, Brno";

} // namespace

class TestCutTextTips : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QApplication::setFont(QFont("DejaVu Sans", 8)); }

    void labelThatFitsHasNoTip()
    {
        Tester tester;
        QCOMPARE(tipOf(tester.label("Median difference")), QString());
        QCOMPARE(tipOf(tester.label("Information")), QString());
        // In several lines.
        QCOMPARE(tipOf(tester.label("Additional info: In brackets is on which axis that specific "
                                    "method will be displayed.")),
                 QString());
    }

    void cutLabelShowsItsWholeText_data()
    {
        QTest::addColumn<QString>("text");
        for (const char *text :
             {"Difference standard deviation offset", "Method Results: Convergence/Variability"}) {
            QTest::newRow(text) << QString(text);
        }
    }

    void cutLabelShowsItsWholeText()
    {
        QFETCH(const QString, text);
        QApplication::setFont(QFont("DejaVu Sans", 16));
        Tester tester(settingsText(0, 1));
        QCOMPARE(tipOf(tester.label(text)), text);
        QCOMPARE(tipOf(tester.label("Median")), QString());
    }

    void cutIdentifierShowsInBothTables()
    {
        Tester tester;
        tester.openPatient(longName);
        QCOMPARE(tipOfCell(tester.patientTable(), 0, 0), longName);
        QCOMPARE(tipOfHeading(tester.scoreTable()->horizontalHeader(), 0), longName);
    }

    void cellsAndHeadingsThatFitHaveNoTip()
    {
        Tester tester;
        tester.openPatient("a");
        QCOMPARE(tipOfCell(tester.patientTable(), 0, 0), QString());
        QCOMPARE(tipOfCell(tester.patientTable(), 0, 1), QString());
        QCOMPARE(tipOfCell(tester.scoreTable(), 0, 0), QString());
        QCOMPARE(tipOfHeading(tester.patientTable()->horizontalHeader(), 1), QString());
        QCOMPARE(tipOfHeading(tester.scoreTable()->horizontalHeader(), 0), QString());
        QCOMPARE(tipOfHeading(tester.scoreTable()->verticalHeader(), 0), QString());
    }

    void cutResultsShow()
    {
        Tester tester;
        tester.openPatient("a");
        const QString value = tester.scoreModel()->index(3, 0).data().toString();
        tester.scoreTable()->setColumnWidth(0, 20);
        QVERIFY(value.size() > 4);
        QCOMPARE(tipOfCell(tester.scoreTable(), 3, 0), value);
        // "2.5" has the room.
        tester.scoreTable()->setColumnWidth(0, 60);
        QCOMPARE(tipOfCell(tester.scoreTable(), 0, 0), QString());
    }

    // Selected, it is bold.
    void headingThatFitsOnlyUnselectedShows()
    {
        Tester tester;
        tester.openPatient("MMMMMMMM");
        QHeaderView *const header = tester.scoreTable()->horizontalHeader();
        QFont bold = header->font();
        bold.setBold(true);
        const int width = header->fontMetrics().horizontalAdvance("MMMMMMMM");
        const int boldWidth = QFontMetrics(bold).horizontalAdvance("MMMMMMMM");
        QVERIFY(boldWidth > width + 2);
        tester.scoreTable()->setColumnWidth(0, (width + boldWidth) / 2 + 8);
        QCOMPARE(tipOfHeading(header, 0), QString());
        tester.scoreTable()->selectColumn(0);
        QCOMPARE(tipOfHeading(header, 0), QString("MMMMMMMM"));
    }

    void methodsOfANarrowTableShow()
    {
        Tester tester;
        tester.openPatient("a");
        QHeaderView *const methods = tester.scoreTable()->verticalHeader();
        methods->setMaximumWidth(100);
        tester.scoreTable()->setMaximumWidth(150);
        QCoreApplication::processEvents();
        QCOMPARE(tipOfHeading(methods, 4), QString("Difference standard deviation offset (y)"));
    }

    void placesWithoutATextHaveNoTip()
    {
        Tester tester;
        QCOMPARE(tipAt(tester.patientTable()->viewport(), QPoint(5, 5)), QString());
        tester.openPatient(longName);
        QCOMPARE(tipAt(tester.patientTable()->viewport(), QPoint(5, 300)), QString());
        QCOMPARE(tipAt(tester.scoreTable()->horizontalHeader()->viewport(), QPoint(400, 5)),
                 QString());
    }

    void tipIsNoMarkup()
    {
        Tester tester;
        const QString name = "<b>Dvorakova</b> & <i>Marie Magdalena</i> Novotna";
        tester.openPatient(name);
        QCOMPARE(tipOfCell(tester.patientTable(), 0, 0), name);
    }

    void tipOfALongWordIsBroken()
    {
        Tester tester;
        const QString word(3000, 'x');
        tester.openPatient(word);
        QString shown = tipOfCell(tester.patientTable(), 0, 0);
        QCOMPARE(shown.remove(QChar(0x200b)), word);
        for (const QWidget *widget : QApplication::topLevelWidgets()) {
            if (widget->isVisible() && widget->inherits("QTipLabel")) {
                QVERIFY2(widget->width() < 1000, qPrintable(QString::number(widget->width())));
                return;
            }
        }
        QFAIL("no tool tip");
    }
};

QTEST_MAIN(TestCutTextTips)
#include "tst_cuttexttips.moc"
