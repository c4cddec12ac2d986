// SPDX-License-Identifier: GPL-3.0-or-later
#include <memory>

#include <QtTest>
#include <xlsxabstractsheet.h>

#include "analysis/patientrecord.h"
#include "support/handmadeworkbook.h"
#include "support/numbers.h"
#include "support/testworkbooks.h"
#include "support/workingfolder.h"
#include "workbooks/patientreader.h"
#include "xlsx/reading/workbookloader.h"

using Numbers::difference;
using Numbers::infinity;
using Numbers::notANumber;
using Series = QVector<double>;
using TestWorkbooks::Row;

namespace
{

QByteArray reference(int row, int column)
{
    QByteArray letters;
    for (int rest = column; rest > 0; rest = (rest - 1) / 26) {
        letters.prepend(char('A' + (rest - 1) % 26));
    }
    return letters + QByteArray::number(row);
}

// A cell whose attributes and content are given; both may be empty.
QByteArray cell(int row, int column, const QByteArray &attributes, const QByteArray &content)
{
    return "<c r=\"" + reference(row, column) + "\" " + attributes + '>' + content + "</c>";
}

QByteArray number(int row, int column, const QByteArray &value)
{
    return cell(row, column, {}, "<v>" + value + "</v>");
}

QByteArray inlineText(int row, int column, const QByteArray &value)
{
    return cell(row, column, "t=\"inlineStr\"",
                "<is><t xml:space=\"preserve\">" + value + "</t></is>");
}

QString differences(const Series &actual, const Series &expected)
{
    if (actual.size() != expected.size()) {
        return QString("%1 values instead of %2").arg(actual.size()).arg(expected.size());
    }
    QString all;
    for (int i = 0; i < actual.size(); ++i) {
        all += difference(actual.at(i), expected.at(i), 0.0);
    }
    return all;
}

} // namespace

class TestPatientReader : public QObject
{
    Q_OBJECT

    std::unique_ptr<WorkingFolder> m_folder;

    [[nodiscard]] QString file() const { return m_folder->filePath("book.xlsx"); }
    [[nodiscard]] std::unique_ptr<QXlsx::Document> load() const
    {
        auto document = std::move(loadWorkbook(file()).document);
        if (!document) {
            qFatal("cannot load %s", qPrintable(file()));
        }
        return document;
    }
    [[nodiscard]] std::unique_ptr<QXlsx::Document> load(const QVector<Row> &rows) const
    {
        TestWorkbooks::save(file(), rows);
        return load();
    }
    [[nodiscard]] std::unique_ptr<QXlsx::Document> load(const HandmadeWorkbook &workbook) const
    {
        workbook.save(file());
        return load();
    }

private Q_SLOTS:
    void init() { m_folder = std::make_unique<WorkingFolder>(); }

    void cleanup() { m_folder.reset(); }

    void countOfPatients_data()
    {
        QTest::addColumn<QVector<QVariant>>("firstColumn");
        QTest::addColumn<int>("count");
        using Column = QVector<QVariant>;
        QTest::newRow("only a header") << Column{} << 0;
        QTest::newRow("three") << Column{"a", "b", "c"} << 3;
        QTest::newRow("blanks above a patient") << Column{"   ", "b"} << 0;
        QTest::newRow("white space above a patient") << Column{"\t \n", "b"} << 0;
        QTest::newRow("gap above a patient") << Column{{}, "b"} << 0;
        QTest::newRow("gap between patients") << Column{"a", {}, "c"} << 1;
        QTest::newRow("blanks between patients") << Column{"a", "b", " ", "d"} << 2;
        QTest::newRow("numbers") << Column{17, 3.5, -1} << 3;
        QTest::newRow("the number 0") << Column{0, 1} << 2;
        QTest::newRow("truth values") << Column{true, false} << 2;
        QTest::newRow("blanks about a text") << Column{"  a  "} << 1;
    }

    void countOfPatients()
    {
        QFETCH(const QVector<QVariant>, firstColumn);
        QFETCH(const int, count);
        QVector<Row> rows;
        for (const QVariant &identifier : firstColumn) {
            rows.append(Row{identifier, 50.0, 60.0});
        }
        QCOMPARE(readPatientCount(*load(rows)), count);
    }

    void theHeaderIsNotLookedAt_data()
    {
        QTest::addColumn<QByteArray>("header");
        QTest::newRow("none") << QByteArray();
        QTest::newRow("a number") << number(1, 1, "5");
        QTest::newRow("blanks") << inlineText(1, 1, "  ");
        QTest::newRow("values") << inlineText(1, 1, "a") + number(1, 2, "5") + number(1, 3, "6");
    }

