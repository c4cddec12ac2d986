// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include <QByteArray>
#include <QFile>
#include <QHash>

#include "xlsx/reading/loaderror.h"
#include "xlsx/reading/workbooklimits.h"
#include "xlsx/reading/zipdirectory.h"

/// The parts of a ZIP archive, within limits.
class ZipPackage
{
public:
    explicit ZipPackage(const WorkbookLimits &limits = {});
    ~ZipPackage();
    Q_DISABLE_COPY_MOVE(ZipPackage)

    const WorkbookLimits &limits() const { return m_limits; }

    /// Opens the archive in \p file, which stays open and unmoved as long as this object lives.
    LoadError open(QFile *file);

    /// Whether there is a part \p name: a path with slashes, without one in front. Letters from A
    /// to Z count as equal in both cases, as the packaging rules say.
    bool contains(const QByteArray &name) const;

private:
    friend class ZipPart;
    struct Source;
    struct Archive;

    void listParts();

    WorkbookLimits m_limits;
    ZipDirectory m_directory;
    std::unique_ptr<Source> m_source;
    std::unique_ptr<Archive> m_archive;
    QHash<QByteArray, int> m_parts;
    qint64 m_unpacked = 0;
};

/// One part of a package, unpacked as it is read. What it holds counts only when it was read to
/// its end, where its checksum is looked at.
class ZipPart
{
public:
    /// The part \p name of \p package, of at most \p largest bytes. One that is missing or there
    /// twice is damaged.
    ZipPart(ZipPackage *package, const QByteArray &name, qint64 largest);
    ~ZipPart();
    Q_DISABLE_COPY_MOVE(ZipPart)

    /// Unpacks up to \p size bytes into \p data; returns how many, 0 at the end or after an error.
    int read(char *data, int size);

    const LoadError &error() const { return m_error; }

private:
    struct File;

    LoadError open(const QByteArray &name);

    ZipPackage *m_package;
    std::unique_ptr<File> m_file;
    qint64 m_largest;
    qint64 m_size = 0;
    LoadError m_error;
};
