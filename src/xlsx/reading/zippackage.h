// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include <QByteArray>
#include <QFile>
#include <QHash>

#include "xlsx/reading/loaderror.h"
#include "xlsx/reading/workbooklimits.h"
#include "xlsx/reading/zipdirectory.h"

struct z_stream_s;

/// The parts of a ZIP archive, within limits.
class ZipPackage
{
public:
    explicit ZipPackage(const WorkbookLimits &limits = {}) : m_left(limits) { }
    ~ZipPackage() = default;
    Q_DISABLE_COPY_MOVE(ZipPackage)

    /// What is left of the limits for all parts together, from which whoever reads them takes.
    WorkbookLimits *left() { return &m_left; }

    /// Opens the archive in \p file, which stays open and unmoved as long as this object lives.
    LoadError open(QFile *file);

    /// Whether there is a part \p name: a path with slashes, without one in front. Letters from A
    /// to Z count as equal in both cases, as the packaging rules say.
    bool contains(const QByteArray &name) const;

private:
    friend class ZipPart;

    WorkbookLimits m_left;
    QFile *m_file = nullptr;
    ZipDirectory m_directory;
    // Null where several parts could have the name.
    QHash<QByteArray, const ZipDirectory::Entry *> m_parts;
};

/// One part of a package, unpacked as it is read. What it holds counts only when it was read to
/// its end, where its size and its checksum are looked at.
class ZipPart
{
public:
    /// The part \p name of \p package, of at most \p largest bytes. One that is missing or there
    /// twice is damaged.
    ZipPart(ZipPackage *package, const QByteArray &name, qint64 largest);
    ~ZipPart();
    Q_DISABLE_COPY_MOVE(ZipPart)

    /// Unpacks up to \p size bytes into \p data; returns how many, 0 at the end or after an error.
    /// Fewer than \p size are the last ones.
    int read(char *data, int size);

    const LoadError &error() const { return m_error; }

private:
    LoadError open(const QByteArray &name, qint64 largest);
    int fetch(char *data, int size);
    int unpack(char *data, int size);

    ZipPackage *m_package;
    const ZipDirectory::Entry *m_entry = nullptr;
    qint64 m_next = 0; // in the file, up to the end of the packed bytes
    qint64 m_end = 0;
    QByteArray m_packed;
    std::unique_ptr<z_stream_s> m_stream; // null for what is not packed
    bool m_isUnpacked = false;
    quint64 m_size = 0; // of what was unpacked so far
    quint32 m_checksum = 0;
    LoadError m_error;
};