    void theHeaderIsNotLookedAt()
    {
        QFETCH(const QByteArray, header);
        HandmadeWorkbook workbook;
        workbook.rows = sheetRows(
            {header, inlineText(2, 1, "first") + number(2, 2, "50") + number(2, 3, "60")});
        const auto document = load(workbook);
        QCOMPARE(readPatientCount(*document), 1);
        QCOMPARE(readPatientId(*document, 2), "first");
        QCOMPARE(differences(readPatientValues(*document, 0), {50, 60}), QString());
    }

    void identifiers_data()
    {
        QTest::addColumn<QVariant>("cell");
        QTest::addColumn<QString>("identifier");
        QTest::newRow("text") << QVariant("patient A") << "patient A";
        QTest::newRow("blanks about it") << QVariant("  A 1 ") << "  A 1 ";
        QTest::newRow("whole number") << QVariant(17) << "17";
        QTest::newRow("broken number") << QVariant(17.25) << "17.25";
        QTest::newRow("negative number") << QVariant(-3) << "-3";
        QTest::newRow("number as text") << QVariant("007") << "007";
        const QString accents = "P\u0159\u00edklad <&> \"1\"";
        QTest::newRow("accents and markup") << QVariant(accents) << accents;
    }

    void identifiers()
    {
        QFETCH(const QVariant, cell);
        QFETCH(const QString, identifier);
        const auto document = load(QVector<Row>{{cell, 50.0, 60.0}});
        QCOMPARE(readPatientCount(*document), 1);
        QCOMPARE(readPatientId(*document, 2), identifier);
    }

    void rowsWithTheSameIdentifierAreTwoPatients()
    {
        const auto document = load({{"same", 50.0, 60.0}, {"same", 70.0, 80.0}});
        QCOMPARE(readPatientCount(*document), 2);
        QCOMPARE(readPatientId(*document, 2), "same");
        QCOMPARE(readPatientId(*document, 3), "same");
        QCOMPARE(differences(readPatientValues(*document, 0), {50, 60}), QString());
        QCOMPARE(differences(readPatientValues(*document, 1), {70, 80}), QString());
    }

    void aPatientWithoutValues()
    {
        const auto document = load({{"empty"}, {"full", 50.0, 60.0}});
        QCOMPARE(readPatientCount(*document), 2);
        QCOMPARE(readPatientId(*document, 2), "empty");
        QCOMPARE(readPatientValues(*document, 0), Series());
        QCOMPARE(differences(readPatientValues(*document, 1), {50, 60}), QString());
    }

    void valuesEndAtTheFirstZero_data()
    {
        QTest::addColumn<QVector<QVariant>>("cells");
        QTest::addColumn<Series>("values");
        QTest::newRow("0") << Row{5, 0, 7} << Series{5};
        QTest::newRow("0 at once") << Row{0, 5, 7} << Series{};
        QTest::newRow("-0") << Row{5, -0.0, 7} << Series{5};
        QTest::newRow("blank") << Row{5, {}, 7} << Series{5};
        QTest::newRow("text") << Row{5, 6, "lost", 7} << Series{5, 6};
        QTest::newRow("blanks") << Row{5, "  ", 7} << Series{5};
        QTest::newRow("false") << Row{5, false, 7} << Series{5};
        QTest::newRow("date") << Row{5, QDate(2024, 2, 29), 7} << Series{5};
        QTest::newRow("negative numbers") << Row{-5, 6, -0.5} << Series{-5, 6, -0.5};
        QTest::newRow("tiny number") << Row{5, 1e-300, 7} << Series{5, 1e-300, 7};
        QTest::newRow("true counts as 1") << Row{5, true, 7} << Series{5, 1, 7};
        QTest::newRow("digits") << Row{0.1, 55.3, 1e15} << Series{0.1, 55.3, 1e15};
    }

    void valuesEndAtTheFirstZero()
    {
        QFETCH(const QVector<QVariant>, cells);
        QFETCH(const Series, values);
        const auto document = load(QVector<Row>{Row{"a"} + cells});
        QCOMPARE(differences(readPatientValues(*document, 0), values), QString());
    }

