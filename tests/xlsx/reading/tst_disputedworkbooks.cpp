// SPDX-License-Identifier: GPL-3.0-or-later
#include <array>

#include <QDateTime>
#include <QTemporaryDir>
#include <QtEndian>
#include <QTest>

#include <zlib.h>

#include "support/handmadeworkbook.h"
#include "workbooks/patientreader.h"
#include "xlsx/reading/differential/archive.h"
#include "xlsx/reading/differential/namespaces.h"
#include "xlsx/reading/workbookloader.h"

Q_DECLARE_METATYPE(HandmadeWorkbook)

namespace
{

const QString refused = "refused";
const QString tooLarge = "too large";

// One patient with the value 5 and, after it, what stands at the place of the test.
HandmadeWorkbook withCells(const QByteArray &cells = {}, const QByteArray &rows = {})
{
    HandmadeWorkbook workbook;
    workbook.rows = R"(<row r="2"><c r="A2" t="s"><v>0</v></c><c r="B2"><v>5</v></c>)" + cells
        + "</row>" + rows;
    workbook.strings = "<si><t>P1</t></si><si><t>72</t></si>";
    workbook.styles = R"(<numFmts><numFmt numFmtId="164" formatCode="d.m.yyyy"/></numFmts>)"
                      R"(<cellXfs><xf numFmtId="0"/><xf numFmtId="164"/><xf numFmtId="14"/>)"
                      R"(<xf numFmtId="2"/></cellXfs>)";
    return workbook;
}

HandmadeWorkbook withTexts(const QByteArray &items, int index)
{
    HandmadeWorkbook workbook =
        withCells(R"(<c r="C2" t="s"><v>)" + QByteArray::number(index) + "</v></c>");
    workbook.strings = "<si><t>P1</t></si>" + items;
    return workbook;
}

// A number under the format with index 1 and a usual one after it, which no date hides.
HandmadeWorkbook withStyles(const QByteArray &styles)
{
    HandmadeWorkbook workbook =
        withCells(R"(<c r="C2" s="1"><v>44000</v></c><c r="D2"><v>6</v></c>)");
    workbook.styles = styles;
    return workbook;
}

HandmadeWorkbook withIdentifier(const QByteArray &cell)
{
    HandmadeWorkbook workbook = withCells();
    workbook.rows = R"(<row r="2">)" + cell + R"(<c r="B2"><v>5</v></c></row>)";
    return workbook;
}

HandmadeWorkbook withSheets(const QByteArray &sheets, const QByteArray &relationships = {})
{
    HandmadeWorkbook workbook = withCells();
    workbook.sheets = sheets;
    workbook.relationships = workbook.relationship("second", "worksheet", "second.xml")
        + workbook.relationship("chart", "chartsheet", "chart.xml") + relationships;
    workbook.more = {{"xl/second.xml",
                      workbook.part("worksheet",
                                    R"(<sheetData><row r="2"><c r="A2"><v>2</v></c><c r="B2">)"
                                    R"(<v>99</v></c></row></sheetData>)")},
                     {"xl/chart.xml", workbook.part("chartsheet", "")}};
    return workbook;
}

QByteArray alternatives(const QByteArray &content)
{
    return R"(<mc:AlternateContent xmlns:mc="http://schemas.openxmlformats.org/)"
           R"(markup-compatibility/2006" xmlns:u="urn:u" xmlns:m=")"
        + Namespaces::transitional().toUtf8() + R"(">)" + content + "</mc:AlternateContent>";
}

QByteArray choice(const QByteArray &required, const QByteArray &content)
{
    return R"(<mc:Choice Requires=")" + required + R"(">)" + content + "</mc:Choice>";
}

QByteArray fallback(const QByteArray &content)
{
    return "<mc:Fallback>" + content + "</mc:Fallback>";
}

// The part of that name, in which \p from is replaced.
HandmadeWorkbook replaced(HandmadeWorkbook workbook, const QString &name, const QByteArray &from,
                          const QByteArray &to)
{
    const HandmadeWorkbook::Parts parts = workbook.parts();
    for (const auto &part : parts) {
        if (part.first == name) {
            QByteArray content = part.second;
            Q_ASSERT(content.contains(from));
            workbook.more.append({name, content.replace(from, to)});
        }
    }
    return workbook;
}

