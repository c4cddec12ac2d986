// SPDX-License-Identifier: GPL-3.0-or-later
// A user who does anything in any order. GLYMARK_MONKEY_STEPS sets how many steps the walk has and
// GLYMARK_MONKEY_SEED chooses another one.

#include <algorithm>
#include <cmath>
#include <random>
#include <utility>

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QInputDialog>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QTest>
#include <QWindow>

#include "settingsdialog.h"
#include "support/mainwindowtester.h"

namespace
{

struct Settings {
    int convergence = 0;
    int variance = 0;
    bool median = true;
    int skip = 3;
};

/// The six methods once more, written differently and with more digits.
namespace Independent
{

long double deviation(const std::vector<long double> &values)
{
    long double sum = 0;
    long double squares = 0;
    for (const long double value : values) {
        sum += value;
    }
    const long double mean = sum / values.size();
    for (const long double value : values) {
        squares += (value - mean) * (value - mean);
    }
    return std::sqrt(squares / double(values.size()));
}

double middle(QVector<double> values)
{
    std::sort(values.begin(), values.end(),
              [](double a, double b) { return std::isnan(a) ? false : std::isnan(b) || a < b; });
    const int n = int(values.size());
    return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) * 0.5;
}

double medianStep(const QVector<double> &values)
{
    QVector<double> steps;
    for (int i = 1; i < values.size(); ++i) {
        steps << values[i] - values[i - 1];
    }
    return middle(steps);
}

double slope(const QVector<double> &values)
{
    const long double n = values.size();
    const long double meanX = (n - 1) / 2;
    long double xy = 0;
    long double xx = 0;
    for (int i = 0; i < values.size(); ++i) {
        xy += (i - meanX) * values[i];
        xx += (i - meanX) * (i - meanX);
    }
    return double(xy / xx);
}

double growth(const QVector<double> &values)
{
    long double s0 = 0;
    long double s1 = 0;
    long double s2 = 0;
    long double s3 = 0;
    long double s4 = 0;
    for (int i = 0; i < values.size(); ++i) {
        const long double y = values[i];
        const long double l = std::log(y);
        s0 += y;
        s1 += i * y;
        s2 += y * y * i;
        s3 += y * l;
        s4 += i * y * l;
    }
    return double((s0 * s4 - s1 * s3) / (s0 * s2 - s1 * s1));
}

double spread(const QVector<double> &values)
{
    return double(deviation({values.begin(), values.end()}));
}

double stepSpread(const QVector<double> &values, int skip)
{
    std::vector<long double> steps;
    for (int i = values.size() > skip ? skip : 0; i + 1 < values.size(); ++i) {
        steps.push_back((long double)(values[i]) - values[i + 1]);
    }
    return steps.empty() ? std::nan("") : double(deviation(steps));
}

double quartiles(QVector<double> s)
{
    std::sort(s.begin(), s.end());
    const int half = int(s.size()) / 2;
    const auto at = [&s](int i) { return s[std::min(i, int(s.size()) - 1)]; };
    if (half % 2) {
        return at((half - 1) / 2 + half) - at((half - 1) / 2);
    }
    return (at(half / 2 + half) + at(half / 2 + half + 1)) / 2
        - (at(half / 2 - 1) + at(half / 2)) / 2;
}

QVector<double> scores(const QVector<double> &values, int skip)
{
    return {medianStep(values),       slope(values),    growth(values), spread(values),
            stepSpread(values, skip), quartiles(values)};
}

} // namespace Independent

/// The result by a method, 0 to 5.
double resultOf(const PatientScoreRecord &score, int method)
{
    return method < 3 ? score.convergence.at(method) : score.variability.at(method - 3);
}

class Monkey
{
public:
    explicit Monkey(unsigned seed) : chance(seed)
    {
        writeFiles();
        tester.window->resize(1000, 800);
    }

