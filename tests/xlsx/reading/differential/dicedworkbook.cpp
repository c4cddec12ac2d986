// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/differential/dicedworkbook.h"

#include <algorithm>
#include <array>

#include <QStringList>

#include "xlsx/reading/differential/namespaces.h"

namespace
{

using Attributes = XmlPiece::Attributes;

// In whose manner a workbook is written.
struct Manner {
    const char *name;
    bool strict;
    const char *prefix;
    const char *workbook;
    const char *sheet;
    bool absoluteTargets;
    bool references;
    bool sharedTexts;
    bool richStyles;
    bool ignorables;
    bool isoDates;
    bool deflated;
    bool descriptors;
    bool indented;
    XmlStyle::Encoding encoding;
    bool byteOrderMark;
};

constexpr std::array<Manner, 5> manners = {{
    {"spreadsheet program", false, "", "xl/workbook.xml", "worksheets/sheet1.xml", false, true,
     true, true, true, false, true, false, false, XmlStyle::Utf8, false},
    {"office suite", false, "", "xl/workbook.xml", "worksheets/sheet1.xml", false, true, true, true,
     false, false, true, true, false, XmlStyle::Utf8, false},
    {"library", false, "", "xl/workbook.xml", "worksheets/sheet.xml", true, true, false, false,
     false, false, false, false, true, XmlStyle::Utf8, true},
    {"strict writer", true, "x", "xl/workbook.xml", "worksheets/sheet1.xml", true, true, true, true,
     true, true, true, false, false, XmlStyle::Utf8, false},
    {"program by hand", false, "s", "book.xml", "data/first.xml", false, false, false, false, false,
     true, false, false, true, XmlStyle::LittleEndian, true},
}};

const QStringList identifiers = {"P1",
                                 "  P 3 ",
                                 QString::fromUtf8("Žofie 😀"),
                                 "A<B&C>\"D\"",
                                 "_x0041_b_x005F_x0041_",
                                 QString(QChar(0xfeff)),
                                 QString(QChar(0xfeff)) + " A",
                                 "O" + QString(QChar(0x92)) + "Neil",
                                 "a" + QString(QChar(0x7f)),
                                 "line\nline",
                                 "7_x000D_",
                                 "007",
                                 QString(QChar(0xe9)) + QChar(0xa0) + "x"};
const QStringList textValues = {"50.5", "61", " 7 ", QString(QChar(0xfeff)) + " 50",
                                "n/a",  "-3", "1e2"};
const QStringList numbers = {"50.5", "61",     "70.25",    " 48 ",  "-3.5", "0",
                             "1E+2", "0.0001", "1.5e-3",   "44000", "1",    "2",
                             "15",   "0.25",   "40000.75", "3",     "12"};
const QStringList numberIdentifiers = {"1000000", "1E+06", "007.10", "12", "-1.25e-3", "3"};
const QStringList days = {"2021-03-04", "2021-03-04T10:30:00", "10:30:00",
                          "1900-01-15", "1910-12-31",          "2021"};
const QStringList dayNumbers = {"44000",   "15",      "44259.5", "0.25",
                                "2958000", "2957002", "-1",      "2958466"};

// Formats of cells, by their index, in each workbook that has formats.
enum Style { General, OwnDate, OwnNumber, BuiltinDate, Percent, OwnTime, styleCount };

class Maker
{
public:
    Maker(DicedWorkbook *workbook, Dice *dice);
    void make();

private:
    XmlPiece root(const QString &name) const;
    void addPart(DicedWorkbook::Role role, const QString &name, const XmlPiece &piece);
    void makePackage();
    void makeWorkbook();
    void addSheets(XmlPiece *workbook);
    void makeLinks();
    void makeFormats();
    void makeTexts();
    void makeUnread();
    XmlPiece sheet(int firstNumber);
    void addRow(XmlPiece *data, int number, int columns, int firstNumber);
    void addIdentifier(XmlPiece *row, const QString &reference);
    void addValue(XmlPiece *row, const QString &reference, int firstNumber);
    static void addResult(XmlPiece *row, Attributes attributes, const char *type,
                          const QString &value);
    void addNumber(XmlPiece *row, Attributes attributes, const QString &number);
    void addText(XmlPiece *row, Attributes attributes, const QString &text);
    void addRuns(XmlPiece *item, const QString &text);
    void addTextElement(XmlPiece *into, const QString &text);
    void addLink(XmlPiece *list, const QString &id, const QString &type, const QString &target,
                 const QString &folder);