Archive archiveOf(const HandmadeWorkbook &workbook)
{
    Archive archive;
    const HandmadeWorkbook::Parts parts = workbook.parts();
    for (const auto &part : parts) {
        ArchiveEntry entry;
        entry.name = part.first.toUtf8();
        entry.content = part.second;
        archive.entries.append(entry);
    }
    return archive;
}

ArchiveEntry *entryOf(Archive *archive, const QByteArray &name)
{
    for (ArchiveEntry &entry : archive->entries) {
        if (entry.name == name) {
            return &entry;
        }
    }
    return nullptr;
}

// A part as it stands in another encoding.
QByteArray wide(const QByteArray &utf8, bool bigEndian)
{
    QByteArray bytes;
    const QString text = QChar(0xfeff) + QString::fromUtf8(utf8).replace("UTF-8", "UTF-16");
    for (const QChar character : text) {
        const char low = static_cast<char>(character.unicode() & 0xff);
        const char high = static_cast<char>(character.unicode() >> 8);
        bytes.append(bigEndian ? high : low).append(bigEndian ? low : high);
    }
    return bytes;
}

QString shown(const LoadedWorkbook &loaded)
{
    if (!loaded.document) {
        return loaded.error.reason == LoadError::Damaged ? refused
            : loaded.error.reason == LoadError::TooLarge
            ? tooLarge
            : "reason " + QString::number(loaded.error.reason);
    }
    QStringList patients;
    for (const PatientRecord &patient : readPatients(*loaded.document)) {
        QString line = patient.id + ':';
        for (const double value : patient.values) {
            line += ' ' + QString::number(value);
        }
        patients.append(line);
    }
    return patients.join(" | ");
}

void row(const char *name, const HandmadeWorkbook &workbook, const QString &expected = refused)
{
    QTest::newRow(name) << workbook << expected;
}

const char *const unknownSpace = R"(xmlns:u="urn:u")";

void unknownElements()
{
    row("cell without a namespace",
        withCells(R"(<c xmlns="" r="C2"><v>7</v></c><c r="D2"><v>8</v></c>)"));
    row("value without a namespace",
        withCells(R"(<c r="C2"><v xmlns="">7</v></c><c r="D2"><v>8</v></c>)"));
    row("row without a namespace",
        withCells({}, R"(<row xmlns="" r="3"><c r="A3"><v>7</v></c></row><row r="4"/>)"));
    row("item without a namespace",
        withTexts(R"(<si xmlns=""><t>72</t></si><si><t>73</t></si>)", 1));
    row("run without a namespace",
        withTexts(R"(<si><r><t>7</t></r><r xmlns=""><t>5</t></r></si>)", 1));
    row("sheet without a namespace",
        withSheets(R"(<sheet xmlns="" name="a" r:id="sheet"/><sheet name="b" r:id="second"/>)"));
    row("format without a namespace",
        withStyles(R"(<cellXfs><xf xmlns=""/><xf numFmtId="0"/><xf numFmtId="14"/></cellXfs>)"));
    row("number format without a namespace",
        withStyles(R"(<numFmts><numFmt xmlns="" numFmtId="164" formatCode="d.m.yyyy"/></numFmts>)"
                   R"(<cellXfs><xf numFmtId="0"/><xf numFmtId="164"/></cellXfs>)"));
    const QByteArray u = unknownSpace;
    row("unknown cell", withCells("<u:c " + u + R"( r="C2"><u:v>7</u:v></u:c>)"));
    row("unknown box", withCells("<u:box " + u + R"(><c r="C2"><v>7</v></c></u:box>)"));
    row("unknown row", withCells({}, "<u:row " + u + R"( r="3"/>)"));
    row("unknown value", withCells(R"(<c r="C2"><u:v )" + u + ">7</u:v></c>"));
    row("unknown item", withTexts("<u:si " + u + "/><si><t>7</t></si>", 1));
    row("unknown run", withTexts("<si><t>7</t><u:r " + u + "><t>5</t></u:r></si>", 1));
    row("unknown format",
        withStyles("<cellXfs><u:xf " + u + R"(/><xf numFmtId="0"/><xf numFmtId="0"/></cellXfs>)"));
    row("unknown number format",
        withStyles("<numFmts><u:numFmt " + u + R"(/></numFmts><cellXfs><xf/><xf/></cellXfs>)"));
    row("unknown sheet",
        withSheets("<u:sheet " + u + R"( name="a"/><sheet name="b" r:id="sheet"/>)"));
}