    QString step()
    {
        struct Action {
            const char *name;
            void (Monkey::*act)();
        };
        static const std::array<Action, 22> actions = {{
            {"open", &Monkey::openGood},
            {"open", &Monkey::openGood},
            {"open a bad file", &Monkey::openBad},
            {"cancel open", &Monkey::cancelOpen},
            {"select", &Monkey::select},
            {"select", &Monkey::select},
            {"reset selection", &Monkey::resetSelection},
            {"show graph", &Monkey::showGraph},
            {"show graph", &Monkey::showGraph},
            {"group graph", &Monkey::groupGraph},
            {"handle a sub-window", &Monkey::handleSubWindow},
            {"handle a sub-window", &Monkey::handleSubWindow},
            {"press a key", &Monkey::pressKey},
            {"resize the window", &Monkey::resizeWindow},
            {"mark", &Monkey::mark},
            {"mark", &Monkey::mark},
            {"settings", &Monkey::changeSettings},
            {"save", &Monkey::save},
            {"export", &Monkey::exportGraph},
            {"close file", &Monkey::closeFile},
            {"interrupt a command", &Monkey::interrupt},
            {"interrupt a command", &Monkey::interrupt},
        }};
        const Action &action = actions.at(size_t(below(int(actions.size()))));
        (this->*action.act)();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return action.name;
    }

    /// What is not as it should be; empty if everything is.
    QString complaint()
    {
        const QStringList unexpected = tester.answers.takeUnexpected();
        if (!unexpected.isEmpty()) {
            return unexpected.join(' ');
        }
        const bool loaded = !expected.isEmpty();
        if (loaded != tester.isFileOpen() || loaded != tester.button("Show graph")->isEnabled()
            || loaded != (tester.patientsModel() != nullptr)) {
            return "controls do not follow the file";
        }
        if (!loaded) {
            return {};
        }
        const QString lists = listsComplaint();
        return lists.isEmpty() ? tablesComplaint() : lists;
    }

private:
    int below(int limit) { return int(chance() % unsigned(limit)); }
    bool maybe(int oneIn) { return below(oneIn) == 0; }

    void writeFiles()
    {
        good = {randomGroup(1, 12), randomGroup(5, 8), randomGroup(30, 25), randomGroup(80, 6)};
        for (int i = 0; i < good.size(); ++i) {
            saveGroup(QString("good%1.xlsx").arg(i), good.at(i));
        }
        tester.writeFile("garbage.xlsx", "garbage");
        QFile whole(tester.path("good2.xlsx"));
        if (whole.open(QFile::ReadOnly)) {
            tester.writeFile("cut.xlsx", whole.read(whole.size() / 2));
        }
        TestWorkbooks::save(tester.path("nobody.xlsx"), {});
        TestWorkbooks::save(tester.path("short.xlsx"), {{"a", 50.0, 60.0}, {"b", 50.0}});
    }

    QVector<PatientRecord> randomGroup(int patients, int mostValues)
    {
        QVector<PatientRecord> group;
        for (int number = 0; number < patients; ++number) {
            PatientRecord patient{QString("id %1 <&>").arg(number), {}, -1};
            const int count = 2 + below(mostValues);
            const bool level = maybe(6);
            for (int v = 0; v < count; ++v) {
                patient.values << (level ? 55.0 : 30 + below(900) / 10.0);
            }
            if (maybe(15)) {
                patient.values[below(count)] *= -1;
            }
            group << patient;
        }
        return group;
    }

    void saveGroup(const QString &name, const QVector<PatientRecord> &group) const
    {
        QVector<TestWorkbooks::Row> rows;
        for (const PatientRecord &patient : group) {
            TestWorkbooks::Row row{patient.id};
            for (const double value : patient.values) {
                row << value;
            }
            rows << row;
        }
        TestWorkbooks::save(tester.path(name), rows);
    }

    void openGood()
    {
        const int which = below(int(good.size()));
        tester.open(QString("good%1.xlsx").arg(which));
        expected = good.at(which);
    }

    void openBad()
    {
        static const std::array<const char *, 4> names = {"garbage.xlsx", "cut.xlsx", "nobody.xlsx",
                                                          "short.xlsx"};
        tester.openRefused(names.at(size_t(below(4))));
    }

    void cancelOpen()
    {
        tester.answers.expectAndCancel();
        tester.trigger("Open File");
    }

