// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow.h"

#include <algorithm>
#include <array>

#include <QAction>
#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QTableView>
#include <QTabWidget>
#include <QVBoxLayout>

#include "analysis/centers.h"
#include "analysis/methodlabels.h"
#include "analysis/patientanalysis.h"
#include "cuttexttips.h"
#include "focuskeys.h"
#include "graphs/graphexport.h"
#include "graphs/graphsubwindow.h"
#include "graphs/resultsubwindow.h"
#include "leftcolumn.h"
#include "openmessages.h"
#include "settings/cconfig.h"
#include "settingsdialog.h"
#include "subwindowplacement.h"
#include "tables/cpatientscore.h"
#include "tables/cpatientsmodel.h"
#include "workbooks/analysisworkbook.h"
#include "workbooks/dataworkbook.h"
#include "workbooks/patientreader.h"

namespace
{

constexpr QSize tabbedGraphSize(715, 415);
constexpr QSize groupGraphSize(700, 400);
constexpr int bottomStripHeight = 200;
constexpr int rightPanelWidth = 275;

/// A table that Tab leaves: by default Tab would go round its cells forever, which the arrow keys
/// reach too. Shift+F10 opens its context menu as the Menu key does.
class Table : public QTableView
{
protected:
    // If the system asks for the menu as well, as Windows may, the toolkit asks the open menu,
    // which has none.
    void keyPressEvent(QKeyEvent *event) override
    {
        if (event->key() != Qt::Key_F10 || event->modifiers() != Qt::ShiftModifier) {
            QTableView::keyPressEvent(event);
            return;
        }
        const QPoint cell = inputMethodQuery(Qt::ImCursorRectangle).toRect().center();
        QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, cell, mapToGlobal(cell));
        QCoreApplication::sendEvent(this, &menuKey);
    }
    bool focusNextPrevChild(bool next) override
    {
        // NOLINTNEXTLINE(bugprone-parent-virtual-call): QAbstractItemView's keeps Tab inside.
        return QAbstractScrollArea::focusNextPrevChild(next);
    }
};

/// An area that needs no scroll bars as soon as there is room for all graphs again.
class GraphArea : public QMdiArea
{
protected:
    void resizeEvent(QResizeEvent *event) override
    {
        SubWindowPlacement::scrollBack(*this);
        QMdiArea::resizeEvent(event);
    }
};

template<typename Widget>
Widget *withAccessibleName(Widget *widget, const QString &name)
{
    widget->setAccessibleName(name);
    return widget;
}

// A number beyond the last method counts as the last one.
QString methodName(const Methods &methods, quint64 index)
{
    return MainWindow::tr(methods.at(std::min<size_t>(index, methods.size() - 1)).window);
}

QBoxLayout *createLegend()
{
    auto *legend = new QVBoxLayout;
    legend->setAlignment(Qt::AlignTop);
    legend->addWidget(new QLabel(MainWindow::tr("Legend")));
    legend->addWidget(new QLabel(MainWindow::tr("Better value color: Green")));
    legend->addWidget(new QLabel(MainWindow::tr("Worse value color: Red")));
    legend->addWidget(new QLabel(MainWindow::tr("Center value color: Blue")));
    auto *axes = new QLabel(MainWindow::tr("Additional info: In brackets is on which axis that "
                                           "specific method will be displayed."));
    axes->setWordWrap(true);
    legend->addWidget(axes);
    return legend;
}

QBoxLayout *createValueRow(const QString &caption, QLabel *value)
{
    auto *row = new QHBoxLayout;
    row->setAlignment(Qt::AlignLeft);
    row->addWidget(new QLabel(caption));
    row->addWidget(value);
    return row;
}

QMdiSubWindow *createSubWindow()
{
    auto *subWindow = new QMdiSubWindow;
    subWindow->setAttribute(Qt::WA_DeleteOnClose);
    return subWindow;
}

void addGraph(QTabWidget &tabs, QWidget *graph, const QString &title)
{
    tabs.addTab(withAccessibleName(graph, title), title);
}

} // namespace

