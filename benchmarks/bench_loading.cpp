// SPDX-License-Identifier: GPL-3.0-or-later
// Loading a workbook: time and memory of loadWorkbook, and of QXlsx::Document alone on the same
// file, each in a process of its own. Fails when 10,000 patients take more of either than there.

#include <algorithm>
#include <cstdio>
#include <random>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QVector>

#include <sys/resource.h>

#include "xlsx/reading/workbookloader.h"

namespace
{

constexpr int values = 20;
constexpr int repetitions = 5;
constexpr int decisiveCount = 10'000;

struct Cost {
    double milliseconds = 0.0;
    double mebibytes = 0.0;
};

bool save(const QString &path, int patients)
{
    std::mt19937 engine(1);
    QXlsx::Document document;
    document.write(1, 1, QStringLiteral("Patient"));
    for (int row = 2; row < patients + 2; ++row) {
        document.write(row, 1, QStringLiteral("P%1").arg(row, 6, 10, QLatin1Char('0')));
        for (int column = 2; column < values + 2; ++column) {
            document.write(row, column, 30 + static_cast<int>(engine() % 800) / 10.0);
        }
    }
    return document.saveAs(path);
}

// In the measured process: loads the file and reports what that took.
int loadHere(const QString &how, const QString &path)
{
    QElapsedTimer timer;
    timer.start();
    std::unique_ptr<QXlsx::Document> document;
    if (how == QLatin1String("ours")) {
        document = loadWorkbook(path).document;
    } else {
        document = std::make_unique<QXlsx::Document>(path);
    }
    const double milliseconds = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%.3f %.3f\n", milliseconds, static_cast<double>(usage.ru_maxrss) / 1024);
    return document && document->read(2, 2).toDouble() > 0 ? 0 : 1;
}

// The minimum of several runs, because other work only adds.
bool measure(const QString &how, const QString &path, Cost *least)
{
    for (int i = 0; i < repetitions; ++i) {
        QProcess process;
        process.start(QCoreApplication::applicationFilePath(), {how, path});
        if (!process.waitForFinished(-1) || process.exitCode() != 0) {
            return false;
        }
        const QList<QByteArray> fields = process.readAllStandardOutput().trimmed().split(' ');
        const Cost cost = {fields.value(0).toDouble(), fields.value(1).toDouble()};
        least->milliseconds =
            i == 0 ? cost.milliseconds : std::min(least->milliseconds, cost.milliseconds);
        least->mebibytes = i == 0 ? cost.mebibytes : std::min(least->mebibytes, cost.mebibytes);
    }
    return true;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 3) {
        return loadHere(arguments.at(1), arguments.at(2));
    }

    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("book.xlsx"));
    bool good = true;
    std::printf("%9s %12s %12s %7s %12s %12s %7s %14s\n", "patients", "ours ms", "QXlsx ms",
                "ratio", "ours MiB", "QXlsx MiB", "ratio", "us/patient");
    for (const int patients : {100, 1'000, decisiveCount, 50'000}) {
        Cost ours;
        Cost theirs;
        if (!save(path, patients) || !measure(QStringLiteral("ours"), path, &ours)
            || !measure(QStringLiteral("QXlsx"), path, &theirs)) {
            std::fprintf(stderr, "%d patients cannot be measured\n", patients);
            return 1;
        }
        const double timeRatio = ours.milliseconds / theirs.milliseconds;
        const double memoryRatio = ours.mebibytes / theirs.mebibytes;
        std::printf("%9d %12.1f %12.1f %7.2f %12.1f %12.1f %7.2f %14.1f\n", patients,
                    ours.milliseconds, theirs.milliseconds, timeRatio, ours.mebibytes,
                    theirs.mebibytes, memoryRatio, 1000 * ours.milliseconds / patients);
        if (patients == decisiveCount) {
            good = timeRatio <= 1.0 && memoryRatio <= 1.0;
        }
    }
    return good ? 0 : 1;
}
