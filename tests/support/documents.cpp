// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/documents.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

namespace Documents
{

QString path(const QString &name)
{
    return QDir(SOURCE_FOLDER).filePath(name);
}

QString read(const QString &name)
{
    QFile file(path(name));
    return file.open(QFile::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString flat(const QString &name)
{
    QString text = read(name);
    text.remove(QRegularExpression("^> ", QRegularExpression::MultilineOption));
    return text.simplified();
}

QStringList all()
{
    QStringList names = {"README.md", "CONTRIBUTING.md", "CHANGELOG.md"};
    for (const QString &name : QDir(path("docs")).entryList({"*.md"})) {
        names << "docs/" + name;
    }
    return names;
}

QStringList between(const QString &text, const QString &left, const QString &right)
{
    const QRegularExpression pattern(QRegularExpression::escape(left) + "([^\n]+?)"
                                     + QRegularExpression::escape(right));
    QStringList found;
    for (auto match = pattern.globalMatch(text); match.hasNext();) {
        found << match.next().captured(1);
    }
    return found;
}

QVector<QStringList> tableRows(const QString &text)
{
    QVector<QStringList> rows;
    for (const QString &line : text.split('\n')) {
        if (line.startsWith('|')) {
            QStringList cells = line.split('|').mid(1);
            cells.removeLast();
            for (QString &cell : cells) {
                cell = cell.trimmed();
            }
            rows << cells;
        }
    }
    return rows;
}

} // namespace Documents
