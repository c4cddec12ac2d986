// SPDX-License-Identifier: GPL-3.0-or-later
#include <array>

#include <QDateTime>
#include <QDir>
#include <QTest>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#include <unistd.h>
#endif
#include <zip.h>

#include "support/handmadeworkbook.h"
#include "support/testworkbooks.h"
#include "support/workingfolder.h"
#include "workbooks/patientreader.h"
#include "xlsx/reading/workbookloader.h"

Q_DECLARE_METATYPE(LoadError::Reason)
Q_DECLARE_METATYPE(HandmadeWorkbook)

namespace
{

using Values = QVector<double>;

// Cells of row 2, from column 1 on.
QByteArray secondRow(const QByteArray &cells)
{
    return R"(<row r="1"/><row r="2">)" + cells + "</row>";
}

bool isDate(const QVariant &value)
{
    const int type = value.userType();
    return type == QMetaType::QDate || type == QMetaType::QDateTime || type == QMetaType::QTime;
}

// What the workbooks of all writers hold.
QVector<QPair<QString, Values>> twelvePatients()
{
    return {
        {"P001", {50.5, 61, 70.25}},
        {"1000000", {48, 52}},
        {"  P 003 ", {55, 56.5}},
        {"Žofie Nováková 😀", {51.5, 52}},
        {"A<B&C>\"D\"", {50, 60.5}},
        {"Two\nlines", {44, 45}},
        {"Bold and not", {1, 47}},
        {"P008", {-3.5, 4}},
        {"P009", {50, 51}},
        {"P010", {62, 63}},
        {"P011", {0.1, 1234567.891, 7.25}},
        {"=1+1", {58, 59}},
    };
}

const QByteArray dateStyles = R"(<numFmts><numFmt numFmtId="164" formatCode="d.m.yyyy"/>)"
                              R"(<numFmt numFmtId="165" formatCode="0.0 &quot;mmol/mol&quot;"/>)"
                              R"(</numFmts><cellXfs><xf numFmtId="0"/><xf numFmtId="14"/>)"
                              R"(<xf numFmtId="164"/><xf numFmtId="165"/><xf numFmtId="200"/>)"
                              R"(</cellXfs>)";

// With a text in the table and a format of dates.
HandmadeWorkbook withRows(const QByteArray &rows)
{
    HandmadeWorkbook workbook;
    workbook.rows = rows;
    workbook.styles = dateStyles;
    workbook.strings = "<si><t>one</t></si>";
    return workbook;
}

void contentRow(const char *name, const char *cell, const QVariant &expected)
{
    QTest::newRow(name) << QByteArray(cell) << expected;
}

QVariant text(const char *characters)
{
    return QString::fromUtf8(characters);
}

void numberRows()
{
    contentRow("number without a type", R"(<c r="B2"><v>50.5</v></c>)", 50.5);
    contentRow("number with a type", R"(<c r="B2" t="n"><v>-3</v></c>)", -3.0);
    contentRow("number with an exponent", R"(<c r="B2"><v>1.5E-3</v></c>)", 0.0015);
    contentRow("number with blanks", "<c r=\"B2\"><v> 7\n</v></c>", 7.0);
    contentRow("number with tabs", "<c r=\"B2\"><v>\t7\t</v></c>", 7.0);
    contentRow("number with a carriage return after it", R"(<c r="B2"><v>7&#13;</v></c>)", 7.0);
    contentRow("number without digits before the point", R"(<c r="B2"><v>.5</v></c>)", 0.5);
    contentRow("number without digits after the point", R"(<c r="B2"><v>+5.</v></c>)", 5.0);
    contentRow("number too small for a double", R"(<c r="B2"><v>1e-400</v></c>)", 0.0);
    contentRow("number under a format of numbers", R"(<c r="B2" s="3"><v>42</v></c>)", 42.0);
}

void digitRows()
{
    contentRow("number as identifier", R"(<c r="A2"><v>1000000</v></c>)", text("1000000"));
    contentRow("digits as they stand", R"(<c r="A2"><v>007.10</v></c>)", text("007.10"));
    contentRow("digits written out", R"(<c r="A2"><v>1E+06</v></c>)", text("1000000"));
    contentRow("digits of a fraction", R"(<c r="A2"><v>-1.25e-3</v></c>)", text("-0.00125"));
    contentRow("digits around the point", R"(<c r="A2"><v>12.345E1</v></c>)", text("123.45"));
    contentRow("digits after a plus", R"(<c r="A2"><v>+1e2</v></c>)", text("100"));
    contentRow("digits of zero", R"(<c r="A2"><v>0E+03</v></c>)", text("0"));
    contentRow("zeros before the digits", R"(<c r="A2"><v>007e1</v></c>)", text("70"));
    contentRow("zeros after the digits", R"(<c r="A2"><v>1.500e1</v></c>)", text("15"));
    // The least exponent has no positive counterpart.
    contentRow("least exponent", R"(<c r="A2"><v>1e-2147483648</v></c>)", text("0"));
    contentRow("least exponent of more digits", R"(<c r="A2"><v>12345e-2147483648</v></c>)",
               text("0"));
    contentRow("negative with the least exponent", R"(<c r="A2"><v>-1e-2147483648</v></c>)",
               text("0"));
    contentRow("exponent beyond the least", R"(<c r="A2"><v>1e-2147483649</v></c>)", text("0"));
    contentRow("more digits than a double", R"(<c r="A2"><v>12345678901234567890</v></c>)",
               text("12345678901234567890"));
}

void textRows()
{
    contentRow("shared text", R"(<c r="B2" t="s"><v>0</v></c>)", text("one"));
    contentRow("shared text of runs without phonetics", R"(<c r="B2" t="s"><v>1</v></c>)",
               text("two and three"));
    contentRow("shared text with blanks", R"(<c r="A2" t="s"><v>2</v></c>)", text("  four "));
    contentRow("inline text", R"(<c r="B2" t="inlineStr"><is><t>in</t></is></c>)", text("in"));
    contentRow("inline text of runs without phonetics",
               R"(<c r="B2" t="inlineStr"><is><r><rPr><b/></rPr><t>in</t></r><r><t> runs</t></r>)"
               R"(<rPh sb="0" eb="1"><t>no</t></rPh></is></c>)",
               text("in runs"));
    contentRow("text that looks like a formula",
               R"(<c r="B2" t="inlineStr"><is><t>=1+1</t></is></c>)", text("=1+1"));
    contentRow("text that looks like an address",
               R"(<c r="B2" t="inlineStr"><is><t>mailto:a@b.c</t></is></c>)", text("mailto:a@b.c"));
    contentRow("text that looks like markup",
               R"(<c r="B2" t="inlineStr"><is><t>&lt;b&gt;x&lt;/b&gt;</t></is></c>)",
               text("<b>x</b>"));
}

void otherRows()
{
    contentRow("true", R"(<c r="B2" t="b"><v>1</v></c>)", true);
    contentRow("false", R"(<c r="B2" t="b"><v>0</v></c>)", false);
    contentRow("false in a word", R"(<c r="B2" t="b"><v>false</v></c>)", false);
    contentRow("computed number", R"(<c r="B2"><f>SUM(C2:D2)</f><v>61</v></c>)", 61.0);
    contentRow("computed number of a shared formula",
               R"(<c r="B2"><f t="shared" ref="B2:B3" si="0">C2</f><v>61</v></c>)", 61.0);
    contentRow("computed text", R"(<c r="A2" t="str"><f>"P"</f><v>P</v></c>)", text("P"));
    contentRow("computed text with an escape", R"(<c r="A2" t="str"><f>X</f><v>_x0041_</v></c>)",
               text("A"));
    contentRow("computed truth", R"(<c r="B2" t="b"><f>TRUE()</f><v>1</v></c>)", true);
    contentRow("error", R"(<c r="B2" t="e"><v>#DIV/0!</v></c>)", text("#DIV/0!"));
    contentRow("content beside elements that may be ignored",
               R"(<c r="B2"><x:y xmlns:x="urn:x" mc:Ignorable="x" xmlns:mc=)"
               R"("http://schemas.openxmlformats.org/markup-compatibility/2006"><x:v>9</x:v></x:y>)"
               "<v>5</v></c>",
               5.0);
    contentRow("marked section", R"(<c r="A2" t="inlineStr"><is><t><![CDATA[<a>]]></t></is></c>)",
               text("<a>"));
    contentRow("comment inside", R"(<c r="B2"><v>4<!-- 3 -->2</v></c>)", 42.0);
}

// What a text in XML means.
struct TextRow {
    const char *name;
    const char *xml;
    const char *expected;
};
constexpr std::array<TextRow, 27> textContents = {{
    {"line feed", "a\nb", "a\nb"},
    {"tab", "a\tb", "a\tb"},
    {"carriage return", "a\rb", "a\nb"},
    {"carriage return and line feed", "a&#13;\nb", "a\nb"},
    {"escaped carriage return", "a_x000D_b", "a\nb"},
    {"escaped carriage return before a line feed", "a_x000D_\nb", "a\nb"},
    {"escaped tab", "a_x0009_b", "a\tb"},
    {"escaped page end", "a_x000C_b", "a b"},
    {"next line",
     "a\xC2\x85"
     "b",
     "a\u0085b"},
    {"escape of small letters", "_x004a_", "J"},
    {"escaped escape", "_x005F_x000D_", "_x000D_"},
    {"no escape", "_x00G0_ _x00_", "_x00G0_ _x00_"},
    {"escape at the end", "a_x0041", "a_x0041"},
    {"escape without an end", "_x0041Ab", "_x0041Ab"},
    {"escape of another letter", "_y0041_ _x", "_y0041_ _x"},
    {"escaped control character", "a_x0001_b", "a\uFFFDb"},
    {"escaped null", "a_x0000_b", "a\uFFFDb"},
    {"control character above 127", "a&#x9B;b", "a\u009Bb"},
    {"delete",
     "a\x7F"
     "b",
     "a\x7F"
     "b"},
    {"last control character", "a&#x9F;b", "a\u009Fb"},
    {"blank that does not break after a control character",
     "_x0001_\xC2\xA0"
     "b",
     "\uFFFD\u00A0b"},
    {"first half of all", "a_xD800_b", "a\uFFFDb"},
    {"half of a pair", "a_xD83D_b", "a\uFFFDb"},
    {"whole pair", "_xD83D__xDE00_", "\U0001F600"},
    {"pair the wrong way round", "_xDE00__xD83D_", "\uFFFD\uFFFD"},
    {"no character", "a_xFFFF_", "a\uFFFD"},
    {"characters of all sizes", "A\xC4\x8D\xE2\x82\xAC\xF0\x9F\x98\x80", "A\u010D\u20AC\U0001F600"},
}};

} // namespace

