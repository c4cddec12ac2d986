// Time and peak memory of reading a workbook and of writing both kinds, by number of patients.
//
// usage: bench_workbooks [PATIENTS...]

#include <cstdio>
#include <cstdlib>
#include <functional>

#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "analysisworkbook.h"
#include "centers.h"
#include "convergence.h"
#include "dataworkbook.h"
#include "patientreader.h"
#include "variability.h"
#include "xlsx/workbookloader.h"

namespace
{

constexpr int valuesPerPatient = 20;

struct Group {
    QVector<PatientRecord> patients;
    QVector<PatientScoreRecord> scores;
    PatientScoreRecord averageCenter;
    PatientScoreRecord medianCenter;
};

PatientRecord patient(int k)
{
    PatientRecord record;
    record.id = QStringLiteral("Patient %1").arg(k + 1);
    record.idealKvadrant = 1 + k % 4;
    for (int i = 0; i < valuesPerPatient; ++i) {
        record.values.append(40 + (k * 31 + i * 17 + i * i * (k % 100)) % 971 / 10.0);
    }
    return record;
}

void analyse(Group &group)
{
    for (const PatientRecord &record : qAsConst(group.patients)) {
        group.scores.append({record.id, convergenceValues(record), variabilityValues(record)});
    }
    group.averageCenter = {
        {}, convergenceAverages(group.scores), variabilityAverages(group.scores)};
    group.medianCenter = {{}, convergenceMedians(group.scores), variabilityMedians(group.scores)};
}

Group groupOf(int patients)
{
    Group group;
    for (int k = 0; k < patients; ++k) {
        group.patients.append(patient(k));
    }
    analyse(group);
    return group;
}

// What opening a file does: reading it all, the six results and both centers.
void load(const QString &path)
{
    const LoadedWorkbook workbook = loadWorkbook(path);
    if (!workbook.document) {
        std::exit(1);
    }
    Group group;
    const int count = readPatientCount(*workbook.document);
    for (int k = 0; k < count; ++k) {
        PatientRecord record;
        record.values = readPatientValues(*workbook.document, k);
        record.id = readPatientId(*workbook.document, k + 2);
        group.patients.append(record);
    }
    analyse(group);
}

void writeData(const Group &group, const QString &path)
{
    writeDataWorkbook(path, group.patients, group.scores);
}

void writeAnalysis(const Group &group, const QString &path)
{
    writeAnalysisWorkbook(path, group.patients, group.scores, group.averageCenter,
                          group.medianCenter);
}

// Each measurement has a process of its own, whose largest size the system keeps.
void measure(const char *name, int patients, const QString &path, const std::function<void()> &run)
{
    std::fflush(stdout);
    QElapsedTimer timer;
    timer.start();
    const pid_t child = fork();
    if (child == 0) {
        run();
        _exit(0);
    }
    int status = 0;
    rusage usage = {};
    if (child < 0 || wait4(child, &status, 0, &usage) != child || status != 0) {
        std::printf("%-18s %9d  failed\n", name, patients);
        return;
    }
    const double megabyte = 1024.0 * 1024.0;
    const auto seconds = [](const timeval &time) {
        return double(time.tv_sec) + double(time.tv_usec) * 1e-6;
    };
    std::printf("%-18s %9d %9.2f %9.2f %9.1f %9.2f\n", name, patients,
                double(timer.elapsed()) / 1000.0, seconds(usage.ru_utime) + seconds(usage.ru_stime),
                double(usage.ru_maxrss) * 1024.0 / megabyte,
                double(QFileInfo(path).size()) / megabyte);
}

void measureAll(int patients, const QTemporaryDir &folder)
{
    const Group group = groupOf(patients);
    const QString data = folder.filePath(QStringLiteral("data.xlsx"));
    const QString analysis = folder.filePath(QStringLiteral("analysis.xlsx"));
    measure("data workbook", patients, data, [&] { writeData(group, data); });
    measure("analysis workbook", patients, analysis, [&] { writeAnalysis(group, analysis); });
    // The data workbook has the layout of an input.
    measure("loading", patients, data, [&] { load(data); });
}

} // namespace

int main(int argc, char **argv)
{
    QVector<int> sizes = {100, 1000, 10000};
    if (argc > 1) {
        sizes.clear();
        for (int i = 1; i < argc; ++i) {
            sizes.append(std::atoi(argv[i]));
        }
    }
    const QTemporaryDir folder;
    std::printf("%-18s %9s %9s %9s %9s %9s\n", "what", "patients", "seconds", "CPU s", "peak MB",
                "file MB");
    for (const int patients : qAsConst(sizes)) {
        measureAll(patients, folder);
    }
    return 0;
}
