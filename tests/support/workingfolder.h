// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

/// A fresh folder that is the working directory while this exists, and so the place of the settings
/// file: the store is read again at the beginning and at the end.
class WorkingFolder
{
public:
    WorkingFolder();
    ~WorkingFolder();
    Q_DISABLE_COPY_MOVE(WorkingFolder)

    QString path() const { return folder.path(); }
    /// Path of \p name in the folder.
    QString filePath(const QString &name) const { return folder.filePath(name); }
    void writeFile(const QString &name, const QByteArray &content) const;
    /// The content of the file \p name; null if there is none.
    QByteArray readFile(const QString &name) const;
    /// Removes the folder while the program works in it.
    bool remove() { return folder.remove(); }

private:
    QTemporaryDir folder;
    QString previous;
};

/// The settings as the program writes them; without arguments, the defaults.
QByteArray settingsText(int convergence = 0, int variance = 0, int median = 1, int skip = 3,
                        int show = 1);
/// Makes \p text the settings file of the working directory, and reads it.
void useSettings(const QByteArray &text);
/// Makes the settings file say this offset and nothing else, and reads it.
void useSkip(const QByteArray &text);
