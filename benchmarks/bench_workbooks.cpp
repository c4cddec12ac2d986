// SPDX-License-Identifier: GPL-3.0-or-later
// Saving both workbooks: processor time, memory beyond the group, size of the file, and the time of
// waiting for the disk, compared with libxlsxwriter in its constant-memory mode, which writes the
// same cells in the same run and waits for no disk. Each measurement has a process of its own.
// Fails if 10,000 patients cost more than they may.
//
// usage: bench_workbooks [PATIENTS...]

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#ifdef HAVE_XLSXWRITER
#include <xlsxwriter.h>
#endif

#include "analysis/centers.h"
#include "analysis/patientanalysis.h"
#include "workbooks/analysisworkbook.h"
#include "workbooks/dataworkbook.h"

namespace
{

constexpr int valuesPerPatient = 20;
constexpr int valuesOfAWidePatient = 16'000;
constexpr int decisiveCount = 10'000;
constexpr double megabyte = 1024.0 * 1024.0;

struct Group {
    QVector<PatientRecord> patients;
    QVector<PatientScoreRecord> scores;
    Centers centers;
};

/// What saving costs, in processor time and in waiting for the disk; a size of 0 is no file.
struct Cost {
    double seconds = 0.0;
    double megabytes = 0.0;
    double fileMegabytes = 0.0;
    double diskSeconds = 0.0;

    bool known() const { return fileMegabytes > 0.0; }
};

/// What a workbook may cost, as a multiple of what libxlsxwriter takes and in megabytes.
struct Limits {
    double time;
    double megabytes;
    double fileSize;
};
constexpr Limits dataLimits = {1.0, 40.0, 1.3};
constexpr Limits analysisLimits = {0.6, 40.0, 1.3};

// How long all processes together have waited for the disk.
double *const diskSeconds = static_cast<double *>(
    mmap(nullptr, sizeof(double), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));

PatientRecord patient(int k, int values)
{
    PatientRecord record;
    record.id = QStringLiteral("Patient %1").arg(k + 1);
    record.idealKvadrant = 1 + k % 4;
    for (int i = 0; i < values; ++i) {
        record.values.append(40 + (k * 31 + i * 17 + i * i * (k % 100)) % 971 / 10.0);
    }
    return record;
}

Group groupOf(int patients)
{
    Group group;
    for (int k = 0; k < patients; ++k) {
        group.patients.append(patient(k, valuesPerPatient));
    }
    group.scores = scoresOf(group.patients);
    group.centers = centersOf(group.scores);
    return group;
}

#ifdef HAVE_XLSXWRITER

class LibraryRow : public RowCells
{
public:
    explicit LibraryRow(lxw_worksheet *sheet) : m_sheet(sheet) { }

    void startRow(int row) { m_row = static_cast<lxw_row_t>(row - 1); }

    void text(int column, const QString &text) override
    {
        worksheet_write_string(m_sheet, m_row, static_cast<lxw_col_t>(column - 1),
                               text.toUtf8().constData(), nullptr);
    }

