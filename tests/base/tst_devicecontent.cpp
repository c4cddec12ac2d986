// SPDX-License-Identifier: GPL-3.0-or-later
#include "base/devicecontent.h"

#include <algorithm>

#include <QBuffer>
#include <QFile>
#include <QtTest>

#include "support/savedfiles.h"
#include "support/workingfolder.h"

using SavedFiles::contentOf;
using SavedFiles::longContent;

namespace
{

// Takes few bytes at a time, and none of a number of pieces once it has taken enough.
class FailingFile : public QFile
{
public:
    using QFile::QFile;

    qint64 room = 0;
    int failures = 0;

protected:
    qint64 writeData(const char *data, qint64 length) override
    {
        constexpr qint64 atATime = 1000;
        if (failures > 0 && room < atATime) {
            --failures;
            return -1;
        }
        const qint64 taken = QFile::writeData(data, qMin(length, atATime));
        room -= taken;
        return taken;
    }
};

QByteArray reversed(QByteArray content)
{
    std::reverse(content.begin(), content.end());
    return content;
}

// Overwrites \p file by longContent(); the sync fails as often as \p failingSyncs says.
Overwritten overwriteFile(QFile &file, int failingSyncs = 0)
{
    QByteArray bytes = longContent();
    QBuffer content(&bytes);
    if (!content.open(QIODevice::ReadOnly)
        || !file.open(QIODevice::ReadWrite | QIODevice::Unbuffered)) {
        qFatal("cannot open the file");
    }
    return overwrite(file, content, [&failingSyncs] { return failingSyncs-- <= 0; });
}

} // namespace

class TestDeviceContent : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void contentIsPutInPlaceOfTheOldOne_data() { files(); }
    void contentIsPutInPlaceOfTheOldOne()
    {
        QFETCH(QByteArray, before);
        SavedFiles::write("file", before);
        FailingFile file("file");
        QCOMPARE(overwriteFile(file), Overwritten::New);
        QCOMPARE(contentOf("file"), longContent());
    }

    void failurePutsTheOldContentBack_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<int>("room");
        for (const int room : {0, 1000, 100000, 200000}) {
            QTest::addRow("shorter file, %d bytes", room) << shorter() << room;
            QTest::addRow("longer file, %d bytes", room) << longer() << room;
        }
    }

    void failurePutsTheOldContentBack()
    {
        QFETCH(QByteArray, before);
        QFETCH(int, room);
        SavedFiles::write("file", before);
        FailingFile file("file");
        file.room = room;
        file.failures = 1;
        QCOMPARE(overwriteFile(file), Overwritten::Old);
        QCOMPARE(contentOf("file"), before);
    }

    void failingSyncPutsTheOldContentBack_data() { files(); }
    void failingSyncPutsTheOldContentBack()
    {
        QFETCH(QByteArray, before);
        SavedFiles::write("file", before);
        QFile file("file");
        QCOMPARE(overwriteFile(file, 1), Overwritten::Old);
        QCOMPARE(contentOf("file"), before);
    }

    void mixtureIsTold_data() { files(); }
    void mixtureIsTold()
    {
        QFETCH(QByteArray, before);
        SavedFiles::write("never synced", before);
        QFile neverSynced("never synced");
        QCOMPARE(overwriteFile(neverSynced, 2), Overwritten::Mixture);
        SavedFiles::write("stuck", before);
        FailingFile stuck("stuck");
        // Up to the middle of what is overwritten, and not a byte more.
        stuck.room = longContent().size() - qMin(before.size(), longContent().size()) / 2;
        stuck.failures = 1000;
        QCOMPARE(overwriteFile(stuck), Overwritten::Mixture);
        QVERIFY(contentOf("stuck") != before);
    }

    void fullDiskLeavesWhatWasNotReached()
    {
        SavedFiles::write("file", shorter());
        FailingFile file("file");
        file.room = 1000;
        file.failures = 1000;
        QCOMPARE(overwriteFile(file), Overwritten::Old);
        QCOMPARE(contentOf("file"), shorter());
    }

private:
    static QByteArray shorter() { return reversed(longContent().mid(150000)); }
    static QByteArray longer() { return reversed(longContent() + longContent()); }

    static void files()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::newRow("shorter file") << shorter();
        QTest::newRow("longer file") << longer();
    }

    WorkingFolder m_folder;
};

QTEST_GUILESS_MAIN(TestDeviceContent)
#include "tst_devicecontent.moc"
