// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include <QMainWindow>
#include <QPointer>
#include <QVector>

#include "analysis/patientrecord.h"
#include "analysis/patientscorerecord.h"

class CPatientScore;
class CPatientsModel;
class QAction;
class QBoxLayout;
class QLabel;
class QMdiArea;
class QMdiSubWindow;
class QMenu;
class QPushButton;
class QTableView;
class QVBoxLayout;
class ResultSubWindow;

/// The one window: owns the patients of the open workbook and their results, shows them in two
/// tables and in graph sub-windows, and offers the commands on them.
///
/// Every open file has a CPatientsModel of its own. Whoever has to know after a dialog whether the
/// file is still the same one keeps a QPointer to it.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// Reads the settings; when there is no readable file, says so and creates the defaults.
    MainWindow();
    ~MainWindow() override;
    Q_DISABLE_COPY_MOVE(MainWindow)

private Q_SLOTS:
    // While a command waits for a dialog, others may run: a global menu bar, an automation and a
    // session manager reach the menu all the same. After each dialog a command looks again at what
    // it is about to touch, and ends without a word where that is gone.
    void open();
    void save();
    void saveSvg();
    void savePrepareAnova();
    void split();
    void editConfig();
    void resetSelect();
    void selectItems();
    void closeFile();
    void customMenuRequested(QPoint pos);
    void setKvad1();
    void setKvad2();
    void setKvad3();
    void setKvad4();
    void setNoIdeal();

private:
    void createActions();
    void createMenus();
    void createScoreModel();

    void createWidgets();
    QBoxLayout *createScoreStrip();
    QBoxLayout *createLegend();
    QWidget *createRightPanel();
    QBoxLayout *createInformation();
    QBoxLayout *createValueRow(const QString &caption, QLabel *value);
    void createPatientTable();
    QBoxLayout *createButtons();

    void settleConfig();
    void showSettings();
    void showInformation(const QString &title, const QString &text);

    static QString tooFewValuesText(const QVector<PatientRecord> &read,
                                    const QVector<int> &indices);
    void refuse(const QString &path, const QString &text);
    void computeCenters();
    /// Empty where there is nothing to save, any more or at all, or the user cancels.
    QString askWhereToSave(const QString &caption);
    QString defaultGraphName() const;
    ResultSubWindow *createResultPlot(const QVector<PatientScoreRecord> &shown) const;
    static QMdiSubWindow *createSubWindow();
    void setIdealKvadrant(int kvadrant);
    bool isFileLoaded() const;
    void setFileLoaded(bool loaded);

    // Row of patientTable under the last right click that hit one, and the list in which it counts.
    int contextRow = -1;
    QPointer<CPatientsModel> contextModel;
    QVector<PatientRecord> patients;
    QVector<PatientScoreRecord> scores;
    PatientScoreRecord medianCenter;
    PatientScoreRecord averageCenter;
    QAction *openAction = nullptr;
    QAction *saveAction = nullptr;
    QAction *exportGraphAction = nullptr;
    QAction *saveAnalysisAction = nullptr;
    QAction *groupsGraphAction = nullptr;
    QAction *settingsAction = nullptr;
    QAction *exitAction = nullptr;
    // Enabled exactly while a file is loaded: isFileLoaded() looks here.
    QAction *closeFileAction = nullptr;
    QMenu *fileMenu = nullptr;
    QMdiArea *mdiArea = nullptr;
    QTableView *patientTable = nullptr;
    QTableView *scoreTable = nullptr;
    QVBoxLayout *rightPanelLayout = nullptr;
    QPushButton *showGraphButton = nullptr;
    QPushButton *resetSelectionButton = nullptr;
    std::unique_ptr<CPatientsModel> patientsModel;
    std::unique_ptr<CPatientScore> patientScoreModel;
    QLabel *convergenceLabel = nullptr;
    QLabel *varianceLabel = nullptr;
    QLabel *centerLabel = nullptr;
    QLabel *offsetLabel = nullptr;
};
