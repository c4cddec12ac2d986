// SPDX-License-Identifier: GPL-3.0-or-later
#include <memory>

#include <QAccessible>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QGroupBox>
#include <QLabel>
#include <QLayout>
#include <QMap>
#include <QPushButton>
#include <QSpinBox>
#include <QtTest>

#include "settings/cconfig.h"
#include "settingsdialog.h"
#include "support/modalanswers.h"
#include "support/workingfolder.h"

namespace
{

const QString fileName = "config.ini";

void write(const QByteArray &content)
{
    QFile file(fileName);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

QByteArray content()
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArrayLiteral("no file");
}

template<typename Widget>
Widget *find(const SettingsDialog &dialog, const char *name)
{
    return dialog.findChild<Widget *>(name);
}

void click(QAbstractButton *button)
{
    // A check box reacts to a click on its mark, which is at its left end.
    QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
}

void press(SettingsDialog *dialog, const char *button)
{
    click(find<QPushButton>(*dialog, button));
}

QStringList items(const QComboBox *combo)
{
    QStringList all;
    for (int i = 0; i < combo->count(); ++i) {
        all << combo->itemText(i);
    }
    return all;
}

void changeEverything(SettingsDialog *dialog)
{
    QTest::keyClick(find<QComboBox>(*dialog, "convergenceCombo"), Qt::Key_End);
    QTest::keyClick(find<QComboBox>(*dialog, "varianceCombo"), Qt::Key_Down);
    click(find<QCheckBox>(*dialog, "averageCheck"));
    QTest::keyClick(find<QSpinBox>(*dialog, "offsetSpin"), Qt::Key_Up);
}

} // namespace

