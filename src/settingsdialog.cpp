// SPDX-License-Identifier: GPL-3.0-or-later
#include "settingsdialog.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include "analysis/methodlabels.h"
#include "settings/cconfig.h"

namespace
{

// Tests and style sheets find the widget by this name.
template<typename Widget>
Widget *withObjectName(Widget *widget, const char *name)
{
    widget->setObjectName(QLatin1String(name));
    return widget;
}

// A screen reader reads out the label as the name of the field.
QLabel *labelFor(QWidget *field, const QString &text)
{
    auto *label = new QLabel(text);
    label->setBuddy(field);
    field->setAccessibleName(text);
    return label;
}

QHBoxLayout *labelledRow(const QString &text, QWidget *widget)
{
    auto *row = new QHBoxLayout;
    row->setAlignment(Qt::AlignLeft);
    row->addWidget(labelFor(widget, text));
    row->addWidget(widget);
    return row;
}

// A value outside the range of the spin box becomes the nearest end. Numbers from 2^63 on are
// negative ones that have wrapped around, and become 0.
int offsetIn(const QSpinBox *spin, quint64 skip)
{
    return int(qBound(qint64(spin->minimum()), qint64(skip), qint64(spin->maximum())));
}

} // namespace

SettingsDialog::SettingsDialog()
    : okButton(withObjectName(new QPushButton(tr("Ok"), this), "okButton")),
      cancelButton(withObjectName(new QPushButton(tr("Cancel"), this), "cancelButton")),
      convergenceCombo(withObjectName(new QComboBox, "convergenceCombo")),
      varianceCombo(withObjectName(new QComboBox, "varianceCombo")),
      averageCheck(withObjectName(new QCheckBox(tr("Average")), "averageCheck")),
      medianCheck(withObjectName(new QCheckBox(tr("Median")), "medianCheck")),
      showInfoCheck(
          withObjectName(new QCheckBox(tr("Show info (above right table)")), "showInfoCheck")),
      offsetSpin(withObjectName(new QSpinBox, "offsetSpin"))
{
    setWindowTitle(tr("Settings"));

    auto *buttons = new QHBoxLayout;
    buttons->setAlignment(Qt::AlignRight);
    buttons->addWidget(okButton);
    buttons->addWidget(cancelButton);

    auto *outer = new QVBoxLayout(this);
    outer->addWidget(methodGroup());
    showInfoGroup()->hide();
    outer->addWidget(centerGroup());
    outer->addWidget(offsetGroup());
    outer->addLayout(buttons);
    outer->setSizeConstraint(QLayout::SetFixedSize);

    readSettings();
    setUpKeyboard();

    connect(okButton, &QPushButton::clicked, this, &SettingsDialog::okButtonClicked);
    connect(cancelButton, &QPushButton::clicked, this, &SettingsDialog::reject);
}

QGroupBox *SettingsDialog::methodGroup()
{
    // The index of an item is the index of its method.
    for (const Method &method : convergenceMethods) {
        convergenceCombo->addItem(tr(method.dialog));
    }
    for (const Method &method : variabilityMethods) {
        varianceCombo->addItem(tr(method.dialog));
    }
    auto *group = new QGroupBox(tr("Method"), this);
    auto *rows = new QVBoxLayout(group);
    rows->addLayout(labelledRow(tr("Convergence"), convergenceCombo));
    rows->addLayout(labelledRow(tr("Variability"), varianceCombo));
    return group;
}

// Required as is: in no layout and never shown. Its check box keeps the setting from the file until
// it is saved again.
QGroupBox *SettingsDialog::showInfoGroup()
{
    auto *group = new QGroupBox(tr("Show information"), this);
    auto *row = new QHBoxLayout(group);
    row->addWidget(showInfoCheck);
    return group;
}

QGroupBox *SettingsDialog::centerGroup()
{
    auto *choice = new QButtonGroup(this);
    choice->addButton(medianCheck);
    choice->addButton(averageCheck);
    auto *group = new QGroupBox(tr("Center method"), this);
    auto *row = new QHBoxLayout(group);
    row->addWidget(averageCheck);
    row->addWidget(medianCheck);
    return group;
}

QGroupBox *SettingsDialog::offsetGroup()
{
    offsetSpin->setMinimum(0);
    auto *group = new QGroupBox(tr("Offset"), this);
    auto *row = new QHBoxLayout(group);
    row->addWidget(labelFor(offsetSpin, tr("Offset count")));
    row->addWidget(offsetSpin);
    return group;
}

void SettingsDialog::readSettings()
{
    const CConfig &config = CConfig::instance();
    convergenceCombo->setCurrentIndex(int(config.convergenceMethod()));
    varianceCombo->setCurrentIndex(int(config.varianceMethod()));
    QCheckBox *center = config.resultMethod() == 1 ? medianCheck : averageCheck;
    center->setChecked(true);
    offsetSpin->setValue(offsetIn(offsetSpin, config.skip()));
    showInfoCheck->setChecked(config.showInfo() == 1);
}

// Tab goes from top to bottom and stops only at the chosen one of the two centers. Return means
// "Ok" in every field; Escape means "Cancel" in any dialog.
void SettingsDialog::setUpKeyboard()
{
    QWidget *previous = convergenceCombo;
    for (QWidget *next : std::initializer_list<QWidget *>{varianceCombo, averageCheck, medianCheck,
                                                          offsetSpin, okButton, cancelButton}) {
        setTabOrder(previous, next);
        previous = next;
    }
    // The arrow keys choose the other one, which then becomes the tab stop.
    QCheckBox *otherCenter = medianCheck->isChecked() ? averageCheck : medianCheck;
    otherCenter->setFocusPolicy(Qt::ClickFocus);
    okButton->setDefault(true);
    convergenceCombo->setFocus();
}

void SettingsDialog::okButtonClicked()
{
    CConfig::instance().saveConfig(convergenceCombo->currentIndex(), varianceCombo->currentIndex(),
                                   medianCheck->isChecked(), offsetSpin->value(),
                                   showInfoCheck->isChecked());
    // close() rejects the dialog, so setResult() comes after it.
    close();
    setResult(Accepted);
}
