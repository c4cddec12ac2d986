// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/zipdirectory.h"

#include <memory>

#include <QTest>

#include <zip.h>

#include "support/handmadearchive.h"
#include "support/testworkbooks.h"
#include "support/workingfolder.h"
#include "workbooks/patientreader.h"
#include "xlsx/reading/workbookloader.h"
#include "xlsx/reading/zippackage.h"

Q_DECLARE_METATYPE(HandmadeArchive)
Q_DECLARE_METATYPE(LoadError::Reason)

namespace
{

const QString sheetPart = "xl/worksheets/sheet1.xml";
constexpr int endSize = 22;
constexpr int entrySize = 46;
constexpr int checksumAt = 16; // in an entry, as are the others
constexpr int packedSizeAt = 20;
constexpr int sizeAt = 24;

// A workbook of the one value \p value.
HandmadeArchive archiveOf(const QByteArray &value)
{
    HandmadeWorkbook workbook;
    workbook.rows =
        R"(<row r="2"><c r="A2" t="str"><v>P1</v></c><c r="B2"><v>)" + value + "</v></c></row>";
    HandmadeArchive archive;
    archive.parts = workbook.parts();
    return archive;
}

QByteArray withComment(HandmadeArchive archive, const QByteArray &comment)
{
    archive.comment = comment;
    return archive.bytes();
}

QByteArray withPart(HandmadeArchive archive, const QString &name, const QByteArray &content)
{
    archive.parts.prepend({name, content});
    return archive.bytes();
}

QByteArray withExtras(const QString &part, const QByteArray &inList, const QByteArray &local)
{
    HandmadeArchive archive = archiveOf("5");
    archive.extraPart = part;
    archive.listExtra = inList;
    archive.localExtra = local;
    return archive.bytes();
}

QByteArray unicodePath(const QByteArray &other)
{
    return HandmadeArchive::unicodePath(sheetPart.toUtf8(), other);
}

// The archive with the number of \p size bytes at \p at, counted from the end record, changed.
QByteArray withChange(QByteArray archive, int at, int by = 1)
{
    const int place = int(archive.size()) - endSize + at;
    archive[place] = static_cast<char>(archive.at(place) + by);
    return archive;
}

// A zip64 archive whose end record has the numbers, too: how many entries there are, how many bytes
// they take and where they begin.
QByteArray withNumbers(QByteArray zip64)
{
    const int end = int(zip64.size()) - endSize;
    const int record = end - 20 - 56;
    zip64.replace(end + 8, 2, zip64.mid(record + 24, 2));
    zip64.replace(end + 10, 2, zip64.mid(record + 32, 2));
    zip64.replace(end + 12, 4, zip64.mid(record + 40, 4));
    zip64.replace(end + 16, 4, zip64.mid(record + 48, 4));
    return zip64;
}

void addReadable()
{
    QTest::addColumn<QByteArray>("bytes");
    const HandmadeArchive archive = archiveOf("5");
    HandmadeArchive zip64 = archive;
    zip64.zip64 = true;
    HandmadeArchive descriptors = archive;
    descriptors.descriptors = true;
    HandmadeArchive deflated = archive;
    deflated.deflated = true;
    HandmadeArchive both = zip64;
    both.descriptors = true;
    QTest::newRow("plain") << archive.bytes();
    QTest::newRow("deflated") << deflated.bytes();
    QTest::newRow("zip64") << zip64.bytes();
    QTest::newRow("zip64 with the numbers twice") << withNumbers(zip64.bytes());
    QTest::newRow("descriptors") << descriptors.bytes();
    QTest::newRow("zip64 with descriptors") << both.bytes();
    QTest::newRow("comment") << withComment(archive, "made by hand");
    QTest::newRow("longest comment") << withComment(archive, QByteArray(0xffff, 'x'));
    QTest::newRow("end record in the comment that fits nothing")
        << withComment(archive, "PK\5\6" + QByteArray(18, 'x'));
    QTest::newRow("part that is an archive")
        << withPart(archive, "xl/embeddings/a.xlsx", archiveOf("9").bytes());
    QTest::newRow("part that is an archive of the kind zip64")
        << withPart(archive, "xl/embeddings/a.xlsx", zip64.bytes());
    QTest::newRow("Unicode path that is the name")
        << withExtras(sheetPart, unicodePath(sheetPart.toUtf8()), unicodePath(sheetPart.toUtf8()));
    const QByteArray path = unicodePath(sheetPart.toUtf8()); // and other fields around it
    const QByteArray time = HandmadeArchive::extra(0x5455, "\1abcd");
    QTest::newRow("Unicode path among other fields")
        << withExtras(sheetPart, time + path + time, time + path + time);
    QTest::newRow("other extra fields")
        << withExtras(sheetPart, time, HandmadeArchive::extra(0xa220, QByteArray(300, '\0')));
}

} // namespace