class TestSettingsDialog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<WorkingFolder>(); }

    void cleanup()
    {
        m_dialog.reset();
        m_folder.reset();
    }

    void windowHasTitleAndFixedSize()
    {
        open();
        QCOMPARE(m_dialog->windowTitle(), "Settings");
        QCOMPARE(m_dialog->parent(), nullptr);
        QCOMPARE(m_dialog->layout()->sizeConstraint(), QLayout::SetFixedSize);
        QCOMPARE(m_dialog->minimumSize(), m_dialog->maximumSize());
    }

    void groupsAreInOrder()
    {
        open();
        QStringList titles;
        const QLayout *outer = m_dialog->layout();
        QCOMPARE(outer->count(), 4);
        for (int i = 0; i < 3; ++i) {
            const auto *group = qobject_cast<QGroupBox *>(outer->itemAt(i)->widget());
            QVERIFY(group && group->isVisible());
            titles << group->title();
        }
        QCOMPARE(titles,
                 QStringList() << "Method"
                               << "Center method"
                               << "Offset");
    }

    void buttonsAreAtTheRightEdge()
    {
        open();
        const QLayout *buttons = m_dialog->layout()->itemAt(3)->layout();
        QVERIFY(buttons);
        QCOMPARE(buttons->alignment(), Qt::AlignRight);
        QCOMPARE(buttons->count(), 2);
        const auto *ok = qobject_cast<QPushButton *>(buttons->itemAt(0)->widget());
        const auto *cancel = qobject_cast<QPushButton *>(buttons->itemAt(1)->widget());
        QCOMPARE(ok, find<QPushButton>(*m_dialog, "okButton"));
        QCOMPARE(cancel, find<QPushButton>(*m_dialog, "cancelButton"));
        QCOMPARE(ok->text(), "Ok");
        QCOMPARE(cancel->text(), "Cancel");
        QCOMPARE(ok->parent(), m_dialog.get());
        QCOMPARE(cancel->parent(), m_dialog.get());
    }

    void widgetsAreInTheirGroups()
    {
        open();
        const auto groupOf = [this](const char *name) {
            return qobject_cast<QGroupBox *>(find<QWidget>(*m_dialog, name)->parentWidget())
                ->title();
        };
        const QMap<const char *, const char *> groups = {
            {"convergenceCombo", "Method"},    {"varianceCombo", "Method"},
            {"averageCheck", "Center method"}, {"medianCheck", "Center method"},
            {"offsetSpin", "Offset"},          {"showInfoCheck", "Show information"},
        };
        for (auto group = groups.begin(); group != groups.end(); ++group) {
            QCOMPARE(groupOf(group.key()), group.value());
        }

        const auto *average = find<QCheckBox>(*m_dialog, "averageCheck");
        const auto *median = find<QCheckBox>(*m_dialog, "medianCheck");
        QCOMPARE(average->text(), "Average");
        QCOMPARE(median->text(), "Median");
        QVERIFY(average->x() < median->x());
    }

    void labelsAreBesideTheirWidgets()
    {
        open();
        QStringList labels;
        const auto all = m_dialog->findChildren<QLabel *>();
        for (const QLabel *label : all) {
            QVERIFY(label->isVisible());
            labels << label->text();
        }
        labels.sort();
        QCOMPARE(labels,
                 QStringList() << "Convergence"
                               << "Offset count"
                               << "Variability");
        const auto *rows = find<QWidget>(*m_dialog, "convergenceCombo")->parentWidget()->layout();
        QCOMPARE(rows->count(), 2);
        for (int i = 0; i < rows->count(); ++i) {
            QCOMPARE(rows->itemAt(i)->layout()->alignment(), Qt::AlignLeft);
            QVERIFY(qobject_cast<QLabel *>(rows->itemAt(i)->layout()->itemAt(0)->widget()));
        }
    }

    void comboBoxesListTheMethodsByIndex()
    {
        open();
        QCOMPARE(items(find<QComboBox>(*m_dialog, "convergenceCombo")),
                 QStringList() << "Median difference"
                               << "Linear least squares"
                               << "C*e^(k*x)");
        QCOMPARE(items(find<QComboBox>(*m_dialog, "varianceCombo")),
                 QStringList() << "Standard deviation"
                               << "Difference standard deviation offset"
                               << "Interquartile range");
        const auto *spin = find<QSpinBox>(*m_dialog, "offsetSpin");
        QCOMPARE(spin->minimum(), 0);
        QCOMPARE(spin->maximum(), 99);
    }

    void tabGoesFromTopToBottom_data()
    {
        QTest::addColumn<int>("median");
        QTest::addColumn<QString>("center");
        QTest::newRow("median") << 1 << "medianCheck";
        QTest::newRow("average") << 0 << "averageCheck";
    }

    void tabGoesFromTopToBottom()
    {
        QFETCH(const int, median);
        QFETCH(const QString, center);
        write(settingsText(0, 0, median, 3, 1));
        open();
        QVERIFY(QTest::qWaitForWindowActive(m_dialog.get()));
        const QStringList order = {"convergenceCombo", "varianceCombo", center,
                                   "offsetSpin",       "okButton",      "cancelButton"};
        QStringList visited;
        for (int i = 0; i < order.size(); ++i) {
            visited << m_dialog->focusWidget()->objectName();
            QTest::keyClick(m_dialog->focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(visited, order);
        QCOMPARE(m_dialog->focusWidget()->objectName(), order.first());
        QTest::keyClick(m_dialog->focusWidget(), Qt::Key_Backtab);
        QCOMPARE(m_dialog->focusWidget()->objectName(), order.last());
    }

    void arrowKeysChooseTheCenter()
    {
        write(settingsText(0, 0, 1, 3, 1));
        open();
        QVERIFY(QTest::qWaitForWindowActive(m_dialog.get()));
        auto *median = find<QCheckBox>(*m_dialog, "medianCheck");
        const auto *average = find<QCheckBox>(*m_dialog, "averageCheck");
        median->setFocus();
        QTest::keyClick(median, Qt::Key_Left);
        QVERIFY(average->isChecked());
        QVERIFY(average->hasFocus());
        QTest::keyClick(m_dialog->focusWidget(), Qt::Key_Tab);
        QTest::keyClick(m_dialog->focusWidget(), Qt::Key_Backtab);
        QVERIFY(average->hasFocus());
    }

    void returnIsOkAndEscapeIsCancelInEveryField_data()
    {
        QTest::addColumn<QString>("field");
        for (const char *field :
             {"convergenceCombo", "varianceCombo", "averageCheck", "medianCheck", "offsetSpin"}) {
            QTest::newRow(field) << field;
        }
    }

    void returnIsOkAndEscapeIsCancelInEveryField()
    {
        QFETCH(const QString, field);
        for (const auto &[key, result] : {std::pair(Qt::Key_Return, QDialog::Accepted),
                                          std::pair(Qt::Key_Enter, QDialog::Accepted),
                                          std::pair(Qt::Key_Escape, QDialog::Rejected)}) {
            write(settingsText(1, 0, 1, 3, 1));
            open();
            find<QSpinBox>(*m_dialog, "offsetSpin")->setValue(7);
            auto *widget = m_dialog->findChild<QWidget *>(field);
            widget->setFocus();
            QTest::keyClick(widget, key);
            QVERIFY(!m_dialog->isVisible());
            QCOMPARE(m_dialog->result(), int(result));
            QCOMPARE(content(), settingsText(1, 0, 1, result == QDialog::Accepted ? 7 : 3, 1));
        }
    }

    void screenReaderNamesEveryField()
    {
        open();
        const QMap<QString, QString> names = {
            {"convergenceCombo", "Convergence"}, {"varianceCombo", "Variability"},
            {"averageCheck", "Average"},         {"medianCheck", "Median"},
            {"offsetSpin", "Offset count"},      {"okButton", "Ok"},
            {"cancelButton", "Cancel"},
        };
        for (auto name = names.begin(); name != names.end(); ++name) {
            auto *widget = m_dialog->findChild<QWidget *>(name.key());
            // On some systems the toolkit names a combo box by its current text.
            const QString own = widget->accessibleName();
            const QString told =
                QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
            QCOMPARE(own.isEmpty() ? told : own, name.value());
        }
    }

    void showInformationIsNeverShown()
    {
        open();
        const auto *check = find<QCheckBox>(*m_dialog, "showInfoCheck");
        QCOMPARE(check->text(), "Show info (above right table)");
        QVERIFY(!check->isVisible());
        QVERIFY(!check->parentWidget()->isVisible());
        QVERIFY(check->parentWidget()->parentWidget() == m_dialog.get());
        QCOMPARE(m_dialog->layout()->indexOf(check->parentWidget()), -1);
    }

    void widgetsShowTheSettings_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<int>("convergence");
        QTest::addColumn<int>("variance");
        QTest::addColumn<bool>("median");
        QTest::addColumn<int>("offset");
        QTest::addColumn<bool>("show");
        QTest::newRow("defaults") << settingsText(0, 0, 1, 3, 1) << 0 << 0 << true << 3 << true;
        QTest::newRow("others") << settingsText(1, 2, 0, 7, 0) << 1 << 2 << false << 7 << false;
        QTest::newRow("last methods") << settingsText(2, 1, 1, 0, 1) << 2 << 1 << true << 0 << true;
        QTest::newRow("empty file") << QByteArray() << 0 << 0 << false << 0 << false;
        QTest::newRow("Median missing")
            << QByteArray("[Method]\nConvergence = 1\n[Variable]\nSkip = 3\n") << 1 << 0 << false
            << 3 << false;
        QTest::newRow("Skip 99") << settingsText(0, 0, 1, 99, 1) << 0 << 0 << true << 99 << true;
        QTest::newRow("Skip 100") << settingsText(0, 0, 1, 100, 1) << 0 << 0 << true << 99 << true;
        QTest::newRow("Skip 150") << settingsText(0, 0, 1, 150, 1) << 0 << 0 << true << 99 << true;
        QTest::newRow("Skip -1") << settingsText(0, 0, 1, -1, 1) << 0 << 0 << true << 0 << true;
        QTest::newRow("Skip beyond an int")
            << QByteArray("[Variable]\nSkip = 5000000000\n") << 0 << 0 << false << 99 << false;
        QTest::newRow("Skip 2.9") << QByteArray("[Variable]\nSkip = 2.9\n") << 0 << 0 << false << 2
                                  << false;
    }

    void widgetsShowTheSettings()
    {
        QFETCH(QByteArray, file);
        QFETCH(bool, median);
        write(file);
        open();
        QTEST(find<QComboBox>(*m_dialog, "convergenceCombo")->currentIndex(), "convergence");
        QTEST(find<QComboBox>(*m_dialog, "varianceCombo")->currentIndex(), "variance");
        QCOMPARE(find<QCheckBox>(*m_dialog, "medianCheck")->isChecked(), median);
        QCOMPARE(find<QCheckBox>(*m_dialog, "averageCheck")->isChecked(), !median);
        QTEST(find<QSpinBox>(*m_dialog, "offsetSpin")->value(), "offset");
        QTEST(find<QCheckBox>(*m_dialog, "showInfoCheck")->isChecked(), "show");
    }

    void dialogFollowsTheStoreAndNotTheFile()
    {
        write(settingsText(0, 0, 1, 3, 1));
        open();
        write(settingsText(2, 2, 0, 9, 0));
        m_dialog = std::make_unique<SettingsDialog>();
        QCOMPARE(find<QSpinBox>(*m_dialog, "offsetSpin")->value(), 3);
        CConfig::instance().saveConfig(1, 1, 0, 8, 1);
        m_dialog = std::make_unique<SettingsDialog>();
        QCOMPARE(find<QSpinBox>(*m_dialog, "offsetSpin")->value(), 8);
        QCOMPARE(find<QComboBox>(*m_dialog, "convergenceCombo")->currentIndex(), 1);
    }

    void okSavesWhatTheUserChose()
    {
        write(settingsText(0, 0, 1, 3, 1));
        open();
        changeEverything(m_dialog.get());
        QCOMPARE(content(), settingsText(0, 0, 1, 3, 1));
        press(m_dialog.get(), "okButton");
        QCOMPARE(content(), settingsText(2, 1, 0, 4, 1));
        QCOMPARE(m_dialog->result(), int(QDialog::Accepted));
        QVERIFY(!m_dialog->isVisible());
        QCOMPARE(CConfig::instance().convergenceMethod(), quint64(2));
        QCOMPARE(CConfig::instance().skip(), quint64(4));
    }

    void okGivesAcceptedToExec()
    {
        for (const char *button : {"okButton", "cancelButton"}) {
            SettingsDialog dialog;
            ModalAnswers answers;
            answers.expect<SettingsDialog>(
                [button](SettingsDialog &shown) { press(&shown, button); });
            const int result = dialog.exec();
            QCOMPARE(result, int(qstrcmp(button, "okButton") == 0));
        }
    }

    void cancelAndCloseChangeNothing_data()
    {
        QTest::addColumn<int>("way");
        QTest::newRow("Cancel") << 0;
        QTest::newRow("Escape") << 1;
        QTest::newRow("window closed") << 2;
    }

    void cancelAndCloseChangeNothing()
    {
        QFETCH(int, way);
        const QByteArray before = "; mine\n[variable]\nSKIP=12\n[Other]\nkey=value\n";
        write(before);
        open();
        changeEverything(m_dialog.get());
        switch (way) {
        case 0:
            press(m_dialog.get(), "cancelButton");
            break;
        case 1:
            QTest::keyClick(m_dialog.get(), Qt::Key_Escape);
            break;
        default:
            m_dialog->close();
            break;
        }
        QVERIFY(!m_dialog->isVisible());
        QCOMPARE(m_dialog->result(), int(QDialog::Rejected));
        QCOMPARE(content(), before);
        QCOMPARE(CConfig::instance().convergenceMethod(), quint64(0));
        QCOMPARE(CConfig::instance().skip(), quint64(12));
    }

    void centerChecksExcludeEachOther()
    {
        write(settingsText(0, 0, 1, 3, 1));
        open();
        auto *average = find<QCheckBox>(*m_dialog, "averageCheck");
        auto *median = find<QCheckBox>(*m_dialog, "medianCheck");
        const auto state = [&] { return qMakePair(average->isChecked(), median->isChecked()); };
        click(median);
        QCOMPARE(state(), qMakePair(false, true));
        click(average);
        QCOMPARE(state(), qMakePair(true, false));
        click(average);
        QCOMPARE(state(), qMakePair(true, false));
        click(median);
        QCOMPARE(state(), qMakePair(false, true));

        const auto *choice = m_dialog->findChild<QButtonGroup *>();
        QVERIFY(choice && choice->exclusive());
        QCOMPARE(choice->buttons(), (QList<QAbstractButton *>{median, average}));
        QVERIFY(choice->id(median) < -1);
        QVERIFY(choice->id(average) < -1);
    }

    void fileAfterOk_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("after");

        QTest::newRow("no file") << QByteArray("none") << settingsText(0, 0, 0, 0, 0);
        QTest::newRow("empty file") << QByteArray() << settingsText(0, 0, 0, 0, 0);
        QTest::newRow("nothing to change")
            << settingsText(2, 1, 1, 5, 1) << settingsText(2, 1, 1, 5, 1);
        QTest::newRow("Show 0") << settingsText(0, 0, 1, 3, 0) << settingsText(0, 0, 1, 3, 0);
        QTest::newRow("Show 1") << settingsText(0, 0, 1, 3, 1) << settingsText(0, 0, 1, 3, 1);
        QTest::newRow("Skip 150") << settingsText(0, 0, 1, 150, 1) << settingsText(0, 0, 1, 99, 1);
        QTest::newRow("Skip -1") << settingsText(0, 0, 1, -1, 1) << settingsText(0, 0, 1, 0, 1);
        QTest::newRow("fractions") << QByteArray("[Method]\nConvergence = 2.9\nVariance = 1x\n")
                                   << settingsText(2, 0, 0, 0, 0);
        QTest::newRow("other order and case")
            << QByteArray("[INFO]\nSHOW=1\n[variable]\nskip = 4\n[result]\nMEDIAN=1\n"
                          "[method]\nVARIANCE=2\nconvergence=1\n")
            << QByteArray(
                   "[INFO]\nSHOW = 1\n\n\n[variable]\nskip = 4\n\n\n[result]\nMEDIAN = 1\n\n\n"
                   "[method]\nVARIANCE = 2\nconvergence = 1\n");
        QTest::newRow("unknown keys and comments")
            << QByteArray("; the settings of ward 3\n\n[Method]\n; by index\nConvergence = 1\n"
                          "Comment = keep me\nVariance = 2\n\n[Ward]\nName = 3\n\n[Variable]\n"
                          "Skip = 6\n")
            // SimpleIni puts one empty line before a comment and two before a section.
            << QByteArray("; the settings of ward 3\n\n\n[Method]\n\n; by index\nConvergence = 1\n"
                          "Comment = keep me\nVariance = 2\n\n\n[Ward]\nName = 3\n\n\n[Variable]\n"
                          "Skip = 6\n\n\n[Result]\nMedian = 0\n\n\n[Info]\nShow = 0\n");
        QTest::newRow("Median missing")
            << QByteArray("[Method]\nConvergence = 1\nVariance = 2\n\n\n[Result]\n\n\n[Variable]\n"
                          "Skip = 3\n\n\n[Info]\nShow = 1\n")
            << QByteArray("[Method]\nConvergence = 1\nVariance = 2\n\n\n[Result]\nMedian = 0\n\n\n"
                          "[Variable]\nSkip = 3\n\n\n[Info]\nShow = 1\n");
    }

    void fileAfterOk()
    {
        QFETCH(QByteArray, before);
        if (before != "none") {
            write(before);
        }
        open();
        press(m_dialog.get(), "okButton");
        QTEST(content(), "after");
    }

    void newFileOfDefaultsStaysAsItIs()
    {
        QCOMPARE(CConfig::instance().createDefaultConfig(), int(CConfig::Ok));
        QCOMPARE(content(), settingsText(0, 0, 1, 3, 1));
        SettingsDialog dialog;
        dialog.show();
        press(&dialog, "okButton");
        QCOMPARE(content(), settingsText(0, 0, 1, 3, 1));
    }

    void unwritableFileKeepsTheSettingsInMemory()
    {
        // Nobody, not even root, can read or write a folder as a file.
        QVERIFY(QDir().mkdir(fileName));
        open();
        changeEverything(m_dialog.get());
        press(m_dialog.get(), "okButton");
        QCOMPARE(m_dialog->result(), int(QDialog::Accepted));
        QCOMPARE(CConfig::instance().convergenceMethod(), quint64(2));
        QCOMPARE(CConfig::instance().varianceMethod(), quint64(1));
        QCOMPARE(CConfig::instance().skip(), quint64(1));
        QVERIFY(QFileInfo(fileName).isDir());
    }

private: // NOLINT(readability-redundant-access-specifiers)
    // Reads the present file into a new store and opens the dialog.
    void open()
    {
        CConfig::resetInstance();
        m_dialog = std::make_unique<SettingsDialog>();
        m_dialog->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_dialog.get()));
    }

    std::unique_ptr<WorkingFolder> m_folder;
    std::unique_ptr<SettingsDialog> m_dialog;
};

QTEST_MAIN(TestSettingsDialog)
#include "tst_settingsdialog.moc"
