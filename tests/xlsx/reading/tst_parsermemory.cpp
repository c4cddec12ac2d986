// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/parsermemory.h"

#include <cstring>
#include <memory>

#include <QtTest>

/// Blocks of a hundred bytes together.
class TestParserMemory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { ParserMemory::limitTo(100); }

    void limitIsReachedToTheByte()
    {
        QCOMPARE(ParserMemory::allocate(101), nullptr);
        void *const block = ParserMemory::allocate(100);
        QVERIFY(block != nullptr);
        QCOMPARE(ParserMemory::allocate(1), nullptr);
        ParserMemory::free(block);
    }

    void freedBytesCanBeHadAgain()
    {
        for (int i = 0; i < 3; ++i) {
            void *const block = ParserMemory::allocate(100);
            QVERIFY(block != nullptr);
            ParserMemory::free(block);
        }
        ParserMemory::free(nullptr);
        QCOMPARE(ParserMemory::allocate(101), nullptr);
    }

    void blockThatGrowsTakesOnlyTheDifference()
    {
        void *const other = ParserMemory::allocate(20);
        void *block = ParserMemory::allocate(40);
        QVERIFY(block != nullptr);
        std::memset(block, 7, 40);
        block = ParserMemory::reallocate(block, 80);
        QVERIFY(block != nullptr);
        QCOMPARE(QByteArray(static_cast<const char *>(block), 40), QByteArray(40, 7));
        QCOMPARE(ParserMemory::allocate(1), nullptr);
        ParserMemory::free(block);
        ParserMemory::free(other);
    }

    void blockThatShrinksGivesTheDifferenceBack()
    {
        void *const block = ParserMemory::reallocate(ParserMemory::allocate(100), 30);
        void *const other = ParserMemory::allocate(70);
        QVERIFY(other != nullptr);
        QCOMPARE(ParserMemory::allocate(1), nullptr);
        ParserMemory::free(other);
        ParserMemory::free(block);
    }

    void blockThatCannotGrowStaysAsItIs()
    {
        void *const block = ParserMemory::allocate(40);
        QVERIFY(block != nullptr);
        std::memset(block, 7, 40);
        QCOMPARE(ParserMemory::reallocate(block, 101), nullptr);
        QCOMPARE(QByteArray(static_cast<const char *>(block), 40), QByteArray(40, 7));
        void *const rest = ParserMemory::allocate(60);
        QVERIFY(rest != nullptr);
        ParserMemory::free(rest);
        ParserMemory::free(block);
    }

    void nothingMeansANewBlock()
    {
        void *const block = ParserMemory::reallocate(nullptr, 100);
        QVERIFY(block != nullptr);
        ParserMemory::free(block);
    }

    void eachThreadHasBytesOfItsOwn()
    {
        void *const block = ParserMemory::allocate(100);
        bool hasMore = false;
        const std::unique_ptr<QThread> thread(QThread::create([&hasMore] {
            ParserMemory::limitTo(50);
            void *const other = ParserMemory::allocate(50);
            hasMore = other != nullptr;
            ParserMemory::free(other);
        }));
        thread->start();
        QVERIFY(thread->wait());
        QVERIFY(hasMore);
        QCOMPARE(ParserMemory::allocate(1), nullptr);
        ParserMemory::free(block);
        void *const again = ParserMemory::allocate(100);
        QVERIFY(again != nullptr);
        ParserMemory::free(again);
    }
};

QTEST_GUILESS_MAIN(TestParserMemory)
#include "tst_parsermemory.moc"