MainWindow::MainWindow()
{
    setWindowTitle(tr("Glymark"));
    ensureConfig();
    createActions();
    createMenus();
    createWidgets();
    showSettings();
}

MainWindow::~MainWindow() = default;

void MainWindow::ensureConfig()
{
    CConfig &config = CConfig::instance();
    if (config.status() != CConfig::LoadFailed) {
        return;
    }
    showInformation(tr("Wrong Config"),
                    tr("Config file doesn't exist or has invalid format. Default config will be "
                       "created"));
    config.createDefaultConfig();
}

void MainWindow::createActions()
{
    const auto create = [this](const QString &text, const auto *receiver, auto slot) {
        auto *action = new QAction(text, this);
        connect(action, &QAction::triggered, receiver, slot);
        return action;
    };
    openAction = create(tr("Open File"), this, &MainWindow::open);
    openAction->setShortcut(QKeySequence(QStringLiteral("ctrl+o")));
    openAction->setStatusTip(tr("Open xlsx file with data"));

    saveAction = create(tr("Save file"), this, &MainWindow::save);
    saveAction->setShortcut(QKeySequence(QStringLiteral("ctrl+s")));

    exitAction = create(tr("Exit"), QCoreApplication::instance(), &QCoreApplication::quit);
    exitAction->setShortcut(QKeySequence(QStringLiteral("ctrl+q")));

    exportGraphAction = create(tr("Export graph"), this, &MainWindow::saveSvg);
    // Required as is: exporting answers to the print key.
    exportGraphAction->setShortcuts(QKeySequence::Print);
    exportGraphAction->setStatusTip(tr("Export currently selected graph to svg"));

    settingsAction = create(tr("Settings"), this, &MainWindow::editConfig);
    settingsAction->setShortcut(QKeySequence(QStringLiteral("ctrl+t")));

    saveAnalysisAction = create(tr("Save data analysis"), this, &MainWindow::savePrepareAnova);
    saveAnalysisAction->setShortcut(QKeySequence(QStringLiteral("ctrl+d")));

    groupsGraphAction = create(tr("Groups graph"), this, &MainWindow::split);
    groupsGraphAction->setShortcut(QKeySequence(QStringLiteral("ctrl+l")));

    closeFileAction = create(tr("Close file"), this, &MainWindow::closeFile);
    closeFileAction->setShortcut(QKeySequence(QStringLiteral("ctrl+h")));
}

void MainWindow::createMenus()
{
    fileMenu = menuBar()->addMenu(tr("File"));
    fileMenu->addActions({openAction, saveAction, exportGraphAction, settingsAction,
                          groupsGraphAction, saveAnalysisAction, closeFileAction, exitAction});
    closeFileAction->setDisabled(true);
}

void MainWindow::createWidgets()
{
    mdiArea = withAccessibleName<QMdiArea>(new GraphArea, tr("Graphs"));
    mdiArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    mdiArea->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    auto *bottomStrip = new QWidget;
    bottomStrip->setMinimumHeight(bottomStripHeight);
    bottomStrip->setLayout(createScoreStrip());

    auto *central = new QWidget;
    auto *columns = new QHBoxLayout(central);
    columns->addLayout(new LeftColumn(mdiArea, bottomStrip, scoreTable, groupGraphSize.height()));
    columns->addWidget(createRightPanel());
    setCentralWidget(central);
    new FocusKeys(patientTable, scoreTable, mdiArea);
    new CutTextTips(this);
}

QBoxLayout *MainWindow::createScoreStrip()
{
    scoreTable = withAccessibleName(new Table, tr("Results"));
    scoreTable->setObjectName(QStringLiteral("scoreTable"));
    auto *strip = new QHBoxLayout;
    strip->addWidget(scoreTable);
    strip->addLayout(createLegend());
    return strip;
}

