// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/workingfolder.h"

#include <clocale>

#include <QDir>
#include <QFile>

#include "settings/cconfig.h"

namespace
{

void write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QFile::WriteOnly) || file.write(content) != content.size()) {
        qFatal("cannot write %s", qPrintable(path));
    }
}

} // namespace

WorkingFolder::WorkingFolder() : previous(QDir::currentPath())
{
    if (!folder.isValid() || !QDir::setCurrent(folder.path())) {
        qFatal("no temporary folder");
    }
    // As in the program: the application has just taken the locale of the environment.
    std::setlocale(LC_NUMERIC, "C");
    CConfig::resetInstance();
}

WorkingFolder::~WorkingFolder()
{
    CConfig::resetInstance();
    QDir::setCurrent(previous);
}

void WorkingFolder::writeFile(const QString &name, const QByteArray &content) const
{
    write(filePath(name), content);
}

QByteArray WorkingFolder::readFile(const QString &name) const
{
    QFile file(filePath(name));
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray settingsText(int convergence, int variance, int median, int skip, int show)
{
    return QString("[Method]\nConvergence = %1\nVariance = %2\n\n\n[Result]\nMedian = %3\n\n\n"
                   "[Variable]\nSkip = %4\n\n\n[Info]\nShow = %5\n")
        .arg(convergence)
        .arg(variance)
        .arg(median)
        .arg(skip)
        .arg(show)
        .toUtf8();
}

void useSettings(const QByteArray &text)
{
    write("config.ini", text);
    CConfig::resetInstance();
}

void useSkip(const QByteArray &text)
{
    useSettings("[Variable]\nSkip = " + text + '\n');
}
