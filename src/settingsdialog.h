// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;
class QGroupBox;
class QPushButton;
class QSpinBox;

/// The dialog that edits the settings. It shows those of the store when it is created, and writes
/// all of them back when "Ok" is pressed.
class SettingsDialog : public QDialog
{
    Q_OBJECT

public:
    SettingsDialog();

private Q_SLOTS:
    void okButtonClicked();

private:
    QGroupBox *methodGroup();
    QGroupBox *showInfoGroup();
    QGroupBox *centerGroup();
    QGroupBox *offsetGroup();
    void readSettings();
    void setUpKeyboard();

    QPushButton *okButton;
    QPushButton *cancelButton;
    QComboBox *convergenceCombo;
    QComboBox *varianceCombo;
    QCheckBox *averageCheck;
    QCheckBox *medianCheck;
    QCheckBox *showInfoCheck;
    QSpinBox *offsetSpin;
};
