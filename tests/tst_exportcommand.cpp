// SPDX-License-Identifier: GPL-3.0-or-later
#include <QDomDocument>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPageSize>
#include <QPrinter>
#include <QTabWidget>
#include <QTest>
#include <QXmlStreamReader>

#include "graphs/graphexport.h"
#include "support/graphtester.h"

namespace
{

/// "x y: text" for each text of an SVG page under this translation.
QStringList textsUnder(const QDomDocument &page, QPointF translation)
{
    QStringList lines;
    const QDomNodeList texts = page.elementsByTagName("text");
    for (int i = 0; i < texts.size(); ++i) {
        const QDomElement element = texts.at(i).toElement();
        // Every group of the painter carries the whole matrix.
        const QStringList matrix = element.parentNode()
                                       .toElement()
                                       .attribute("transform")
                                       .section('(', 1)
                                       .remove(')')
                                       .split(',');
        if (matrix.size() == 6 && qAbs(matrix.at(4).toDouble() - translation.x()) < 0.01
            && qAbs(matrix.at(5).toDouble() - translation.y()) < 0.01) {
            lines << QString("%1 %2: ").arg(element.attribute("x"), element.attribute("y"))
                    + element.text().trimmed();
        }
    }
    return lines;
}

/// Counts the paint events of the widget that it watches.
class PaintCounter : public QObject
{
    Q_OBJECT

public:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return QObject::eventFilter(watched, event);
    }

    int count = 0;
};

QStringList attributeValues(const QDomElement &element)
{
    QStringList values;
    const QDomNamedNodeMap attributes = element.attributes();
    for (int i = 0; i < attributes.count(); ++i) {
        values << attributes.item(i).nodeValue();
    }
    for (QDomElement child = element.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement()) {
        values << attributeValues(child);
    }
    return values;
}

/// Exports the current graph of \p tester to the file \p name and reads it.
QDomDocument exported(GraphTester &tester, const char *name)
{
    tester.answers.expectFile(tester.path(name));
    tester.answers.expectMessage();
    tester.trigger("Export graph");
    QDomDocument page;
    page.setContent(tester.readFile(name));
    return page;
}

/// The part of an A4 page within the margins of this system's printer, in points.
QRectF printable()
{
    QPrinter printer(QPrinter::ScreenResolution);
    printer.setPageSize(QPageSize(QPageSize::A4));
    return printer.pageRect(QPrinter::Point);
}

} // namespace