    void cellThatEndedTheRowIsGiven_data()
    {
        QTest::addColumn<QVector<QVariant>>("cells");
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("cell");
        QTest::addColumn<QString>("text");
        QTest::newRow("no value") << Row{} << int(RowEnd::Empty) << "B2" << QString();
        QTest::newRow("blank") << Row{5, {}, 7} << int(RowEnd::Empty) << "C2" << QString();
        QTest::newRow("blanks") << Row{5, " \n", 7} << int(RowEnd::Empty) << "C2" << QString();
        QTest::newRow("0") << Row{5, 0, 7} << int(RowEnd::Zero) << "C2" << QString();
        QTest::newRow("text of 0") << Row{5, " -0.0 "} << int(RowEnd::Zero) << "C2" << QString();
        QTest::newRow("false") << Row{true, false} << int(RowEnd::False) << "C2" << QString();
        QTest::newRow("date") << Row{5, QDate(2024, 2, 29)} << int(RowEnd::Date) << "C2"
                              << QString();
        QTest::newRow("time") << Row{5, QTime(12, 30)} << int(RowEnd::Date) << "C2" << QString();
        QTest::newRow("error") << Row{"#DIV/0!"} << int(RowEnd::Error) << "B2"
                               << "#DIV/0!";
        QTest::newRow("text") << Row{5, " 60,5 "} << int(RowEnd::Text) << "C2"
                              << " 60,5 ";
        QTest::newRow("after column Z") << Row(30, 5) << int(RowEnd::Empty) << "AF2" << QString();
    }

    void cellThatEndedTheRowIsGiven()
    {
        QFETCH(const QVector<QVariant>, cells);
        const auto document = load(QVector<Row>{Row{"a"} + cells});
        const RowEnd end = readRowEnd(*document, 0, int(readPatientValues(*document, 0).size()));
        QTEST(int(end.kind), "kind");
        QTEST(end.cell, "cell");
        QTEST(end.text, "text");
    }

    void rowsWithTooFewValuesAreListed()
    {
        TestWorkbooks::save(file(), {{"a", 5, 6}, {"b", 5, "x"}, {"c"}, {"d", 5, 6, 7}});
        const LoadedPatients loaded = loadPatients(file());
        QCOMPARE(loaded.patients.size(), 4);
        QCOMPARE(loaded.shortRows.size(), 2);
        QCOMPARE(loaded.shortRows.at(0).patient, 1);
        QCOMPARE(loaded.shortRows.at(0).end.cell, "C3");
        QCOMPARE(loaded.shortRows.at(1).patient, 2);
        QCOMPARE(loaded.shortRows.at(1).end.cell, "B4");
    }

    void textsAsValues_data()
    {
        QTest::addColumn<QString>("cell");
        QTest::addColumn<Series>("values");
        const Series ended = {5};
        QTest::newRow("whole number") << "55" << Series{5, 55, 7};
        QTest::newRow("broken number") << "55.5" << Series{5, 55.5, 7};
        QTest::newRow("negative") << "-3" << Series{5, -3, 7};
        QTest::newRow("plus") << "+3" << Series{5, 3, 7};
        QTest::newRow("exponent") << "1.5e2" << Series{5, 150, 7};
        QTest::newRow("blanks about it") << " 55 " << Series{5, 55, 7};
        QTest::newRow("not a number") << "nan" << Series{5, notANumber, 7};
        QTest::newRow("infinity") << "inf" << Series{5, infinity, 7};
        QTest::newRow("decimal comma") << "55,5" << ended;
        QTest::newRow("unit at the end") << "55 mmol/mol" << ended;
        QTest::newRow("letter at the end") << "55x" << ended;
        QTest::newRow("two numbers") << "5 5" << ended;
        QTest::newRow("hexadecimal") << "0x10" << ended;
        QTest::newRow("zero") << "0" << ended;
        QTest::newRow("long zero") << "0.000" << ended;
        QTest::newRow("dash") << "-" << ended;
    }

    void textsAsValues()
    {
        QFETCH(const QString, cell);
        QFETCH(const Series, values);
        HandmadeWorkbook workbook;
        workbook.strings = "<si><t xml:space=\"preserve\">" + cell.toUtf8() + "</t></si>";
        workbook.rows = sheetRows({{},
                                   number(2, 1, "1") + number(2, 2, "5")
                                       + ::cell(2, 3, "t=\"s\"", "<v>0</v>") + number(2, 4, "7"),
                                   number(3, 1, "2") + number(3, 2, "5")
                                       + inlineText(3, 3, cell.toUtf8()) + number(3, 4, "7")});
        const auto document = load(workbook);
        QCOMPARE(differences(readPatientValues(*document, 0), values), QString());
        QCOMPARE(differences(readPatientValues(*document, 1), values), QString());
    }

