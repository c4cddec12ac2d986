// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/writing/zipwriter.h"

#include <QBuffer>
#include <QTemporaryFile>
#include <QtTest>

#include "support/testworkbooks.h"

namespace
{

// Takes no more bytes than it has room for.
class SmallDevice : public QBuffer
{
public:
    explicit SmallDevice(qint64 room) : m_room(room) { }

protected:
    qint64 writeData(const char *data, qint64 length) override
    {
        return pos() + length > m_room ? -1 : QBuffer::writeData(data, length);
    }

private:
    qint64 m_room;
};

// Takes only a few bytes at a time.
class SlowDevice : public QBuffer
{
protected:
    qint64 writeData(const char *data, qint64 length) override
    {
        return QBuffer::writeData(data, qMin(length, qint64(100)));
    }
};

// Content that does not pack well.
QByteArray noise(int size)
{
    QByteArray content;
    quint32 state = 1;
    while (content.size() < size) {
        state = state * 1664525U + 1013904223U;
        content.append(char(state >> 24U));
    }
    return content;
}

ZipWriter::Pieces piecesOf(const QByteArray &content, int size)
{
    return [content, size, at = 0](QByteArray *piece) mutable {
        *piece = content.mid(at, size);
        at += size;
        return !piece->isEmpty();
    };
}

QByteArray archiveOf(ZipWriter &zip)
{
    QBuffer buffer;
    return buffer.open(QIODevice::WriteOnly) && zip.write(buffer) ? buffer.data() : QByteArray();
}

QByteArray partOf(const QByteArray &archive, const QByteArray &name)
{
    QTemporaryFile file;
    const bool isWritten = file.open() && file.write(archive) == archive.size() && file.flush();
    return isWritten ? TestWorkbooks::part(file.fileName(), name) : QByteArray();
}

} // namespace

class TestZipWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void partsComeBack_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("pieceSize");
        QTest::newRow("empty") << QByteArray() << 1;
        QTest::newRow("one byte") << QByteArray("a") << 1;
        QTest::newRow("small pieces") << noise(30000) << 7;
        QTest::newRow("one large piece") << noise(300000) << 300000;
        QTest::newRow("packs well") << QByteArray(1 << 20, 'x') << 65536;
    }

    void partsComeBack()
    {
        QFETCH(QByteArray, content);
        QFETCH(int, pieceSize);
        ZipWriter zip;
        zip.add("first", "a beginning");
        zip.add("folder/part.xml", content.size(), piecesOf(content, pieceSize));
        zip.add("last", "an end");
        const QByteArray archive = archiveOf(zip);
        QCOMPARE(partOf(archive, "first"), QByteArray("a beginning"));
        QCOMPARE(partOf(archive, "folder/part.xml"), content);
        QCOMPARE(partOf(archive, "last"), QByteArray("an end"));
    }

    void partsAreAskedForOneAfterTheOther()
    {
        QByteArray asked;
        const auto pieces = [&asked](char name) {
            return [&asked, name, left = 3](QByteArray *piece) mutable {
                asked.append(name);
                *piece = QByteArray(100, name);
                return left-- > 0;
            };
        };
        ZipWriter zip;
        zip.add("c", 300, pieces('c'));
        zip.add("a", 300, pieces('a'));
        zip.add("b", 300, pieces('b'));
        QVERIFY(!archiveOf(zip).isEmpty());
        QCOMPARE(asked, QByteArray("ccccaaaabbbb"));
    }

    void wrongSizeIsRefused_data()
    {
        QTest::addColumn<int>("size");
        QTest::newRow("too small") << 99999;
        QTest::newRow("too large") << 100001;
        QTest::newRow("nothing") << 0;
    }
    void wrongSizeIsRefused()
    {
        QFETCH(int, size);
        ZipWriter zip;
        zip.add("part", size, piecesOf(noise(100000), 1000));
        QVERIFY(archiveOf(zip).isEmpty());
    }

    void partsOfAnotherArchiveAreTaken()
    {
        ZipWriter first;
        first.add("kept", noise(100000));
        first.add("left out", "x");
        ZipWriter second;
        QVERIFY(second.addPartsOf(archiveOf(first), {"left out"}));
        second.add("left out", "y");
        const QByteArray archive = archiveOf(second);
        QCOMPARE(partOf(archive, "kept"), noise(100000));
        QCOMPARE(partOf(archive, "left out"), QByteArray("y"));
    }

    void twoPartsOfOneNameAreRefused()
    {
        ZipWriter zip;
        zip.add("part", "x");
        zip.add("part", "y");
        QVERIFY(archiveOf(zip).isEmpty());
    }

    void damagedArchiveIsRefused()
    {
        ZipWriter zip;
        zip.add("part", noise(1000));
        const QByteArray archive = archiveOf(zip);
        ZipWriter other;
        QVERIFY(!other.addPartsOf("no archive", {}));
        QVERIFY(!other.addPartsOf(archive.left(archive.size() / 2), {}));
        QByteArray damaged = archive;
        damaged[500] = char(damaged.at(500) ^ 1);
        QVERIFY(!other.addPartsOf(damaged, {}));
    }

    // Excel calls an archive with the long form of the sizes damaged.
    void headersHaveTheShortForm()
    {
        ZipWriter zip;
        zip.add("part", 100000, piecesOf(noise(100000), 1000));
        const QByteArray archive = archiveOf(zip);
        QVERIFY(archive.startsWith("PK\3\4"));
        const int versionNeeded = quint8(archive.at(4));
        QCOMPARE(versionNeeded, 20);
        const int flags = quint8(archive.at(6));
        QCOMPARE(flags & 8, 0);
        // After 30 bytes comes the name, and then the content: there are no extra fields.
        QCOMPARE(archive.mid(28, 2), QByteArray("\0\0", 2));
        QCOMPARE(archive.mid(30, 4), QByteArray("part"));
    }

    void partsHaveTheFirstDateOfTheFormat()
    {
        ZipWriter zip;
        zip.add("part", "content");
        // 0:00 on 1 January 1980.
        QCOMPARE(archiveOf(zip).mid(10, 4), QByteArray("\0\0\x21\0", 4));
    }

    void slowDeviceGetsAllBytes()
    {
        ZipWriter fast;
        fast.add("part", noise(50000));
        ZipWriter slow;
        slow.add("part", noise(50000));
        SlowDevice device;
        QVERIFY(device.open(QIODevice::WriteOnly));
        QVERIFY(slow.write(device));
        QCOMPARE(device.data(), archiveOf(fast));
    }

    void fullDeviceIsNoticed_data()
    {
        QTest::addColumn<int>("missing");
        for (const int missing : {1, 22, 100, 5000, 49000, 60000}) {
            QTest::addRow("%d bytes", missing) << missing;
        }
    }

    void fullDeviceIsNoticed()
    {
        QFETCH(int, missing);
        ZipWriter whole;
        whole.add("part", noise(50000));
        const int size = int(archiveOf(whole).size());
        QVERIFY(size > 50000);
        ZipWriter zip;
        zip.add("part", noise(50000));
        SmallDevice device(qMax(0, size - missing));
        QVERIFY(device.open(QIODevice::WriteOnly));
        QVERIFY(!zip.write(device));
    }
};

QTEST_GUILESS_MAIN(TestZipWriter)
#include "tst_zipwriter.moc"
