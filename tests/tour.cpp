// SPDX-License-Identifier: GPL-3.0-or-later
// Drives the real window through its whole work on the sample, with real dialogs, and saves the
// pictures of the documents, an exported page and both workbooks.

#include <algorithm>
#include <cstdio>

#include <QApplication>
#include <QDate>
#include <QFile>
#include <QHeaderView>
#include <QInputDialog>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QPushButton>
#include <QSpinBox>
#include <QStyleFactory>
#include <QSvgRenderer>
#include <QTableWidget>
#include <QTabWidget>
#include <QTranslator>
#include <xlsxdocument.h>

#include "appearance.h"
#include "settingsdialog.h"
#include "support/mainwindowtester.h"

namespace
{

constexpr QSize windowSize(1180, 950);
constexpr QSize graphSize(790, 470);
constexpr QSize groupSize(1000, 640);

class Tour
{
public:
    Tour(const QString &samplesFolder, const QString &outputFolder)
        : samples(samplesFolder), output(outputFolder), tester(QByteArray())
    {
        copySample(largeSample);
        copySample(smallSample);
    }

    /// What went wrong; empty after a good tour.
    QStringList run()
    {
        start("first-start.png");
        picture(sheetPicture(tester.path(smallSample), QString(), 7, 9), "workbook.png");
        laboratoryList();
        refuseAFile();
        tester.open(largeSample);
        markPatients();
        changeSettings();
        groupGraph();
        graphOfSomePatients();
        exportPage();
        saveWorkbooks();
        return problems + tester.answers.takeUnexpected();
    }

    /// One picture of the window, for a translated tour.
    QStringList runForOnePicture(const char *name)
    {
        start();
        tester.open(largeSample);
        // "Groups graph" in any language.
        tester.menuEntries().at(4)->trigger();
        picture(windowPicture(), name);
        return problems + tester.answers.takeUnexpected();
    }

private:
    void copySample(const QString &name) const
    {
        QFile::copy(samples.filePath(name), tester.path(name));
    }

    void picture(const QPixmap &pixmap, const char *name)
    {
        constexpr int smallestFile = 0;
        if (!pixmap.save(output.filePath(name), "PNG", smallestFile)) {
            problems << QString("cannot write %1").arg(name);
        }
    }

    /// Accepts the next message; if \p name is not null, takes a picture of it.
    void expectMessage(const char *name)
    {
        tester.answers.expect<QMessageBox>([this, name](QMessageBox &box) {
            if (name) {
                picture(box.grab(), name);
            }
            box.accept();
        });
    }

    /// The first start, without settings: it shows one message.
    void start(const char *name = nullptr)
    {
        expectMessage(name);
        tester.start();
        tester.window->resize(windowSize);
        QCoreApplication::processEvents();
    }

    void refuseAFile()
    {
        tester.writeFile("notes.xlsx", "These are notes, not a workbook.");
        tester.answers.expectFile(tester.path("notes.xlsx"));
        expectMessage("refused.png");
        tester.trigger("Open File");
    }

    void markPatients()
    {
        for (const int row : {0, 1, 2}) {
            QMenu *menu = tester.openMenu(row);
            if (!menu) {
                problems << "no menu of ideal kvadrants";
                return;
            }
            QAction *better = MainWindowTester::entriesOf(*menu).at(3);
            menu->setActiveAction(better);
            picture(menu->grab(), "ideal-menu.png");
            better->trigger();
            menu->close();
        }
    }

    void changeSettings()
    {
        tester.answers.expect<SettingsDialog>([this](SettingsDialog &dialog) {
            picture(dialog.grab(), "settings.png");
            dialog.findChild<QSpinBox *>()->setValue(3);
            dialog.findChild<QPushButton *>("okButton")->click();
        });
        tester.trigger("Settings");
    }

    QMdiSubWindow *arrangeLast(const QSize &size)
    {
        QMdiSubWindow *subWindow = tester.subWindows().constLast();
        subWindow->setGeometry(QRect(QPoint(10, 10), size));
        QCoreApplication::processEvents();
        return subWindow;
    }