class TestZipDirectory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void archiveIsRead_data() { addReadable(); }

    void archiveIsRead()
    {
        QFETCH(const QByteArray, bytes);
        const LoadedWorkbook loaded = load(bytes);
        QCOMPARE(loaded.error.what, "");
        QCOMPARE(readPatientValues(*loaded.document, 0), QVector<double>({5}));
    }

    void partsAreReadFromTheEntriesThatWereChecked_data() { addReadable(); }

    // As another reader takes them from the file, and as they stand at the place of the entry.
    void partsAreReadFromTheEntriesThatWereChecked()
    {
        QFETCH(const QByteArray, bytes);
        save(bytes);
        QFile file(path());
        QVERIFY(file.open(QIODevice::ReadOnly));
        ZipDirectory directory;
        QVERIFY(!directory.read(&file, bytes.size()));
        ZipPackage package;
        QVERIFY(!package.open(&file));
        const Archive archive = openedByLibzip(bytes);
        QVERIFY(archive);
        QCOMPARE(zip_get_num_entries(archive.get(), 0), zip_int64_t(directory.entries().size()));
        for (int i = 0; i < directory.entries().size(); ++i) {
            const ZipDirectory::Entry &entry = directory.entries().at(i);
            const QByteArray content = contentOf(&package, entry.name);
            compareWithLibzip(entry, content, archive.get(), static_cast<zip_uint64_t>(i));
            if (entry.method == ZipDirectory::Stored) {
                QCOMPARE(content, storedAt(bytes, entry));
            }
        }
    }

    void partThatContradictsItsEntryIsDamaged_data()
    {
        QTest::addColumn<HandmadeArchive>("archive");
        QTest::addColumn<int>("changedAt"); // in the entry, or before it
        const auto row = [](const char *name, bool deflated, const QByteArray &surplus, int missing,
                            int changedAt = -1) {
            HandmadeArchive archive = archiveOf("5");
            archive.extraPart = sheetPart;
            archive.deflated = deflated;
            archive.surplus = surplus;
            archive.missing = missing;
            QTest::newRow(name) << archive << changedAt;
        };
        row("more bytes than its size", false, " ", 0);
        row("fewer bytes than its size", false, {}, 1);
        row("bytes after the deflated ones", true, "x", 0);
        row("another deflated part after it", true, QByteArray("\3\0", 2), 0);
        row("deflated bytes without their end", true, {}, 1);
        row("bytes that are not deflated", true, QByteArray(9, '\xff'), 1 << 20);
        row("no bytes", true, {}, 1 << 20);
        for (const bool deflated : {false, true}) {
            const QByteArray how = deflated ? "deflated, " : "stored, ";
            row(how + "another checksum", deflated, {}, 0, checksumAt);
            row(how + "another packed size", deflated, {}, 0, packedSizeAt);
            row(how + "another size", deflated, {}, 0, sizeAt);
        }
    }

    void partThatContradictsItsEntryIsDamaged()
    {
        QFETCH(const HandmadeArchive, archive);
        QFETCH(const int, changedAt);
        QByteArray bytes = archive.bytes();
        if (changedAt >= 0) {
            const int entry = int(bytes.lastIndexOf(sheetPart.toUtf8())) - entrySize;
            bytes[entry + changedAt] = static_cast<char>(bytes.at(entry + changedAt) + 1);
        }
        const LoadError error = load(bytes).error;
        QCOMPARE(error.part, "worksheet");
        QCOMPARE(error.what, "its bytes are damaged");
    }

    void readThatFailsGivesNothing()
    {
        QByteArray bytes = archiveOf("5").bytes();
        const int place = int(bytes.lastIndexOf(sheetPart.toUtf8())) - entrySize + checksumAt;
        bytes[place] = static_cast<char>(bytes.at(place) + 1);
        save(bytes);
        QFile file(path());
        QVERIFY(file.open(QIODevice::ReadOnly));
        ZipPackage package;
        QVERIFY(!package.open(&file));
        ZipPart part(&package, sheetPart.toUtf8(), bytes.size());
        QByteArray piece(int(bytes.size()), '\0');
        int count = 1;
        while (!part.error() && count > 0) {
            count = part.read(piece.data(), int(piece.size()));
        }
        QVERIFY(part.error());
        QCOMPARE(count, 0);
    }

    void archiveThatCanBeReadInTwoWaysIsRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        const HandmadeArchive archive = archiveOf("5");
        const QByteArray whole = archive.bytes();
        HandmadeArchive shifted = archiveOf("9");
        shifted.base = quint32(whole.size());
        HandmadeArchive zip64 = archive;
        zip64.zip64 = true;
        QTest::newRow("two archives") << whole + archiveOf("9").bytes();
        QTest::newRow("two archives, the second as if it were one") << whole + shifted.bytes();
        QTest::newRow("far after another archive")
            << withPart(archive, "x", QByteArray(1 << 17, 'x')) + whole;
        QTest::newRow("archive in the comment") << withComment(archive, archiveOf("9").bytes());
        QTest::newRow("empty archive in the comment")
            << withComment(archive, "PK\5\6" + QByteArray(18, '\0'));
        QTest::newRow("bytes before it") << "PK\3\4" + whole;
        QTest::newRow("bytes after it") << whole + "x";
        QTest::newRow("list of one entry less") << withChange(withChange(whole, 8, -1), 10, -1);
        QTest::newRow("list of two numbers of entries") << withChange(whole, 8);
        QTest::newRow("list that is shorter") << withChange(whole, 12, -1);
        QTest::newRow("list elsewhere") << withChange(whole, 16);
        QTest::newRow("second disk") << withChange(whole, 4);
        QTest::newRow("zip64 record of another list") << withChange(zip64.bytes(), -20 - 56 + 48);
        QTest::newRow("zip64 locator elsewhere") << withChange(zip64.bytes(), -20 + 8);
        QTest::newRow("zip64 record against the end record") << withChange(zip64.bytes(), 12, 2);
        const QByteArray twice = withNumbers(zip64.bytes());
        QTest::newRow("zip64 record of fewer entries") << withChange(withChange(twice, 8), 10);
        QTest::newRow("zip64 record of a shorter list") << withChange(twice, 12);
        QTest::newRow("zip64 record of an earlier list") << withChange(twice, 16);
        QTest::newRow("Unicode path in the list")
            << withExtras(sheetPart, unicodePath("xl/a.xml"), {});
        QTest::newRow("Unicode path before the part")
            << withExtras(sheetPart, {}, unicodePath("xl/a.xml"));
        QTest::newRow("Unicode path of another part")
            << withExtras(sheetPart, unicodePath("xl/workbook.xml"), {});
        QTest::newRow("second Unicode path")
            << withExtras(sheetPart, unicodePath(sheetPart.toUtf8()) + unicodePath("x"), {});
    }

    void archiveThatCanBeReadInTwoWaysIsRefused()
    {
        QFETCH(const QByteArray, bytes);
        QCOMPARE(load(bytes).error.reason, LoadError::Damaged);
    }

    // An entry that nobody reads may be called as it likes, but not like one that is read.
    void namesCountWhereTheyAreRead_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("otherName");
        QTest::addColumn<LoadError::Reason>("expected");
        const auto row = [](const char *title, const QString &name, const QByteArray &other,
                            LoadError::Reason expected) {
            QTest::newRow(title) << name << other << expected;
        };
        const QByteArray sheet = sheetPart.toUtf8();
        row("two names", "xl/a.png", "xl/\xc3\xa1.png", LoadError::None);
        row("name of the sheet", "xl/a.png", sheet, LoadError::Damaged);
        row("name of the sheet and another", sheetPart, "xl/a.png", LoadError::Damaged);
        row("name of the sheet again", sheetPart, sheet, LoadError::Damaged);
        row("name that ends in a null", "xl/a.png" + QString(QChar(0)), {}, LoadError::Damaged);
        row("name of the sheet with a null", sheetPart + QChar(0), {}, LoadError::Damaged);
    }

    void namesCountWhereTheyAreRead()
    {
        QFETCH(const QString, name);
        QFETCH(const QByteArray, otherName);
        QFETCH(const LoadError::Reason, expected);
        HandmadeArchive archive = archiveOf("5");
        archive.parts.append({name, "<x/>"});
        archive.extraPart = name;
        archive.listExtra = HandmadeArchive::unicodePath(name.toUtf8(), otherName);
        if (otherName.isNull()) {
            archive.listExtra = QByteArray();
        }
        QCOMPARE(load(archive.bytes()).error.reason, expected);
    }

    void headerOfAnotherNameIsRefused()
    {
        QByteArray bytes = archiveOf("5").bytes();
        bytes[bytes.indexOf(sheetPart.toUtf8())] = 'y';
        const LoadError error = load(bytes).error;
        QCOMPARE(error.part, "worksheet");
        QCOMPARE(error.what, "its bytes are damaged");
    }

    void partPackedInAnotherWayIsRefused()
    {
        QByteArray bytes = archiveOf("5").bytes();
        constexpr int method = 10;
        constexpr int bzip2 = 12;
        bytes[bytes.lastIndexOf(sheetPart.toUtf8()) - entrySize + method] = bzip2;
        QCOMPARE(load(bytes).error.what, "its bytes are damaged");
    }

