// SPDX-License-Identifier: GPL-3.0-or-later
#include <array>

#include <QTemporaryDir>
#include <QTest>

#include <zip.h>

#include "support/handmadeworkbook.h"
#include "support/testworkbooks.h"
#include "workbooks/patientreader.h"
#include "xlsx/reading/workbookloader.h"

Q_DECLARE_METATYPE(HandmadeWorkbook)

namespace
{

using Values = QVector<double>;

const QByteArray packageNamespace = "http://schemas.openxmlformats.org/package/2006/relationships";

// Identifier and value of the one patient, the value under the second format, which is a number's.
const QByteArray firstCells = R"(<c r="A2" t="s"><v>0</v></c><c r="B2" s="1"><v>5</v></c>)";

HandmadeWorkbook onePatient(const QByteArray &more = {})
{
    HandmadeWorkbook workbook;
    workbook.rows = R"(<row r="2">)" + firstCells + more + "</row>";
    workbook.strings = "<si><t>P1</t></si>";
    workbook.styles = R"(<numFmts><numFmt numFmtId="164" formatCode="0.0"/>)"
                      R"(<numFmt numFmtId="165" formatCode="d.m.yyyy"/></numFmts>)"
                      R"(<cellXfs><xf numFmtId="0"/><xf numFmtId="164"/><xf numFmtId="165"/>)"
                      R"(<xf numFmtId="14"/><xf numFmtId="400"/></cellXfs>)";
    return workbook;
}

// What the reader does with a piece of a part.
enum Outcome {
    Read, // its content counts
    Passed, // as if it were not there
    Refused // the whole file is
};

// Where in the workbook of one patient the piece stands.
enum Where {
    InPackageRelationships,
    InWorkbook,
    InSheets,
    InSheet, // an attribute of the one sheet
    InRelationships,
    InStyles,
    InNumberFormats,
    InFormats,
    InFormat, // an attribute of the second format
    InStrings,
    InText, // of the identifier
    InWorksheet,
    InSheetData,
    InRow,
    InRowElement, // an attribute of the row
    InValueCell, // an attribute of the cell of the value
    InValue
};

// One row of the grammar: an element or attribute that writers use, and why the reader may treat it
// so without changing a number. Values are those of the one patient, when the file is read.
struct Rule {
    Where where;
    const char *name;
    const char *xml;
    Outcome outcome;
    const char *why;
    Values values = {5};
};

const char *const extension = R"(<extLst><ext uri="x"><a xmlns="urn:a">9</a></ext></extLst>)";
const char *const oldWordsOnly = "says nothing about a cell";

const QVector<Rule> grammar = {
    // The package
    {InPackageRelationships, "relationship of properties",
     R"(<Relationship Id="p" Type="urn:properties" Target="docProps/app.xml"/>)", Passed,
     "leads to no cell"},
    {InPackageRelationships, "relationship without an Id",
     R"(<Relationship Type="urn:x" Target="x.xml"/>)", Refused, "whatever should lead to it"},
    {InPackageRelationships, "unknown element", "<Relation/>", Refused,
     "could be the workbook that is meant"},

    // The workbook
    {InWorkbook, "fileVersion, bookViews and the like",
     R"(<fileVersion appName="x"/><bookViews><workbookView activeTab="3"/></bookViews>)", Passed,
     "the first visible worksheet is read, whichever is shown first"},
    {InWorkbook, "workbookPr", R"(<workbookPr date1904="1" codeName="x"/>)", Read,
     "the day from which dates count; they are no values"},
    {InWorkbook, "definedNames",
     "<definedNames><definedName name='n'>A1</definedName></definedNames>", Passed, oldWordsOnly},
    {InWorkbook, "extLst", extension, Passed, oldWordsOnly},
    {InWorkbook, "second switches", R"(<workbookPr/><workbookPr/>)", Refused,
     "either could be meant"},
    {InWorkbook, "switch that is neither", R"(<workbookPr date1904="on"/>)", Refused,
     "dates could be four years off"},
    {InWorkbook, "switch in capitals", R"(<workbookPr date1904="TRUE"/>)", Refused,
     "dates could be four years off"},
    {InWorkbook, "second list of sheets", "<sheets/>", Refused,
     "could hold the first visible sheet"},
    {InSheets, "unknown element", R"(<shet name="x" r:id="sheet"/>)", Refused,
     "could be the first visible sheet"},
    {InSheets, "misplaced bookViews inside of a sheet",
     R"(<sheet name="x" sheetId="9" r:id="sheet"><bookViews><workbookView/></bookViews></sheet>)",
     Passed, "the relationship alone leads to the part"},
    {InSheets, "sheet inside of a sheet",
     R"(<sheet name="x" r:id="sheet"><sheet name="y" r:id="sheet"/></sheet>)", Refused,
     "either could be meant"},
    {InSheet, "state hidden", R"(state="hidden")", Read, "only a visible sheet goes before it"},
    {InSheet, "state veryHidden", R"(state="veryHidden")", Read, "as hidden"},
    {InSheet, "state in another word", R"(state="gone")", Passed,
     "a sheet is visible unless a known word hides it"},
    {InSheet, "empty state", R"(state="")", Passed, "as without"},
    {InSheet, "unknown attribute", R"(kind="x")", Refused, "could hide the sheet"},
    {InSheet, "second relationship",
     R"(xmlns:p="http://purl.oclc.org/ooxml/officeDocument/relationships" p:id="x")", Refused,
     "either could be meant"},

    // The relationships of the workbook
    {InRelationships, "theme, calcChain, externalLink",
     R"(<Relationship Id="t" Type="urn:theme" Target="theme/theme1.xml"/>)", Passed,
     "leads to no cell"},
    {InRelationships, "two with one Id",
     R"(<Relationship Id="t" Type="urn:a" Target="a"/><Relationship Id="t" Type="urn:b" Target="b"/>)",
     Refused, "either could be a garbled way to the formats"},
    {InRelationships, "relationship without an Id",
     R"(<Relationship Type="urn:x" Target="x.xml"/>)", Refused, "whatever should lead to it"},
    {InRelationships, "relationship without a type", R"(<Relationship Id="t" Target="x.xml"/>)",
     Refused, "could be that of the formats"},
    {InRelationships, "relationship without a target", R"(<Relationship Id="t" Type="urn:x"/>)",
     Refused, "could be that of the formats"},
    {InRelationships, "relationship with an unknown attribute",
     R"(<Relationship Id="t" Type="urn:x" Target="x.xml" target="y.xml"/>)", Refused,
     "could lead somewhere else"},
    {InRelationships, "the same relationship twice",
     R"(<Relationship Id="sheet" Type="http://schemas.openxmlformats.org/officeDocument/2006/)"
     R"(relationships/worksheet" Target="worksheets/sheet1.xml"/>)",
     Passed, "both lead to the same part"},
    {InRelationships, "external target",
     R"(<Relationship Id="e" Type="urn:link" TargetMode="External" Target="http://x/"/>)", Passed,
     "nothing outside of the file is read"},
    {InRelationships, "unknown element", "<Relation/>", Refused,
     "could be the sheet that is meant"},