class TestWorkbookLoader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writersReadTheSame_data()
    {
        QTest::addColumn<QString>("fixture");
        const QDir folder(QFINDTESTDATA("data/writers"));
        const QStringList fixtures = folder.entryList({"*.xlsx"});
        QCOMPARE(fixtures.size(), 5);
        for (const QString &fixture : fixtures) {
            QTest::newRow(qPrintable(fixture)) << folder.filePath(fixture);
        }
    }

    void writersReadTheSame()
    {
        const QVector<QPair<QString, Values>> expected = twelvePatients();
        QFETCH(const QString, fixture);
        const LoadedWorkbook workbook = loadWorkbook(fixture);
        QCOMPARE(workbook.error.reason, LoadError::None);
        QCOMPARE(readPatientCount(*workbook.document), expected.size());
        for (int i = 0; i < expected.size(); ++i) {
            QCOMPARE(readPatientId(*workbook.document, i + 2), expected.at(i).first);
            QCOMPARE(readPatientValues(*workbook.document, i), expected.at(i).second);
        }
    }

    void cellGivesItsContent_data()
    {
        QTest::addColumn<QByteArray>("cell");
        QTest::addColumn<QVariant>("expected");
        numberRows();
        digitRows();
        textRows();
        otherRows();
    }

    void cellGivesItsContent()
    {
        QFETCH(const QByteArray, cell);
        QFETCH(const QVariant, expected);
        HandmadeWorkbook workbook;
        workbook.rows = secondRow(cell);
        workbook.styles = dateStyles;
        workbook.strings =
            R"(<si><t>one</t></si><si><r><t>two</t></r><r><rPr><b/></rPr>)"
            R"(<t xml:space="preserve"> and three</t></r><rPh sb="0" eb="3"><t>no</t>)"
            R"(</rPh><phoneticPr fontId="1"/></si>)"
            R"(<si><t xml:space="preserve">  four </t></si>)";
        const LoadedWorkbook loaded = load(workbook);
        QCOMPARE(loaded.error.reason, LoadError::None);
        const int column = cell.contains("A2") ? 1 : 2;
        QCOMPARE(loaded.document->read(2, column), expected);
    }

    void dateEndsTheRow_data()
    {
        QTest::addColumn<QByteArray>("cell");
        QTest::addColumn<bool>("hasDate");
        QTest::newRow("built-in format")
            << QByteArray(R"(<c r="C2" s="1"><v>44259</v></c>)") << true;
        QTest::newRow("custom format")
            << QByteArray(R"(<c r="C2" s="2"><v>44259.5</v></c>)") << true;
        QTest::newRow("time of day") << QByteArray(R"(<c r="C2" s="1"><v>0.25</v></c>)") << true;
        QTest::newRow("last day of all")
            << QByteArray(R"(<c r="C2" s="1"><v>2958465</v></c>)") << true;
        QTest::newRow("computed") << QByteArray(R"(<c r="C2" s="1"><f>TODAY()</f><v>44259</v></c>)")
                                  << true;
        QTest::newRow("written as a date")
            << QByteArray(R"(<c r="C2" t="d"><v>2021-03-04T10:30:00</v></c>)") << true;
        QTest::newRow("written as a day")
            << QByteArray(R"(<c r="C2" t="d"><v>2021-03-04</v></c>)") << true;
        QTest::newRow("written as a time")
            << QByteArray(R"(<c r="C2" t="d"><v>10:30:00</v></c>)") << true;
        // Spreadsheets show these as a row of signs, since there is no date for them.
        QTest::newRow("before all dates")
            << QByteArray(R"(<c r="C2" s="1"><v>-5</v></c>)") << false;
        QTest::newRow("day after the last")
            << QByteArray(R"(<c r="C2" s="1"><v>2958466</v></c>)") << false;
        QTest::newRow("after all dates")
            << QByteArray(R"(<c r="C2" s="1"><v>1e300</v></c>)") << false;
        QTest::newRow("written as a year alone")
            << QByteArray(R"(<c r="C2" t="d"><v>2021</v></c>)") << false;
    }

    void dateEndsTheRow()
    {
        QFETCH(const QByteArray, cell);
        QFETCH(const bool, hasDate);
        HandmadeWorkbook workbook;
        workbook.styles = dateStyles;
        workbook.rows = secondRow(R"(<c r="B2"><v>5</v></c>)" + cell + R"(<c r="D2"><v>6</v></c>)");
        const LoadedWorkbook loaded = load(workbook);
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(readPatientValues(*loaded.document, 0), Values({5}));
        QCOMPARE(isDate(loaded.document->read(2, 3)), hasDate);
        QVERIFY(!loaded.document->read(2, 3).toString().isEmpty());
    }

    void momentInWordsIsItsNumberOfDays_data()
    {
        QTest::addColumn<QByteArray>("moment");
        QTest::addColumn<double>("days");
        QTest::newRow("day") << QByteArray("2021-03-04") << 44259.0;
        QTest::newRow("day and time") << QByteArray("2021-03-04T10:30:00") << 44259.4375;
        QTest::newRow("time") << QByteArray("10:30:00") << 0.4375;
        QTest::newRow("half a second") << QByteArray("00:00:00.500") << 0.5 / 86400;
    }

    void momentInWordsIsItsNumberOfDays()
    {
        QFETCH(const QByteArray, moment);
        QFETCH(const double, days);
        HandmadeWorkbook workbook;
        workbook.rows = secondRow(R"(<c r="C2" t="d"><v>)" + moment + "</v></c>");
        const LoadedWorkbook loaded = load(workbook);
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(loaded.document->cellAt(2, 3)->value().toDouble(), days);
    }

    void datesCountFromTheYearThatTheWorkbookSays_data()
    {
        QTest::addColumn<QByteArray>("properties");
        QTest::addColumn<QDate>("expected");
        const QDate since1900(2009, 7, 6);
        const QDate since1904(2013, 7, 7);
        QTest::newRow("nothing") << QByteArray() << since1900;
        QTest::newRow("not this") << QByteArray("<workbookPr/>") << since1900;
        QTest::newRow("0") << QByteArray(R"(<workbookPr date1904="0"/>)") << since1900;
        QTest::newRow("false") << QByteArray(R"(<workbookPr date1904="false"/>)") << since1900;
        QTest::newRow("1") << QByteArray(R"(<workbookPr date1904="1"/>)") << since1904;
        QTest::newRow("true") << QByteArray(R"(<workbookPr date1904="true"/>)") << since1904;
    }

    void datesCountFromTheYearThatTheWorkbookSays()
    {
        QFETCH(const QDate, expected);
        QFETCH(const QByteArray, properties);
        HandmadeWorkbook workbook;
        workbook.properties = properties;
        workbook.styles = dateStyles;
        workbook.rows =
            secondRow(R"(<c r="A2" s="1"><v>40000</v></c><c r="B2" t="d"><v>2009-07-06</v></c>)");
        const LoadedWorkbook loaded = load(workbook);
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(loaded.document->read(2, 1).toDate(), expected);
        QCOMPARE(loaded.document->read(2, 2).toDate(), QDate(2009, 7, 6));
    }

    void emptyCellGivesNothing_data()
    {
        QTest::addColumn<QByteArray>("cell");
        QTest::newRow("format only") << QByteArray(R"(<c r="B2" s="1"/>)");
        QTest::newRow("formula without a result") << QByteArray(R"(<c r="B2"><f>1+1</f></c>)");
        QTest::newRow("formula with an empty result")
            << QByteArray(R"(<c r="B2"><f>1+1</f><v/></c>)");
        QTest::newRow("blank number") << QByteArray(R"(<c r="B2"><v> </v></c>)");
        QTest::newRow("text without a position") << QByteArray(R"(<c r="B2" t="s"/>)");
        QTest::newRow("empty text") << QByteArray(R"(<c r="B2" t="inlineStr"><is><t/></is></c>)");
    }

    void emptyCellGivesNothing()
    {
        QFETCH(const QByteArray, cell);
        HandmadeWorkbook workbook;
        workbook.styles = dateStyles;
        workbook.rows = secondRow(cell + R"(<c r="C2"><v>6</v></c>)");
        const LoadedWorkbook loaded = load(workbook);
        QCOMPARE(loaded.error.reason, LoadError::None);
        QVERIFY(loaded.document->read(2, 2).toString().isEmpty());
        QCOMPARE(loaded.document->read(2, 3).toDouble(), 6.0);
    }

    void textKeepsWhatXmlCanHold_data()
    {
        QTest::addColumn<QByteArray>("xml");
        QTest::addColumn<QString>("expected");
        for (const TextRow &row : textContents) {
            QTest::newRow(row.name) << QByteArray(row.xml) << QString::fromUtf8(row.expected);
        }
    }

    void textKeepsWhatXmlCanHold()
    {
        QFETCH(const QByteArray, xml);
        QFETCH(const QString, expected);
        HandmadeWorkbook workbook;
        workbook.rows = secondRow(R"(<c t="s"><v>0</v></c><c t="inlineStr"><is><t>)" + xml
                                  + R"(</t></is></c><c t="str"><v>)" + xml + "</v></c>");
        workbook.strings = "<si><t>" + xml + "</t></si>";
        const LoadedWorkbook loaded = load(workbook);
        QCOMPARE(loaded.error.reason, LoadError::None);
        for (int column = 1; column <= 3; ++column) {
            QCOMPARE(loaded.document->read(2, column).toString(), expected);
        }
    }

    void tooLongTextIsCutAndNoNumber()
    {
        constexpr int longest = 32767;
        HandmadeWorkbook workbook;
        workbook.rows =
            secondRow(R"(<c t="s"><v>0</v></c><c t="s"><v>1</v></c><c t="s"><v>2</v></c>)");
        workbook.strings = "<si><t>" + QByteArray(longest, 'x') + "</t></si><si><t>7"
            + QByteArray(longest, ' ') + "</t></si><si><t>" + QByteArray("_x0041_").repeated(40000)
            + "</t></si>";
        const LoadedWorkbook loaded = load(workbook);
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(loaded.document->read(2, 1).toString(), QString(longest, 'x'));
        QCOMPARE(loaded.document->read(2, 2).toString().size(), longest);
        QCOMPARE(loaded.document->read(2, 2).toDouble(), 0.0);
        QCOMPARE(loaded.document->read(2, 3).toString(), QString(longest - 1, 'A') + QChar(0x2026));
    }

    void cutTextKeepsNoHalfOfAPair()
    {
        constexpr int kept = 32765;
        HandmadeWorkbook workbook;
        workbook.rows = secondRow(R"(<c t="s"><v>0</v></c>)");
        workbook.strings =
            "<si><t>" + QByteArray(kept, 'x') + "&#x1F600;" + QByteArray(9, 'x') + "</t></si>";
        const LoadedWorkbook loaded = load(workbook);
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(loaded.document->read(2, 1).toString(), QString(kept, 'x') + QChar(0x2026));
    }

    void missingReferencesFollowTheOneBefore()
    {
        HandmadeWorkbook workbook;
        workbook.rows = R"(<row><c t="str"><v>Patient</v></c></row>)"
                        R"(<row><c t="str"><v>P1</v></c><c><v>5</v></c><c><v>6</v></c></row>)"
                        R"(<row r="4"><c r="C4"><v>7</v></c><c><v>8</v></c></row>)"
                        R"(<row><c t="str"><v>P5</v></c></row>)";
        const LoadedWorkbook loaded = load(workbook);
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(readPatientId(*loaded.document, 2), "P1");
        QCOMPARE(readPatientValues(*loaded.document, 0), Values({5, 6}));
        QCOMPARE(loaded.document->read(4, 3).toDouble(), 7.0);
        QCOMPARE(loaded.document->read(4, 4).toDouble(), 8.0);
        QCOMPARE(loaded.document->read(5, 1).toString(), "P5");
        QCOMPARE(readPatientCount(*loaded.document), 1);
    }

    void referencesOutOfOrderStandWhereTheySay()
    {
        HandmadeWorkbook workbook;
        workbook.rows = R"(<row r="3"><c r="C3"><v>33</v></c><c r="A3"><v>31</v></c></row>)"
                        R"(<row r="2"><c r="b2"><v>22</v></c><c r="A2"><v>21</v></c></row>)";
        const LoadedWorkbook loaded = load(workbook);
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(loaded.document->read(3, 3).toDouble(), 33.0);
        QCOMPARE(readPatientId(*loaded.document, 3), "31");
        QCOMPARE(readPatientId(*loaded.document, 2), "21");
        QCOMPARE(readPatientValues(*loaded.document, 0), Values({22}));
    }

    void packageIsReadWhateverItsPartsAreCalled_data()
    {
        QTest::addColumn<HandmadeWorkbook>("workbook");
        HandmadeWorkbook strict;
        strict.kind = HandmadeWorkbook::strict;
        QTest::newRow("strict namespaces") << strict;

        HandmadeWorkbook absolute;
        absolute.workbookTarget = "/xl/workbook.xml";
        absolute.sheetTarget = "/xl/worksheets/sheet1.xml";
        QTest::newRow("absolute targets") << absolute;

        HandmadeWorkbook roundabout;
        roundabout.workbookTarget = "./xl/../xl/workbook.xml";
        roundabout.sheetTarget = "../xl/worksheets/sheet1.xml";
        QTest::newRow("targets over other folders") << roundabout;

        HandmadeWorkbook other;
        other.workbookTarget = "main.data";
        other.workbookPart = "main.data";
        other.relationshipsPart = "_rels/main.data.rels";
        other.sheetTarget = "My%20sheets/%C4%8D.xml";
        other.sheetPart = "My sheets/č.xml";
        QTest::newRow("other names") << other;

        HandmadeWorkbook encoded;
        encoded.sheetTarget = "worksheets/my%20sheet.xml";
        encoded.sheetPart = "xl/worksheets/my%20sheet.xml";
        QTest::newRow("encoded names") << encoded;

        HandmadeWorkbook cases;
        cases.sheetTarget = "WORKSHEETS/Sheet1.XML";
        QTest::newRow("other letter cases") << cases;

        HandmadeWorkbook prefixed;
        prefixed.more = {
            {"xl/worksheets/sheet1.xml",
             R"(<x:worksheet xmlns:x="http://schemas.openxmlformats.org/spreadsheetml/2006/main">)"
             R"(<x:cols><x:col min="1" max="2147483647" width="9"/></x:cols><x:sheetData><x:row r="1"/>)"
             R"(<x:row r="2"><x:c r="A2" t="inlineStr"><x:is><x:t>P1</x:t></x:is></x:c>)"
             R"(<x:c r="B2"><x:v>5</x:v></x:c></x:row></x:sheetData></x:worksheet>)"}};
        QTest::newRow("prefixed namespace") << prefixed;
    }

    void packageIsReadWhateverItsPartsAreCalled()
    {
        QFETCH(HandmadeWorkbook, workbook);
        workbook.rows = secondRow(R"(<c t="inlineStr"><is><t>P1</t></is></c><c><v>5</v></c>)");
        const LoadedWorkbook loaded = load(workbook);
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(readPatientId(*loaded.document, 2), "P1");
        QCOMPARE(readPatientValues(*loaded.document, 0), Values({5}));
    }

    void firstVisibleWorksheetIsRead_data()
    {
        QTest::addColumn<QByteArray>("sheets");
        QTest::addColumn<double>("expected");
        const auto sheet = [](const QByteArray &relationship, const QByteArray &state = {}) {
            const QByteArray visible = R"(<sheet name="%" sheetId="1" r:id="%"/>)";
            const QByteArray other = R"(<sheet name="%" sheetId="1" r:id="%" state="$"/>)";
            return QByteArray(state.isEmpty() ? visible : other)
                .replace('%', relationship)
                .replace('$', state);
        };
        QTest::newRow("first") << sheet("sheet") + sheet("second") << 1.0;
        QTest::newRow("order of the workbook") << sheet("second") + sheet("sheet") << 2.0;
        QTest::newRow("hidden one before") << sheet("sheet", "hidden") + sheet("second") << 2.0;
        QTest::newRow("very hidden one before")
            << sheet("sheet", "veryHidden") + sheet("second") << 2.0;
        QTest::newRow("none visible")
            << sheet("second", "hidden") + sheet("sheet", "veryHidden") << 2.0;
        QTest::newRow("visible by name") << sheet("second", "visible") + sheet("sheet") << 2.0;
        QTest::newRow("unknown state before") << sheet("sheet", "gone") + sheet("second") << 1.0;
        QTest::newRow("chart before") << sheet("chart") + sheet("second") << 2.0;
        QTest::newRow("dialog before") << sheet("dialog") + sheet("second") << 2.0;
        QTest::newRow("macros before") << sheet("macro") + sheet("second") << 2.0;
        QTest::newRow("visible chart before hidden sheets")
            << sheet("chart") + sheet("second", "hidden") << 2.0;
    }

    void firstVisibleWorksheetIsRead()
    {
        QFETCH(const QByteArray, sheets);
        QFETCH(const double, expected);
        HandmadeWorkbook workbook;
        workbook.sheets = sheets;
        workbook.rows = secondRow(R"(<c r="B2"><v>1</v></c>)");
        workbook.relationships = workbook.relationship("second", "worksheet", "second.xml")
            + workbook.relationship("chart", "chartsheet", "chart.xml")
            + workbook.relationship("dialog", "dialogsheet", "chart.xml")
            + R"(<Relationship Id="macro" Target="chart.xml" )"
              R"(Type="http://schemas.microsoft.com/office/2006/relationships/xlMacrosheet"/>)";
        workbook.more = {{"xl/second.xml",
                          workbook.part("worksheet",
                                        "<sheetData>" + secondRow(R"(<c r="B2"><v>2</v></c>)")
                                            + "</sheetData>")},
                         {"xl/chart.xml", workbook.part("chartsheet", "")}};
        const LoadedWorkbook loaded = load(workbook);
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(loaded.document->read(2, 2).toDouble(), expected);
    }

    void notAWorkbookIsRefused_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty file") << QByteArray();
        QTest::newRow("text") << QByteArray("Patient;50;51\n");
        QTest::newRow("web page") << QByteArray("<html><table></table></html>");
        HandmadeWorkbook::Parts parts = {{"a.txt", "text"}};
        TestWorkbooks::savePackage(path(), parts);
        QFile file(path());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QTest::newRow("other archive") << file.readAll();
        HandmadeWorkbook document;
        document.more = {{"xl/workbook.xml", R"(<document xmlns="urn:words"/>)"}};
        QTest::newRow("other document") << bytes(document);
        document.more = {{"xl/workbook.xml", QByteArray("\x83\x01\0", 3)}};
        QTest::newRow("binary workbook") << bytes(document);
    }

    void notAWorkbookIsRefused()
    {
        QFETCH(const QByteArray, content);
        const LoadedWorkbook loaded = loadBytes(content);
        QCOMPARE(loaded.error.reason, LoadError::NotAWorkbook);
        QVERIFY(!loaded.document);
    }

    void oldWorkbookIsRefused()
    {
        QCOMPARE(loadBytes(compoundFile("Workbook")).error.reason, LoadError::OldFormat);
    }

    void protectedWorkbookIsRefused_data()
    {
        QTest::addColumn<QString>("stream");
        QTest::newRow("package") << "EncryptedPackage";
        QTest::newRow("how it is encrypted") << "EncryptionInfo";
    }

    void protectedWorkbookIsRefused()
    {
        QFETCH(const QString, stream);
        const QByteArray file = compoundFile(stream);
        QCOMPARE(loadBytes(file).error.reason, LoadError::PasswordProtected);
        // The entry of the stream, of 128 bytes, ends the file.
        QCOMPARE(loadBytes(file.left(1024 + 128)).error.reason, LoadError::PasswordProtected);
        QCOMPARE(loadBytes(file.left(1024 + 127)).error.reason, LoadError::OldFormat);
    }

