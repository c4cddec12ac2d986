// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/savedfiles.h"

#include <QDir>
#include <QFile>

void SavedFiles::write(const QString &name, const QByteArray &content)
{
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("cannot write %s", qPrintable(name));
    }
}

QByteArray SavedFiles::contentOf(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
}

QStringList SavedFiles::namesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System
                                  | QDir::NoDotAndDotDot);
}

QByteArray SavedFiles::longContent()
{
    static const QByteArray content = [] {
        QByteArray numbers;
        for (int i = 0; i < 40000; ++i) {
            numbers += QByteArray::number(i) + ' ';
        }
        return numbers;
    }();
    return content;
}