    // The styles
    {InStyles, "fonts, fills, borders, cellStyleXfs and the like",
     R"(<fonts count="9"/><cellStyleXfs><xf numFmtId="14"/></cellStyleXfs><dxfs/>)", Passed,
     "cells name the formats of cellXfs alone"},
    {InStyles, "extLst", extension, Passed, oldWordsOnly},
    {InNumberFormats, "number format without a code", R"(<numFmt numFmtId="400"/>)", Passed,
     "as one that is not declared"},
    {InNumberFormats, "number format without an index", R"(<numFmt formatCode="d"/>)", Passed,
     "no cell can name it"},
    {InNumberFormats, "number format at no index", R"(<numFmt numFmtId="x" formatCode="d"/>)",
     Refused, "could be the format of a date"},
    {InNumberFormats, "number format twice of one kind",
     R"(<numFmt numFmtId="164" formatCode="0.00"/>)", Passed, "both are numbers"},
    {InNumberFormats, "number format twice of two kinds",
     R"(<numFmt numFmtId="164" formatCode="d.m."/>)", Refused, "either could be meant"},
    {InNumberFormats, "number format with an unknown attribute",
     R"(<numFmt numFmtId="400" formatCode="0" code="d"/>)", Refused, "could be another code"},
    {InNumberFormats, "unknown element", "<fmt/>", Refused, "could be the format of a date"},
    {InStyles, "second list of number formats", "<numFmts/>", Refused, "either could be meant"},
    {InStyles, "second table of formats", R"(<cellXfs><xf numFmtId="14"/></cellXfs>)", Refused,
     "a cell could mean either"},
    {InStyles, "unknown element", "<cellXgs/>", Refused, "could be the table of formats"},
    {InFormats, "unknown element", "<fx/>", Refused, "would shift all formats after it"},
    {InFormat, "applyNumberFormat", R"(applyNumberFormat="0")", Passed,
     "programs show the format all the same"},
    {InFormat, "fontId, xfId and the like", R"(fontId="7" xfId="99" quotePrefix="1")", Passed,
     oldWordsOnly},

    // The shared strings
    {InStrings, "empty item", "<si/>", Read, "counts as an item, so that none shifts"},
    {InStrings, "extLst", extension, Passed, oldWordsOnly},
    {InStrings, "unknown element", "<st/>", Refused, "would shift all texts after it"},
    {InText, "phonetic text", R"(<rPh sb="0" eb="1"><t>9</t></rPh><phoneticPr fontId="1"/>)",
     Passed, "repeats the text in another script"},
    {InText, "run", "<r><rPr><b/></rPr><t></t></r>", Read, "its text belongs to the item"},
    {InText, "second text", "<t>9</t>", Refused, "joined they would read as another text"},
    {InText, "text after a run", "<r><t>1</t></r><t>1</t>", Refused, "either could be meant"},
    {InText, "unknown element", "<tt/>", Refused, "could hold text"},

    // The worksheet
    {InWorksheet, "dimension, even a wrong one", R"(<dimension ref="A1:Z9"/>)", Passed,
     "the cells say themselves where they are"},
    {InWorksheet, "sheetPr, sheetViews, cols",
     R"(<sheetPr/><sheetViews/><cols><col s="2"/></cols>)", Passed,
     "each cell names its own format"},
    {InWorksheet, "sheetProtection", R"(<sheetProtection sheet="1"/>)", Passed,
     "keeps users from writing, not programs from reading"},
    {InWorksheet, "mergeCells, autoFilter, drawing and the like",
     R"(<mergeCells><mergeCell ref="A1:B2"/></mergeCells><autoFilter ref="A1"/>)", Passed,
     "merging leaves the cells what they hold"},
    {InWorksheet, "extLst", extension, Passed, oldWordsOnly},
    {InSheetData, "empty row", "<row/>", Read, "counts, so that no row shifts"},
    {InSheetData, "row out of order", R"(<row r="1"><c r="A1"><v>1</v></c></row>)", Read,
     "its number says where it belongs"},
    {InSheetData, "unknown element", "<rw/>", Refused, "could be a row"},
    {InSheetData, "row 0", R"(<row r="0"/>)", Refused, "belongs nowhere"},
    {InSheetData, "row of no number", R"(<row r="x"/>)", Refused, "belongs nowhere"},
    {InRowElement, "spans, ht, s and the like", R"(spans="1:3" ht="9" s="2" customFormat="1")",
     Passed, "each cell names its own format"},
    {InRowElement, "unknown attribute", R"(R="5")", Refused, "could be its number"},
    {InRowElement, "hidden", R"(hidden="1")", Passed, "hidden rows are rows"},
    {InRow, "extLst", extension, Passed, oldWordsOnly},
    {InRow, "unknown element", "<cell/>", Refused, "could be a cell"},
    {InRow,
     "cell without a reference",
     "<c><v>6</v></c>",
     Read,
     "follows the one before it",
     {5, 6}},
    {InRow,
     "cell of small letters",
     R"(<c r="c2"><v>6</v></c>)",
     Read,
     "columns have no case",
     {5, 6}},
    {InRow, "cell of another row", R"(<c r="C3"><v>6</v></c>)", Refused,
     "belongs to one row or the other"},
    {InRow, "same cell with the same content", R"(<c r="B2"><v>5.0</v></c>)", Passed,
     "says the same"},
    {InRow, "same cell with another content", R"(<c r="B2"><v>6</v></c>)", Refused,
     "either could be meant"},
    {InRow, "same cell as a date", R"(<c r="B2" s="2"><v>5</v></c>)", Refused,
     "either could be meant"},
    {InRow, "same cell empty", R"(<c r="B2" s="2"/>)", Passed, "says nothing"},
    {InValueCell, "cm, vm, ph", R"(cm="1" vm="1" ph="1")", Passed, oldWordsOnly},
    {InValueCell, "unknown attribute", R"(tt="s")", Refused, "could say what the value means"},
    {InValueCell, "attribute of another vocabulary", R"(xmlns:x="urn:x" x:tt="s")", Passed,
     "is no word of this format"},
    {InValueCell, "type n", R"(t="n")", Read, "a number"},
    {InValueCell, "type b", R"(t="b")", Refused, "5 is neither true nor false"},
    {InValueCell, "unknown type", R"(t="x")", Refused, "the value could be anything"},
    {InValueCell, "empty type", R"(t="")", Refused, "the value could be anything"},
    {InValue, "f", "<f>1+1</f>", Passed, "the value stored with it counts"},
    {InValue, "extLst", extension, Passed, oldWordsOnly},
    {InValue, "second value", "<v>6</v>", Refused, "either could be meant"},
    {InValue, "inline text beside a number", "<is><t>6</t></is>", Refused, "either could be meant"},
    {InValue, "unknown element", "<w>6</w>", Refused, "could be the value"},

