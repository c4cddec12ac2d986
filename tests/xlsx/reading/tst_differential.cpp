// SPDX-License-Identifier: GPL-3.0-or-later
#include <map>

#include <QDateTime>
#include <QTemporaryDir>
#include <QTest>

#include <xlsxcell.h>
#include <xlsxcelllocation.h>
#include <xlsxworksheet.h>

#include "xlsx/reading/differential/changes.h"
#include "xlsx/reading/differential/plainreaders.h"
#include "xlsx/reading/workbookloader.h"

namespace
{

// Each seed is a file of its own; a quarter of the files has neutral changes only.
constexpr int usualFiles = 2000;

int numberInEnvironment(const char *name, int otherwise)
{
    return qEnvironmentVariableIsSet(name) ? qEnvironmentVariableIntValue(name) : otherwise;
}

// What was made of the workbook of a seed.
struct Trial {
    int seed;
    DicedWorkbook workbook;
    QVector<QByteArray> changes = {};
    bool letIn = false;
    QString wrong = {};
};

// What became of the workbooks with one kind of change.
struct Tally {
    int letIn = 0;
    int refused = 0;
    int different = 0;

    void add(const Trial &trial)
    {
        ++(trial.letIn ? letIn : refused);
        different += trial.wrong.isNull() ? 0 : 1;
    }
};

// What \p cell shows to whoever reads the document.
PlainCell presented(const QXlsx::Cell &cell)
{
    if (cell.isDateTime()) {
        const QVariant moment = cell.dateTime();
        const bool hasDay = moment.userType() != QMetaType::QTime;
        const bool hasTime = moment.userType() != QMetaType::QDate;
        QString words = hasDay ? moment.toDate().toString("yyyy-MM-dd") : QString();
        words += hasTime ? moment.toTime().toString(hasDay ? "THH:mm:ss" : "HH:mm:ss") : "";
        return {PlainCell::Moment, 0.0, words};
    }
    switch (cell.cellType()) {
    case QXlsx::Cell::BooleanType:
        return {PlainCell::Truth, 0.0, cell.value().toBool() ? "true" : "false"};
    case QXlsx::Cell::NumberType:
        return {PlainCell::Number, cell.value().toDouble(), {}};
    default:
        return {PlainCell::Text, 0.0, cell.value().toString()};
    }
}

PlainCells presented(const QXlsx::Document &document)
{
    PlainCells cells;
    int rows = 0;
    int columns = 0;
    const auto all = document.currentWorksheet()->getFullCells(&rows, &columns);
    for (const QXlsx::CellLocation &location : all) {
        cells.insert({{location.row, location.col}, presented(*location.cell)});
    }
    return cells;
}

QString listed(const PlainCells &cells)
{
    QStringList all;
    for (const auto &cell : cells) {
        all.append(QStringLiteral("%1/%2 %3")
                       .arg(cell.first.first)
                       .arg(cell.first.second)
                       .arg(cell.second.toString()));
    }
    return all.join(", ");
}

// Where the cells differ first; null where nowhere.
QString difference(const PlainCells &door, const PlainReading &reading)
{
    if (!reading.isClear()) {
        return "nobody can know: " + reading.why.left(80);
    }
    for (const auto &cell : door) {
        const auto other = reading.cells.find(cell.first);
        if (other == reading.cells.end() || !(other->second == cell.second)) {
            return listed({cell}) + " is "
                + (other == reading.cells.end() ? "nothing" : other->second.toString());
        }
    }
    for (const auto &cell : reading.cells) {
        if (door.find(cell.first) == door.end()) {
            return "nothing is " + listed({cell});
        }
    }
    return {};
}

// What the plain readers find that is not in the \p cells let in. The reading by local names does
// not count where the markup for compatibility changes it, nor where it meets a second part of one
// name: then the list of the archive lacks that part or calls it something else, or nothing refers
// to it. The reading by namespaces finds a second part that matters.
QString disagreement(const PlainCells &cells, const QByteArray &file)
{
    const QString standard = difference(cells, PlainReaders::byNamespaces(file));
    if (!standard.isNull()) {
        return "by namespaces " + standard;
    }
    const PlainReading resolved = PlainReaders::byLocalNames(file, true);
    const QString local = difference(cells, resolved);
    const bool counts = !local.isNull() && !resolved.why.startsWith("two parts")
        && PlainReaders::byLocalNames(file, false) == resolved;
    return counts ? "by local names " + local : QString();
}

QString why(const LoadError &error)
{
    return QStringLiteral("refused for reason %1, %2: %3, cell %4")
        .arg(error.reason)
        .arg(error.part, error.what, error.cell);
}

} // namespace