    void select()
    {
        for (int i = 0; i < 3 && !expected.isEmpty(); ++i) {
            const QModelIndex index =
                tester.patientTable()->model()->index(below(int(expected.size())), below(2));
            tester.patientTable()->scrollTo(index);
            QTest::mouseClick(tester.patientTable()->viewport(), Qt::LeftButton,
                              maybe(2) ? Qt::ControlModifier : Qt::NoModifier,
                              tester.patientTable()->visualRect(index).center());
        }
    }

    void resetSelection() { QTest::mouseClick(tester.button("Reset selection"), Qt::LeftButton); }

    void showGraph()
    {
        if (expected.isEmpty()) {
            return;
        }
        if (tester.patientTable()->selectionModel()->selectedRows().isEmpty()) {
            tester.answers.expectMessage();
        } else if (maybe(4)) {
            tester.answers.expectAndCancel();
        } else {
            static const std::array<const char *, 4> names = {"", " ", "<b>&", "a graph"};
            const QString name = names.at(size_t(below(4)));
            tester.answers.expect<QInputDialog>([name](QInputDialog &dialog) {
                dialog.setTextValue(name);
                dialog.accept();
            });
        }
        QTest::mouseClick(tester.button("Show graph"), Qt::LeftButton);
    }

    void groupGraph()
    {
        if (expected.isEmpty()) {
            tester.answers.expectMessage();
        }
        tester.trigger("Groups graph");
    }

    void handleSubWindow()
    {
        auto *area = tester.area();
        const QList<QMdiSubWindow *> open = tester.subWindows();
        if (open.isEmpty()) {
            return;
        }
        QMdiSubWindow *subWindow = open.at(below(int(open.size())));
        area->setActiveSubWindow(subWindow);
        if (open.size() > 8 || maybe(4)) {
            subWindow->close();
        } else if (auto *tabs = qobject_cast<QTabWidget *>(subWindow->widget()); tabs && maybe(2)) {
            tabs->setCurrentIndex(below(2));
        } else if (maybe(3)) {
            subWindow->showMinimized();
        } else if (maybe(3)) {
            subWindow->showMaximized();
        } else {
            subWindow->showNormal();
            subWindow->resize(300 + below(900), 200 + below(700));
        }
        tester.window->grab();
    }

    void pressKey()
    {
        static const std::array<std::pair<Qt::Key, Qt::KeyboardModifiers>, 5> keys = {{
            {Qt::Key_F6, Qt::NoModifier},
            {Qt::Key_F6, Qt::ShiftModifier},
            {Qt::Key_Tab, Qt::ControlModifier},
            {Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier},
            {Qt::Key_F10, Qt::ShiftModifier},
        }};
        const auto &[key, modifiers] = keys.at(size_t(below(int(keys.size()))));
        QTest::keyClick(tester.window->windowHandle(), key, modifiers);
        if (QWidget *menu = QApplication::activePopupWidget()) {
            menu->close();
        }
    }

    void resizeWindow() { tester.window->resize(600 + below(1000), 450 + below(700)); }

    void mark()
    {
        if (expected.isEmpty()) {
            return;
        }
        const int row = below(int(expected.size()));
        if (maybe(4)) {
            tester.openMenu(row)->close();
            return;
        }
        const int entry = 1 + below(5);
        tester.mark(row, entry);
        expected[row].idealKvadrant = entry == 5 ? PatientRecord::noIdealKvadrant : entry;
    }

    void changeSettings()
    {
        const Settings wanted{below(3), below(3), maybe(2), below(12)};
        const bool accepted = !maybe(4);
        tester.answers.expect<SettingsDialog>([wanted, accepted](SettingsDialog &dialog) {
            dialog.findChild<QComboBox *>("convergenceCombo")->setCurrentIndex(wanted.convergence);
            dialog.findChild<QComboBox *>("varianceCombo")->setCurrentIndex(wanted.variance);
            dialog
                .findChild<QAbstractButton *>(
                    QString(wanted.median ? "medianCheck" : "averageCheck"))
                ->click();
            dialog.findChild<QSpinBox *>("offsetSpin")->setValue(wanted.skip);
            dialog.findChild<QPushButton *>(accepted ? "okButton" : "cancelButton")->click();
        });
        tester.trigger("Settings");
        if (accepted) {
            settings = wanted;
        }
    }