    // Cells after the first value
    {InRow,
     "empty format",
     R"(<c r="C2" s=""><v>6</v></c>)",
     Read,
     "no program shows a number without a format as a date",
     {5, 6}},
    {InRow, "format beyond the table", R"(<c r="C2" s="99"><v>6</v></c>)", Refused,
     "could be a date"},
    {InRow, "format beyond the table of no number", R"(<c r="C2" s="99"/>)", Passed,
     "shows nothing"},
    {InRow, "format beyond the table of a text", R"(<c r="C2" s="99" t="str"><v>x</v></c>)", Passed,
     "a text is no date"},
    {InRow, "number format that is not declared", R"(<c r="C2" s="4"><v>6</v></c>)", Refused,
     "could be a date"},
    {InRow, "inline text without a type", R"(<c r="C2"><is><t>6</t></is></c>)", Refused,
     "programs show nothing"},
    {InRow, "inline text of an index", R"(<c r="C2" t="s"><is><t>0</t></is></c>)", Refused,
     "programs show nothing"},
    {InRow, "inline text of a truth value", R"(<c r="C2" t="b"><is><t>1</t></is></c>)", Refused,
     "programs show nothing"},
    {InRow, "inline text of an error", R"(<c r="C2" t="e"><is><t>x</t></is></c>)", Refused,
     "programs show nothing"},
    {InRow, "inline text of a formula", R"(<c r="C2" t="str"><is><t>6</t></is></c>)", Refused,
     "programs show nothing"},
    {InRow, "inline text of a date", R"(<c r="C2" t="d"><is><t>6</t></is></c>)", Refused,
     "programs show nothing"},
    {InRow, "format that is no number", R"(<c r="C2" s="x"><v>6</v></c>)", Refused,
     "could mean a date"},
    {InRow, "declared date", R"(<c r="C2" s="2"><v>6</v></c><c r="D2"><v>7</v></c>)", Read,
     "a date ends the values"},
    {InRow, "built-in date", R"(<c r="C2" s="3"><v>6</v></c><c r="D2"><v>7</v></c>)", Read,
     "a date ends the values"},
    {InRow,
     "inline text",
     R"(<c r="C2" t="inlineStr"><is><t>6</t></is></c>)",
     Read,
     "its text",
     {5, 6}},
    {InRow,
     "inline text beside a value",
     R"(<c r="C2" t="inlineStr"><is><t>6</t></is><v>7</v></c>)",
     Read,
     "the type says which of the two counts",
     {5, 6}},
    {InRow,
     "inline text after a value",
     R"(<c r="C2" t="inlineStr"><v>7</v><is><t>6</t></is></c>)",
     Read,
     "the type says which of the two counts",
     {5, 6}},
    {InRow,
     "inline text in a value",
     R"(<c r="C2" t="inlineStr"><v>6</v></c>)",
     Read,
     "there is no other text",
     {5, 6}},
    {InRow, "inline text without any", R"(<c r="C2" t="inlineStr"/><c r="D2"><v>7</v></c>)", Read,
     "an empty cell, which ends the values"},
    {InRow, "two inline texts", R"(<c r="C2" t="inlineStr"><is/><is><t>6</t></is></c>)", Refused,
     "either could be meant"},
    {InRow, "shared text without an index", R"(<c r="C2" t="s"/><c r="D2"><v>7</v></c>)", Read,
     "an empty cell, which ends the values"},
    {InRow, "shared text out of the table", R"(<c r="C2" t="s"><v>1</v></c>)", Refused,
     "the text is unknown"},
    {InRow, "formula of text without a result", R"(<c r="C2" t="str"><f>A1</f></c>)", Read,
     "an empty cell, which ends the values"},
    {InRow, "number that is none", R"(<c r="C2"><v>5,5</v></c>)", Refused, "the number is unknown"},
    {InRow, "number by name", R"(<c r="C2"><v>INF</v></c>)", Refused, "the number is unknown"},
    {InRow, "error", R"(<c r="C2" t="e"><v>#N/A</v></c><c r="D2"><v>7</v></c>)", Read,
     "no number, which ends the values"},
    {InRow, "error that is a number", R"(<c r="C2" t="e"><v>6</v></c>)", Refused,
     "would count as a value"},
};

