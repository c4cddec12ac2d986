// SPDX-License-Identifier: GPL-3.0-or-later
// The worst workbooks that we can think of: what refusing each of them, or loading it, takes of the
// processor and of memory, each in a process of its own. Fails where one takes more than promised.

#include <cstdio>
#include <ctime>

#include <QCoreApplication>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <sys/resource.h>

#include "support/hostileworkbooks.h"
#include "xlsx/reading/workbookloader.h"

namespace
{

constexpr double mostSeconds = 5.0;
constexpr double mostMebibytes = 512.0;

// In the measured process.
int loadHere(const QString &path)
{
    const std::clock_t start = std::clock();
    const LoadedWorkbook workbook = loadWorkbook(path);
    const double seconds = double(std::clock() - start) / CLOCKS_PER_SEC;
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%.3f %.3f %d\n", seconds, double(usage.ru_maxrss) / 1024,
                int(workbook.error.reason));
    return 0;
}

bool measure(const HostileWorkbook &workbook, const QString &path)
{
    workbook.save(path);
    const double fileSize = double(QFileInfo(path).size()) / (1024 * 1024);
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(), {path});
    process.waitForFinished(-1);
    const QList<QByteArray> fields = process.readAllStandardOutput().trimmed().split(' ');
    const double seconds = fields.value(0).toDouble();
    const double mebibytes = fields.value(1).toDouble();
    const bool isBounded = process.exitCode() == 0 && fields.size() == 3 && seconds <= mostSeconds
        && mebibytes <= mostMebibytes;
    std::printf("%-40s %9.2f %9.2f %9.0f  %s%s\n", workbook.name, fileSize, seconds, mebibytes,
                fields.value(2) == "0" ? "loaded" : "refused", isBounded ? "" : ", TOO MUCH");
    std::fflush(stdout);
    return isBounded;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 2) {
        return loadHere(arguments.at(1));
    }
    const QTemporaryDir folder;
    bool areBounded = true;
    std::printf("%-40s %9s %9s %9s\n", "workbook", "file MiB", "seconds", "MiB");
    for (const HostileWorkbook &workbook : hostileWorkbooks()) {
        areBounded &= measure(workbook, folder.filePath(QStringLiteral("book.xlsx")));
    }
    return areBounded ? 0 : 1;
}