#ifdef Q_OS_UNIX
    // Elsewhere the library is built without encryption.
    void encryptedPartIsRefused()
    {
        HandmadeWorkbook().save(path());
        zip_t *const archive = zip_open(qPrintable(path()), 0, nullptr);
        QVERIFY(archive != nullptr);
        const zip_int64_t sheet = zip_name_locate(archive, "xl/worksheets/sheet1.xml", 0);
        QCOMPARE(zip_file_set_encryption(archive, static_cast<zip_uint64_t>(sheet), ZIP_EM_AES_256,
                                         "secret"),
                 0);
        QCOMPARE(zip_close(archive), 0);
        QCOMPARE(loadWorkbook(path()).error.reason, LoadError::PasswordProtected);
    }
#endif

    void brokenCellIsRefused_data()
    {
        QTest::addColumn<HandmadeWorkbook>("workbook");
        const auto cell = [](const char *name, const char *content) {
            QTest::newRow(name) << withRows(secondRow(content));
        };
        cell("number that is none", R"(<c r="B2"><v>5,5</v></c>)");
        cell("number that is not finite", R"(<c r="B2"><v>1e999</v></c>)");
        cell("not a number by name", R"(<c r="B2"><v>nan</v></c>)");
        cell("hexadecimal number", R"(<c r="B2"><v>0x10</v></c>)");
        cell("number without a digit", R"(<c r="B2"><v>.</v></c>)");
        cell("number without an exponent", R"(<c r="B2"><v>5e+</v></c>)");
        cell("number with more after it", R"(<c r="B2"><v>5e1x</v></c>)");
        cell("truth that is none", R"(<c r="B2" t="b"><v>2</v></c>)");
        cell("error that is a number", R"(<c r="B2" t="e"><v>5</v></c>)");
        cell("text out of the table", R"(<c r="B2" t="s"><v>1</v></c>)");
        cell("text at a negative position", R"(<c r="B2" t="s"><v>-1</v></c>)");
        cell("unknown type", R"(<c r="B2" t="x"><v>1</v></c>)");
        cell("unknown attribute", R"(<c r="B2" u="s"><v>1</v></c>)");
        cell("unknown content", R"(<c r="B2"><w>1</w></c>)");
        cell("format that is no number", R"(<c r="B2" s="x"><v>1</v></c>)");
        cell("format at a negative index", R"(<c r="B2" s="-1"><v>1</v></c>)");
        cell("two contents", R"(<c r="B2"><v>1</v><v>2</v></c>)");
        cell("same cell twice", R"(<c r="B2"><v>1</v></c><c r="B2"><v>2</v></c>)");
        cell("same cell by its reference and without",
             R"(<c r="B2"><v>1</v></c><c r="A2"/><c><v>2</v></c>)");
        cell("cell of another row", R"(<c r="B3"><v>1</v></c>)");
        cell("reference without a row", R"(<c r="B"><v>1</v></c>)");
        cell("reference without a column", R"(<c r="2"><v>1</v></c>)");
        cell("reference with more after it", R"(<c r="B2x"><v>1</v></c>)");
    }

    void brokenCellIsRefused()
    {
        compareDamaged();
    }

    void brokenRowIsRefused_data()
    {
        QTest::addColumn<HandmadeWorkbook>("workbook");
        const auto rows = [](const char *name, const char *content) {
            QTest::newRow(name) << withRows(content);
        };
        rows("same row twice",
             R"(<row r="2"><c r="A2"><v>1</v></c></row><row r="2"><c r="A2"><v>2</v></c></row>)");
        rows("row 0", R"(<row r="0"/>)");
        rows("row that is no number", R"(<row r="x"/>)");
        rows("element that is no row", R"(<rows r="1"/>)");
        rows("element that is not closed", R"(<row r="1">)");
        rows("second sheet data", R"(<row r="1"/></sheetData><sheetData>)");
    }

    void brokenRowIsRefused()
    {
        compareDamaged();
    }

    void brokenPartIsRefused_data()
    {
        QTest::addColumn<HandmadeWorkbook>("workbook");
        const auto replaced = [](const char *name, const char *part, const QByteArray &content) {
            HandmadeWorkbook workbook;
            workbook.more = {{part, content}};
            QTest::newRow(name) << workbook;
        };
        const HandmadeWorkbook usual;
        const char *const sheet = "xl/worksheets/sheet1.xml";
        replaced("sheet of another kind", sheet, usual.part("dialogsheet", "<sheetData/>"));
        replaced("sheet without data", sheet, usual.part("worksheet", ""));
        replaced("sheet in an unknown namespace", sheet,
                 R"(<worksheet xmlns="urn:x"><sheetData/></worksheet>)");
        replaced("sheet in no namespace around data in the right one", sheet,
                 "<worksheet><sheetData xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/"
                 "2006/main\"/></worksheet>");
        replaced("empty sheet part", sheet, "");
        replaced("sheet with something after it", sheet,
                 usual.part("worksheet", "<sheetData/>") + "x");
        replaced("sheet cut short", sheet, usual.part("worksheet", "<sheetData/>").chopped(5));
        replaced("document type", sheet,
                 R"(<!DOCTYPE worksheet [<!ENTITY a "b">]>)"
                 R"(<worksheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main">)"
                 R"(<sheetData/></worksheet>)");
        replaced("no valid text", sheet, usual.part("worksheet", "<sheetData>\xff</sheetData>"));
        HandmadeWorkbook twoTargets;
        twoTargets.relationships = twoTargets.relationship("sheet", "worksheet", "other.xml");
        QTest::newRow("relationship to two sheets") << twoTargets;
        HandmadeWorkbook twoFormats;
        twoFormats.styles = dateStyles;
        twoFormats.relationships = twoFormats.relationship("more", "styles", "other.xml");
        QTest::newRow("two parts of formats") << twoFormats;
    }

    void brokenPartIsRefused()
    {
        compareDamaged();
    }

    void brokenReferenceIsRefused_data()
    {
        QTest::addColumn<HandmadeWorkbook>("workbook");
        HandmadeWorkbook noKind;
        noKind.sheets = R"(<sheet name="One" sheetId="1" r:id="what"/>)" + noKind.sheets;
        noKind.relationships = noKind.relationship("what", "worksheeT", "worksheets/sheet1.xml");
        QTest::newRow("sheet of an unknown kind") << noKind;
        HandmadeWorkbook noWorkbook;
        noWorkbook.workbookTarget = "xl/book.xml";
        QTest::newRow("missing workbook") << noWorkbook;
        HandmadeWorkbook external;
        external.relationships =
            "<Relationship Id=\"far\" TargetMode=\"External\" Type=\"http://schemas."
            "openxmlformats.org/officeDocument/2006/relationships/worksheet\" "
            R"(Target="xl/worksheets/sheet1.xml"/>)";
        external.relationshipsPart = "xl/_rels/workbook.xml.rels2";
        QTest::newRow("missing relationships") << external;
    }

    void brokenReferenceIsRefused()
    {
        compareDamaged();
    }