// A place that carries values: the part, how its start tag begins, and the attribute that is read
// there.
struct Place {
    const char *part;
    const char *tag;
    const char *attribute;
};

const char *const workbookXml = "xl/workbook.xml";
const char *const relsXml = "xl/_rels/workbook.xml.rels";
const char *const stylesXml = "xl/styles.xml";
const char *const stringsXml = "xl/sharedStrings.xml";
const char *const sheetXml = "xl/worksheets/sheet1.xml";

const QVector<Place> places = {
    {"_rels/.rels", "<Relationships", ""},
    {"_rels/.rels", "<Relationship Id=\"book\"", "Target"},
    {workbookXml, "<workbookPr", "date1904"},
    {workbookXml, "<sheets", ""},
    {workbookXml, "<sheet name", "state"},
    {relsXml, "<Relationships", ""},
    {relsXml, "<Relationship Id=\"sheet\"", "Id"},
    {stylesXml, "<numFmts", ""},
    {stylesXml, "<numFmt numFmtId=\"164\"", "formatCode"},
    {stylesXml, "<cellXfs", ""},
    {stringsXml, "<sst", ""},
    {stringsXml, "<si", ""},
    {stringsXml, "<r>", ""},
    {stringsXml, "<t>1", ""},
    {sheetXml, "<sheetData", ""},
    {sheetXml, "<row", "r"},
    {sheetXml, "<c r=\"B2\"", "t"},
    {sheetXml, "<c r=\"B2\"", "s"},
    {sheetXml, "<v>5", ""},
    {sheetXml, "<f", ""},
    {sheetXml, "<is", ""},
    {sheetXml, "<r><t>x", ""},
    {sheetXml, "<t>x", ""},
};

// What may happen to a place: another attribute of its element, or what its content begins with.
// {name} stands for the name of the attribute that is read there.
struct Intrusion {
    const char *name;
    const char *attribute;
    const char *content;
    Outcome outcome;
};

const QByteArray markup = "http://schemas.openxmlformats.org/markup-compatibility/2006";
const QByteArray spreadsheets = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";