    void save()
    {
        if (expected.isEmpty()) {
            tester.answers.expectMessage();
        } else if (maybe(3)) {
            tester.answers.expectAndCancel();
        } else {
            tester.answers.expectFile(
                tester.path(maybe(4) ? "nowhere/out.xlsx" : "out of the monkey"));
        }
        tester.trigger(maybe(2) ? "Save file" : "Save data analysis");
        // The dialog asks before it replaces a file.
        QFile::remove(tester.path("out of the monkey"));
    }

    void exportGraph()
    {
        auto *area = tester.area();
        const QMdiSubWindow *current = area->currentSubWindow();
        if (!current || !qobject_cast<QTabWidget *>(current->widget())) {
            tester.answers.expectMessage();
        } else if (maybe(3)) {
            tester.answers.expectAndCancel();
        } else {
            tester.answers.expectFile(tester.path("page.svg"));
            tester.answers.expectMessage();
        }
        tester.trigger("Export graph");
        QFile::remove(tester.path("page.svg"));
    }

    void closeFile()
    {
        if (maybe(3)) {
            tester.trigger("Close file");
            expected.clear();
        }
    }

    /// Runs a command, and another one under its dialog.
    void interrupt()
    {
        static const std::array<void (Monkey::*)(), 5> commands = {
            &Monkey::interruptOpen, &Monkey::interruptShowGraph, &Monkey::interruptSettings,
            &Monkey::interruptSave, &Monkey::interruptExport};
        (this->*commands.at(size_t(below(5))))();
    }

    std::function<void()> anotherCommand()
    {
        static const std::array<void (Monkey::*)(), 5> commands = {
            &Monkey::openGood, &Monkey::closeFile, &Monkey::groupGraph, &Monkey::handleSubWindow,
            &Monkey::changeSettings};
        const auto command = commands.at(size_t(below(5)));
        return [this, command] { (this->*command)(); };
    }

    void interruptOpen()
    {
        const int which = below(int(good.size()));
        tester.answers.expectInterruptedFile(anotherCommand(),
                                             tester.path(QString("good%1.xlsx").arg(which)));
        tester.trigger("Open File");
        expected = good.at(which);
    }

    void interruptShowGraph()
    {
        if (expected.isEmpty()
            || tester.patientTable()->selectionModel()->selectedRows().isEmpty()) {
            return;
        }
        tester.answers.expectInterrupted<QInputDialog>(
            anotherCommand(), [](QInputDialog &dialog) { dialog.accept(); });
        QTest::mouseClick(tester.button("Show graph"), Qt::LeftButton);
    }

    void interruptSettings()
    {
        tester.answers.expectInterrupted<SettingsDialog>(
            anotherCommand(), [](SettingsDialog &dialog) { dialog.reject(); });
        tester.trigger("Settings");
    }

    void interruptSave()
    {
        if (expected.isEmpty()) {
            return;
        }
        tester.answers.expectInterruptedFile(anotherCommand(), tester.path("interrupted.xlsx"));
        tester.trigger(maybe(2) ? "Save file" : "Save data analysis");
        QFile::remove(tester.path("interrupted.xlsx"));
    }

    void interruptExport()
    {
        auto *area = tester.area();
        const QPointer<QMdiSubWindow> current = area->currentSubWindow();
        if (!current || !qobject_cast<QTabWidget *>(current->widget())) {
            return;
        }
        const auto meanwhile = [this, area, current, command = anotherCommand()] {
            command();
            if (area->subWindowList().contains(current)) {
                tester.answers.expectMessage();
            }
        };
        tester.answers.expectInterruptedFile(meanwhile, tester.path("interrupted.svg"));
        tester.trigger("Export graph");
        QFile::remove(tester.path("interrupted.svg"));
    }

