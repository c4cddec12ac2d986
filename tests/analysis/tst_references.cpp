// SPDX-License-Identifier: GPL-3.0-or-later
#include <memory>

#include <QCryptographicHash>
#include <QFile>
#include <QtEndian>
#include <QtTest>

#include "support/referenceresults.h"
#include "support/workingfolder.h"

namespace
{

// Without the line that says what they are.
QByteArrayList storedLines(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed().split('\n').mid(1)
                                          : QByteArrayList();
}

QByteArray digest(const QVector<QVector<quint64>> &results, int method)
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    for (const QVector<quint64> &patterns : results) {
        const quint64 pattern = qToBigEndian(patterns.at(method));
        hash.addData(
            QByteArray::fromRawData(reinterpret_cast<const char *>(&pattern), sizeof pattern));
    }
    return hash.result().toHex();
}

} // namespace

/// What is saved today is what every machine, compiler and later version saves.
class TestReferences : public QObject
{
    Q_OBJECT

    std::unique_ptr<WorkingFolder> m_folder;
    QVector<QVector<quint64>> m_results;

private Q_SLOTS:
    void initTestCase()
    {
        m_folder = std::make_unique<WorkingFolder>();
        useSkip("3");
        for (const QVector<double> &values : ReferenceResults::series(5000)) {
            m_results.append(ReferenceResults::bits(values));
        }
    }

    void cleanupTestCase() { m_folder.reset(); }

    void resultsAreTheStoredOnes()
    {
        const QByteArrayList lines = storedLines(QFINDTESTDATA("data/results.txt"));
        QCOMPARE(lines.size(), 200);
        const auto series = ReferenceResults::series(200);
        for (int i = 0; i < 200; ++i) {
            QCOMPARE(ReferenceResults::line(series.at(i)), lines.at(i));
        }
    }

    void digestsOfManyResultsAreTheStoredOnes_data()
    {
        QTest::addColumn<int>("method");
        QTest::addColumn<QByteArray>("expected");
        const auto row = [](const char *name, int method, const QByteArray &expected) {
            QTest::newRow(name) << method << expected;
        };
        row("median difference", 0, "2f39755b1e1627cddae76dd41ec5430881926148");
        row("linear least squares", 1, "8d6bf357366492c08c21f7ab81067a284142b818");
        row("C*e^(k*x)", 2, "4763c79d56c11b4432160d8b2cd217812e6ef50b");
        row("standard deviation", 3, "e6a5afb99fa6e92199a4bbcdbd32e3eca780d3b9");
        row("difference standard deviation offset", 4, "81ebef2445363956807e2769f5d85373fd1ff5c1");
        row("interquartile range", 5, "31b1eb7c2137c9e9c41314539a8ab8486cda57fa");
    }

    void digestsOfManyResultsAreTheStoredOnes()
    {
        QFETCH(const int, method);
        QFETCH(const QByteArray, expected);
        QCOMPARE(digest(m_results, method), expected);
    }
};

QTEST_GUILESS_MAIN(TestReferences)
#include "tst_references.moc"