const QVector<Intrusion> intrusions = {
    {"unknown element", "", "<unknown/>", Refused},
    {"element of the twin namespace", "",
     R"(<c xmlns="http://purl.oclc.org/ooxml/spreadsheetml/main"/>)", Refused},
    {"element without a namespace", "", R"(<c xmlns=""/>)", Refused},
    {"element of another namespace", "", R"(<u:c xmlns:u="urn:u"><u:v>9</u:v></u:c>)", Refused},
    {"element that another one may ignore", "",
     R"(<i:x xmlns:i="urn:i" xmlns:mc="{mc}" mc:Ignorable="i"/><u:x xmlns:u="urn:u"/>)", Refused},
    {"alternatives", "",
     R"(<mc:AlternateContent xmlns:mc="{mc}"><mc:Fallback/></mc:AlternateContent>)", Refused},
    {"markup that may be ignored", R"(xmlns:mc="{mc}" mc:Ignorable="mc")", "<mc:AlternateContent/>",
     Refused},
    {"element of the relationships' namespace that may be ignored",
     R"(xmlns:q="http://purl.oclc.org/ooxml/officeDocument/relationships" xmlns:mc="{mc}" mc:Ignorable="q")",
     "<q:x/>", Refused},
    {"content of what may be ignored",
     R"(xmlns:i="urn:i" xmlns:mc="{mc}" mc:Ignorable="i" mc:ProcessContent="i:x")", "", Refused},
    {"content of what may be ignored, said there", "",
     R"(<i:x xmlns:i="urn:i" xmlns:mc="{mc}" mc:Ignorable="i" mc:ProcessContent="i:x"/>)", Refused},
    {"undeclared namespace that may be ignored", R"(xmlns:mc="{mc}" mc:Ignorable="nobody")", "",
     Refused},
    {"unknown namespace to understand", R"(xmlns:u="urn:u" xmlns:mc="{mc}" mc:MustUnderstand="u")",
     "", Refused},
    {"attribute of the main namespace", R"(xmlns:m="{main}" m:other="x")", "", Refused},
    {"prefixed attribute that is read", R"(xmlns:u="urn:u" u:{name}="x")", "", Refused},
    {"attribute of relationships that is read",
     R"(xmlns:q="http://purl.oclc.org/ooxml/officeDocument/relationships" q:{name}="x")", "",
     Refused},
    {"element that may be ignored", "",
     R"(<i:x xmlns:i="urn:i" xmlns:mc="{mc}" mc:Ignorable="i">9<c xmlns="{main}"><v>9</v></c></i:x>)",
     Passed},
    {"element that may be ignored from there on",
     R"(xmlns:i="urn:i" xmlns:j="urn:j" xmlns:mc="{mc}" mc:Ignorable="j i")",
     R"(<i:sheetData><i:row/></i:sheetData><k:v xmlns:k="urn:j">7</k:v>)", Passed},
    {"prefixed attribute", R"(xmlns:u="urn:u" u:other="x")", "", Passed},
    {"prefixed attribute that may be ignored",
     R"(xmlns:i="urn:i" xmlns:mc="{mc}" mc:Ignorable="i" i:{name}="x")", "", Passed},
    {"attributes of XML", R"(xml:space="preserve" xml:lang="cs")", "", Passed},
    {"namespace to understand", R"(xmlns:mc="{mc}" mc:MustUnderstand="mc")", "", Passed},
    {"nothing that may be ignored", R"(xmlns:mc="{mc}" mc:Ignorable=" ")", "", Passed},
    {"comment", "", "<!-- 9 -->", Passed},
    {"processing instruction", "", "<?x 9?>", Passed},
    {"empty marked section", "", "<![CDATA[]]>", Passed},
};

// Pieces that texts may not hold, but values and texts may.
const QVector<Intrusion> texts = {
    {"text", "", "9", Refused},
    {"text in a marked section", "", "<![CDATA[9]]>", Refused},
    {"reference", "", "&#57;", Refused},
    {"no-break space", "", "\xC2\xA0", Refused},
    {"blanks", "", " \t\n\r&#10;<![CDATA[ ]]>", Passed},
};

bool holdsText(const Place &place)
{
    const QByteArray tag = place.tag;
    return tag.startsWith("<v") || tag.startsWith("<t") || tag.startsWith("<f");
}

// One patient, each element of each place with a start and an end tag of its own.
HandmadeWorkbook patientInFullTags()
{
    HandmadeWorkbook workbook = onePatient(
        R"(<c r="C2" t="inlineStr"><is><r><t>x</t></r></is></c><c r="D2" t="s"><v>1</v></c>)");
    workbook.rows.replace("<v>5</v>", "<f>1</f><v>5</v>");
    workbook.strings += "<si><r><t>1</t></r></si>";
    workbook.styles.replace(R"("0.0"/>)", R"("0.0"></numFmt>)");
    workbook.properties = R"(<workbookPr date1904="0"></workbookPr>)";
    workbook.sheets = R"(<sheet name="One" sheetId="1" r:id="sheet"></sheet>)";
    for (auto &part : workbook.more = workbook.parts()) {
        if (part.first.endsWith("rels")) {
            part.second.replace("/>", "></Relationship>");
        }
    }
    return workbook;
}

HandmadeWorkbook intruded(const Place &place, const Intrusion &intrusion)
{
    HandmadeWorkbook workbook = patientInFullTags();
    for (auto &part : workbook.more) {
        if (part.first != place.part) {
            continue;
        }
        const int tag = int(part.second.indexOf(place.tag));
        const int end = int(part.second.indexOf('>', tag));
        Q_ASSERT(tag >= 0 && end >= 0);
        const auto filled = [&](QByteArray xml) {
            return xml.replace("{name}", *place.attribute == '\0' ? "other" : place.attribute)
                .replace("{mc}", markup)
                .replace("{main}", part.first.endsWith("rels") ? packageNamespace : spreadsheets);
        };
        part.second.insert(end + 1, filled(intrusion.content));
        part.second.insert(end, ' ' + filled(intrusion.attribute));
    }
    return workbook;
}

Outcome outcomeAt(const Place &place, const Intrusion &intrusion)
{
    // Where nothing is read by a name, a prefixed one means nothing.
    const bool isNamed = *place.attribute != '\0';
    return !isNamed && QByteArray(intrusion.attribute).contains("{name}") ? Passed
                                                                          : intrusion.outcome;
}

// Where the XML of most rules goes: before a text of that member, or at its end.
struct Insertion {
    Where where;
    QByteArray HandmadeWorkbook::*into;
    const char *before = nullptr;
};

constexpr std::array<Insertion, 14> insertions = {{
    {InWorkbook, &HandmadeWorkbook::properties},
    {InSheets, &HandmadeWorkbook::sheets},
    {InSheet, &HandmadeWorkbook::sheets, "/>"},
    {InRelationships, &HandmadeWorkbook::relationships},
    {InStyles, &HandmadeWorkbook::styles},
    {InNumberFormats, &HandmadeWorkbook::styles, "</numFmts>"},
    {InFormats, &HandmadeWorkbook::styles, R"(<xf numFmtId="165")"},
    {InFormat, &HandmadeWorkbook::styles, R"(/><xf numFmtId="165")"},
    {InStrings, &HandmadeWorkbook::strings},
    {InText, &HandmadeWorkbook::strings, "</si>"},
    {InSheetData, &HandmadeWorkbook::rows},
    {InRow, &HandmadeWorkbook::rows, "</row>"},
    {InRowElement, &HandmadeWorkbook::rows, R"(r="2")"},
    {InValue, &HandmadeWorkbook::rows, "</c></row>"},
}};

void insert(const Rule &rule, HandmadeWorkbook *workbook)
{
    for (const Insertion &insertion : insertions) {
        if (insertion.where == rule.where) {
            QByteArray *const into = &(workbook->*insertion.into);
            const int at = insertion.before == nullptr ? int(into->size())
                                                       : int(into->indexOf(insertion.before));
            Q_ASSERT(at >= 0);
            into->insert(at, ' ' + QByteArray(rule.xml) + ' ');
        }
    }
}

HandmadeWorkbook workbookOf(const Rule &rule)
{
    HandmadeWorkbook workbook = onePatient();
    const QByteArray xml = rule.xml;
    switch (rule.where) {
    case InPackageRelationships:
        workbook.more = {{"_rels/.rels",
                          "<Relationships xmlns=\"" + packageNamespace + "\">"
                              + workbook.relationship("book", "officeDocument", "xl/workbook.xml")
                              + xml + "</Relationships>"}};
        break;
    case InWorksheet:
        workbook.more = {
            {workbook.sheetPart,
             workbook.part("worksheet",
                           xml + "<sheetData>" + workbook.rows + "</sheetData>" + xml)}};
        break;
    case InValueCell: // in place of the format
        workbook.rows.replace(R"(<c r="B2" s="1")", R"(<c r="B2" )" + xml);
        break;
    default:
        insert(rule, &workbook);
    }
    return workbook;
}

HandmadeWorkbook twoWorkbooks()
{
    HandmadeWorkbook workbook = onePatient();
    const QByteArray other = workbook.relationship("other", "officeDocument", "xl/other.xml");
    workbook.more = workbook.parts();
    for (auto &part : workbook.more) {
        if (part.first == "_rels/.rels") {
            part.second.replace("</", other + "</");
        }
    }
    return workbook;
}

} // namespace