private:
    using Archive = std::unique_ptr<zip_t, decltype(&zip_discard)>;

    static Archive openedByLibzip(const QByteArray &bytes)
    {
        zip_source_t *const source = zip_source_buffer_create(
            bytes.constData(), static_cast<zip_uint64_t>(bytes.size()), 0, nullptr);
        return {zip_open_from_source(source, ZIP_RDONLY, nullptr), &zip_discard};
    }

    static void compareWithLibzip(const ZipDirectory::Entry &entry, const QByteArray &content,
                                  zip_t *archive, zip_uint64_t index)
    {
        zip_stat_t stat;
        QCOMPARE(zip_stat_index(archive, index, 0, &stat), 0);
        QCOMPARE(QByteArray(zip_get_name(archive, index, ZIP_FL_ENC_RAW)), entry.name);
        QCOMPARE(quint64(stat.size), entry.size);
        QCOMPARE(quint64(stat.comp_size), entry.packedSize);
        QCOMPARE(quint32(stat.crc), entry.checksum);
        zip_file_t *const file = zip_fopen_index(archive, index, 0);
        QByteArray expected(int(entry.size) + 1, '\0');
        const zip_int64_t size =
            zip_fread(file, expected.data(), static_cast<zip_uint64_t>(expected.size()));
        zip_fclose(file);
        QCOMPARE(content, expected.left(int(size)));
    }

    // Read in pieces that fit nothing.
    static QByteArray contentOf(ZipPackage *package, const QByteArray &name)
    {
        ZipPart part(package, name, 1 << 20);
        QByteArray content;
        QByteArray piece(1000, '\0');
        while (const int count = part.read(piece.data(), int(piece.size()))) {
            content.append(piece.constData(), count);
        }
        return part.error() ? "damaged" : content;
    }

    // The bytes after the header at the place that the entry names.
    static QByteArray storedAt(const QByteArray &bytes, const ZipDirectory::Entry &entry)
    {
        const int at = int(entry.offset);
        const auto number = [&bytes](int place) {
            return quint8(bytes.at(place)) + 256 * quint8(bytes.at(place + 1));
        };
        return bytes.mid(at + 30 + number(at + 26) + number(at + 28), int(entry.size));
    }

    QString path() const { return m_folder.filePath("book.xlsx"); }

    void save(const QByteArray &bytes) const
    {
        QFile file(path());
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
            qFatal("cannot write %s", qPrintable(file.fileName()));
        }
    }

    LoadedWorkbook load(const QByteArray &bytes) const
    {
        save(bytes);
        return loadWorkbook(path());
    }

    WorkingFolder m_folder;
};

QTEST_GUILESS_MAIN(TestZipDirectory)
#include "tst_zipdirectory.moc"