QWidget *MainWindow::createRightPanel()
{
    auto *panel = new QWidget;
    panel->setFixedWidth(rightPanelWidth);
    rightPanelLayout = new QVBoxLayout(panel);
    rightPanelLayout->addLayout(createInformation());
    createPatientTable();
    rightPanelLayout->addWidget(patientTable);
    rightPanelLayout->addLayout(createButtons());
    return panel;
}

QBoxLayout *MainWindow::createInformation()
{
    auto *information = new QVBoxLayout;
    information->addWidget(new QLabel(tr("Information")));
    information->addWidget(new QLabel(tr("Method Results: Convergence/Variability")));
    information->addWidget(new QLabel(tr("Convergence: B - Better, W - Worse")));
    // Required as is: the blank at the end.
    information->addWidget(new QLabel(tr("Variability: B - Better, W - Worse ")));

    convergenceLabel = new QLabel;
    varianceLabel = new QLabel;
    centerLabel = new QLabel;
    offsetLabel = new QLabel;
    information->addLayout(createValueRow(tr("Convergence:"), convergenceLabel));
    information->addLayout(createValueRow(tr("Variability:"), varianceLabel));
    information->addLayout(createValueRow(tr("Center method:"), centerLabel));
    information->addLayout(createValueRow(tr("Offset:"), offsetLabel));
    return information;
}

void MainWindow::createPatientTable()
{
    patientTable = withAccessibleName(new Table, tr("Patients"));
    patientTable->setObjectName(QStringLiteral("patientTable"));
    patientTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    patientTable->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    patientTable->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(patientTable, &QTableView::customContextMenuRequested, this,
            &MainWindow::customMenuRequested);
}

QBoxLayout *MainWindow::createButtons()
{
    const auto create = [this](const QString &text, void (MainWindow::*slot)()) {
        auto *button = new QPushButton(text);
        button->setDisabled(true);
        connect(button, &QPushButton::clicked, this, slot);
        return button;
    };
    showGraphButton = create(tr("Show graph"), &MainWindow::selectItems);
    resetSelectionButton = create(tr("Reset selection"), &MainWindow::resetSelect);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(showGraphButton);
    buttons->addWidget(resetSelectionButton);
    return buttons;
}

void MainWindow::showSettings()
{
    const CConfig &config = CConfig::instance();
    convergenceLabel->setText(methodName(convergenceMethods, config.convergenceMethod()));
    varianceLabel->setText(methodName(variabilityMethods, config.varianceMethod()));
    centerLabel->setText(config.resultMethod() == 1 ? tr("Median") : tr("Average"));
    offsetLabel->setText(QString::number(config.skip()));
}

void MainWindow::showInformation(const QString &title, const QString &text)
{
    QMessageBox::information(this, title, text, QMessageBox::Ok, QMessageBox::NoButton);
}

void MainWindow::open()
{
    const QString path = QFileDialog::getOpenFileName(this, tr("Open file"), QString(),
                                                      tr("Xlsx document (*.xlsx)"));
    if (path.isEmpty()) {
        return;
    }
    const LoadedPatients file = loadPatients(path);
    const QString whyNot = whyNotOpened(file);
    if (whyNot.isEmpty()) {
        take(file.patients);
    } else {
        refuse(path, whyNot);
    }
}

void MainWindow::take(const QVector<PatientRecord> &opened)
{
    patients = opened;
    scores = scoresOf(patients);
    computeCenters();
    auto model = std::make_unique<CPatientsModel>(patients, scores, averageCenter, medianCenter);
    patientTable->setModel(model.get());
    patientsModel = std::move(model);
    patientTable->show();
    createScoreModel();
    setFileLoaded(true);
}

void MainWindow::refuse(const QString &path, const QString &whyNot)
{
    // The file name comes last: text that begins like markup makes the whole box rich text.
    showInformation(tr("Open file"), whyNot + QStringLiteral("\n\n") + QFileInfo(path).fileName());
}

void MainWindow::computeCenters()
{
    const Centers centers = centersOf(scores);
    medianCenter = centers.median;
    averageCenter = centers.average;
}

void MainWindow::createScoreModel()
{
    auto model = std::make_unique<CPatientScore>(averageCenter, scores, medianCenter);
    scoreTable->setModel(model.get());
    patientScoreModel = std::move(model);
    scoreTable->show();
}

