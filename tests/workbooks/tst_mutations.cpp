// SPDX-License-Identifier: GPL-3.0-or-later
#include <array>

#include <QDir>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTest>

#include <private/qzipreader_p.h>
#include <sys/resource.h>

#include "support/dice.h"
#include "support/testworkbooks.h"
#include "support/workingfolder.h"
#include "workbooks/patientreader.h"
#include "xlsx/reading/workbookloader.h"

namespace
{

using Parts = QVector<QPair<QString, QByteArray>>;

// Each seed is a file of its own; half of them are changed in the archive, half in the XML.
constexpr int mutations = 2000;
constexpr qint64 longestLoad = 5000; // ms

const QString dataFolder = "data/writers";

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void flipBits(QByteArray *bytes, Dice *dice)
{
    const int flips = 1 + dice->below(3);
    for (int i = 0; i < flips && !bytes->isEmpty(); ++i) {
        const int at = dice->below(bytes->size());
        (*bytes)[at] = static_cast<char>(bytes->at(at) ^ (1 << dice->below(8)));
    }
}

void cutEnd(QByteArray *bytes, Dice *dice)
{
    bytes->truncate(dice->below(bytes->size()));
}

void cutOut(QByteArray *bytes, Dice *dice)
{
    bytes->remove(dice->below(bytes->size()), 1 + dice->below(64));
}

void swapBlocks(QByteArray *bytes, Dice *dice)
{
    const int size = 1 + dice->below(bytes->size() / 4);
    const int first = dice->below(bytes->size() - 2 * size);
    const int second = first + size + dice->below(bytes->size() - first - 2 * size);
    const QByteArray block = bytes->mid(first, size);
    bytes->replace(first, size, bytes->mid(second, size));
    bytes->replace(second, size, block);
}

void repeatBlock(QByteArray *bytes, Dice *dice)
{
    const int size = 1 + dice->below(bytes->size() / 4);
    const QByteArray block = bytes->mid(dice->below(bytes->size() - size), size);
    bytes->insert(dice->below(bytes->size()), block);
}

// Blocks from one tag to another: changes of them often leave the XML well-formed.
void moveElements(QByteArray *bytes, Dice *dice)
{
    const int from = int(bytes->indexOf('<', dice->below(bytes->size())));
    const int to = int(bytes->indexOf('<', from + 1 + dice->below(200)));
    const int target = int(bytes->indexOf('<', dice->below(bytes->size())));
    if (from >= 0 && to > from && target >= 0) {
        const QByteArray block = bytes->mid(from, to - from);
        bytes->insert(target, block);
    }
}

using Change = void (*)(QByteArray *, Dice *);
constexpr std::array<Change, 6> archiveChanges = {&flipBits, &flipBits,   &cutEnd,
                                                  &cutOut,   &swapBlocks, &repeatBlock};
constexpr std::array<Change, 6> xmlChanges = {&flipBits,   &flipBits,    &cutOut,
                                              &swapBlocks, &repeatBlock, &moveElements};

void change(const std::array<Change, 6> &changes, QByteArray *bytes, Dice *dice)
{
    changes.at(static_cast<std::size_t>(dice->below(static_cast<int>(changes.size()))))(bytes,
                                                                                        dice);
}

struct Reading {
    QVector<QString> identifiers;
    QVector<QVector<double>> values;

    explicit Reading(const QXlsx::Document &document)
    {
        const int count = readPatientCount(document);
        for (int i = 0; i < count; ++i) {
            identifiers.append(readPatientId(document, i + 2));
            values.append(readPatientValues(document, i));
        }
    }
    bool operator==(const Reading &other) const
    {
        return identifiers == other.identifiers && values == other.values;
    }
};

Parts unpacked(const QString &path)
{
    Parts parts;
    const QZipReader zip(path);
    const auto files = zip.fileInfoList();
    for (const auto &file : files) {
        if (file.isFile) {
            parts.append({file.filePath, zip.fileData(file.filePath)});
        }
    }
    return parts;
}

bool isSheet(const QString &name)
{
    return name.endsWith("worksheets/sheet1.xml");
}

// The sheet more often than by chance, because there are many other parts.
int choosePart(const Parts &parts, Dice *dice)
{
    int chosen = dice->below(parts.size());
    for (int i = 0; i < parts.size() && dice->below(2) == 0; ++i) {
        chosen = isSheet(parts.at(i).first) ? i : chosen;
    }
    return chosen;
}

// Whether a change of the part leaves numbers as they are; only texts may change.
bool holdsTextsOnly(const QString &name)
{
    return name.endsWith("sharedStrings.xml");
}

bool holdsNoCells(const QString &name)
{
    return !isSheet(name) && !holdsTextsOnly(name) && !name.endsWith("styles.xml");
}

// The cells as the XML has them, by their references.
QHash<QString, QString> cellsIn(const QByteArray &sheet)
{
    static const QRegularExpression cell(R"x(<c r="([A-Z]+[0-9]+)"[^<>/]*(/>|>.*?</c>))x");
    QHash<QString, QString> cells;
    auto matches = cell.globalMatch(QString::fromUtf8(sheet));
    while (matches.hasNext()) {
        const auto match = matches.next();
        cells.insert(match.captured(1), match.captured(0));
    }
    return cells;
}

} // namespace