void compatibility()
{
    const QByteArray xf = R"(<xf numFmtId="0"/>)";
    const QByteArray date = R"(<xf numFmtId="14"/>)";
    const auto formats = [&xf](const QByteArray &content) {
        return withStyles("<cellXfs>" + xf + alternatives(content) + "</cellXfs>");
    };
    const QString number = "P1: 5 44000 6";
    row("choice of what is known", formats(choice("m", xf) + fallback(date)), number);
    row("choice of what is unknown", formats(choice("u", date) + fallback(xf)), number);
    row("second choice", formats(choice("u", date) + choice("m", xf) + fallback(date)), number);
    row("two fallbacks", formats(choice("u", date) + fallback(xf) + fallback(xf)));
    row("fallback of two formats", formats(choice("u", date) + fallback(xf + xf)));
    row("empty fallback", formats(choice("u", date) + fallback({})));
    row("no fallback", formats(choice("u", date)));
    row("alternatives among cells",
        withCells(alternatives(choice("m", R"(<c r="C2"><v>7</v></c>)")
                               + fallback(R"(<c r="C2"><v>8</v></c>)"))));
    const QByteArray mc = R"(xmlns:mc="http://schemas.openxmlformats.org/)"
                          R"(markup-compatibility/2006" xmlns:u="urn:u" )";
    row("content of what is ignorable",
        replaced(withCells(R"(<u:box><c r="C2"><v>7</v></c></u:box>)"), "xl/worksheets/sheet1.xml",
                 "<worksheet ",
                 "<worksheet " + mc + R"(mc:Ignorable="u" mc:ProcessContent="u:box" )"));
    for (const char *const part :
         {"worksheets/sheet1", "workbook", "styles", "sharedStrings", "_rels/workbook"}) {
        const QString name = QString("xl/%1.xml%2").arg(part, part[0] == '_' ? ".rels" : "");
        row(qPrintable("unknown must be understood in " + name),
            replaced(withCells(), name, " xmlns=", ' ' + mc + "mc:MustUnderstand=\"u\" xmlns="));
    }
    row("undeclared prefix ignorable",
        replaced(withCells(), "xl/worksheets/sheet1.xml", "<worksheet ",
                 "<worksheet " + mc + R"(mc:Ignorable="nobody" )"));
    row("element in a value", withCells(R"(<c r="C2"><v>7<x:y xmlns:x="u">3</x:y>5</v></c>)"));
}

void attributes()
{
    const QByteArray x = R"(<c xmlns:x="urn:u" )";
    row("foreign type", withCells(x + R"(r="C2" x:t="s"><v>1</v></c>)"));
    row("foreign format", withCells(x + R"(r="C2" x:s="1"><v>1</v></c>)"));
    row("foreign reference", withCells(x + R"(x:r="D2"><v>1</v></c>)"));
    row("type in the main namespace",
        withCells(R"(<x:c xmlns:x=")" + Namespaces::transitional().toUtf8()
                  + R"(" r="C2" x:t="s"><x:v>1</x:v></x:c>)"));
    row("reference in large letters", withCells({}, R"(<row R="5"><c><v>7</v></c></row>)"));
    row("id for r:id",
        withSheets(R"(<sheet name="a" id="sheet"/><sheet name="b" r:id="second"/>)"));
}