    void number(int column, double number) override
    {
        worksheet_write_number(m_sheet, m_row, static_cast<lxw_col_t>(column - 1), number, nullptr);
    }

private:
    lxw_worksheet *m_sheet;
    lxw_row_t m_row = 0;
};

void writeWithLibrary(const std::vector<CellSheet> &sheets, const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    lxw_workbook_options options = {};
    options.constant_memory = LXW_TRUE;
    lxw_workbook *const workbook = workbook_new_opt(name.constData(), &options);
    for (const CellSheet &sheet : sheets) {
        LibraryRow cells(workbook_add_worksheet(workbook, sheet.name.toUtf8().constData()));
        for (int row = 1; row <= sheet.rows.count; ++row) {
            cells.startRow(row);
            sheet.rows.fill(row, cells);
        }
    }
    workbook_close(workbook);
}

constexpr bool haveLibrary = true;

#else

void writeWithLibrary(const std::vector<CellSheet> & /*sheets*/, const QString & /*path*/) { }

constexpr bool haveLibrary = false;

#endif

double seconds(const timeval &time)
{
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

// Runs in a process of its own, whose largest size the system keeps; the file is \p path.
Cost measureOnce(const QString &path, const std::function<void()> &run)
{
    std::fflush(stdout);
    QFile::remove(path);
    *diskSeconds = 0.0;
    const pid_t child = fork();
    if (child == 0) {
        run();
        _exit(0);
    }
    int status = 0;
    rusage usage = {};
    if (child < 0 || wait4(child, &status, 0, &usage) != child || status != 0) {
        return {};
    }
    return {seconds(usage.ru_utime) + seconds(usage.ru_stime),
            static_cast<double>(usage.ru_maxrss) * 1024.0 / megabyte,
            static_cast<double>(QFileInfo(path).size()) / megabyte, *diskSeconds};
}

// The minimum of several runs, because other work only adds. The memory is what the run takes
// beyond \p start.
Cost measure(const QString &path, double start, const std::function<void()> &run)
{
    constexpr int repetitions = 3;
    Cost least = measureOnce(path, run);
    for (int i = 1; i < repetitions; ++i) {
        const Cost cost = measureOnce(path, run);
        least.seconds = std::min(least.seconds, cost.seconds);
        least.megabytes = std::min(least.megabytes, cost.megabytes);
        least.diskSeconds = std::min(least.diskSeconds, cost.diskSeconds);
    }
    least.megabytes -= start;
    return least;
}

void print(const char *what, int patients, const Cost &ours, const Cost &theirs)
{
    std::printf("%-18s %8d %8.2f %8.1f %8.2f %9.1f %8.1f", what, patients, ours.seconds,
                ours.megabytes, ours.fileMegabytes, 1e6 * ours.seconds / patients,
                1e3 * ours.diskSeconds);
    if (theirs.known()) {
        std::printf(" | %8.2f %8.1f %8.2f | %6.2f %6.2f", theirs.seconds, theirs.megabytes,
                    theirs.fileMegabytes, ours.seconds / theirs.seconds,
                    ours.fileMegabytes / theirs.fileMegabytes);
    }
    std::printf("\n");
}

bool isWithin(const Limits &limits, const Cost &ours, const Cost &theirs)
{
    return ours.known() && ours.megabytes <= limits.megabytes
        && (!theirs.known()
            || (ours.seconds <= limits.time * theirs.seconds
                && ours.fileMegabytes <= limits.fileSize * theirs.fileMegabytes));
}

/// Measures the workbooks of groups in a folder.
class Measurement
{
public:
    /// Both workbooks of a group; false if they cost more than they may.
    bool run(int patients)
    {
        const Group group = groupOf(patients);
        const bool good = data("data workbook", group);
        return analysis(group) && good;
    }

    /// The data workbook of a group in which one patient has very many values.
    bool runWide(int patients)
    {
        Group group = groupOf(patients);
        group.patients[patients / 2] = patient(patients / 2, valuesOfAWidePatient);
        return data("wide data workbook", group);
    }

private:
    bool data(const char *what, const Group &group)
    {
        const auto ours = [&] { writeDataWorkbook(m_path, group.patients, group.scores); };
        const auto theirs = [&] {
            writeWithLibrary(dataSheets(group.patients, group.scores), m_path);
        };
        return compare(what, group, dataLimits, ours, theirs);
    }

    bool analysis(const Group &group)
    {
        const auto ours = [&] {
            writeAnalysisWorkbook(m_path, group.patients, group.scores, group.centers.average,
                                  group.centers.median);
        };
        const auto theirs = [&] {
            writeWithLibrary(analysisSheets(group.patients, group.scores, group.centers.median),
                             m_path);
        };
        return compare("analysis workbook", group, analysisLimits, ours, theirs);
    }

    bool compare(const char *what, const Group &group, const Limits &limits,
                 const std::function<void()> &ours, const std::function<void()> &theirs) const
    {
        const int patients = group.patients.size();
        const double start = measureOnce(m_path, [] {}).megabytes;
        const Cost ourCost = measure(m_path, start, ours);
        const Cost theirCost = haveLibrary ? measure(m_path, start, theirs) : Cost();
        print(what, patients, ourCost, theirCost);
        return patients != decisiveCount || isWithin(limits, ourCost, theirCost);
    }

    const QTemporaryDir m_folder;
    const QString m_path = m_folder.filePath(QStringLiteral("book.xlsx"));
};

} // namespace

// Replaces the system's, and measures its time.
extern "C" int fsync(int fd)
{
    QElapsedTimer timer;
    timer.start();
    const auto result = static_cast<int>(syscall(SYS_fsync, fd));
    *diskSeconds += static_cast<double>(timer.nsecsElapsed()) * 1e-9;
    return result;
}

int main(int argc, char **argv)
{
    QVector<int> sizes = {1'000, decisiveCount, 50'000};
    if (argc > 1) {
        sizes.clear();
        for (int i = 1; i < argc; ++i) {
            sizes.append(std::atoi(argv[i]));
        }
    }
    std::printf("%-18s %8s %8s %8s %8s %9s %8s | %26s | %13s\n", "", "", "ours", "", "", "", "",
                haveLibrary ? "libxlsxwriter" : "", haveLibrary ? "ratio" : "");
    std::printf("%-18s %8s %8s %8s %8s %9s %8s | %8s %8s %8s | %6s %6s\n", "what", "patients",
                "seconds", "beyond", "file MB", "us each", "disk ms", "seconds", "beyond",
                "file MB", "time", "file");
    Measurement measurement;
    bool good = true;
    for (const int patients : std::as_const(sizes)) {
        good = measurement.run(patients) && good;
        good = measurement.runWide(patients) && good;
    }
    return good ? 0 : 1;
}