    /// The whole window, smaller by what its tables show of the next patient, with the last graph
    /// in all of the middle.
    QPixmap windowPicture()
    {
        const QTableView *patients = tester.patientTable();
        const QTableView *scores = tester.scoreTable();
        const QSize part(scores->viewport()->width() % scores->columnWidth(0),
                         patients->viewport()->height() % patients->rowHeight(0));
        tester.window->resize(tester.window->size() - part);
        QCoreApplication::processEvents();
        arrangeLast(tester.area()->size() - QSize(20, 20));
        return tester.window->grab();
    }

    void groupGraph()
    {
        tester.trigger("Groups graph");
        QMdiSubWindow *subWindow = arrangeLast(groupSize);
        picture(subWindow->widget()->grab(), "group-graph.png");
        subWindow->close();
    }

    void graphOfSomePatients()
    {
        // Their names lie apart, and the fastest fall leaves the others room on the right.
        for (const int row : {0, 5, 13, 18, 24, 27}) {
            tester.patientTable()->selectionModel()->select(
                tester.patientTable()->model()->index(row, 0),
                QItemSelectionModel::Select | QItemSelectionModel::Rows);
        }
        tester.answers.expect<QInputDialog>([](QInputDialog &dialog) {
            dialog.setTextValue("Six patients");
            dialog.accept();
        });
        tester.button("Show graph")->click();
        auto *tabs = qobject_cast<QTabWidget *>(arrangeLast(graphSize)->widget());
        if (!tabs) {
            problems << "no graph of the selected patients";
            return;
        }
        picture(tabs->grab(), "patient-graph.png");
        tabs->setCurrentIndex(1);
        picture(tabs->grab(), "result-graph.png");
        tabs->setCurrentIndex(0);
        picture(windowPicture(), "window.png");
    }

    void exportPage()
    {
        const QString page = output.filePath("glymark-page.svg");
        QFile::remove(page);
        tester.answers.expectFile(page);
        tester.answers.expectMessage();
        tester.trigger("Export graph");
        QSvgRenderer renderer(page);
        if (!renderer.isValid()) {
            problems << "the exported page cannot be drawn";
            return;
        }
        QPixmap paper(renderer.viewBox().size());
        paper.fill(Qt::white);
        QPainter painter(&paper);
        renderer.render(&painter);
        painter.end();
        picture(paper, "export.png");
    }

    void saveWorkbooks()
    {
        saveWorkbook("Save file", "glymark-data.xlsx");
        picture(sheetPicture(output.filePath("glymark-data.xlsx"), "Method result", 7, 4),
                "data-workbook.png");
        saveWorkbook("Save data analysis", "glymark-analysis.xlsx");
        picture(sheetPicture(output.filePath("glymark-analysis.xlsx"), "Median", 9, 4),
                "analysis-workbook.png");
    }

    void saveWorkbook(const char *action, const char *name)
    {
        const QString path = output.filePath(name);
        QFile::remove(path);
        tester.answers.expectFile(path);
        tester.trigger(action);
    }

    using Cells = QVector<QStringList>;

    /// The top left corner of a sheet; a null name takes the first one.
    Cells cellsOf(const QString &path, const QString &sheet, int rows, int columns)
    {
        QXlsx::Document document(path);
        if (!document.isLoadPackage() || (!sheet.isNull() && !document.selectSheet(sheet))) {
            problems << QString("cannot read back %1").arg(path);
        }
        Cells cells(rows);
        for (int row = 0; row < rows; ++row) {
            for (int column = 0; column < columns; ++column) {
                cells[row] << document.read(row + 1, column + 1).toString().left(70);
            }
        }
        return cells;
    }

    /// Cells as a spreadsheet shows them.
    static QPixmap tablePicture(const Cells &cells)
    {
        QTableWidget table(int(cells.size()), int(cells.first().size()));
        QStringList letters;
        for (int column = 0; column < table.columnCount(); ++column) {
            letters << QString(QChar('A' + column));
            for (int row = 0; row < table.rowCount(); ++row) {
                table.setItem(row, column, new QTableWidgetItem(cells.at(row).at(column)));
            }
        }
        table.setHorizontalHeaderLabels(letters);
        table.resizeColumnsToContents();
        table.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        table.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        table.setAttribute(Qt::WA_DontShowOnScreen);
        table.show();
        const int frame = 2 * table.frameWidth();
        table.resize(table.horizontalHeader()->length() + table.verticalHeader()->width() + frame,
                     table.verticalHeader()->length() + table.horizontalHeader()->height() + frame);
        return table.grab();
    }