void contents()
{
    row("inline text of the type s", withCells(R"(<c r="C2" t="s"><is><t>0</t></is></c>)"));
    row("inline text of the type b", withCells(R"(<c r="C2" t="b"><is><t>1</t></is></c>)"));
    row("inline text without a type", withCells(R"(<c r="C2"><is><t>1</t></is></c>)"));
    for (const QByteArray type : {"n", "str", "e", "d"}) {
        row("inline text of the type " + type,
            withCells(R"(<c r="C2" t=")" + type + R"("><is><t>1</t></is></c>)"));
    }
    row("number after as many blanks as a text may not have",
        withCells(R"(<c r="C2"><v>)" + QByteArray(262200, ' ') + "7</v></c>"), tooLarge);
    row("two numbers with as many blanks between",
        withCells(R"(<c r="C2"><v>7)" + QByteArray(262200, ' ') + "5</v></c>"));
    row("row in a formula",
        withCells(R"(<c r="C2"><f><row r="3"><c r="A3"/></row></f><v>7</v></c>)"));
    row("cell in a formula", withCells(R"(<c r="C2"><f><c r="C2"><v>7</v></c></f><v>7</v></c>)"));
    row("sheet in a sheet",
        withSheets(R"(<sheet name="a" r:id="sheet"><sheet name="b" r:id="second"/></sheet>)"));
    row("format in a format",
        withStyles(R"(<cellXfs><xf numFmtId="0"><xf numFmtId="14"/></xf><xf/></cellXfs>)"));
}

void characters()
{
    const auto text = [](const QByteArray &characters) {
        return R"(<c r="A2" t="str"><v>)" + characters + "</v></c>";
    };
    const QByteArray mark = "\xef\xbb\xbf";
    row("identifier of a mark", withIdentifier(text(mark)), QString(QChar(0xfeff)) + ": 5");
    row("identifier after a mark", withIdentifier(text(mark + " A")),
        QString(QChar(0xfeff)) + " A: 5");
    row("number after a mark", withCells(R"(<c r="C2" t="str"><v>)" + mark + " 50</v></c>"),
        "P1: 5");
    row("number after a mark among the texts", withTexts("<si><t>" + mark + " 50</t></si>", 1),
        "P1: 5");
    row("delete", withIdentifier(text("a\x7f")), QString("a\x7f: 5"));
    row("apostrophe of an old code page", withIdentifier(text("O&#x92;Neil")),
        "O" + QString(QChar(0x92)) + "Neil: 5");
}

void formats()
{
    const auto twice = [](const QByteArray &second) {
        return withStyles(R"(<numFmts><numFmt numFmtId="164" formatCode="0.0"/>)" + second
                          + R"(</numFmts><cellXfs><xf/><xf numFmtId="164"/></cellXfs>)");
    };
    row("number format twice, as a date, too",
        twice(R"(<numFmt numFmtId="164" formatCode="d.m.yyyy"/>)"));
    row("number format twice, as a number", twice(R"(<numFmt numFmtId="164" formatCode="0.00"/>)"),
        "P1: 5 44000 6");
    const auto used = [](const QByteArray &numFmt) {
        return withStyles("<numFmts>" + numFmt
                          + R"(</numFmts><cellXfs><xf/><xf numFmtId="164"/></cellXfs>)");
    };
    row("number format without a code", used(R"(<numFmt numFmtId="164"/>)"));
    row("number format without a number", used(R"(<numFmt formatCode="d.m.yyyy"/>)"));
    row("number format that is not declared", used({}));
    row("no table of formats", withStyles("<fonts/>"));
    row("format beyond the table", withStyles("<cellXfs><xf/></cellXfs>"));
    HandmadeWorkbook gone = withStyles({});
    gone.styles = QByteArray();
    row("no formats", gone);
    gone.relationships = gone.relationship("styles", "styles", "styles.xml");
    row("missing part of formats", gone);
    const HandmadeWorkbook whole = withStyles(withCells().styles);
    const QString links = whole.relationshipsPart;
    row("external formats",
        replaced(whole, links, R"(Target="styles.xml")",
                 R"(Target="styles.xml" TargetMode="External")"));
    row("formats of an unknown type", replaced(whole, links, "/styles\"", "/style\""));
}