#ifdef Q_OS_UNIX
    // Under Wine the library cannot replace an archive that it has open.
    void flippedBitInAPartIsRefused()
    {
        const QByteArray marker = "5.0625";
        HandmadeWorkbook workbook;
        workbook.rows = secondRow("<c r=\"B2\"><v>" + marker + "</v></c>");
        workbook.save(path());
        // Packed without compression, so that the digit can be found.
        zip_t *const archive = zip_open(qPrintable(path()), 0, nullptr);
        QVERIFY(archive != nullptr);
        const zip_int64_t count = zip_get_num_entries(archive, 0);
        for (zip_int64_t i = 0; i < count; ++i) {
            QCOMPARE(
                zip_set_file_compression(archive, static_cast<zip_uint64_t>(i), ZIP_CM_STORE, 0),
                0);
        }
        QCOMPARE(zip_close(archive), 0);
        QFile file(path());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QByteArray content = file.readAll();
        file.close();
        QCOMPARE(loadBytes(content).error.reason, LoadError::None);
        content.replace(marker, "4.0625");
        QCOMPARE(loadBytes(content).error.reason, LoadError::Damaged);
    }
#endif

    void cutArchiveIsRefused()
    {
        const QByteArray whole = bytes(HandmadeWorkbook());
        QCOMPARE(loadBytes(whole).error.reason, LoadError::None);
        for (int size = 2; size < whole.size(); size += 7) {
            QCOMPARE(loadBytes(whole.left(size)).error.reason, LoadError::Damaged);
        }
    }

    void partTwiceIsRefused()
    {
        const HandmadeWorkbook workbook;
        HandmadeWorkbook::Parts parts = workbook.parts();
        parts.append({"xl/Worksheets/Sheet1.xml", workbook.part("worksheet", "<sheetData/>")});
        TestWorkbooks::savePackage(path(), parts);
        QCOMPARE(loadWorkbook(path()).error.reason, LoadError::Damaged);
    }

    void partsThatAreNotReadMayStandTwice()
    {
        HandmadeWorkbook workbook;
        workbook.rows = secondRow(R"(<c r="B2"><v>5</v></c>)");
        HandmadeWorkbook::Parts parts = workbook.parts();
        parts.append({QString("docProps/app.xml"), "<a/>"});
        parts.append({QString("docProps/App.xml"), "<b/>"});
        TestWorkbooks::savePackage(path(), parts);
        const LoadedWorkbook loaded = loadWorkbook(path());
        QCOMPARE(loaded.error.reason, LoadError::None);
        QCOMPARE(readPatientValues(*loaded.document, 0), Values({5}));
    }

    void twoTextsInOneRunAreRefused_data()
    {
        QTest::addColumn<QByteArray>("item");
        QTest::newRow("text") << QByteArray("<t>5</t><t>5</t>");
        QTest::newRow("run") << QByteArray("<r><t>5</t><t>5</t></r>");
    }

    void twoTextsInOneRunAreRefused()
    {
        QFETCH(const QByteArray, item);
        HandmadeWorkbook workbook;
        workbook.rows = secondRow(R"(<c r="B2" t="inlineStr"><is>)" + item + "</is></c>");
        QCOMPARE(load(workbook).error.reason, LoadError::Damaged);
        workbook.rows = secondRow(R"(<c r="B2" t="s"><v>0</v></c>)");
        workbook.strings = "<si>" + item + "</si>";
        QCOMPARE(load(workbook).error.reason, LoadError::Damaged);
    }

    void noWorksheetIsRefused_data()
    {
        QTest::addColumn<QByteArray>("sheets");
        QTest::newRow("no sheet") << QByteArray();
        QTest::newRow("a chart") << QByteArray(R"(<sheet name="One" sheetId="1" r:id="chart"/>)");
    }

    void noWorksheetIsRefused()
    {
        QFETCH(const QByteArray, sheets);
        HandmadeWorkbook workbook;
        workbook.sheets = sheets;
        workbook.relationships = workbook.relationship("chart", "chartsheet", "chart.xml");
        QCOMPARE(load(workbook).error.reason, LoadError::NoWorksheet);
    }

    void placeBeyondTheFormatIsRefused_data()
    {
        QTest::addColumn<QByteArray>("rows");
        QTest::addColumn<LoadError::Reason>("expected");
        QTest::newRow("last place")
            << QByteArray(R"(<row r="1048576"><c r="XFD1048576"><v>1</v></c></row>)")
            << LoadError::None;
        QTest::newRow("row") << QByteArray(R"(<row r="1048577"/>)") << LoadError::TooLarge;
        QTest::newRow("column") << QByteArray(R"(<row r="1"><c r="XFE1"/></row>)")
                                << LoadError::TooLarge;
        QTest::newRow("row after the last")
            << QByteArray(R"(<row r="1048576"/><row/>)") << LoadError::TooLarge;
        QTest::newRow("column after the last")
            << QByteArray(R"(<row r="1"><c r="XFD1"/><c/></row>)") << LoadError::TooLarge;
        QTest::newRow("row beyond all numbers")
            << QByteArray(R"(<row r="4294967298"><c r="A4294967298"/></row>)")
            << LoadError::TooLarge;
        QTest::newRow("column beyond all numbers")
            << QByteArray(R"(<row r="1"><c r="ZZZZZZZZZZZZZZZZ1"/></row>)") << LoadError::TooLarge;
    }

    void placeBeyondTheFormatIsRefused()
    {
        QFETCH(const QByteArray, rows);
        QFETCH(const LoadError::Reason, expected);
        HandmadeWorkbook workbook;
        workbook.rows = rows;
        QCOMPARE(load(workbook).error.reason, expected);
    }

    void fileThatCannotBeReadIsRefusedAtOnce_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("no name") << QString();
        QTest::newRow("missing file") << path("missing.xlsx");
        QTest::newRow("folder") << m_folder.path();