    QString listsComplaint() const
    {
        const auto &patients = tester.patientsModel()->patients;
        const auto &scores = tester.patientsModel()->scores;
        if (patients.size() != expected.size() || scores.size() != expected.size()) {
            return "lists of another length";
        }
        for (int patient = 0; patient < expected.size(); ++patient) {
            const PatientRecord &wanted = expected.at(patient);
            if (patients.at(patient).idealKvadrant != wanted.idealKvadrant) {
                return QString("mark of patient %1").arg(patient);
            }
            if (patients.at(patient).id != wanted.id || scores.at(patient).id != wanted.id
                || patients.at(patient).values != wanted.values) {
                return QString("values of patient %1").arg(patient);
            }
            if (scores.at(patient).convergence.size() != 3
                || scores.at(patient).variability.size() != 3) {
                return QString("results of patient %1").arg(patient);
            }
        }
        return {};
    }

    double centerOf(int method) const
    {
        QVector<double> results;
        for (const PatientScoreRecord &score : tester.patientsModel()->scores) {
            results << resultOf(score, method);
        }
        if (settings.median) {
            return Independent::middle(results);
        }
        double sum = 0;
        for (const double result : std::as_const(results)) {
            sum += result;
        }
        return sum / double(results.size());
    }

    QString tablesComplaint() const
    {
        QVector<double> centers;
        for (int method = 0; method < 6; ++method) {
            centers << centerOf(method);
        }
        QString complaint;
        for (int patient = 0; patient < expected.size() && complaint.isEmpty(); ++patient) {
            complaint = markComplaint(patient, centers);
            const QVector<double> wanted =
                Independent::scores(expected.at(patient).values, settings.skip);
            for (int method = 0; method < 6 && complaint.isEmpty(); ++method) {
                complaint = cellComplaint(patient, method, wanted.at(method), centers.at(method));
            }
        }
        return complaint;
    }

    QString cellComplaint(int patient, int method, double wanted, double center) const
    {
        const double result = resultOf(tester.patientsModel()->scores.at(patient), method);
        const bool same = std::isnan(result)
            ? std::isnan(wanted)
            : std::abs(result - wanted) <= 1e-9 * std::max(1.0, std::abs(wanted));
        const QModelIndex cell = tester.scoreModel()->index(method, patient);
        const QString color = QString(result > center       ? "#e79292"
                                          : center > result ? "#aad083"
                                                            : "#647b98");
        if (same && cell.data().toString() == QString::number(result)
            && cell.data(Qt::BackgroundRole).value<QColor>().name() == color) {
            return {};
        }
        return QString("method %1, patient %2: %3 for %4")
            .arg(method)
            .arg(patient)
            .arg(result, 0, 'g', 17)
            .arg(wanted, 0, 'g', 17);
    }

    QString markComplaint(int patient, const QVector<double> &centers) const
    {
        const PatientScoreRecord &score = tester.patientsModel()->scores.at(patient);
        const int x = settings.convergence;
        const int y = 3 + settings.variance;
        const QString mark = QString(resultOf(score, x) < centers.at(x) ? "B/" : "W/")
            + QString(resultOf(score, y) >= centers.at(y) ? "W" : "B");
        return tester.patientsModel()->index(patient, 1).data().toString() == mark
            ? QString()
            : QString("mark in the table for patient %1").arg(patient);
    }

    StartedTester tester;
    std::mt19937 chance;
    QVector<QVector<PatientRecord>> good;
    QVector<PatientRecord> expected;
    Settings settings;
};

} // namespace

class TestMonkey : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everythingHoldsAfterEachStep()
    {
        const int steps = qEnvironmentVariableIsSet("GLYMARK_MONKEY_STEPS")
            ? qEnvironmentVariableIntValue("GLYMARK_MONKEY_STEPS")
            : 300;
        const auto seed = unsigned(qEnvironmentVariableIntValue("GLYMARK_MONKEY_SEED"));
        Monkey monkey(seed);
        for (int i = 0; i < steps; ++i) {
            const QString action = monkey.step();
            const QString complaint = monkey.complaint();
            QVERIFY2(complaint.isEmpty(),
                     qPrintable(QString("step %1, %2: %3").arg(i).arg(action, complaint)));
        }
    }
};

QTEST_MAIN(TestMonkey)
#include "tst_monkey.moc"