void dates()
{
    row("day before March 1900", withIdentifier(R"(<c r="A2" t="d"><v>1900-01-15</v></c>)"),
        "1900-01-15: 5");
    const auto since = [](const QByteArray &value, const QByteArray &day) {
        HandmadeWorkbook workbook = withIdentifier(R"(<c r="A2" s="2"><v>)" + day + "</v></c>");
        workbook.properties = R"(<workbookPr date1904=")" + value + R"("/>)";
        return workbook;
    };
    row("1904 between blanks", since(" 1 ", "40000"), "2013-07-07: 5");
    row("1904 in the words of others", since("on", "40000"));
    row("1904 in large letters", since("TRUE", "40000"));
    row("empty 1904", since("", "40000"));
    row("day after the year 9999 since 1904", since("1", "2958000"), "########: 5");
    row("last day of 9999 since 1904", since("1", "2957003"), "9999-12-31: 5");
    HandmadeWorkbook twice = since("1", "40000");
    twice.properties += "<workbookPr/>";
    row("switches twice", twice);
}

void sheets()
{
    const QByteArray second = R"(<sheet name="b" r:id="second"/>)";
    row("missing part of the first sheet",
        withSheets(R"(<sheet name="a" r:id="gone"/>)" + second,
                   HandmadeWorkbook().relationship("gone", "worksheet", "gone.xml")));
    row("missing relationship of the first sheet",
        withSheets(R"(<sheet name="a" r:id="gone"/>)" + second));
    row("no relationship of the first sheet", withSheets(R"(<sheet name="a"/>)" + second));
    row("empty relationship of the first sheet",
        withSheets(R"(<sheet name="a" r:id=""/>)" + second));
    row("missing part of a hidden sheet",
        withSheets(R"(<sheet name="a" state="hidden" r:id="gone"/><sheet name="b" r:id="sheet"/>)"),
        "P1: 5");
    row("missing part of a later sheet",
        withSheets(R"(<sheet name="b" r:id="sheet"/><sheet name="a" r:id="gone"/>)"), "P1: 5");
    row("chart before",
        withSheets(R"(<sheet name="a" r:id="chart"/><sheet name="b" r:id="sheet"/>)"), "P1: 5");
}

