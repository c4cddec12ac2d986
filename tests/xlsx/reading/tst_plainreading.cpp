// SPDX-License-Identifier: GPL-3.0-or-later
#include <QTest>

#include "support/handmadearchive.h"
#include "support/testworkbooks.h"
#include "support/workingfolder.h"
#include "workbooks/patientreader.h"
#include "xlsx/reading/workbookloader.h"

Q_DECLARE_METATYPE(HandmadeWorkbook)
Q_DECLARE_METATYPE(LoadError::Reason)

namespace
{

using Values = QVector<double>;

const QByteArray markup =
    "xmlns:mc=\"http://schemas.openxmlformats.org/markup-compatibility/2006\"";
const QByteArray spreadsheets = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";

const QByteArray relationships =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships";

// One patient with the cells \p more from column B on; formats 0 to 2 are a number, a date of the
// format itself and a date of the workbook.
HandmadeWorkbook patient(const QByteArray &more)
{
    HandmadeWorkbook workbook;
    workbook.rows = R"(<row r="2"><c r="A2" t="str"><v>P1</v></c>)" + more + "</row>";
    workbook.strings = "<si><t>71</t></si><si><t>72</t></si><si><t>73</t></si>";
    workbook.styles = R"(<numFmts><numFmt numFmtId="164" formatCode="d.m.yyyy"/></numFmts>)"
                      R"(<cellXfs><xf numFmtId="0"/><xf numFmtId="14"/><xf numFmtId="164"/>)"
                      "</cellXfs>";
    return workbook;
}

HandmadeWorkbook inRow(const QByteArray &more)
{
    return patient(R"(<c r="B2"><v>5</v></c><c r="C2"><v>6</v></c>)" + more
                   + R"(<c r="E2"><v>8</v></c>)");
}

HandmadeWorkbook rowsOf(const QByteArray &rows)
{
    HandmadeWorkbook workbook = patient({});
    workbook.rows += rows;
    return workbook;
}

HandmadeWorkbook textsOf(const QByteArray &strings)
{
    HandmadeWorkbook workbook = patient(R"(<c r="B2" t="s"><v>1</v></c>)");
    workbook.strings = strings;
    return workbook;
}

// The value under the second format.
HandmadeWorkbook formatsOf(const QByteArray &styles)
{
    HandmadeWorkbook workbook = patient(R"(<c r="B2" s="1"><v>44000</v></c>)");
    workbook.styles = styles;
    return workbook;
}

HandmadeWorkbook sheetsOf(const QByteArray &sheets)
{
    HandmadeWorkbook workbook = patient(R"(<c r="B2"><v>5</v></c>)");
    workbook.sheets = sheets + R"(<sheet name="b" sheetId="2" r:id="sheet"/>)";
    return workbook;
}

// Part of the relationships or of the workbook changed.
HandmadeWorkbook replaced(HandmadeWorkbook workbook, const QByteArray &from, const QByteArray &to)
{
    workbook.more = workbook.parts();
    bool isFound = false;
    for (auto &part : workbook.more) {
        isFound = isFound || part.second.contains(from);
        part.second.replace(from, to);
    }
    if (!isFound) {
        qFatal("nothing to replace");
    }
    return workbook;
}

HandmadeWorkbook dateReplaced(const QByteArray &from, const QByteArray &to)
{
    return replaced(patient(R"(<c r="B2" s="1"><v>44000</v></c>)"), from, to);
}

HandmadeWorkbook switchOf(const QByteArray &properties)
{
    HandmadeWorkbook workbook = patient({});
    workbook.properties = "<workbookPr " + properties + "/>";
    return workbook;
}

QByteArray alternatives(const QByteArray &branches)
{
    return "<mc:AlternateContent " + markup + " xmlns:m='" + spreadsheets + "' xmlns:u='urn:u'>"
        + branches + "</mc:AlternateContent>";
}

// The number under the format that comes after the alternatives, which is a number's.
HandmadeWorkbook alternativeFormats(const QByteArray &branches)
{
    HandmadeWorkbook workbook = patient(R"(<c r="B2" s="2"><v>5</v></c>)");
    workbook.styles = R"(<cellXfs><xf numFmtId="14"/>)" + alternatives(branches)
        + R"(<xf numFmtId="0"/><xf numFmtId="14"/></cellXfs>)";
    return workbook;
}

} // namespace