void MainWindow::setFileLoaded(bool loaded)
{
    // How the column shares its room depends on whether a file is open.
    scoreTable->updateGeometry();
    closeFileAction->setEnabled(loaded);
    showGraphButton->setEnabled(loaded);
    resetSelectionButton->setEnabled(loaded);
}

bool MainWindow::isFileLoaded() const
{
    return closeFileAction->isEnabled();
}

void MainWindow::closeFile()
{
    setFileLoaded(false);
    patientsModel.reset();
    patientScoreModel.reset();
    patients.clear();
    scores.clear();
    mdiArea->closeAllSubWindows();
}

void MainWindow::save()
{
    const QString fileName = askWhereToSave(tr("Save file"));
    if (!fileName.isEmpty()) {
        writeDataWorkbook(fileName, patients, scores);
    }
}

void MainWindow::savePrepareAnova()
{
    const QString fileName = askWhereToSave(tr("Save analysis"));
    if (!fileName.isEmpty()) {
        writeAnalysisWorkbook(fileName, patients, scores, averageCenter, medianCenter);
    }
}

QString MainWindow::askWhereToSave(const QString &caption)
{
    if (patients.isEmpty()) {
        showInformation(tr("No data"), tr("No data to save"));
        return {};
    }
    const QPointer<CPatientsModel> saved = patientsModel.get();
    const QString fileName =
        QFileDialog::getSaveFileName(this, caption, QString(), tr("Xlsx document (*.xlsx)"));
    return saved ? fileName : QString();
}

void MainWindow::selectItems()
{
    if (!isFileLoaded()) {
        return;
    }
    const QModelIndexList selection = patientTable->selectionModel()->selectedRows(0);
    if (selection.isEmpty()) {
        showInformation(tr("0 selected"),
                        tr("Please select rows from table above to display as graph"));
        return;
    }
    const QPointer<CPatientsModel> selected = patientsModel.get();
    const QString name = askForGraphName();
    if (name.isNull() || !selected) {
        return;
    }
    QVector<PatientRecord> shownPatients;
    QVector<PatientScoreRecord> shownScores;
    for (const QModelIndex &index : selection) {
        const int patient = index.row();
        shownPatients.append(selected->patients.at(patient));
        shownScores.append(selected->scores.at(patient));
    }
    auto *tabs = withAccessibleName(new QTabWidget, name);
    addGraph(*tabs, new GraphSubWindow(name, shownPatients), tr("Glymark value graph"));
    addGraph(*tabs, createResultPlot(shownScores), tr("Patient result graph"));
    auto *subWindow = createSubWindow();
    subWindow->setWindowTitle(name);
    mdiArea->addSubWindow(subWindow);
    subWindow->setMinimumSize(tabbedGraphSize);
    subWindow->setWidget(tabs);
    SubWindowPlacement::showInside(*mdiArea, *subWindow);
    patientTable->clearSelection();
}

QString MainWindow::askForGraphName()
{
    const auto defaultName = [this] {
        return tr("Graph ") + QString::number(mdiArea->subWindowList().size() + 1);
    };
    bool accepted = false;
    const QString name = QInputDialog::getText(this, tr("Graph name"), tr("Name"),
                                               QLineEdit::Normal, defaultName(), &accepted);
    if (!accepted) {
        return {};
    }
    return name.isEmpty() ? defaultName() : name;
}

ResultSubWindow *MainWindow::createResultPlot(const QVector<PatientScoreRecord> &shown) const
{
    const CConfig &config = CConfig::instance();
    const auto variability = int(config.varianceMethod());
    const auto convergence = int(config.convergenceMethod());
    const PatientScoreRecord &center = chosenCenter(medianCenter, averageCenter);
    return new ResultSubWindow(shown, variability, convergence, center.variability.at(variability),
                               center.convergence.at(convergence));
}

void MainWindow::resetSelect()
{
    if (isFileLoaded()) {
        patientTable->clearSelection();
    }
}

