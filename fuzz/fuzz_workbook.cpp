// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <random>

#include <QBuffer>
#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>
#include <QVector>

#include <private/qzipwriter_p.h>
#include <zip.h>

#include "workbooks/patientreader.h"
#include "xlsx/reading/workbookloader.h"

// The functions that the fuzzer calls, and the one that it provides.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size,
                                               std::size_t largest, unsigned seed);
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t *data, std::size_t size, std::size_t largest);

namespace
{

struct Part {
    QByteArray name;
    QByteArray content;
};
using Parts = QVector<Part>;
using Engine = std::minstd_rand;

constexpr int largestPart = 1 << 16;
constexpr int mostParts = 32;

int below(Engine *engine, int bound)
{
    return bound > 0 ? static_cast<int>((*engine)() % static_cast<unsigned>(bound)) : 0;
}

Parts unpacked(const std::uint8_t *data, std::size_t size)
{
    zip_source_t *const source = zip_source_buffer_create(data, size, 0, nullptr);
    zip_t *const opened =
        source == nullptr ? nullptr : zip_open_from_source(source, ZIP_RDONLY, nullptr);
    if (opened == nullptr) {
        zip_source_free(source);
        return {};
    }
    const std::unique_ptr<zip_t, decltype(&zip_discard)> archive(opened, &zip_discard);
    Parts parts;
    const zip_int64_t count = qMin<zip_int64_t>(mostParts, zip_get_num_entries(opened, 0));
    for (zip_int64_t i = 0; i < count; ++i) {
        const auto index = static_cast<zip_uint64_t>(i);
        const std::unique_ptr<zip_file_t, decltype(&zip_fclose)> file(
            zip_fopen_index(opened, index, 0), &zip_fclose);
        QByteArray content(largestPart, Qt::Uninitialized);
        const zip_int64_t length = file ? zip_fread(file.get(), content.data(), largestPart) : -1;
        if (length >= 0) {
            content.truncate(static_cast<int>(length));
            parts.append({zip_get_name(opened, index, ZIP_FL_ENC_RAW), content});
        }
    }
    return parts;
}

QByteArray packed(const Parts &parts)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QZipWriter zip(&buffer);
    for (const Part &part : parts) {
        zip.addFile(QString::fromUtf8(part.name), part.content);
    }
    zip.close();
    return buffer.data();
}

void mutateBytes(QByteArray *bytes)
{
    const int size = bytes->size();
    bytes->resize(qMin(2 * size + 64, largestPart));
    const std::size_t mutated =
        LLVMFuzzerMutate(reinterpret_cast<std::uint8_t *>(bytes->data()),
                         static_cast<std::size_t>(qMin(size, bytes->size())),
                         static_cast<std::size_t>(bytes->size()));
    bytes->truncate(static_cast<int>(mutated));
}

// Copies or moves everything from one tag to another to the place after a third one.
void moveElements(QByteArray *xml, Engine *engine)
{
    const int from = xml->indexOf('<', below(engine, xml->size()));
    const int to = xml->indexOf('<', from + 1 + below(engine, 100));
    if (from < 0 || to <= from) {
        return;
    }
    const QByteArray block = xml->mid(from, to - from);
    if (below(engine, 2) == 0) {
        xml->remove(from, block.size());
    }
    const int target = xml->indexOf('<', below(engine, xml->size()));
    if (target >= 0 && xml->size() + block.size() <= largestPart) {
        xml->insert(target, block);
    }
}

// Gives one attribute or text the value of another one.
void copyValue(QByteArray *xml, Engine *engine)
{
    const char quote = below(engine, 2) == 0 ? '"' : '>';
    const char end = quote == '"' ? '"' : '<';
    const int from = xml->indexOf(quote, below(engine, xml->size()));
    const int to = xml->indexOf(end, from + 1);
    const int target = xml->indexOf(quote, below(engine, xml->size()));
    const int targetEnd = xml->indexOf(end, target + 1);
    if (from >= 0 && to > from && target >= 0 && targetEnd > target) {
        xml->replace(target + 1, targetEnd - target - 1, xml->mid(from + 1, to - from - 1));
    }
}

void mutatePart(Parts *parts, Engine *engine)
{
    const int chosen = below(engine, parts->size());
    QByteArray *const content = &(*parts)[chosen].content;
    switch (below(engine, 10)) {
    case 0:
        mutateBytes(&(*parts)[chosen].name);
        break;
    case 1:
        parts->removeAt(chosen);
        break;
    case 2:
        std::swap(*content, (*parts)[below(engine, parts->size())].content);
        break;
    case 3:
    case 4:
        moveElements(content, engine);
        break;
    case 5:
    case 6:
        copyValue(content, engine);
        break;
    default:
        mutateBytes(content);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const QTemporaryDir folder(QStringLiteral("/dev/shm/fuzz-XXXXXX"));
    const QString path = folder.filePath(QStringLiteral("book.xlsx"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)
        || file.write(reinterpret_cast<const char *>(data), static_cast<qint64>(size)) < 0) {
        std::abort();
    }
    file.close();

    const LoadedWorkbook workbook = loadWorkbook(path);
    if ((workbook.document == nullptr) != (workbook.error.reason != LoadError::None)) {
        std::abort();
    }
    if (workbook.document) {
        const int count = readPatientCount(*workbook.document);
        for (int i = 0; i < count; ++i) {
            readPatientId(*workbook.document, i + 2);
            readPatientValues(*workbook.document, i);
        }
    }
    return 0;
}

// Changes the parts of an archive, so that its checksums stay right, and now and then its bytes.
std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size, std::size_t largest,
                                    unsigned seed)
{
    Engine engine(seed);
    Parts parts = unpacked(data, size);
    if (parts.isEmpty() || below(&engine, 10) == 0) {
        return LLVMFuzzerMutate(data, size, largest);
    }
    for (int changes = 1 + below(&engine, 3); changes > 0 && !parts.isEmpty(); --changes) {
        mutatePart(&parts, &engine);
    }
    const QByteArray archive = packed(parts);
    if (static_cast<std::size_t>(archive.size()) > largest) {
        return LLVMFuzzerMutate(data, size, largest);
    }
    std::copy(archive.cbegin(), archive.cend(), data);
    return static_cast<std::size_t>(archive.size());
}
