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
class QMenu;
class QPushButton;
class QTableView;
class QVBoxLayout;
class ResultSubWindow;

/// The one window: owns the patients of the open workbook and their results, shows them in two
/// tables and in graph sub-windows, and offers the commands on them.
///
/// Each open file has a CPatientsModel of its own. A command that has to know after a dialog
/// whether the same file is still open keeps a QPointer to that model.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    /// Reads the settings; if no file can be read, says so and creates the default one.
    MainWindow();
    ~MainWindow() override;
    Q_DISABLE_COPY_MOVE(MainWindow)

private Q_SLOTS:
    // Other commands may run while one waits for its dialog: a global menu bar, an automation tool
    // and a session manager still reach the menu. After each dialog a command checks whether what
    // it is about to touch is still there, and ends silently if it is gone.
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
    QWidget *createRightPanel();
    QBoxLayout *createInformation();
    void createPatientTable();
    QBoxLayout *createButtons();

    /// Creates the default settings file if none can be read, and says so.
    void ensureConfig();
    void showSettings();
    void showInformation(const QString &title, const QString &text);

    void take(const QVector<PatientRecord> &opened);
    void refuse(const QString &path, const QString &whyNot);
    void computeCenters();
    /// Empty if no file is open, it was closed meanwhile, or the user cancels.
    QString askWhereToSave(const QString &caption);
    /// Null if the user cancels.
    QString askForGraphName();
    ResultSubWindow *createResultPlot(const QVector<PatientScoreRecord> &shown) const;
    void setIdealKvadrant(int kvadrant);
    bool isFileLoaded() const;
    void setFileLoaded(bool loaded);

    // Row of patientTable under the last right click that hit one, and the model it belongs to.
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