void MainWindow::split()
{
    if (patients.isEmpty()) {
        showInformation(tr("No data"), tr("No data to visualize"));
        return;
    }
    auto *subWindow = createSubWindow();
    // The area places a sub-window by the size that it has when it is added.
    subWindow->setMinimumSize(groupGraphSize);
    mdiArea->addSubWindow(subWindow);
    subWindow->setWidget(withAccessibleName(createResultPlot(scores), tr("Groups graph")));
    SubWindowPlacement::showInside(*mdiArea, *subWindow);
}

void MainWindow::customMenuRequested(QPoint pos)
{
    struct Entry {
        const char *text;
        void (MainWindow::*slot)();
        int kvadrant;
    };
    static constexpr std::array entries = {
        Entry{QT_TR_NOOP("Kvadrant 1 (W/W)"), &MainWindow::setKvad1, 1},
        Entry{QT_TR_NOOP("Kvadrant 2 (B/W)"), &MainWindow::setKvad2, 2},
        Entry{QT_TR_NOOP("Kvadrant 3 (B/B)"), &MainWindow::setKvad3, 3},
        Entry{QT_TR_NOOP("Kvadrant 4 (W/B)"), &MainWindow::setKvad4, 4},
        Entry{QT_TR_NOOP("No ideal"), &MainWindow::setNoIdeal, PatientRecord::noIdealKvadrant},
    };

    const QModelIndex index = patientTable->indexAt(pos);
    if (!index.isValid()) {
        return;
    }
    contextRow = index.row();
    contextModel = patientsModel.get();
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(tr("Select ideal kvadrant"));
    menu->addSeparator();
    for (const Entry &entry : entries) {
        if (entry.kvadrant == PatientRecord::noIdealKvadrant) {
            menu->addSeparator();
        }
        QAction *action = menu->addAction(tr(entry.text), this, entry.slot);
        action->setCheckable(true);
        action->setChecked(patients.at(contextRow).idealKvadrant == entry.kvadrant);
    }
    menu->popup(patientTable->viewport()->mapToGlobal(pos));
}

void MainWindow::setIdealKvadrant(int kvadrant)
{
    if (contextModel) {
        patients[contextRow].idealKvadrant = kvadrant;
    }
}

void MainWindow::setKvad1()
{
    setIdealKvadrant(1);
}

void MainWindow::setKvad2()
{
    setIdealKvadrant(2);
}

void MainWindow::setKvad3()
{
    setIdealKvadrant(3);
}

void MainWindow::setKvad4()
{
    setIdealKvadrant(4);
}

void MainWindow::setNoIdeal()
{
    setIdealKvadrant(PatientRecord::noIdealKvadrant);
}

void MainWindow::editConfig()
{
    SettingsDialog dialog;
    if (dialog.exec() != QDialog::Accepted) {
        return;
    }
    showSettings();
    if (!isFileLoaded()) {
        return;
    }
    updateOffsetScores(scores, patients);
    computeCenters();
    // Changes nothing while the models refer to these very objects; a model with copies would need
    // it.
    patientScoreModel->update(scores, medianCenter, averageCenter);
    patientsModel->update(scores, medianCenter, averageCenter);
}

void MainWindow::saveSvg()
{
    const QPointer<QMdiSubWindow> subWindow = mdiArea->currentSubWindow();
    auto *tabs = subWindow ? qobject_cast<QTabWidget *>(subWindow->widget()) : nullptr;
    if (!tabs) {
        showInformation(tr("Svg export"), tr("No graphs selected for export"));
        return;
    }
    const QString fileName =
        QFileDialog::getSaveFileName(this, tr("Save SVG"), QString(), tr("SVG files (*.svg)"));
    // A closed sub-window leaves the area at once but is deleted later.
    if (fileName.isEmpty() || !mdiArea->subWindowList().contains(subWindow)) {
        return;
    }
    exportGraphs(*tabs, fileName);
    showInformation(tr("Graphs export"), tr("Graph successfully exported"));
}
