// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>

#include <QByteArray>
#include <QFile>
#include <QHash>

#include "xlsx/reading/loaderror.h"
#include "xlsx/reading/workbooklimits.h"

/// The parts of a ZIP archive, read as streams, within limits. What a part holds counts only when
/// it was read to its end, where its checksum is looked at.
class ZipPackage
{
public:
    /// Takes a piece of a part; returns whether more is wanted. \p size is at least 1.
    using Consumer = std::function<bool(const char *data, int size)>;

    explicit ZipPackage(const WorkbookLimits &limits = {});
    ~ZipPackage();
    Q_DISABLE_COPY_MOVE(ZipPackage)

    const WorkbookLimits &limits() const { return m_limits; }

    /// Opens the archive in \p file, which stays open and unmoved as long as this object lives.
    LoadError open(QFile *file);

    /// Whether there is a part \p name: a path with slashes, without one in front. Letters from A
    /// to Z count as equal in both cases, as the packaging rules say.
    bool contains(const QByteArray &name) const;
    /// Whether the two names that the archive has for each part agree. Where they do not, a part
    /// that seems to be missing may only have lost its name. The first call reads the whole list
    /// again.
    bool namesAgree() const;

    /// Hands the part \p name to \p consumer piece by piece. None exactly when the consumer took
    /// all of it and the checksum is right; Damaged too when the consumer wanted no more.
    /// TooLarge when there are more than \p largest bytes. A part that is missing
    /// or there twice is damaged.
    LoadError read(const QByteArray &name, qint64 largest, const Consumer &consumer);

private:
    struct Source;
    struct Archive;

    LoadError listParts();

    WorkbookLimits m_limits;
    std::unique_ptr<Source> m_source;
    std::unique_ptr<Archive> m_archive;
    QHash<QByteArray, quint64> m_parts;
    qint64 m_unpacked = 0;
};
