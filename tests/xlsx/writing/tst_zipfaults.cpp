// SPDX-License-Identifier: GPL-3.0-or-later
// The archive's library fails where nothing but a lack of memory makes it fail.

#include <dlfcn.h>
#include <zip.h>

#include <QBuffer>
#include <QtTest>

#include "xlsx/writing/zipwriter.h"

namespace
{

// The function that fails; none if it is empty.
QByteArray failing;

template<typename Result, typename... Arguments>
Result call(const char *name, Result failed, Arguments... arguments)
{
    using Function = Result (*)(Arguments...);
    return failing == name ? failed
                           : reinterpret_cast<Function>(dlsym(RTLD_NEXT, name))(arguments...);
}

bool writeArchive(QByteArray *archive)
{
    ZipWriter zip;
    zip.add("part", "content");
    QBuffer buffer(archive);
    return buffer.open(QIODevice::WriteOnly) && zip.write(buffer);
}

} // namespace

extern "C" {

zip_t *zip_open_from_source(zip_source_t *source, int flags, zip_error_t *error)
{
    return call<zip_t *>("zip_open_from_source", nullptr, source, flags, error);
}

zip_source_t *zip_source_function_create(zip_source_callback function, void *data,
                                         zip_error_t *error)
{
    return call<zip_source_t *>("zip_source_function_create", nullptr, function, data, error);
}

zip_source_t *zip_source_function(zip_t *archive, zip_source_callback function, void *data)
{
    return call<zip_source_t *>("zip_source_function", nullptr, archive, function, data);
}

zip_source_t *zip_source_buffer_create(const void *data, zip_uint64_t length, int owned,
                                       zip_error_t *error)
{
    return call<zip_source_t *>("zip_source_buffer_create", nullptr, data, length, owned, error);
}

zip_int64_t zip_file_add(zip_t *archive, const char *name, zip_source_t *source, zip_flags_t flags)
{
    return call<zip_int64_t>("zip_file_add", -1, archive, name, source, flags);
}

int zip_set_file_compression(zip_t *archive, zip_uint64_t index, zip_int32_t method,
                             zip_uint32_t flags)
{
    return call<int>("zip_set_file_compression", -1, archive, index, method, flags);
}

int zip_file_set_dostime(zip_t *archive, zip_uint64_t index, zip_uint16_t time, zip_uint16_t date,
                         zip_flags_t flags)
{
    return call<int>("zip_file_set_dostime", -1, archive, index, time, date, flags);
}

int zip_close(zip_t *archive)
{
    return call<int>("zip_close", -1, archive);
}

} // extern "C"

class TestZipFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { failing.clear(); }

    void archiveThatCannotBeMadeIsToldOf_data()
    {
        QTest::addColumn<QByteArray>("function");
        for (const char *function :
             {"zip_open_from_source", "zip_source_function_create", "zip_source_function",
              "zip_file_add", "zip_set_file_compression", "zip_file_set_dostime", "zip_close"}) {
            QTest::newRow(function) << QByteArray(function);
        }
    }

    void archiveThatCannotBeMadeIsToldOf()
    {
        QFETCH(QByteArray, function);
        QByteArray archive;
        QVERIFY(writeArchive(&archive));
        failing = function;
        QVERIFY(!writeArchive(&archive));
    }

    void archiveThatCannotBeOpenedIsToldOf_data()
    {
        QTest::addColumn<QByteArray>("function");
        for (const char *function : {"zip_open_from_source", "zip_source_buffer_create"}) {
            QTest::newRow(function) << QByteArray(function);
        }
    }

    void archiveThatCannotBeOpenedIsToldOf()
    {
        QFETCH(QByteArray, function);
        QByteArray archive;
        QVERIFY(writeArchive(&archive));
        ZipWriter other;
        QVERIFY(other.addPartsOf(archive, {}));
        failing = function;
        QVERIFY(!other.addPartsOf(archive, {}));
    }
};

QTEST_GUILESS_MAIN(TestZipFaults)
#include "tst_zipfaults.moc"