    void indexAndRowNumberNameTheSamePatient()
    {
        const auto document = load(QVector<Row>{{"a", 1.0}, {"b", 2.0}, {"c", 3.0}});
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(readPatientId(*document, i + 2), QString(char('a' + i)));
            QCOMPARE(differences(readPatientValues(*document, i), {i + 1.0}), QString());
        }
        QCOMPARE(readPatientId(*document, 1), "Patient");
        QCOMPARE(readPatientId(*document, 5), QString());
        QCOMPARE(readPatientValues(*document, 3), Series());
    }

    void longRows_data()
    {
        QTest::addColumn<int>("count");
        for (const int count : {999, 1000, 1001, 1099, 1100, 1101, 1500}) {
            QTest::addRow("%d values", count) << count;
        }
    }

    void longRows()
    {
        QFETCH(const int, count);
        Row row = {"long"};
        Series expected;
        for (int i = 1; i <= count; ++i) {
            row.append(i);
            expected.append(i);
        }
        const auto document = load(QVector<Row>{row});
        QCOMPARE(differences(readPatientValues(*document, 0), expected), QString());
    }

    void cellsMadeByHand_data()
    {
        QTest::addColumn<QByteArray>("attributes");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<Series>("values");
        const Series ended = {50};
        const Series whole = {50, 55, 60};
        const auto row = [](const char *name, const char *attributes, const char *content,
                            const Series &values) {
            QTest::newRow(name) << QByteArray(attributes) << QByteArray(content) << values;
        };
        row("number without type", "", "<v>55</v>", whole);
        row("number with type", "t=\"n\"", "<v>55</v>", whole);
        row("number with a format", "s=\"0\"", "<v>55</v>", whole);
        row("number in exponent form", "", "<v>5.5E1</v>", whole);
        row("typed number in exponent form", "t=\"n\"", "<v>5.5E1</v>", whole);
        row("all digits", "", "<v>55.300000000000004</v>", {50, 55.300000000000004, 60});
        row("typed, all digits", "t=\"n\"", "<v>55.300000000000004</v>",
            {50, 55.300000000000004, 60});
        row("negative number", "t=\"n\"", "<v>-55</v>", {50, -55, 60});
        row("zero", "", "<v>0</v>", ended);
        row("typed zero", "t=\"n\"", "<v>0</v>", ended);
        row("number as shared text", "t=\"s\"", "<v>0</v>", whole);
        row("shared text", "t=\"s\"", "<v>1</v>", ended);
        row("formatted shared text", "t=\"s\"", "<v>2</v>", whole);
        row("number as inline text", "t=\"inlineStr\"", "<is><t>55</t></is>", whole);
        row("inline text", "t=\"inlineStr\"", "<is><t>none</t></is>", ended);
        row("true", "t=\"b\"", "<v>1</v>", {50, 1, 60});
        row("false", "t=\"b\"", "<v>0</v>", ended);
        row("error", "t=\"e\"", "<v>#N/A</v>", ended);
        row("date", "s=\"1\"", "<v>45351</v>", ended);
        row("typed date number", R"(s="1" t="n")", "<v>45351</v>", ended);
        row("date and time", "s=\"2\"", "<v>45351.5</v>", ended);
        row("no content", "", "", ended);
        row("only a format", "s=\"1\"", "", ended);
    }

    void cellsMadeByHand()
    {
        QFETCH(const QByteArray, attributes);
        QFETCH(const QByteArray, content);
        QFETCH(const Series, values);
        HandmadeWorkbook workbook;
        workbook.styles = "<cellXfs><xf/><xf numFmtId=\"14\" applyNumberFormat=\"1\"/>"
                          "<xf numFmtId=\"22\" applyNumberFormat=\"1\"/></cellXfs>";
        workbook.strings = "<si><t>55</t></si><si><t>none</t></si>"
                           "<si><r><t>5</t></r><r><rPr><b/></rPr><t>5</t></r></si>";
        workbook.rows = sheetRows({inlineText(1, 1, "Patient"),
                                   inlineText(2, 1, "a") + number(2, 2, "50")
                                       + cell(2, 3, attributes, content) + number(2, 4, "60")});
        const auto document = load(workbook);
        QCOMPARE(readPatientCount(*document), 1);
        QCOMPARE(differences(readPatientValues(*document, 0), values), QString());
    }

    void identifiersMadeByHand_data()
    {
        QTest::addColumn<QByteArray>("attributes");
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("identifier");
        const auto row = [](const char *name, const char *attributes, const char *content,
                            const char *identifier) {
            QTest::newRow(name) << QByteArray(attributes) << QByteArray(content) << identifier;
        };
        row("number without type", "", "<v>17</v>", "17");
        row("number with type", "t=\"n\"", "<v>17</v>", "17");
        row("broken number", "t=\"n\"", "<v>17.5</v>", "17.5");
        row("shared text", "t=\"s\"", "<v>0</v>", " a ");
        row("inline text", "t=\"inlineStr\"", "<is><t>b</t></is>", "b");
        row("inline text with blanks", "t=\"inlineStr\"",
            "<is><t xml:space=\"preserve\">  b </t></is>", "  b ");
        row("true", "t=\"b\"", "<v>1</v>", "true");
        row("false", "t=\"b\"", "<v>0</v>", "false");
        row("error", "t=\"e\"", "<v>#N/A</v>", "#N/A");
    }

    void identifiersMadeByHand()
    {
        QFETCH(const QByteArray, attributes);
        QFETCH(const QByteArray, content);
        QFETCH(const QString, identifier);
        HandmadeWorkbook workbook;
        workbook.strings = "<si><t xml:space=\"preserve\"> a </t></si>";
        workbook.rows = sheetRows(
            {{}, cell(2, 1, attributes, content) + number(2, 2, "50"), number(3, 1, "9")});
        const auto document = load(workbook);
        QCOMPARE(readPatientCount(*document), 2);
        QCOMPARE(readPatientId(*document, 2), identifier);
    }

    void theFirstSheetIsReadWhateverTabIsActive()
    {
        HandmadeWorkbook workbook;
        workbook.rows = sheetRows({{}, inlineText(2, 1, "One") + number(2, 2, "50")});
        const QByteArray second = sheetRows({{}, inlineText(2, 1, "Two") + number(2, 2, "70")});
        workbook.sheets += R"(<sheet name="Two" sheetId="2" r:id="second"/>)";
        workbook.relationships =
            workbook.relationship("second", "worksheet", "worksheets/sheet2.xml");
        workbook.more.append({"xl/worksheets/sheet2.xml",
                              workbook.part("worksheet", "<sheetData>" + second + "</sheetData>")});
        workbook.properties = R"(<bookViews><workbookView activeTab="1"/></bookViews>)";
        const auto document = load(workbook);
        QCOMPARE(readPatientCount(*document), 1);
        QCOMPARE(readPatientId(*document, 2), "One");
        QCOMPARE(differences(readPatientValues(*document, 0), {50}), QString());
    }

    void longRowsMadeByHand_data() { longRows_data(); }

    void longRowsMadeByHand()
    {
        QFETCH(const int, count);
        QByteArray cells = inlineText(2, 1, "long");
        Series expected;
        for (int i = 1; i <= count; ++i) {
            cells += number(2, i + 1, QByteArray::number(i) + ".25");
            expected.append(i + 0.25);
        }
        HandmadeWorkbook workbook;
        workbook.rows = sheetRows({{}, cells});
        QCOMPARE(differences(readPatientValues(*load(workbook), 0), expected), QString());
    }

    void manyRowsMadeByHand()
    {
        QVector<QByteArray> rows = {{}};
        for (int row = 2; row <= 1201; ++row) {
            rows.append(number(row, 1, QByteArray::number(row)) + number(row, 2, "50"));
        }
        HandmadeWorkbook workbook;
        workbook.rows = sheetRows(rows);
        const auto document = load(workbook);
        QCOMPARE(readPatientCount(*document), 1200);
        QCOMPARE(readPatientId(*document, 1201), "1201");
        QCOMPARE(differences(readPatientValues(*document, 1199), {50}), QString());
    }

    void readingTwiceGivesTheSame()
    {
        const auto document = load({{"a", 50.0, 60.0}, {"b", 70.0}});
        for (int i = 0; i < 2; ++i) {
            QCOMPARE(readPatientCount(*document), 2);
            QCOMPARE(differences(readPatientValues(*document, 0), {50, 60}), QString());
            QCOMPARE(readPatientId(*document, 3), "b");
        }
    }

    void aDocumentWithoutCellsHasNoPatients()
    {
        const QXlsx::Document document;
        QCOMPARE(readPatientCount(document), 0);
        QCOMPARE(readPatientValues(document, 0), Series());
        QCOMPARE(readPatientId(document, 2), QString());
    }

    void defaultRecords()
    {
        const PatientRecord patient;
        QCOMPARE(patient.id, QString());
        QCOMPARE(patient.values, Series());
        QCOMPARE(patient.idealKvadrant, 0);
        QCOMPARE(int(PatientRecord::noIdealKvadrant), -1);
    }
};

QTEST_GUILESS_MAIN(TestPatientReader)
#include "tst_patientreader.moc"