void relationships()
{
    const HandmadeWorkbook whole =
        withSheets(R"(<sheet name="a" r:id="sheet"/><sheet name="b" r:id="second"/>)");
    const QString links = whole.relationshipsPart;
    const QByteArray sheet = R"(<Relationship Id="sheet")";
    const QByteArray target = R"(Target="worksheets/sheet1.xml")";
    row("relationship without a namespace",
        replaced(whole, links, sheet, R"(<Relationship xmlns="" Id="sheet")"));
    row("foreign Id",
        replaced(whole, links, sheet, R"(<Relationship xmlns:x="urn:u" x:Id="sheet")"));
    row("no Id", replaced(whole, links, sheet, "<Relationship"));
    row("no target", replaced(whole, links, target, ""));
    row("blank before the target",
        replaced(whole, links, target, R"(Target=" worksheets/sheet1.xml")"));
    row("fragment after the target",
        replaced(whole, links, target, R"(Target="worksheets/sheet1.xml#a")"));
    const QByteArray external = R"( TargetMode="External")";
    row("external sheet", replaced(whole, links, target, target + external));
    for (const QByteArray name : {"styles.xml", "sharedStrings.xml"}) {
        const QByteArray named = "Target=\"" + name + '"';
        row("external " + name, replaced(whole, links, named, named + external));
    }
    const QByteArray book = R"(Target="xl/workbook.xml")";
    row("external workbook", replaced(whole, "_rels/.rels", book, book + external));
    row("relationship of the package without an Id",
        replaced(whole, "_rels/.rels", R"(Id="book" )", ""));
}

const QString asUsual = "P1: 5";
const QByteArray six = R"(<c r="C2"><v>6</v></c>)";
const QByteArray extension = R"(<extLst><ext uri="x"><a xmlns="urn:a">9</a></ext></extLst>)";

void unusualCells()
{
    row("cell and row without references",
        withCells("<c><v>6</v></c>", "<row><c><v>7</v></c></row>"), "P1: 5 6 | 7:");
    row("cm, vm, ph", withCells(R"(<c r="C2" cm="1" vm="1" ph="1"><v>6</v></c>)"), "P1: 5 6");
    row("type on a value", withCells(R"(<c r="C2"><v t="s">6</v></c>)"), "P1: 5 6");
    row("blanks kept in a value", withCells(R"(<c r="C2"><v xml:space="preserve"> 6 </v></c>)"),
        "P1: 5 6");
    row("extension of a row", withCells(six + extension), "P1: 5 6");
    row("extension of a cell", withCells(R"(<c r="C2"><v>6</v>)" + extension + "</c>"), "P1: 5 6");
    row("extension of the texts", withTexts("<si><t>6</t></si>" + extension, 1), "P1: 5 6");
    const QByteArray phonetics =
        R"(<rPh sb="0" eb="1"><t>9</t></rPh><phoneticPr fontId="1" type="noConversion"/>)";
    row("phonetics", withTexts("<si><r><rPr><b/></rPr><t>6</t></r>" + phonetics + "</si>", 1),
        "P1: 5 6");
    row("phonetics of an inline text",
        withCells(R"(<c r="C2" t="inlineStr"><is><t>6</t>)" + phonetics + "</is></c>"), "P1: 5 6");
    row("descent of a row, not ignorable",
        withCells({}, R"(<row r="3" xmlns:d="urn:d" d:dyDescent="0.25"/>)"), asUsual);
    row("attributes of a row",
        withCells({},
                  R"(<row r="3" spans="1:2" s="1" customFormat="1" ht="9" customHeight="1" )"
                  R"(hidden="1" outlineLevel="1" collapsed="1" thickTop="1" thickBot="1"/>)"),
        asUsual);
    row("empty cell of an unknown format", withCells(R"(<c r="C2" s="99"/>)"), asUsual);
    row("row twice with other cells", withCells({}, R"(<row r="2">)" + six + "</row>"), "P1: 5 6");
    row("duration", withCells(R"(<c r="C2" t="d"><v>PT14H30M</v></c>)"), asUsual);
    row("day of 1899", withCells(R"(<c r="C2" t="d"><v>1899-12-31</v></c>)"), asUsual);
}

void unusualParts()
{
    row("format without a number",
        withStyles(R"(<cellXfs><xf/><xf fontId="1" xmlns:h="urn:h" h:apply="1" own="1"/>)"
                   "</cellXfs>"),
        "P1: 5 44000 6");
    row("alignment, protection and extension of a format",
        withStyles("<cellXfs><xf/><xf><alignment/><protection/>" + extension + "</xf></cellXfs>"),
        "P1: 5 44000 6");
    row("views in a sheet", withSheets(R"(<sheet name="a" r:id="sheet"><bookViews/></sheet>)"),
        asUsual);
    HandmadeWorkbook switches = withCells();
    switches.properties = R"(<workbookPr dateCompatibility="0" codeName="x"/>)";
    row("other switches", switches, asUsual);
    HandmadeWorkbook plain = withCells(six);
    plain.styles = QByteArray();
    row("no formats", plain, "P1: 5 6");
}

void ignorables()
{
    const QByteArray piece = R"(<u:c><c r="Z9"><v>9</v></c></u:c>)";
    const QByteArray ignorable = R"( xmlns:mc="http://schemas.openxmlformats.org/)"
                                 R"(markup-compatibility/2006" xmlns:u="urn:u" mc:Ignorable="u")";
    struct Where {
        const char *part;
        const char *root;
        const char *before;
    };
    constexpr std::array<Where, 12> places = {{
        {"xl/worksheets/sheet1.xml", "<worksheet", "<row "},
        {"xl/worksheets/sheet1.xml", "<worksheet", "<c r=\"B2\""},
        {"xl/worksheets/sheet1.xml", "<worksheet", "<v>5"},
        {"xl/worksheets/sheet1.xml", "<worksheet", "5</v>"},
        {"xl/sharedStrings.xml", "<sst", "<si>"},
        {"xl/sharedStrings.xml", "<sst", "<t>"},
        {"xl/sharedStrings.xml", "<sst", "P1</t>"},
        {"xl/styles.xml", "<styleSheet", "<numFmt "},
        {"xl/styles.xml", "<styleSheet", "<xf "},
        {"xl/styles.xml", "<styleSheet", "<cellXfs>"},
        {"xl/workbook.xml", "<workbook", "<sheet "},
        {"xl/_rels/workbook.xml.rels", "<Relationships", "<Relationship "},
    }};
    for (const Where &where : places) {
        const QByteArray root = where.root;
        const HandmadeWorkbook declared = replaced(withCells(), where.part, root, root + ignorable);
        const QByteArray before = where.before;
        const QByteArray content = declared.more.constFirst().second;
        const int at = int(content.indexOf(before, content.indexOf('>', content.indexOf(root))));
        HandmadeWorkbook workbook = declared;
        workbook.more.front().second.insert(at, piece);
        row(qPrintable(QString("ignorable before %1 of %2").arg(where.before, where.part)),
            workbook, "P1: 5");
    }
    row("ignorable type",
        replaced(withCells(R"(<c r="C2" u:t="s"><v>6</v></c>)"), "xl/worksheets/sheet1.xml",
                 "<worksheet", "<worksheet" + ignorable),
        "P1: 5 6");
}

void disputedNames(const Archive &usual)
{
    const QByteArray styles = "xl/styles.xml";
    Archive changed = usual;
    entryOf(&changed, styles)->name += '\0';
    entryOf(&changed, styles + QByteArray(1, '\0'))->localName = styles;
    QTest::newRow("name that ends in NUL in the directory") << changed.bytes();
    changed = usual;
    entryOf(&changed, styles)->localName = styles + QByteArray(1, '\0');
    QTest::newRow("name that ends in NUL before the bytes") << changed.bytes();
    changed = usual;
    entryOf(&changed, styles)->localName = "xl/stylus.xml";
    QTest::newRow("two names of a part") << changed.bytes();
    changed = usual;
    QByteArray field = QByteArray::fromHex("75701200010000000078782f7374796c65732e786d6c");
    const auto sum =
        quint32(crc32(0, reinterpret_cast<const Bytef *>(styles.constData()), uInt(styles.size())));
    qToLittleEndian(sum, field.data() + 5);
    entryOf(&changed, styles)->centralExtra = field;
    QTest::newRow("Unicode path that contradicts the name") << changed.bytes();
}

void disputedEncodings(const Archive &usual)
{
    const auto sheet = [&usual](const char *name, QByteArray (*encode)(QByteArray)) {
        Archive archive = usual;
        ArchiveEntry *const entry = entryOf(&archive, "xl/worksheets/sheet1.xml");
        entry->content = encode(entry->content);
        QTest::newRow(name) << archive.bytes();
    };
    sheet("mark of UTF-8 and Latin-1 declared",
          [](QByteArray xml) { return "\xef\xbb\xbf" + xml.replace("UTF-8", "ISO-8859-1"); });
    sheet("UTF-16 and UTF-8 declared",
          [](QByteArray xml) { return wide(xml.replace("UTF-8", "utf8"), false); });
}

} // namespace