class TestMutations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const QDir folder(QFINDTESTDATA(dataFolder));
        const QStringList names = folder.entryList({"*.xlsx"});
        for (const QString &name : names) {
            m_fixtures.append(folder.filePath(name));
        }
        QCOMPARE(m_fixtures.size(), 5);
    }

    void changedArchiveIsRefusedOrReadsTheSame()
    {
        const QString path = m_folder.filePath("archive.xlsx");
        for (unsigned seed = 0; seed < mutations / 2; ++seed) {
            Dice dice(seed);
            const QString fixture = m_fixtures.at(dice.below(m_fixtures.size()));
            const LoadedWorkbook original = loadWorkbook(fixture);
            QByteArray bytes = contents(fixture);
            change(archiveChanges, &bytes, &dice);
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            QCOMPARE(file.write(bytes), qint64(bytes.size()));
            file.close();
            const LoadedWorkbook changed = load(path);
            QCOMPARE(changed.document == nullptr, changed.error.reason != LoadError::None);
            if (changed.document) {
                QVERIFY2(Reading(*changed.document) == Reading(*original.document),
                         qPrintable(QString("seed %1").arg(seed)));
            }
        }
        compareCounts();
    }

    void changedXmlIsRefusedOrLeavesTheOtherCells()
    {
        const QString path = m_folder.filePath("xml.xlsx");
        for (unsigned seed = mutations / 2; seed < mutations; ++seed) {
            Dice dice(seed);
            const QString fixture = m_fixtures.at(dice.below(m_fixtures.size()));
            const LoadedWorkbook original = loadWorkbook(fixture);
            Parts parts = unpacked(fixture);
            const int chosen = choosePart(parts, &dice);
            const QByteArray before = parts.at(chosen).second;
            change(xmlChanges, &parts[chosen].second, &dice);
            TestWorkbooks::savePackage(path, parts);
            const LoadedWorkbook changed = load(path);
            QCOMPARE(changed.document == nullptr, changed.error.reason != LoadError::None);
            if (changed.document) {
                comparePart(parts.at(chosen).first, *original.document, *changed.document, before,
                            parts.at(chosen).second);
            }
            QVERIFY2(!QTest::currentTestFailed(), qPrintable(QString("seed %1").arg(seed)));
        }
        compareCounts();
    }

    void cleanupTestCase()
    {
        qInfo("%d refused, %d loaded, the longest in %lld ms", m_refused, m_loaded, m_longest);
        QVERIFY2(m_longest < longestLoad, qPrintable(QString::number(m_longest)));
#ifndef GLYMARK_SANITIZED // which keeps memory that was given back
        constexpr long largestMemory = 512L * 1024; // KiB
        rusage usage = {};
        getrusage(RUSAGE_SELF, &usage);
        QVERIFY2(usage.ru_maxrss < largestMemory, qPrintable(QString::number(usage.ru_maxrss)));
#endif
    }

private:
    LoadedWorkbook load(const QString &path)
    {
        QElapsedTimer timer;
        timer.start();
        LoadedWorkbook workbook = loadWorkbook(path);
        m_longest = qMax(m_longest, timer.elapsed());
        (workbook.document ? m_loaded : m_refused) += 1;
        return workbook;
    }

    // Files of both kinds, or the changes prove nothing.
    void compareCounts() const
    {
        QVERIFY(m_refused > mutations / 20);
        QVERIFY(m_loaded > mutations / 20);
    }
    // What does not depend on the part is as before.
    void comparePart(const QString &name, const QXlsx::Document &original,
                     const QXlsx::Document &changed, const QByteArray &before,
                     const QByteArray &after)
    {
        if (holdsNoCells(name)) {
            QVERIFY2(Reading(changed) == Reading(original), qPrintable(name));
        } else if (isSheet(name)) {
            compareUntouched(original, changed, before, after);
        }
    }

    // A cell that is unchanged in the XML reads as before.
    void compareUntouched(const QXlsx::Document &original, const QXlsx::Document &changed,
                          const QByteArray &before, const QByteArray &after)
    {
        const auto cellsBefore = cellsIn(before);
        const auto cellsAfter = cellsIn(after);
        for (auto cell = cellsBefore.cbegin(); cell != cellsBefore.cend(); ++cell) {
            if (cellsAfter.value(cell.key()) == cell.value()) {
                const QXlsx::CellReference place(cell.key());
                QCOMPARE(changed.read(place), original.read(place));
            }
        }
    }

    WorkingFolder m_folder;
    QStringList m_fixtures;
    qint64 m_longest = 0;
    int m_refused = 0;
    int m_loaded = 0;
};

QTEST_GUILESS_MAIN(TestMutations)
#include "tst_mutations.moc"