#ifdef Q_OS_UNIX
        const QString pipe = path("pipe.xlsx");
        QCOMPARE(mkfifo(qPrintable(pipe), S_IRUSR | S_IWUSR), 0);
        QTest::newRow("pipe") << pipe;
        QTest::newRow("device") << "/dev/zero";
        const QString secret = path("secret.xlsx");
        HandmadeWorkbook().save(secret);
        QCOMPARE(chmod(qPrintable(secret), 0), 0);
        if (geteuid() != 0) { // for whom no file is unreadable
            QTest::newRow("unreadable file") << secret;
        }
        const QString link = path("link.xlsx");
        QVERIFY(QFile::link(link, link));
        QTest::newRow("link to itself") << link;
#endif
    }

    void fileThatCannotBeReadIsRefusedAtOnce()
    {
        QFETCH(const QString, name);
        QCOMPARE(loadWorkbook(name).error.reason, LoadError::CannotBeRead);
    }

private:
    QString path(const QString &name = "book.xlsx") const
    {
        return m_folder.filePath(name);
    }
    LoadedWorkbook load(const HandmadeWorkbook &workbook) const
    {
        workbook.save(path());
        return loadWorkbook(path());
    }
    LoadedWorkbook loadBytes(const QByteArray &bytes) const
    {
        QFile file(path());
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
            qFatal("cannot write %s", qPrintable(file.fileName()));
        }
        file.close();
        return loadWorkbook(path());
    }

    void compareDamaged() const
    {
        QFETCH(const HandmadeWorkbook, workbook);
        const LoadedWorkbook loaded = load(workbook);
        QCOMPARE(loaded.error.reason, LoadError::Damaged);
        QVERIFY(!loaded.document);
    }

    QByteArray bytes(const HandmadeWorkbook &workbook) const
    {
        workbook.save(path());
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    WorkingFolder m_folder;
};

QTEST_GUILESS_MAIN(TestWorkbookLoader)
#include "tst_workbookloader.moc"