    DicedWorkbook *m_workbook;
    Dice *m_dice;
    const Manner &m_manner;
    QString m_main;
    QString m_links;
    bool m_hasFormats;
    std::vector<XmlPiece> m_items;
};

Maker::Maker(DicedWorkbook *workbook, Dice *dice)
    : m_workbook(workbook), m_dice(dice), m_manner(dice->pick(manners)),
      m_main(m_manner.strict ? Namespaces::strict() : Namespaces::transitional()),
      m_links(m_manner.strict ? Namespaces::strictLinks() : Namespaces::transitionalLinks()),
      m_hasFormats(m_manner.richStyles || dice->chance(60))
{
    workbook->manner = m_manner.name;
}

void Maker::make()
{
    makePackage();
    makeWorkbook();
    makeLinks();
    const QString folder = QString(m_manner.workbook).contains('/') ? "xl/" : "";
    addPart(DicedWorkbook::Sheet, folder + m_manner.sheet, sheet(0));
    addPart(DicedWorkbook::OtherSheet, folder + "worksheets/other.xml", sheet(900));
    if (m_hasFormats) {
        makeFormats();
    }
    if (!m_items.empty() || m_manner.sharedTexts) {
        makeTexts();
    }
    makeUnread();
}

XmlPiece Maker::root(const QString &name) const
{
    XmlPiece piece;
    piece.space = m_main;
    piece.name = name;
    piece.prefixes = {{m_manner.prefix, m_main}, {"r", m_links}};
    if (m_manner.ignorables) {
        piece.declare("mc", Namespaces::compatibility());
        piece.declare("x14ac", "urn:ignorable");
        piece.give("Ignorable", "x14ac", Namespaces::compatibility());
    }
    return piece;
}

void Maker::addPart(DicedWorkbook::Role role, const QString &name, const XmlPiece &piece)
{
    DicedWorkbook::Part part;
    part.role = role;
    part.name = name;
    part.root = piece;
    part.style.encoding = m_manner.encoding;
    part.style.byteOrderMark = m_manner.byteOrderMark;
    part.style.indented = m_manner.indented;
    part.entry.deflated = m_manner.deflated;
    part.entry.descriptor = m_manner.descriptors;
    m_workbook->parts.append(part);
}

void Maker::addLink(XmlPiece *list, const QString &id, const QString &type, const QString &target,
                    const QString &folder)
{
    const QString base =
        type == "xlMacrosheet" ? "http://schemas.microsoft.com/office/2006/relationships" : m_links;
    const QString full = m_manner.absoluteTargets ? '/' + folder + target : target;
    list->add("Relationship",
              {{"Id", id, {}}, {"Type", base + '/' + type, {}}, {"Target", full, {}}});
}

void Maker::makePackage()
{
    XmlPiece list;
    list.space = Namespaces::package();
    list.name = "Relationships";
    list.prefixes = {{QString(), Namespaces::package()}};
    list.add("Relationship",
             {{"Id", "rIdC", {}},
              {"Type",
               "http://schemas.openxmlformats.org/package/2006/relationships/metadata/"
               "core-properties",
               {}},
              {"Target", "docProps/core.xml", {}}});
    addLink(&list, "rId1", "officeDocument", m_manner.workbook, {});
    addPart(DicedWorkbook::PackageLinks, "_rels/.rels", list);
}

void Maker::makeWorkbook()
{
    XmlPiece workbook = root("workbook");
    if (m_dice->chance(50)) {
        workbook.add("fileVersion", {{"appName", "x", {}}});
    }
    static const QStringList since = {"1", "0", "true", "false", " 1 "};
    if (m_dice->chance(50)) {
        XmlPiece &switches = workbook.add("workbookPr", {{"defaultThemeVersion", "1", {}}});
        if (m_dice->chance(50)) {
            switches.give("date1904", m_dice->pick(since));
        }
    }
    if (m_manner.ignorables) {
        XmlPiece alternatives;
        alternatives.space = Namespaces::compatibility();
        alternatives.name = "AlternateContent";
        XmlPiece &choice = alternatives.add("Choice", {{"Requires", "x15", {}}});
        choice.declare("x15", "urn:fifteen");
        XmlPiece path;
        path.space = "urn:fifteen";
        path.name = "absPath";
        choice.content.push_back(path);
        workbook.content.push_back(alternatives);
    }
    workbook.add("bookViews").add("workbookView", {{"activeTab", "1", {}}});
    addSheets(&workbook);
    workbook.add("definedNames").add("definedName", {{"name", "n", {}}}, "A1");
    workbook.add("calcPr", {{"calcId", "1", {}}});
    addPart(DicedWorkbook::Workbook, m_manner.workbook, workbook);
}

void Maker::addSheets(XmlPiece *workbook)
{
    XmlPiece &sheets = workbook->add("sheets");
    const auto add = [this, &sheets](const QString &id, const QString &state) {
        Attributes attributes = {{"name", "S " + id, {}},
                                 {"sheetId", QString::number(sheets.content.size() + 1), {}}};
        if (!state.isEmpty()) {
            attributes.append({"state", state, {}});
        }
        attributes.append({"id", id, m_links});
        sheets.add("sheet", attributes);
    };
    if (m_dice->chance(20)) {
        add("rIdChart", {});
    }
    if (m_dice->chance(20)) {
        add("rIdOther", m_dice->chance(50) ? "hidden" : "veryHidden");
        add("rIdSheet", {});
    } else {
        add("rIdSheet", m_dice->chance(10) ? "visible" : "");
        if (m_dice->chance(60)) {
            add("rIdOther", {});
        }
    }
}

void Maker::makeLinks()
{
    XmlPiece list;
    list.space = Namespaces::package();
    list.name = "Relationships";
    list.prefixes = {{QString(), Namespaces::package()}};
    const QString name = m_manner.workbook;
    const QString folder = name.contains('/') ? "xl/" : "";
    addLink(&list, "rIdOther", "worksheet", "worksheets/other.xml", folder);
    addLink(&list, "rIdSheet", "worksheet", m_manner.sheet, folder);
    if (m_hasFormats) {
        addLink(&list, "rIdStyles", "styles", "styles.xml", folder);
    }
    addLink(&list, "rIdTexts", "sharedStrings", "sharedStrings.xml", folder);
    addLink(&list, "rIdTheme", "theme", "theme/theme1.xml", folder);
    addLink(&list, "rIdChart", "chartsheet", "chartsheets/sheet1.xml", folder);
    addPart(DicedWorkbook::Links, folder + "_rels/" + name.section('/', -1) + ".rels", list);
}

void Maker::makeFormats()
{
    XmlPiece styles = root("styleSheet");
    XmlPiece &numFmts = styles.add("numFmts", {{"count", "3", {}}});
    const auto declare = [&numFmts](const char *id, const char *code) {
        numFmts.add("numFmt", {{"numFmtId", id, {}}, {"formatCode", code, {}}});
    };
    declare("164", m_dice->chance(50) ? "d.m.yyyy" : "yyyy-mm-dd");
    declare("165", m_dice->chance(50) ? "0.0" : "[Red]0;\"day\" 0.0");
    declare("166", "[h]:mm");
    styles.add("fonts", {{"count", "1", {}}}).add("font").add("sz", {{"val", "11", {}}});
    styles.add("cellStyleXfs").add("xf", {{"numFmtId", "14", {}}});
    XmlPiece &cellXfs = styles.add("cellXfs", {{"count", "6", {}}});
    for (const char *const id : {"0", "164", "165", "14", "9", "166"}) {
        Attributes attributes = {{"numFmtId", id, {}}, {"fontId", "0", {}}, {"xfId", "0", {}}};
        if (m_dice->chance(40)) {
            attributes.append({"applyNumberFormat", "1", {}});
        }
        XmlPiece &xf = cellXfs.add("xf", attributes);
        if (m_dice->chance(20)) {
            xf.add("alignment", {{"horizontal", "center", {}}});
        }
    }
    styles.add("dxfs").add("dxf").add("numFmt", {{"numFmtId", "165", {}}, {"formatCode", "d", {}}});
    const QString name = m_workbook->part(DicedWorkbook::Workbook)->name;
    addPart(DicedWorkbook::Formats, name.contains('/') ? "xl/styles.xml" : "styles.xml", styles);
}

void Maker::makeTexts()
{
    XmlPiece table = root("sst");
    table.give("count", QString::number(m_items.size()));
    table.content = m_items;
    const QString name = m_workbook->part(DicedWorkbook::Workbook)->name;
    addPart(DicedWorkbook::Texts, name.contains('/') ? "xl/sharedStrings.xml" : "sharedStrings.xml",
            table);
}

void Maker::makeUnread()
{
    XmlPiece types;
    types.space = "http://schemas.openxmlformats.org/package/2006/content-types";
    types.name = "Types";
    types.add("Default", {{"Extension", "xml", {}}, {"ContentType", "application/xml", {}}});
    addPart(DicedWorkbook::Unread, "[Content_Types].xml", types);
    std::rotate(m_workbook->parts.begin(), m_workbook->parts.end() - 1, m_workbook->parts.end());
    XmlPiece core;
    core.space = "urn:properties";
    core.name = "coreProperties";
    addPart(DicedWorkbook::Unread, "docProps/core.xml", core);
}

XmlPiece Maker::sheet(int firstNumber)
{
    XmlPiece worksheet = root("worksheet");
    if (m_dice->chance(50)) {
        worksheet.add("dimension", {{"ref", "A1:C3", {}}});
    }
    worksheet.add("sheetViews").add("sheetView", {{"workbookViewId", "0", {}}});
    if (m_dice->chance(40)) {
        worksheet.add("cols").add("col", {{"min", "1", {}}, {"max", "2", {}}, {"width", "9", {}}});
    }
    XmlPiece &data = worksheet.add("sheetData");
    // One that nobody should read needs no more than to look different.
    const int rows = firstNumber > 0 ? 2 : 3 + m_dice->below(3);
    const int columns = 3 + m_dice->below(3);
    for (int row = 1; row <= rows; ++row) {
        addRow(&data, row, columns, firstNumber);
    }
    worksheet.add("pageMargins", {{"left", "0.7", {}}});
    return worksheet;
}

void Maker::addRow(XmlPiece *data, int number, int columns, int firstNumber)
{
    Attributes attributes;
    if (m_manner.references) {
        attributes.append({"r", QString::number(number), {}});
    }
    if (m_dice->chance(40)) {
        attributes.append({"spans", "1:3", {}});
    }
    if (m_manner.ignorables) {
        attributes.append({"dyDescent", "0.25", "urn:ignorable"});
    }
    XmlPiece &row = data->add("row", attributes);
    for (int column = 1; column <= columns; ++column) {
        const QString reference =
            m_manner.references ? QChar('A' + column - 1) + QString::number(number) : QString();
        if (column == 1) {
            addIdentifier(&row, reference);
        } else {
            addValue(&row, reference, firstNumber);
        }
    }
}

void Maker::addIdentifier(XmlPiece *row, const QString &reference)
{
    Attributes attributes;
    if (!reference.isEmpty()) {
        attributes.append({"r", reference, {}});
    }
    const int kind = m_dice->below(10);
    if (kind == 0) {
        row->add("c", attributes).add("v", {}, m_dice->pick(numberIdentifiers));
    } else if (kind == 1 && m_hasFormats) {
        attributes.append({"s", QString::number(m_dice->chance(50) ? OwnDate : BuiltinDate), {}});
        row->add("c", attributes).add("v", {}, m_dice->pick(dayNumbers));
    } else if (kind == 2 && m_manner.isoDates) {
        attributes.append({"t", "d", {}});
        row->add("c", attributes).add("v", {}, m_dice->pick(days));
    } else {
        addText(row, attributes, m_dice->pick(identifiers));
    }
}

void Maker::addValue(XmlPiece *row, const QString &reference, int firstNumber)
{
    Attributes attributes;
    if (!reference.isEmpty()) {
        attributes.append({"r", reference, {}});
    }
    const int kind = m_dice->below(24);
    if (m_hasFormats && m_dice->chance(40)) {
        const int style = kind == 0 ? OwnTime : kind < 3 ? m_dice->below(styleCount) : OwnNumber;
        attributes.append({"s", QString::number(style), {}});
    }
    if (kind == 3) {
        addResult(row, attributes, "b", m_dice->chance(50) ? "1" : "false");
    } else if (kind == 4) {
        addResult(row, attributes, "e", "#DIV/0!");
    } else if (kind == 5) {
        addResult(row, attributes, "str", m_dice->pick(textValues));
    } else if (kind == 6 && m_manner.isoDates) {
        addResult(row, attributes, "d", m_dice->pick(days));
    } else if (kind == 7) {
        row->add("c", attributes);
    } else if (kind < 12) {
        addText(row, attributes, m_dice->pick(textValues));
    } else {
        addNumber(row, attributes,
                  firstNumber > 0 ? QString::number(firstNumber + m_dice->below(50))
                                  : m_dice->pick(numbers));
    }
}

void Maker::addResult(XmlPiece *row, Attributes attributes, const char *type, const QString &value)
{
    attributes.append({"t", type, {}});
    XmlPiece &cell = row->add("c", attributes);
    cell.add("f", {}, "A1+1");
    cell.add("v", {}, value);
}

void Maker::addNumber(XmlPiece *row, Attributes attributes, const QString &number)
{
    if (m_dice->chance(20)) {
        attributes.append({"t", "n", {}});
    }
    XmlPiece &cell = row->add("c", attributes);
    if (m_dice->chance(10)) {
        cell.add("f", {}, "SUM(1,2)");
    }
    cell.add("v", {}, number);
}

void Maker::addText(XmlPiece *row, Attributes attributes, const QString &text)
{
    if (m_manner.sharedTexts) {
        attributes.append({"t", "s", {}});
        row->add("c", attributes).add("v", {}, QString::number(m_items.size()));
        XmlPiece item;
        item.space = m_main;
        item.name = "si";
        addRuns(&item, text);
        m_items.push_back(item);
    } else {
        attributes.append({"t", "inlineStr", {}});
        addRuns(&row->add("c", attributes).add("is"), text);
    }
}

void Maker::addRuns(XmlPiece *item, const QString &text)
{
    if (m_dice->chance(30) && text.size() > 1 && !text.contains('_')
        && !text.at(text.size() - 1).isSurrogate()) {
        XmlPiece &first = item->add("r");
        addTextElement(&first, text.left(1));
        XmlPiece &second = item->add("r");
        second.add("rPr").add("b");
        addTextElement(&second, text.mid(1));
    } else {
        addTextElement(item, text);
    }
    if (m_dice->chance(10)) {
        item->add("rPh", {{"sb", "0", {}}, {"eb", "1", {}}}).add("t", {}, "9");
        item->add("phoneticPr", {{"fontId", "0", {}}});
    }
}

void Maker::addTextElement(XmlPiece *into, const QString &text)
{
    Attributes attributes;
    if (text != text.trimmed()) {
        attributes.append({"space", "preserve", Namespaces::xml()});
    }
    into->add("t", attributes, text);
}

} // namespace

DicedWorkbook::DicedWorkbook(Dice *dice)
{
    Maker(this, dice).make();
}

DicedWorkbook::Part *DicedWorkbook::part(Role role)
{
    const auto found = std::find_if(parts.begin(), parts.end(),
                                    [role](const Part &part) { return part.role == role; });
    return found == parts.end() ? nullptr : &*found;
}

QByteArray DicedWorkbook::bytes(Dice *dice) const
{
    Archive whole = archive;
    QVector<ArchiveEntry> entries;
    for (const Part &part : parts) {
        ArchiveEntry entry = part.entry;
        entry.content = writeXml(part.root, part.style, dice);
        entry.name = entry.name.isNull() ? part.name.toUtf8() : entry.name;
        entries.append(entry);
    }
    whole.entries = entries + archive.entries;
    return whole.bytes();
}