/// Workbooks that other readers read in different ways: each of them is refused, or read as the
/// document says; and what only looks unusual is read.
class TestDisputedWorkbooks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_folder.isValid()); }

    void workbookIsRefusedOrReadAsItSays_data()
    {
        QTest::addColumn<HandmadeWorkbook>("workbook");
        QTest::addColumn<QString>("expected");
        unknownElements();
        compatibility();
        attributes();
        contents();
        characters();
        formats();
        dates();
        sheets();
        relationships();
    }

    void workbookIsRefusedOrReadAsItSays()
    {
        QFETCH(const HandmadeWorkbook, workbook);
        QFETCH(const QString, expected);
        workbook.save(path());
        QCOMPARE(shown(loadWorkbook(path())), expected);
    }

    void unusualWorkbookIsRead_data()
    {
        QTest::addColumn<HandmadeWorkbook>("workbook");
        QTest::addColumn<QString>("expected");
        unusualCells();
        unusualParts();
        ignorables();
    }

    void unusualWorkbookIsRead() { workbookIsRefusedOrReadAsItSays(); }

    void disputedArchiveIsRefused_data()
    {
        QTest::addColumn<QByteArray>("file");
        const Archive usual = archiveOf(withCells());
        const QByteArray other = archiveOf(withCells(R"(<c r="C2"><v>6</v></c>)")).bytes();
        QTest::newRow("one archive before another") << other + usual.bytes();
        Archive changed = usual;
        changed.comment = other;
        QTest::newRow("one archive in the comment of another") << changed.bytes();
        const QByteArray second = QByteArray::fromHex("504b0506") + QByteArray(18, '\0');
        changed.comment = second;
        QTest::newRow("two end records") << changed.bytes();
        QTest::newRow("something before") << "PK" + usual.bytes();
        QTest::newRow("something after") << usual.bytes() + "x";
        changed = usual;
        changed.beforeDirectory = "x";
        changed.directoryOffsetError = 0xffffffff;
        QTest::newRow("directory that begins too early") << changed.bytes();
        changed = usual;
        changed.afterDirectory = "x";
        QTest::newRow("something after the directory") << changed.bytes();
        disputedNames(usual);
        disputedEncodings(usual);
    }

    void disputedArchiveIsRefused()
    {
        QFETCH(const QByteArray, file);
        QCOMPARE(shown(loadBytes(file)), refused);
    }

    void unusualArchiveIsRead_data()
    {
        QTest::addColumn<QByteArray>("file");
        const Archive usual = archiveOf(withCells(R"(<c r="C2"><v>6</v></c>)"));
        QTest::newRow("usual") << usual.bytes();
        Archive changed = usual;
        changed.wideEnd = true;
        QTest::newRow("end record of 64 bits") << changed.bytes();
        const auto all = [&usual](const char *name, bool ArchiveEntry::*member, bool value) {
            Archive archive = usual;
            for (ArchiveEntry &entry : archive.entries) {
                entry.*member = value;
            }
            QTest::newRow(name) << archive.bytes();
        };
        all("sizes of 64 bits", &ArchiveEntry::wide, true);
        all("sizes after the bytes", &ArchiveEntry::descriptor, true);
        all("not deflated", &ArchiveEntry::deflated, false);
        const auto encoded = [&usual](const char *name, QByteArray (*encode)(const QByteArray &)) {
            Archive archive = usual;
            for (ArchiveEntry &entry : archive.entries) {
                entry.content = encode(entry.content);
            }
            QTest::newRow(name) << archive.bytes();
        };
        encoded("UTF-16, low byte first", [](const QByteArray &xml) { return wide(xml, false); });
        encoded("UTF-16, high byte first", [](const QByteArray &xml) { return wide(xml, true); });
        encoded("byte order mark", [](const QByteArray &xml) { return "\xef\xbb\xbf" + xml; });
        encoded("Latin-1", [](const QByteArray &xml) {
            return QByteArray(xml).replace("UTF-8", "ISO-8859-1");
        });
    }

    void unusualArchiveIsRead()
    {
        QFETCH(const QByteArray, file);
        QCOMPARE(shown(loadBytes(file)), QString("P1: 5 6"));
    }

    void lettersOfLatin1AreThose()
    {
        Archive archive = archiveOf(withIdentifier(R"(<c r="A2" t="str"><v>@</v></c>)"));
        QByteArray &sheet = entryOf(&archive, "xl/worksheets/sheet1.xml")->content;
        sheet.replace("UTF-8", "ISO-8859-1").replace('@', "\xe9\x92");
        QCOMPARE(shown(loadBytes(archive.bytes())), QString(QChar(0xe9)) + QChar(0x92) + ": 5");
    }

private:
    QString path() const { return m_folder.filePath("book.xlsx"); }

    LoadedWorkbook loadBytes(const QByteArray &content) const
    {
        QFile file(path());
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
            qFatal("cannot write %s", qPrintable(file.fileName()));
        }
        file.close();
        return loadWorkbook(path());
    }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestDisputedWorkbooks)
#include "tst_disputedworkbooks.moc"
