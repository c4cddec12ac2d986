// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/handmadeworkbook.h"

#include "support/testworkbooks.h"

const QByteArray HandmadeWorkbook::transitional = "transitional";
const QByteArray HandmadeWorkbook::strict = "strict";

namespace
{

QByteArray mainNamespace(bool strict)
{
    return strict ? "http://purl.oclc.org/ooxml/spreadsheetml/main"
                  : "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
}

QByteArray documentNamespace(bool strict)
{
    return strict ? "http://purl.oclc.org/ooxml/officeDocument/relationships"
                  : "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
}

QByteArray relationshipsPartOf(const QByteArray &relationships)
{
    return R"(<?xml version="1.0" encoding="UTF-8"?><Relationships xmlns=)"
           R"("http://schemas.openxmlformats.org/package/2006/relationships">)"
        + relationships + "</Relationships>";
}

} // namespace

QByteArray HandmadeWorkbook::part(const QByteArray &name, const QByteArray &content) const
{
    const bool isStrict = kind == strict;
    return R"(<?xml version="1.0" encoding="UTF-8"?><)" + name + R"( xmlns=")"
        + mainNamespace(isStrict) + R"(" xmlns:r=")" + documentNamespace(isStrict) + R"(">)"
        + content + "</" + name + '>';
}

QByteArray HandmadeWorkbook::relationship(const QByteArray &id, const QByteArray &type,
                                          const QByteArray &target) const
{
    return R"(<Relationship Id=")" + id + R"(" Type=")" + documentNamespace(kind == strict) + '/'
        + type + R"(" Target=")" + target + R"("/>)";
}

HandmadeWorkbook::Parts HandmadeWorkbook::parts() const
{
    QByteArray targets = relationship("sheet", "worksheet", sheetTarget) + relationships;
    Parts all;
    if (!strings.isNull()) {
        targets += relationship("strings", "sharedStrings", "sharedStrings.xml");
        all.append({"xl/sharedStrings.xml", part("sst", strings)});
    }
    if (!styles.isNull()) {
        targets += relationship("styles", "styles", "styles.xml");
        all.append({"xl/styles.xml", part("styleSheet", styles)});
    }
    all.append({"_rels/.rels",
                relationshipsPartOf(relationship("book", "officeDocument", workbookTarget))});
    all.append({workbookPart, part("workbook", properties + "<sheets>" + sheets + "</sheets>")});
    all.append({relationshipsPart, relationshipsPartOf(targets)});
    all.append({sheetPart, part("worksheet", "<sheetData>" + rows + "</sheetData>")});
    for (const auto &other : more) {
        const auto same = std::find_if(all.begin(), all.end(), [&other](const auto &known) {
            return known.first == other.first;
        });
        if (same == all.end()) {
            all.append(other);
        } else {
            same->second = other.second;
        }
    }
    return all;
}

void HandmadeWorkbook::save(const QString &path) const
{
    TestWorkbooks::savePackage(path, parts());
}

QByteArray sheetRows(const QVector<QByteArray> &rows)
{
    QByteArray all;
    for (int i = 0; i < rows.size(); ++i) {
        all += "<row r=\"" + QByteArray::number(i + 1) + "\">" + rows.at(i) + "</row>";
    }
    return all;
}

QByteArray compoundFile(const QString &stream)
{
    QByteArray file = QByteArray::fromHex("d0cf11e0a1b11ae1");
    file.append(QByteArray(1024 - file.size(), '\0'));
    for (const QChar character : stream) {
        file.append(static_cast<char>(character.unicode())).append('\0');
    }
    return file.append(QByteArray(2048 - file.size(), '\0'));
}