/// The window writes a graph as an SVG page.
class TestExportCommand : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void exportNeedsACurrentTabbedGraph()
    {
        GraphTester tester;
        tester.answers.expectMessage();
        tester.trigger("Export graph");
        tester.trigger("Groups graph");
        tester.answers.expectMessage();
        tester.trigger("Export graph");
        const QString refusal = "Svg export|No graphs selected for export";
        QCOMPARE(tester.answers.messages(), QStringList({refusal, refusal}));
    }

    void cancelledExportSaysNothing()
    {
        GraphTester tester;
        tester.makeGraph({0});
        tester.answers.expect<QFileDialog>([](QFileDialog &dialog) {
            QCOMPARE(dialog.windowTitle(), "Save SVG");
            QCOMPARE(dialog.nameFilters(), QStringList("SVG files (*.svg)"));
            dialog.reject();
        });
        tester.trigger("Export graph");
        QCOMPARE(tester.answers.messages(), QStringList());
    }

    void exportWritesTheCurrentGraph()
    {
        GraphTester tester;
        tester.makeGraph({0}, "first");
        tester.makeGraph({1, 2}, "second");
        tester.makeGraph({3}, "third");
        tester.area()->setActiveSubWindow(tester.subWindows().at(1));
        // The name is taken as typed, without an extension.
        const QDomDocument page = exported(tester, "page");
        QCOMPARE(tester.answers.messages(),
                 QStringList("Graphs export|Graph successfully exported"));
        QCOMPARE(page.documentElement().firstChildElement("title").text(), "second");
    }

    void exportedPageIsA4()
    {
        GraphTester tester;
        tester.makeGraph({1, 2});
        const QDomElement root = exported(tester, "page.svg").documentElement();
        const QRect box = printable().toRect();
        QCOMPARE(
            root.attribute("viewBox"),
            QString("%1 %2 %3 %4").arg(box.x()).arg(box.y()).arg(box.width()).arg(box.height()));
        // Points at the 72 dots per inch of the generator, given in millimetres.
        QVERIFY(qAbs(root.attribute("width").remove("mm").toDouble() - 210) < 1);
        QVERIFY(qAbs(root.attribute("height").remove("mm").toDouble() - 297) < 1);
    }

    void eachGraphHasItsHalfOfThePage()
    {
        GraphTester tester;
        tester.makeGraph({1, 2});
        const QDomDocument page = exported(tester, "page.svg");
        // A4 has 595 by 842 points, whatever margins the printer of this system has.
        QVERIFY(QRectF(0, 0, 595, 842).contains(printable()));
        const QPointF margin((595 - printable().width()) / 2, (842 - printable().height()) / 2);
        // Both graphs count the y of some texts from their lower edge.
        const double height = printable().height() / 2;
        const QStringList plot = textsUnder(page, margin);
        const QString method =
            QString("5 %1: Convergence: Median difference").arg(static_cast<int>(height - 2));
        QVERIFY2(plot.contains(method), qPrintable(plot.join(", ")));
        const QStringList graph = textsUnder(page, 2 * margin + QPointF(0, height));
        const QString one = QString("57 %1: 1").arg(static_cast<int>(height - 120 + 21));
        for (const QString &label : {QString("10 25: mmol/mol"), one}) {
            QVERIFY2(graph.contains(label), qPrintable(label + " in " + graph.join(", ")));
        }
    }

    void exportOfOddNamesIsWellFormed_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("written");
        const QString markup = "a<b>&\"c'</title>";
        QTest::newRow("markup") << markup << markup;
        const QString noLatin = "Křivka č. 1 \xF0\x9F\x93\x88";
        QTest::newRow("no Latin-1") << noLatin << noLatin;
        QTest::newRow("control characters")
            << QString(QChar(1)) + "x" + QChar(0x1b) + QChar(0xFFFF) << "\uFFFDx\uFFFD\uFFFD";
        QTest::newRow("unpaired surrogate") << QString(QChar(0xD800)) + "x"
                                            << "\uFFFDx";
    }

    void exportOfOddNamesIsWellFormed()
    {
        QFETCH(QString, name);
        QFETCH(QString, written);
        GraphTester tester;
        tester.patientsModel()->patients[0].id = name;
        tester.patientsModel()->scores[0].id = name;
        tester.makeGraph({0, 1}, name);
        exported(tester, "odd.svg");
        QXmlStreamReader reader(tester.readFile("odd.svg"));
        QStringList titles;
        QStringList labels;
        while (!reader.atEnd()) {
            if (reader.readNext() != QXmlStreamReader::StartElement) {
                continue;
            }
            if (reader.name() == QLatin1String("title")) {
                titles << reader.readElementText();
            } else if (reader.name() == QLatin1String("text")) {
                labels << reader.readElementText().trimmed();
            }
        }
        QVERIFY2(!reader.hasError(), qPrintable(reader.errorString()));
        QCOMPARE(titles, QStringList(written));
        // At the patient's dot and in the legend.
        QCOMPARE(labels.count(written), 2);
    }

    void failedExportStillReportsSuccess()
    {
        GraphTester tester;
        tester.makeGraph({0});
        tester.answers.expectFile(tester.path("nowhere/page.svg"));
        tester.answers.expectMessage();
        tester.trigger("Export graph");
        QCOMPARE(tester.answers.messages(),
                 QStringList("Graphs export|Graph successfully exported"));
        QVERIFY(!QFile::exists(tester.path("nowhere")));
    }

    void exportPageDoublesTheMarginOfTheLowerGraph()
    {
        const ExportPage page{QSize(600, 840), QRectF(10, 20, 580, 800)};
        QCOMPARE(page.margin(), QPointF(10, 20));
        QCOMPARE(page.graphSize(), QSizeF(580, 400));
        QCOMPARE(page.patientGraphCorner(), QPointF(20, 440));
    }

    void exportLeavesTheScreenAsItWas()
    {
        GraphTester tester;
        tester.makeGraph({0, 1, 2});
        auto *tabs = qobject_cast<QTabWidget *>(tester.subWindows().first()->widget());
        const QImage before = tabs->widget(0)->grab().toImage();
        const QImage plotBefore = tabs->widget(1)->grab().toImage();
        const QDomDocument page = exported(tester, "page.svg");
        QVERIFY(!page.isNull());
        QCOMPARE(tabs->widget(0)->grab().toImage(), before);
        QCOMPARE(tabs->widget(1)->grab().toImage(), plotBefore);
        for (const QString &value : attributeValues(page.documentElement())) {
            QVERIFY2(!value.contains("nan") && !value.contains("inf"), qPrintable(value));
        }
    }

    void exportRepaintsBothGraphs()
    {
        GraphTester tester;
        tester.makeGraph({0, 1, 2});
        auto *tabs = qobject_cast<QTabWidget *>(tester.subWindows().first()->widget());
        // Only the current tab is painted.
        for (int tab = 0; tab < tabs->count(); ++tab) {
            tabs->setCurrentIndex(tab);
            PaintCounter counter;
            tabs->widget(tab)->installEventFilter(&counter);
            QVERIFY(QTest::qWaitFor([&] { return counter.count > 0; }));
            QCoreApplication::processEvents();
            counter.count = 0;
            exportGraphs(*tabs, tester.path("page.svg"));
            QVERIFY(QTest::qWaitFor([&] { return counter.count > 0; }));
            QCOMPARE(counter.count, 1);
        }
    }
};

QTEST_MAIN(TestExportCommand)
#include "tst_exportcommand.moc"
