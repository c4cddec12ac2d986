// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QPair>
#include <QString>
#include <QVector>

/// A workbook whose parts a test writes itself, down to the XML. Its default is one empty sheet.
struct HandmadeWorkbook {
    using Parts = QVector<QPair<QString, QByteArray>>;

    static const QByteArray transitional;
    static const QByteArray strict;

    /// Namespaces of the parts: transitional or strict.
    QByteArray kind = transitional;
    /// Content of <sheetData>.
    QByteArray rows;
    /// Content of <sst>; without it there is no such part.
    QByteArray strings;
    /// Content of <styleSheet>; without it there is no such part.
    QByteArray styles;
    /// Content of <workbook> before the sheets.
    QByteArray properties;
    /// Content of <sheets>; the relationship of the sheet with the rows is "sheet".
    QByteArray sheets = R"(<sheet name="One" sheetId="1" r:id="sheet"/>)";
    /// More relationships of the workbook.
    QByteArray relationships;
    /// Targets of the relationships.
    QByteArray workbookTarget = "xl/workbook.xml";
    QByteArray sheetTarget = "worksheets/sheet1.xml";
    /// Names of the parts.
    QString workbookPart = "xl/workbook.xml";
    QString relationshipsPart = "xl/_rels/workbook.xml.rels";
    QString sheetPart = "xl/worksheets/sheet1.xml";
    /// Further parts, as they are; one replaces another part of the same name.
    Parts more;

    /// A whole part with the root element \p name around \p content.
    QByteArray part(const QByteArray &name, const QByteArray &content) const;
    /// A relationship named \p id to a part of the kind \p type, such as "worksheet".
    QByteArray relationship(const QByteArray &id, const QByteArray &type,
                            const QByteArray &target) const;

    Parts parts() const;
    /// Writes the parts into the file \p path.
    void save(const QString &path) const;
};

/// `<row>` elements from 1 on, each around cells given as XML; the first is the header.
QByteArray sheetRows(const QVector<QByteArray> &rows);

/// A compound file, as old and encrypted workbooks are, whose directory has one stream \p stream.
QByteArray compoundFile(const QString &stream);