/// What the reader does with each element and attribute of the parts that it reads: the table
/// above, and the cases that need files of their own.
class TestWorkbookGrammar : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_folder.isValid()); }

    void eachPieceIsTreatedAsTheTableSays_data()
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < grammar.size(); ++i) {
            QTest::addRow("%d: %s (%s)", grammar.at(i).where, grammar.at(i).name, grammar.at(i).why)
                << i;
        }
    }

    void eachPieceIsTreatedAsTheTableSays()
    {
        QFETCH(const int, index);
        const Rule &rule = grammar.at(index);
        const LoadedWorkbook loaded = load(workbookOf(rule));
        if (rule.outcome == Refused) {
            QCOMPARE(loaded.error.reason, LoadError::Damaged);
            return;
        }
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(readPatientId(*loaded.document, 2), QString("P1"));
        QCOMPARE(readPatientValues(*loaded.document, 0), rule.values);
    }

    void placesHoldOnlyWhatTheyAreAskedFor_data()
    {
        QTest::addColumn<HandmadeWorkbook>("workbook");
        QTest::addColumn<int>("outcome");
        for (const Place &place : places) {
            const QVector<Intrusion> more = holdsText(place) ? QVector<Intrusion>() : texts;
            for (const Intrusion &intrusion : intrusions + more) {
                QTest::addRow("%s %s: %s", place.part, place.tag, intrusion.name)
                    << intruded(place, intrusion) << int(outcomeAt(place, intrusion));
            }
        }
    }

    void placesHoldOnlyWhatTheyAreAskedFor()
    {
        QFETCH(const HandmadeWorkbook, workbook);
        QFETCH(const int, outcome);
        const LoadedWorkbook loaded = load(workbook);
        if (outcome == Refused) {
            QCOMPARE(loaded.error.reason, LoadError::Damaged);
        } else {
            compareOnePatient(loaded);
            QCOMPARE(loaded.document->read(2, 3).toString(), QString("x"));
            QCOMPARE(loaded.document->read(2, 4).toString(), QString("1"));
        }
    }

    void sheetWithoutAPartIsMissing_data()
    {
        QTest::addColumn<QByteArray>("sheet");
        QTest::newRow("empty r:id") << QByteArray(R"(<sheet name="M" sheetId="9" r:id=""/>)");
        QTest::newRow("no r:id") << QByteArray(R"(<sheet name="M" sheetId="9"/>)");
        QTest::newRow("r:id of nothing") << QByteArray(R"(<sheet name="M" r:id="none"/>)");
        QTest::newRow("external part") << QByteArray(R"(<sheet name="M" r:id="far"/>)");
        QTest::newRow("missing part") << QByteArray(R"(<sheet name="M" r:id="gone"/>)");
        QTest::newRow("missing part of an unknown kind")
            << QByteArray(R"(<sheet name="M" r:id="what"/>)");
    }

    void sheetWithoutAPartIsMissing()
    {
        QFETCH(const QByteArray, sheet);
        HandmadeWorkbook workbook = onePatient();
        workbook.relationships = workbook.relationship("gone", "worksheet", "worksheets/none.xml")
            + workbook.relationship("what", "somesheet", "worksheets/none.xml")
            + R"(<Relationship Id="far" Type="x" TargetMode="External" Target="http://x/"/>)";
        const QByteArray first = workbook.sheets;
        workbook.sheets = first + sheet;
        compareOnePatient(load(workbook));
        for (const QByteArray &sheets : {sheet + first, sheet}) {
            workbook.sheets = sheets;
            compareDamage(load(workbook), "workbook", "the worksheet is missing");
        }
    }

    // The names of parts have no checksum, so that a damaged one must not pass for a missing part.
    void partThatLostItsNameGivesNoOtherValue_data()
    {
        QTest::addColumn<QByteArray>("part");
        QTest::addColumn<QByteArray>("where");
        QTest::addColumn<QByteArray>("what");
        QTest::newRow("sheet") << QByteArray("xl/worksheets/sheet1.xml") << QByteArray("workbook")
                               << QByteArray("the worksheet is missing");
        QTest::newRow("formats") << QByteArray("xl/styles.xml") << QByteArray("worksheet")
                                 << QByteArray("there is no such format");
        QTest::newRow("texts") << QByteArray("xl/sharedStrings.xml") << QByteArray("worksheet")
                               << QByteArray("there is no such shared text");
    }

    void partThatLostItsNameGivesNoOtherValue()
    {
        QFETCH(const QByteArray, part);
        QFETCH(const QByteArray, where);
        QFETCH(const QByteArray, what);
        HandmadeWorkbook workbook = onePatient();
        workbook.sheets += R"(<sheet name="Two" sheetId="2" r:id="second"/>)";
        workbook.relationships = workbook.relationship("second", "worksheet", "second.xml");
        workbook.more = {{"xl/second.xml", workbook.part("worksheet", "<sheetData/>")}};
        const QByteArray whole = bytes(workbook);
        QByteArray content = whole;
        // The list at the end of the archive holds the last of the two names.
        content[content.lastIndexOf(part)] = 'y';
        const LoadError lost = loadBytes(content).error;
        QCOMPARE(QByteArray(lost.part), where);
        QCOMPARE(QByteArray(lost.what), what);
        content = whole;
        content[content.indexOf(part)] = 'y';
        QCOMPARE(QByteArray(loadBytes(content).error.what), "its bytes are damaged");
    }

    void partToWhichNothingLeadsGivesNoOtherValue_data()
    {
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<QByteArray>("what");
        QTest::newRow("sheet") << QByteArray("worksheets/sheet1.xml")
                               << QByteArray("the worksheet is missing");
        QTest::newRow("formats") << QByteArray("styles.xml")
                                 << QByteArray("there is no such format");
        QTest::newRow("formats of a garbled kind")
            << QByteArray("/styles") << QByteArray("there is no such format");
        QTest::newRow("texts") << QByteArray("sharedStrings.xml")
                               << QByteArray("there is no such shared text");
    }

    void partToWhichNothingLeadsGivesNoOtherValue()
    {
        QFETCH(const QByteArray, from);
        QFETCH(const QByteArray, what);
        HandmadeWorkbook workbook = onePatient();
        workbook.sheets += R"(<sheet name="Two" sheetId="2" r:id="second"/>)";
        workbook.relationships = workbook.relationship("second", "worksheet", "second.xml");
        workbook.more = workbook.parts();
        for (auto &part : workbook.more) {
            if (part.first == workbook.relationshipsPart) {
                part.second.replace(from, "gone.xml");
            }
        }
        workbook.more.append({"xl/second.xml", workbook.part("worksheet", "<sheetData/>")});
        QCOMPARE(QByteArray(load(workbook).error.what), what);
    }

    void unknownKindOfSheetIsRefusedOnlyInFront()
    {
        HandmadeWorkbook workbook = onePatient();
        const QByteArray unknown = R"(<sheet name="M" r:id="what"/>)";
        workbook.relationships = workbook.relationship("what", "somesheet", "second.xml");
        workbook.more = {{"xl/second.xml", workbook.part("worksheet", "<sheetData/>")}};
        workbook.sheets += unknown;
        compareOnePatient(load(workbook));
        workbook.sheets = unknown + workbook.sheets;
        compareDamage(load(workbook), "worksheet", "its kind is unknown");
    }

    void missingFormatsAreRefusedOnlyWhenANumberNeedsThem()
    {
        HandmadeWorkbook workbook = onePatient();
        workbook.styles = QByteArray();
        workbook.relationships = workbook.relationship("format", "styles", "styles.xml");
        compareDamage(load(workbook), "worksheet", "there is no such format", "B2");
        const QByteArray value = R"(<c r="B2" s="0"><v>5</v></c>)";
        for (const QByteArray &cells :
             {value + R"(<c r="C2" s="7"/>)", value + R"(<c r="C2" s="1" t="e"><v>#</v></c>)"}) {
            workbook.rows = R"(<row r="2"><c r="A2" t="s" s="1"><v>0</v></c>)" + cells + "</row>";
            compareOnePatient(load(workbook));
        }
    }

    void missingTextsAreRefusedOnlyWhenACellNeedsThem()
    {
        HandmadeWorkbook workbook = onePatient();
        workbook.strings = QByteArray();
        workbook.relationships = workbook.relationship("t", "sharedStrings", "sharedStrings.xml");
        compareDamage(load(workbook), "worksheet", "there is no such shared text", "A2");
        workbook.rows = R"(<row r="2"><c r="A2" t="str"><v>P1</v></c><c r="B2"><v>5</v></c></row>)";
        compareOnePatient(load(workbook));
    }

    void partsThatNobodyReadsAreNotLookedAt_data()
    {
        QTest::addColumn<HandmadeWorkbook::Parts>("parts");
        const auto parts = [](const QString &name, const QByteArray &content) {
            return HandmadeWorkbook::Parts({{name, content}});
        };
        QTest::newRow("broken XML") << parts("xl/theme/theme1.xml", "<a");
        QTest::newRow("empty") << parts("docProps/core.xml", "");
        QTest::newRow("broken content types") << parts("[Content_Types].xml", "<Types><");
        QTest::newRow("twice") << HandmadeWorkbook::Parts(
            {{"xl/calcChain.xml", "<a/>"}, {"xl/CalcChain.xml", "<b/>"}});
        QTest::newRow("name with a backslash") << parts("xl\\media\\a.png", "x");
        QTest::newRow("name that leads upwards") << parts("../../x", "x");
        QTest::newRow("name that is badly encoded") << parts("xl/%zz%2", "x");
        QTest::newRow("second sheet that is broken") << parts("xl/worksheets/sheet2.xml", "<row");
    }

    void partsThatNobodyReadsAreNotLookedAt()
    {
        QFETCH(const HandmadeWorkbook::Parts, parts);
        TestWorkbooks::savePackage(path(), onePatient().parts() + parts);
        compareOnePatient(loadWorkbook(path()));
    }

    void nameOfAPartMayBeginAtTheTop_data()
    {
        QTest::addColumn<QString>("top");
        QTest::newRow("slash") << "/";
        QTest::newRow("two slashes") << "//";
        QTest::newRow("backslash") << "\\";
    }

    void nameOfAPartMayBeginAtTheTop()
    {
        QFETCH(const QString, top);
        HandmadeWorkbook::Parts parts = onePatient().parts();
        for (auto &part : parts) {
            part.first.prepend(top);
        }
        TestWorkbooks::savePackage(path(), parts);
        compareOnePatient(loadWorkbook(path()));
    }

    void wrongChecksumCountsOnlyInPartsThatAreRead()
    {
        HandmadeWorkbook workbook = onePatient();
        workbook.more = {{"xl/theme/theme1.xml", "<theme>original</theme>"}};
        const QByteArray whole = uncompressed(workbook);
        QByteArray content = whole;
        compareOnePatient(loadBytes(content.replace("original", "changed!")));
        content = whole;
        compareDamage(loadBytes(content.replace("<t>P1</t>", "<t>P2</t>")), "shared texts",
                      "its bytes are damaged");
    }

    void utf8WithoutAHyphenIsUtf8_data()
    {
        QTest::addColumn<QByteArray>("name");
        QTest::newRow("small") << QByteArray("utf8");
        QTest::newRow("large") << QByteArray("UTF8");
    }

    void utf8WithoutAHyphenIsUtf8()
    {
        QFETCH(const QByteArray, name);
        const QString identifier = QString::fromUtf8("Žofie 😀");
        HandmadeWorkbook workbook = onePatient();
        workbook.strings = "<si><t>" + identifier.toUtf8() + "</t></si>";
        for (auto &part : workbook.more = workbook.parts()) {
            part.second.replace("UTF-8", name);
        }
        const LoadedWorkbook loaded = load(workbook);
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(readPatientId(*loaded.document, 2), identifier);
        QCOMPARE(readPatientValues(*loaded.document, 0), Values({5}));
    }

    void unknownEncodingIsRefused()
    {
        HandmadeWorkbook workbook = onePatient();
        workbook.more = workbook.parts();
        for (auto &part : workbook.more) {
            if (part.first == workbook.sheetPart) {
                part.second.replace("UTF-8", "utf9");
            }
        }
        compareDamage(load(workbook), "worksheet", "it is not well-formed XML");
    }

    void damageOfACellSaysWhereAndWhat_data()
    {
        QTest::addColumn<QByteArray>("xml");
        QTest::addColumn<QByteArray>("damage");
        QTest::addColumn<QString>("place");
        const auto cell = [](const char *name, const char *xml, const QByteArray &damage,
                             const QString &place = "C2") {
            QTest::newRow(name) << QByteArray(xml) << damage << place;
        };
        cell("number", R"(<c r="C2"><v>x</v></c>)", "this is not a number");
        cell("truth", R"(<c r="C2" t="b"><v>x</v></c>)", "this is neither true nor false");
        cell("error", R"(<c r="C2" t="e"><v>6</v></c>)", "an error value is stored as a number");
        cell("type", R"(<c r="C2" t="x"/>)", "the type of the cell is unknown");
        cell("format", R"(<c r="C2" s="x"/>)", "an index is not a number");
        cell("attribute", R"(<c r="C2" x="x"/>)", "an attribute is unknown");
        cell("text", R"(<c r="C2" t="s"><v>7</v></c>)", "there is no such shared text");
        cell("two values", R"(<c r="C2"><v>6</v><v>6</v></c>)", "there are two contents");
        cell("element", R"(<c r="C2"><w/></c>)", "an element does not belong there");
        cell("twice", R"(<c r="B2"><v>6</v></c>)",
             "the cell is there twice with different contents", "B2");
        cell("without a reference", "<c><v>x</v></c>", "this is not a number");
        cell("reference", R"(<c r="2"/>)", "the number of a row or the address of a cell is wrong",
             {});
        cell("XML inside of the cell", R"(<c r="C2"><v>6</w></c>)", "it is not well-formed XML");
        cell("XML after the cell", R"(<c r="C2"><v>6</v></c></w>)", "it is not well-formed XML",
             {});
        cell("element after the cell", R"(<c r="C2"><v>6</v></c><w/>)",
             "an element does not belong there", {});
    }

    void damageOfACellSaysWhereAndWhat()
    {
        QFETCH(const QByteArray, xml);
        QFETCH(const QByteArray, damage);
        QFETCH(const QString, place);
        compareDamage(load(onePatient(xml)), "worksheet", damage, place);
    }

    void damageOfAPartSaysWhereAndWhat_data()
    {
        QTest::addColumn<HandmadeWorkbook>("workbook");
        QTest::addColumn<QByteArray>("part");
        QTest::addColumn<QByteArray>("damage");
        const auto row = [](const char *name, const HandmadeWorkbook &workbook,
                            const QByteArray &part, const QByteArray &damage) {
            QTest::newRow(name) << workbook << part << damage;
        };
        const auto replaced = [](const QString &part, const QByteArray &content) {
            HandmadeWorkbook workbook = onePatient();
            workbook.more = {{part, content}};
            return workbook;
        };
        row("list of the package", replaced("_rels/.rels", "<"), "relationships of the package",
            "it is not well-formed XML");
        row("workbook",
            replaced("xl/workbook.xml", onePatient().part("workbook", "<sheets/><sheets/>")),
            "workbook", "an element does not belong there");
        row("relationships", replaced("xl/_rels/workbook.xml.rels", "<x/>"),
            "relationships of the workbook", "an element does not belong there");
        row("formats", replaced("xl/styles.xml", "<!DOCTYPE a []><a/>"), "cell formats",
            "it declares a document type");
        row("texts", replaced("xl/sharedStrings.xml", ""), "shared texts",
            "it is not well-formed XML");
        HandmadeWorkbook twoTexts = onePatient();
        twoTexts.relationships = twoTexts.relationship("more", "sharedStrings", "more.xml");
        row("two parts of texts", twoTexts, "shared texts", "it occurs twice");
        HandmadeWorkbook sameName = onePatient();
        sameName.relationships = sameName.relationship("sheet", "theme", "theme.xml");
        row("two relationships of one name", sameName, "relationships of the workbook",
            "two of them have the same name");
        HandmadeWorkbook noWorkbook = onePatient();
        noWorkbook.workbookTarget = "xl/none.xml";
        row("missing workbook", noWorkbook, "workbook", "it is missing");
        row("two workbooks", twoWorkbooks(), "workbook", "it occurs twice");
    }

    void damageOfAPartSaysWhereAndWhat()
    {
        QFETCH(const HandmadeWorkbook, workbook);
        QFETCH(const QByteArray, part);
        QFETCH(const QByteArray, damage);
        compareDamage(load(workbook), part, damage);
    }