/// Workbooks in the manner of several writers, changed at random: what is let in has the cells that
/// two plain readers find, and what only looks different is let in.
///
/// By hand the environment asks for more: GLYMARK_DIFFERENTIAL_FILES says how many,
/// GLYMARK_DIFFERENTIAL_SEED the first seed, and GLYMARK_DIFFERENTIAL_FOLDER where the files with a
/// difference are kept.
class TestDifferential : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_folder.isValid()); }

    void init()
    {
        m_kinds.clear();
        m_all = {};
    }

    void neutralChangesLeaveTheCells()
    {
        for (int seed = m_first; seed < m_first + m_files / 4; ++seed) {
            Dice dice{unsigned(seed)};
            Trial trial = {seed, DicedWorkbook(&dice)};
            const QByteArray plain = trial.workbook.bytes(&dice);
            change(&trial, neutralChanges(), dice.below(5), &dice);
            const QByteArray file = trial.workbook.bytes(&dice);
            const LoadedWorkbook loaded = load(file);
            if (loaded.document) {
                const PlainCells cells = presented(*loaded.document);
                const QString moved = difference(cells, PlainReaders::byNamespaces(plain));
                trial.wrong = moved.isNull() ? disagreement(cells, file) : moved;
            } else {
                trial.wrong = why(loaded.error);
            }
            count(&trial, loaded);
        }
        summarize(int(neutralChanges().size()));
        QCOMPARE(m_all.refused, 0);
        QCOMPARE(m_all.different, 0);
    }

    void whatIsLetInReadsAsOthersReadIt()
    {
        const QVector<Change> harmful = elementChanges() + contentChanges() + packageChanges();
        for (int seed = m_first; seed < m_first + m_files - m_files / 4; ++seed) {
            Dice dice(unsigned(seed) ^ 0x5eedU);
            Trial trial = {seed, DicedWorkbook(&dice)};
            change(&trial, neutralChanges(), dice.below(3), &dice);
            trial.changes.clear();
            change(&trial, harmful, 1 + dice.below(2), &dice);
            const QByteArray file = trial.workbook.bytes(&dice);
            const LoadedWorkbook loaded = load(file);
            if (loaded.document) {
                trial.wrong = disagreement(presented(*loaded.document), file);
            }
            count(&trial, loaded);
        }
        summarize(int(harmful.size()));
        QCOMPARE(m_all.different, 0);
        // Who refuses everything is never wrong.
        QVERIFY(m_all.letIn >= (m_all.letIn + m_all.refused) / 6);
    }

private:
    static void change(Trial *trial, const QVector<Change> &changes, int number, Dice *dice)
    {
        constexpr int enough = 20;
        for (int tries = 0; trial->changes.size() < number && tries < enough; ++tries) {
            const Change &kind = dice->pick(changes);
            if (kind.make(&trial->workbook, dice)) {
                trial->changes.append(kind.name);
            }
        }
    }

    LoadedWorkbook load(const QByteArray &content) const
    {
        QFile file(m_folder.filePath("book.xlsx"));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
            qFatal("cannot write %s", qPrintable(file.fileName()));
        }
        file.close();
        return loadWorkbook(file.fileName());
    }

    void count(Trial *trial, const LoadedWorkbook &loaded)
    {
        trial->letIn = bool(loaded.document);
        m_all.add(*trial);
        for (const QByteArray &name : qAsConst(trial->changes)) {
            m_kinds[name].add(*trial);
        }
        if (trial->wrong.isNull()) {
            return;
        }
        const QString changes = trial->changes.toList().join(" + ");
        qWarning("seed %d, %s, %s: %s", trial->seed, trial->workbook.manner, qPrintable(changes),
                 qPrintable(trial->wrong));
        if (const QString kept = qEnvironmentVariable("GLYMARK_DIFFERENTIAL_FOLDER");
            !kept.isEmpty()) {
            QFile::copy(m_folder.filePath("book.xlsx"),
                        QStringLiteral("%1/%2.xlsx").arg(kept).arg(trial->seed));
        }
    }

    void summarize(int kinds) const
    {
        for (const auto &kind : m_kinds) {
            qInfo("%-45s let in %5d, refused %5d, different %5d", kind.first.constData(),
                  kind.second.letIn, kind.second.refused, kind.second.different);
        }
        qInfo("all: let in %d, refused %d", m_all.letIn, m_all.refused);
        if (m_files >= usualFiles) {
            QCOMPARE(int(m_kinds.size()), kinds);
        }
    }

    const int m_files = numberInEnvironment("GLYMARK_DIFFERENTIAL_FILES", usualFiles);
    const int m_first = numberInEnvironment("GLYMARK_DIFFERENTIAL_SEED", 0);
    QTemporaryDir m_folder;
    std::map<QByteArray, Tally> m_kinds;
    Tally m_all;
};

QTEST_GUILESS_MAIN(TestDifferential)
#include "tst_differential.moc"