/// Files that other readers could read in another way.
class TestPlainReading : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fileOfTwoReadingsIsRefused_data()
    {
        QTest::addColumn<HandmadeWorkbook>("workbook");
        addCells();
        addTextsAndFormats();
        addSheets();
        addRelationships();
    }

    void fileOfTwoReadingsIsRefused()
    {
        QFETCH(const HandmadeWorkbook, workbook);
        QCOMPARE(load(workbook).error.reason, LoadError::Damaged);
    }

    void reservedElementsCountOnlyWhereTheyBelong_data()
    {
        QTest::addColumn<QByteArray>("wrapped");
        const QByteArray data = "<sheetData/>";
        QTest::newRow("in an element of the format") << "<cols>" + data + "</cols>";
        QTest::newRow("in an extension") << "<extLst><ext>" + data + "</ext></extLst>";
        QTest::newRow("in an unknown element") << R"(<u:x xmlns:u="u">)" + data + "</u:x>";
        QTest::newRow("in a choice")
            << alternatives(R"(<mc:Choice Requires="m">)" + data + "</mc:Choice>");
        QTest::newRow("in an unknown choice")
            << alternatives(R"(<mc:Choice Requires="u">)" + data + "</mc:Choice>");
        QTest::newRow("in a fallback") << alternatives("<mc:Fallback>" + data + "</mc:Fallback>");
        QTest::newRow("of no namespace") << QByteArray(R"(<sheetData xmlns=""/>)");
        QTest::newRow("of another namespace") << QByteArray(R"(<u:sheetData xmlns:u="u"/>)");
        for (const char *const name : {"sheets", "cellXfs", "numFmts", "workbookPr"}) {
            QTest::newRow(name) << QByteArray("<cols><") + name + "/></cols>";
        }
    }

    void reservedElementsCountOnlyWhereTheyBelong()
    {
        QFETCH(const QByteArray, wrapped);
        HandmadeWorkbook workbook = patient(R"(<c r="B2"><v>5</v></c>)");
        const QByteArray data = "<sheetData>" + workbook.rows + "</sheetData>";
        for (const QByteArray &content : {wrapped + data, data + wrapped}) {
            workbook.more = {{workbook.sheetPart, workbook.part("worksheet", content)}};
            QCOMPARE(load(workbook).error.reason, LoadError::Damaged);
        }
    }

    void whatStandsElsewhereIsPassedOver_data()
    {
        QTest::addColumn<QByteArray>("xml");
        QTest::newRow("unknown element") << QByteArray("<unknown><row/></unknown>");
        QTest::newRow("element of another namespace") << QByteArray(R"(<u:x xmlns:u="u">9</u:x>)");
        QTest::newRow("alternatives")
            << alternatives(R"(<mc:Choice Requires="nobody"><row/></mc:Choice><mc:Fallback/>)");
        QTest::newRow("extension of the same words")
            << QByteArray(R"(<extLst><ext><u:sheetData xmlns:u="u"/></ext></extLst>)");
        QTest::newRow("same words that may be ignored")
            << R"(<u:sheetData xmlns:u="u" mc:Ignorable="u" )" + markup + "><sheetData xmlns=\""
                + spreadsheets + "\"/></u:sheetData>";
        QTest::newRow("content of what may be ignored")
            << R"(<cols xmlns:u="u" mc:Ignorable="u" mc:ProcessContent="u:x" )" + markup + "/>";
        QTest::newRow("text") << QByteArray("9");
    }

    void whatStandsElsewhereIsPassedOver()
    {
        QFETCH(const QByteArray, xml);
        HandmadeWorkbook workbook = patient(R"(<c r="B2"><v>5</v></c>)");
        const QByteArray data = "<sheetData>" + workbook.rows + "</sheetData>";
        for (const QByteArray &content : {xml + data, data + xml}) {
            workbook.more = {{workbook.sheetPart, workbook.part("worksheet", content)}};
            compareValues(load(workbook), {5});
        }
    }

    void whatIsIgnorableIsKnownWhereItIsSaid_data()
    {
        QTest::addColumn<QByteArray>("row");
        QTest::addColumn<bool>("isRead");
        const QByteArray foreign = R"(<u:c r="C2"><u:v>9</u:v></u:c>)";
        const auto row = [](const char *name, const QByteArray &attributes, const QByteArray &cells,
                            bool isRead) {
            QTest::newRow(name) << "<row " + attributes + ' ' + markup + '>' + cells + "</row>"
                                << isRead;
        };
        const QByteArray ignorable = R"(xmlns:u="u" mc:Ignorable="u")";
        row("on the row", ignorable, foreign, true);
        row("on a row before", ignorable, R"(</row><row r="4" xmlns:u="u">)" + foreign, false);
        row("by another prefix", R"(xmlns:u="u" xmlns:w="u" mc:Ignorable="w")", foreign, true);
        row("by a prefix that means another one there", R"(xmlns:u="w" mc:Ignorable="u")",
            R"(<c r="A3" xmlns:u="u">)" + foreign + "</c>", false);
        row("one of two", R"(xmlns:u="u" xmlns:w="w" mc:Ignorable="w")", foreign, false);
        row("the format itself", "mc:Ignorable='m' xmlns:m='" + spreadsheets + '\'', "<m:unknown/>",
            false);
    }

    void whatIsIgnorableIsKnownWhereItIsSaid()
    {
        QFETCH(const QByteArray, row);
        QFETCH(const bool, isRead);
        HandmadeWorkbook workbook = patient(R"(<c r="B2"><v>5</v></c>)");
        workbook.rows += row;
        const LoadedWorkbook loaded = load(workbook);
        if (isRead) {
            compareValues(loaded, {5});
        } else {
            QCOMPARE(loaded.error.reason, LoadError::Damaged);
        }
    }

    void alternativeFormatsCountAsOne_data()
    {
        QTest::addColumn<QByteArray>("branches");
        const QByteArray xf = R"(<xf numFmtId="14"/>)";
        const QByteArray fallback = "<mc:Fallback>" + xf + "</mc:Fallback>";
        const QByteArray unknown = "<mc:Choice Requires='u'>" + xf + xf + "</mc:Choice>";
        const QByteArray known = "<mc:Choice Requires='m'>" + xf + "</mc:Choice>";
        QTest::newRow("fallback") << unknown + fallback;
        QTest::newRow("fallback of two choices") << unknown + unknown + fallback;
        QTest::newRow("known choice") << known + fallback;
        QTest::newRow("known choice alone") << known;
        QTest::newRow("second choice") << unknown + known + fallback;
        QTest::newRow("first of two known choices") << known + known + fallback;
        QTest::newRow("choice of both known namespaces")
            << QByteArray(known).replace("'m'", "' q m' xmlns:q='" + relationships + '\'')
                + fallback;
        QTest::newRow("choice of more than that")
            << QByteArray(unknown).replace("'u'", "'m u'") + fallback;
    }

    void alternativeFormatsCountAsOne()
    {
        QFETCH(const QByteArray, branches);
        compareValues(load(alternativeFormats(branches)), {5});
    }

    void alternativeFormatsThatAreNotOneAreRefused_data()
    {
        QTest::addColumn<QByteArray>("branches");
        const QByteArray xf = R"(<xf numFmtId="14"/>)";
        const QByteArray fallback = "<mc:Fallback>" + xf + "</mc:Fallback>";
        const QByteArray unknown = "<mc:Choice Requires='u'>" + xf + "</mc:Choice>";
        const QByteArray known = "<mc:Choice Requires='m'>" + xf + "</mc:Choice>";
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("fallback alone") << fallback;
        QTest::newRow("fallback first") << fallback + unknown;
        QTest::newRow("two fallbacks") << unknown + fallback + fallback;
        QTest::newRow("no fallback") << unknown;
        QTest::newRow("two formats in the fallback")
            << unknown + QByteArray(fallback).replace(xf, xf + xf);
        QTest::newRow("no format in the fallback") << unknown + "<mc:Fallback/>";
        QTest::newRow("two formats in the choice")
            << QByteArray(known).replace(xf, xf + xf) + fallback;
        QTest::newRow("alternatives in the fallback")
            << unknown + "<mc:Fallback>" + alternatives(known) + "</mc:Fallback>";
        QTest::newRow("text in the fallback") << unknown + "<mc:Fallback>x" + xf + "</mc:Fallback>";
        QTest::newRow("choice of an undeclared prefix")
            << QByteArray(unknown).replace("'u'", "'nobody'") + fallback;
        QTest::newRow("choice of nothing") << QByteArray(unknown).replace("'u'", "''") + fallback;
        QTest::newRow("choice that does not say")
            << QByteArray(unknown).replace(" Requires='u'", "") + fallback;
        QTest::newRow("third kind of branch") << known + "<mc:Other/>" + fallback;
        QTest::newRow("format beside the branches") << known + xf;
        QTest::newRow("other markup") << known + "</mc:AlternateContent><mc:AlternateContent>";
    }

    void alternativeFormatsThatAreNotOneAreRefused()
    {
        QFETCH(const QByteArray, branches);
        QCOMPARE(load(alternativeFormats(branches)).error.reason, LoadError::Damaged);
    }

    void textKeepsEachCharacter_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("byte order mark") << QString(QChar(0xfeff));
        QTest::newRow("two byte order marks") << QString(2, QChar(0xfeff));
        QTest::newRow("text after a byte order mark") << QChar(0xfeff) + QString(" A");
        QTest::newRow("delete") << QString("a") + QChar(0x7f);
        QTest::newRow("apostrophe of an old code page") << QString("O") + QChar(0x92) + "Neill";
        QTest::newRow("first and last control character")
            << QString(QChar(0x80)) + QChar(0x9f) + "x";
        QTest::newRow("no character, yet one of XML") << QString(QChar(0xfdd0)) + "x";
    }

    void textKeepsEachCharacter()
    {
        QFETCH(const QString, text);
        HandmadeWorkbook workbook;
        workbook.rows = R"(<row r="2"><c t="s"><v>0</v></c></row><row><c t="inlineStr"><is><t>)"
            + text.toUtf8() + "</t></is></c></row><row><c t=\"str\"><v>" + text.toUtf8()
            + "</v></c></row>";
        workbook.strings = "<si><t>" + text.toUtf8() + "</t></si>";
        const LoadedWorkbook loaded = load(workbook);
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(readPatientCount(*loaded.document), 3);
        for (int row = 2; row <= 4; ++row) {
            QCOMPARE(readPatientId(*loaded.document, row), text);
        }
    }

    void numberAfterAByteOrderMarkIsAText()
    {
        compareValues(
            load(patient("<c r=\"B2\"><v>5</v></c><c r=\"C2\" t=\"str\"><v>\xef\xbb\xbf 50"
                         "</v></c><c r=\"D2\"><v>7</v></c>")),
            {5});
    }

    void earlyDayIsThatDay_data()
    {
        QTest::addColumn<QByteArray>("properties");
        QTest::addColumn<QByteArray>("cell");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const char *cell, const char *expected,
                            const QByteArray &properties = {}) {
            QTest::newRow(name) << properties << QByteArray(cell) << QString(expected);
        };
        const QByteArray since1904 = R"(<workbookPr date1904="1"/>)";
        row("first day", R"(t="d"><v>1900-01-01)", "1900-01-01");
        row("middle of January", R"(t="d"><v>1900-01-15)", "1900-01-15");
        row("end of February", R"(t="d"><v>1900-02-28)", "1900-02-28");
        row("first of March", R"(t="d"><v>1900-03-01)", "1900-03-01");
        row("day before the first", R"(t="d"><v>1899-12-31)", "########");
        row("time without a day", R"(t="d"><v>1899-12-30T10:30:00)", "10:30:00.000");
        row("last day of all", R"(s="1"><v>2958465)", "9999-12-31");
        row("day after the last", R"(s="1"><v>2958466)", "########");
        row("last day of all since 1904", R"(s="1"><v>2957003)", "9999-12-31", since1904);
        row("day after the last since 1904", R"(s="1"><v>2957004)", "########", since1904);
        row("far after the last since 1904", R"(s="1"><v>2958000)", "########", since1904);
        row("last day in words since 1904", R"(t="d"><v>9999-12-31)", "9999-12-31", since1904);
    }

    void earlyDayIsThatDay()
    {
        QFETCH(const QByteArray, properties);
        QFETCH(const QByteArray, cell);
        QFETCH(const QString, expected);
        HandmadeWorkbook workbook = patient({});
        workbook.properties = properties;
        workbook.rows = R"(<row r="2"><c r="A2" )" + cell + "</v></c></row>";
        const LoadedWorkbook loaded = load(workbook);
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(readPatientId(*loaded.document, 2), expected);
    }

    void blanksAroundASwitchMeanNothing()
    {
        HandmadeWorkbook workbook = switchOf(R"(date1904=" 1 ")");
        workbook.rows =
            R"(<row r="2"><c r="A2" s="1"><v>0</v></c><c r="B2" s="1"><v>1</v></c></row>)";
        const LoadedWorkbook loaded = load(workbook);
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(loaded.document->read(2, 2).toDate(), QDate(1904, 1, 2));
    }

    void longBlanksHideNoNumber_data()
    {
        QTest::addColumn<QByteArray>("type");
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<LoadError::Reason>("expected");
        const QByteArray blanks(262200, ' ');
        for (const char *const type : {"n", "s", "b", "d"}) {
            QTest::addRow("%s after them", type)
                << QByteArray(type) << blanks + "1" << LoadError::TooLarge;
            QTest::addRow("%s around them", type)
                << QByteArray(type) << "1" + blanks + "5" << LoadError::Damaged;
        }
    }

    void longBlanksHideNoNumber()
    {
        QFETCH(const QByteArray, type);
        QFETCH(const QByteArray, value);
        QFETCH(const LoadError::Reason, expected);
        const LoadedWorkbook loaded =
            load(patient("<c r='B2' t='" + type + "'><v>" + value + "</v></c>"));
        QCOMPARE(loaded.error.reason, expected);
    }

    void momentThatIsNoneHasNoDate_data()
    {
        QTest::addColumn<QByteArray>("moment");
        for (const char *const moment :
             {"2021-03-04x", "2021-03-04T", "2021-03-04 10:30:00", "2021-03-04T10:30:005",
              "10:30:5", "24:00:00", "2021-02-29",
              ("\xef\xbb\xbf"
               "1900-01-15"),
              "PT14H"}) {
            QTest::newRow(moment) << QByteArray(moment);
        }
    }

    void momentThatIsNoneHasNoDate()
    {
        QFETCH(const QByteArray, moment);
        HandmadeWorkbook workbook = patient({});
        workbook.rows = "<row r='2'><c r='A2' t='d'><v>" + moment + "</v></c></row>";
        const LoadedWorkbook loaded = load(workbook);
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(readPatientId(*loaded.document, 2), QString("########"));
    }

    void encodingThatItsMarkContradictsIsRefused_data()
    {
        QTest::addColumn<QByteArray>("mark");
        QTest::addColumn<QByteArray>("codec");
        QTest::addColumn<QByteArray>("declared");
        const auto row = [](const char *mark, const char *codec, const char *declared) {
            QTest::addRow("%s as %s", codec, declared)
                << QByteArray(mark) << QByteArray(codec) << QByteArray(declared);
        };
        row("\xff\xfe", "le", "utf8");
        row("\xff\xfe", "le", "ISO-8859-1");
        row("\xef\xbb\xbf", "utf8", "ISO-8859-1");
        row("\xef\xbb\xbf", "utf8", "us-ascii");
    }

    void encodingThatItsMarkContradictsIsRefused()
    {
        QFETCH(const QByteArray, mark);
        QFETCH(const QByteArray, codec);
        QFETCH(const QByteArray, declared);
        HandmadeWorkbook workbook = patient({});
        QByteArray sheet = workbook.part("worksheet", "<sheetData/>").replace("UTF-8", declared);
        workbook.more = {{workbook.sheetPart, mark + encoded(sheet, codec)}};
        QCOMPARE(load(workbook).error.what, "it is not well-formed XML");
    }

    void anyEncodingIsRead_data()
    {
        QTest::addColumn<QByteArray>("declared");
        QTest::addColumn<QByteArray>("codec");
        QTest::addColumn<QByteArray>("mark");
        const auto row = [](const char *name, const char *declared, const char *codec,
                            const QByteArray &mark = {}) {
            QTest::newRow(name) << QByteArray(declared) << QByteArray(codec) << mark;
        };
        row("UTF-8", "UTF-8", "utf8");
        row("UTF-8 with a mark", "UTF-8", "utf8", "\xef\xbb\xbf");
        row("UTF-8 with a mark and without a hyphen", "utf8", "utf8", "\xef\xbb\xbf");
        row("UTF-16, small end first", "UTF-16", "le", "\xff\xfe");
        row("UTF-16, great end first", "UTF-16", "be", "\xfe\xff");
        row("UTF-16LE", "UTF-16LE", "le", "\xff\xfe");
        row("Latin-1", "ISO-8859-1", "latin1");
    }

    void anyEncodingIsRead()
    {
        QFETCH(const QByteArray, declared);
        QFETCH(const QByteArray, codec);
        QFETCH(const QByteArray, mark);
        HandmadeWorkbook workbook = patient(R"(<c r="B2"><v>5</v></c><c r="C2"><v>6.25</v></c>)");
        workbook.rows.replace("P1", "Žofie");
        workbook.more = workbook.parts();
        for (auto &part : workbook.more) {
            const QString xml = QString::fromUtf8(part.second.replace("UTF-8", declared));
            part.second = mark + encoded(xml, codec);
        }
        const LoadedWorkbook loaded = load(workbook);
        compareValues(loaded, {5, 6.25});
        QCOMPARE(readPatientId(*loaded.document, 2), QString::fromUtf8("Žofie"));
    }

    void mustUnderstandIsRefusedInEachPart_data()
    {
        QTest::addColumn<QString>("part");
        for (const auto &part : patient({}).parts()) {
            QTest::newRow(qPrintable(part.first)) << part.first;
        }
    }

    void mustUnderstandIsRefusedInEachPart()
    {
        QFETCH(const QString, part);
        HandmadeWorkbook workbook = patient(R"(<c r="B2"><v>5</v></c>)");
        workbook.more = workbook.parts();
        for (auto &other : workbook.more) {
            if (other.first == part) {
                other.second.replace(" xmlns=",
                                     R"( xmlns:u="u" mc:MustUnderstand="u" )" + markup + " xmlns=");
            }
        }
        QCOMPARE(load(workbook).error.reason, LoadError::Damaged);
    }