private:
    static void compareOnePatient(const LoadedWorkbook &loaded)
    {
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(readPatientId(*loaded.document, 2), QString("P1"));
        QCOMPARE(readPatientValues(*loaded.document, 0), Values({5}));
    }

    static void compareDamage(const LoadedWorkbook &loaded, const QByteArray &part,
                              const QByteArray &damage, const QString &cell = {})
    {
        QCOMPARE(loaded.error.reason, LoadError::Damaged);
        QCOMPARE(QByteArray(loaded.error.part), part);
        QCOMPARE(QByteArray(loaded.error.what), damage);
        QCOMPARE(loaded.error.cell, cell);
        QVERIFY(!loaded.document);
    }

    QString path() const { return m_folder.filePath("book.xlsx"); }

    LoadedWorkbook load(const HandmadeWorkbook &workbook) const
    {
        workbook.save(path());
        return loadWorkbook(path());
    }

    QByteArray bytes(const HandmadeWorkbook &workbook) const
    {
        workbook.save(path());
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    // So that what the parts hold can be found in the archive.
    QByteArray uncompressed(const HandmadeWorkbook &workbook) const
    {
        workbook.save(path());
        zip_t *const archive = zip_open(qPrintable(path()), 0, nullptr);
        const zip_int64_t count = zip_get_num_entries(archive, 0);
        for (zip_int64_t i = 0; i < count; ++i) {
            zip_set_file_compression(archive, static_cast<zip_uint64_t>(i), ZIP_CM_STORE, 0);
        }
        zip_close(archive);
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

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

QTEST_GUILESS_MAIN(TestWorkbookGrammar)
#include "tst_workbookgrammar.moc"