    QPixmap sheetPicture(const QString &path, const QString &sheet, int rows, int columns)
    {
        return tablePicture(cellsOf(path, sheet, rows, columns));
    }

    /// One row per measurement, numbered, and the workbook that comes of it.
    void laboratoryList()
    {
        constexpr int patients = 2;
        constexpr int values = 4;
        Cells sheet = cellsOf(tester.path(smallSample), QString(), patients + 1, values + 1);
        sheet.first() = QStringList{"Code", "1", "2", "3", "4"};
        Cells list = {{"Code", "Date", "mmol/mol", "No."}};
        for (int patient = 1; patient <= patients; ++patient) {
            QDate date(2025, 1, 10 + patient);
            for (int number = 1; number <= values; ++number) {
                const QStringList &row = sheet.at(patient);
                list << QStringList{row.first(), date.toString(Qt::ISODate), row.at(number),
                                    QString::number(number)};
                date = date.addDays(91);
            }
        }
        picture(besideEachOther(tablePicture(list), tablePicture(sheet)), "laboratory-list.png");
    }

    static QPixmap besideEachOther(const QPixmap &left, const QPixmap &right)
    {
        constexpr int gap = 60;
        QPixmap both(left.width() + gap + right.width(), std::max(left.height(), right.height()));
        both.fill(Qt::white);
        QPainter painter(&both);
        painter.drawPixmap(0, 0, left);
        painter.drawPixmap(left.width() + gap, 0, right);
        painter.setFont(QFont("DejaVu Sans", 18));
        painter.drawText(QRect(left.width(), 0, gap, right.height()), Qt::AlignCenter, "→");
        return both;
    }

    const QString largeSample = "glymark-sample.xlsx";
    const QString smallSample = "glymark-small.xlsx";
    QDir samples;
    QDir output;
    MainWindowTester tester;
    QStringList problems;
};

/// Saves all pictures, or only \p onePicture if it is not null, in the folder \p output. Returns
/// the exit code.
int takeTour(const QString &samples, const QString &output, const char *onePicture)
{
    const QString folder = QFileInfo(output).absoluteFilePath();
    if (!QDir().mkpath(folder)) {
        std::fprintf(stderr, "tour: cannot make %s\n", qPrintable(folder));
        return 1;
    }
    Tour tour(QFileInfo(samples).absoluteFilePath(), folder);
    const QStringList problems = onePicture ? tour.runForOnePicture(onePicture) : tour.run();
    for (const QString &problem : problems) {
        std::fprintf(stderr, "tour: %s\n", qPrintable(problem));
    }
    return problems.isEmpty() ? 0 : 1;
}

} // namespace

int main(int argc, char *argv[])
{
    const bool dark = argc == 4 && qstrcmp(argv[3], "--dark") == 0;
    const bool dense = argc == 4 && qstrcmp(argv[3], "--dense") == 0;
    // The other pictures are made without scaling.
    if (dark || dense) {
        Appearance::scaleWithTheScreen();
    }
    QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 3 || arguments.size() > 4) {
        std::fputs("usage: glymark_tour SAMPLES OUTPUT [TRANSLATION | --dark | --dense]\n", stderr);
        return 2;
    }
    // The pictures are the same on every desktop. In this size no text of them is cut.
    QApplication::setStyle(QStyleFactory::create("fusion"));
    QFont font("DejaVu Sans", 8);
    font.setStretch(QFont::SemiCondensed);
    QApplication::setFont(font);
    if (dark) {
        QApplication::setPalette(QPalette(QColor(45, 45, 45), QColor(30, 30, 30)));
    }
    Appearance::keepLightPalette();
    QTranslator translator;
    const bool translated = arguments.size() == 4 && !dark && !dense;
    if (translated && !translator.load(arguments.at(3))) {
        std::fprintf(stderr, "tour: cannot read %s\n", qPrintable(arguments.at(3)));
        return 1;
    }
    QCoreApplication::installTranslator(&translator);

    const char *onePicture = translated ? "window-czech.png"
        : dark                          ? "window-dark.png"
        : dense                         ? "window-dense.png"
                                        : nullptr;
    return takeTour(arguments.at(1), arguments.at(2), onePicture);
}