private:
    static void add(const char *name, const HandmadeWorkbook &workbook)
    {
        QTest::newRow(name) << workbook;
    }

    static void addCells()
    {
        add("cell without a namespace", inRow(R"(<c xmlns="" r="D2"><v>7</v></c>)"));
        add("value without a namespace", inRow(R"(<c r="D2"><v xmlns="">7</v></c>)"));
        add("row without a namespace",
            rowsOf(R"(<row xmlns="" r="3"><c r="A3"><v>2</v></c></row><row r="4"/>)"));
        for (const char *const attribute : {"t", "s", "r"}) {
            add(attribute,
                inRow("<x:c xmlns:x=\"" + spreadsheets + "\" x:" + attribute
                      + "=\"1\"><x:v>1</x:v></x:c>"));
        }
        add("value that holds an element",
            inRow(R"(<c r="D2"><v>7<x:y xmlns:x="u">3</x:y>5</v></c>)"));
        add("inline text of an index", inRow(R"(<c r="D2" t="s"><is><t>0</t></is></c>)"));
        add("inline text of a truth", inRow(R"(<c r="D2" t="b"><is><t>1</t></is></c>)"));
        add("inline text without a type", inRow(R"(<c r="D2"><is><t>1</t></is></c>)"));
        add("cell of nobody", inRow(R"(<u:c xmlns:u="u" r="D2"><u:v>7</u:v></u:c>)"));
        add("cell in a box of nobody",
            inRow(R"(<u:box xmlns:u="u"><c r="D2"><v>7</v></c></u:box>)"));
        add("row of nobody", rowsOf(R"(<u:row xmlns:u="u" r="3"/>)"));
        add("value of nobody", inRow(R"(<c r="D2"><u:v xmlns:u="u">7</u:v></c>)"));
        add("row of another number", rowsOf(R"(<row R="5"/>)"));
        add("cell in a formula", inRow(R"(<c r="D2"><f>1<c r="D3"/></f><v>7</v></c>)"));
        const QByteArray choice = R"(<mc:Choice Requires="m"><c r="D2"><v>7</v></c></mc:Choice>)";
        add("choice among cells", inRow(alternatives(choice)));
    }

    static void addTextsAndFormats()
    {
        add("text without a namespace",
            textsOf(R"(<si><t>71</t></si><si xmlns=""><t>72</t></si><si><t>73</t></si>)"));
        add("run without a namespace",
            textsOf(R"(<si/><si><r><t>7</t></r><r xmlns=""><t>5</t></r></si>)"));
        add("text of nobody", textsOf(R"(<u:si xmlns:u="u"/><si/><si><t>7</t></si>)"));
        add("content of what may be ignored",
            textsOf(
                "<si/><si " + markup
                + R"( xmlns:u="u" mc:Ignorable="u" mc:ProcessContent="u:r"><u:r><t>7</t></u:r></si>)"));
        add("format without a namespace",
            formatsOf(R"(<cellXfs><xf xmlns="" numFmtId="14"/><xf numFmtId="0"/></cellXfs>)"));
        add("format of nobody",
            formatsOf(R"(<cellXfs><u:xf xmlns:u="u"/><xf/><xf numFmtId="0"/></cellXfs>)"));
        const QByteArray custom = R"(<cellXfs><xf/><xf numFmtId="164"/></cellXfs>)";
        add("number format without a namespace",
            formatsOf(R"(<numFmts><numFmt xmlns="" numFmtId="164" formatCode="d"/></numFmts>)"
                      + custom));
        add("number format of nobody",
            formatsOf(R"(<numFmts><u:numFmt xmlns:u="u" numFmtId="164" formatCode="d"/></numFmts>)"
                      + custom));
        add("number format without a code",
            formatsOf(R"(<numFmts><numFmt numFmtId="164"/></numFmts>)" + custom));
        add("number format without an index",
            formatsOf(R"(<numFmts><numFmt formatCode="d"/></numFmts>)" + custom));
        add("number format twice",
            formatsOf(R"(<numFmts><numFmt numFmtId="164" formatCode="d"/>)"
                      R"(<numFmt numFmtId="164" formatCode="0"/></numFmts>)"
                      + custom));
        add("no formats", formatsOf(""));
        add("formats in a format", formatsOf(R"(<cellXfs><xf/><xf><cellXfs/></xf></cellXfs>)"));
        add("format in a format", formatsOf(R"(<cellXfs><xf/><xf><xf/></xf></cellXfs>)"));
    }

    static void addSheets()
    {
        add("sheet without a namespace",
            sheetsOf(R"(<sheet xmlns="" name="a" sheetId="1" r:id="sheet"/>)"));
        add("sheet of nobody", sheetsOf(R"(<u:sheet xmlns:u="u" name="a" r:id="sheet"/>)"));
        add("sheet without a part", sheetsOf(R"(<sheet name="a" sheetId="1" r:id="gone"/>)"));
        add("sheet with an id of its own", sheetsOf(R"(<sheet name="a" id="sheet"/>)"));
        add("sheet in a sheet",
            sheetsOf(R"(<sheet name="a" r:id="sheet"><sheet name="c" r:id="sheet"/></sheet>)"));
        add("switch in a word", switchOf(R"(date1904="on")"));
        add("switch in capitals", switchOf(R"(date1904="TRUE")"));
        add("prefixed switch", switchOf(R"(xmlns:u="u" u:date1904="1")"));
    }

    static void addRelationships()
    {
        const QByteArray styles = R"(Target="styles.xml")";
        const QByteArray date = R"(<Relationship Id="styles")";
        add("relationship without a namespace",
            dateReplaced(date, R"(<Relationship xmlns="" Id="styles")"));
        add("relationship of nobody",
            dateReplaced(date, R"(<u:Relationship xmlns:u="u" Id="styles")"));
        add("prefixed identifier",
            dateReplaced(date, R"(<Relationship xmlns:u="u" u:Id="styles")"));
        add("no identifier", dateReplaced(date, "<Relationship"));
        add("external formats", dateReplaced(styles, styles + R"( TargetMode="External")"));
        add("formats in another mode", dateReplaced(styles, styles + R"( TargetMode="internal")"));
        add("target after a blank", dateReplaced(styles, R"(Target=" styles.xml")"));
        add("target with a fragment", dateReplaced(styles, "Target=\"styles.xml#a\""));
        add("target with a query", dateReplaced(styles, "Target=\"styles.xml?a\""));
        add("formats of an unknown type", dateReplaced("/styles", "/style"));
        add("formats that are not there", dateReplaced(styles, R"(Target="none.xml")"));
        const QByteArray book = R"(Target="xl/workbook.xml")";
        add("external workbook", dateReplaced(book, book + R"( TargetMode="External")"));
        add("workbook after a blank", dateReplaced(book, R"(Target=" xl/workbook.xml")"));
        const QByteArray sheet = R"(Target="worksheets/sheet1.xml")";
        add("external sheet", dateReplaced(sheet, sheet + R"( TargetMode="External")"));
        add("sheet that is not there", dateReplaced(sheet, R"(Target="none.xml")"));
    }

    static QByteArray encoded(const QString &xml, const QByteArray &codec)
    {
        if (codec == "utf8") {
            return xml.toUtf8();
        }
        QByteArray bytes;
        for (const QChar character : xml) {
            const ushort unit = character.unicode();
            const char high = static_cast<char>(unit >> 8U);
            const char low = static_cast<char>(unit & 0xffU);
            if (codec != "latin1") {
                bytes += codec == "le" ? QByteArray(1, low) + high : QByteArray(1, high) + low;
            } else if (unit < 0x100) {
                bytes += low;
            } else {
                bytes += "&#" + QByteArray::number(unit) + ';';
            }
        }
        return bytes;
    }

    static void compareValues(const LoadedWorkbook &loaded, const Values &values)
    {
        QCOMPARE(loaded.error.what, "");
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(readPatientCount(*loaded.document), 1);
        QCOMPARE(readPatientValues(*loaded.document, 0), values);
    }

    LoadedWorkbook load(const HandmadeWorkbook &workbook) const
    {
        const QString path = m_folder.filePath("book.xlsx");
        workbook.save(path);
        return loadWorkbook(path);
    }

    WorkingFolder m_folder;
};

QTEST_GUILESS_MAIN(TestPlainReading)
#include "tst_plainreading.moc"
