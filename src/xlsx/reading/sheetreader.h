// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <utility>

#include <QVariant>
#include <xlsxcell.h>
#include <xlsxformat.h>
#include <xlsxworksheet.h>

#include "xlsx/reading/cellformats.h"
#include "xlsx/reading/xmlcursor.h"

/// What the cells of a sheet refer to.
struct SheetContext {
    const QVector<QString> *sharedStrings;
    const CellFormats *formats;
    /// Takes the cells; it counts days as the workbook that is read does.
    QXlsx::Worksheet *target;
    /// The column whose numbers become texts with the digits of the file.
    int textColumn;
};

/// Reads the cells of a worksheet into another one that is empty:
///
///     <worksheet>
///       <sheetData>
///         <row r="2" spans="1:5">
///           <c r="A2" t="s"><v>0</v></c>                          the first shared text
///           <c r="B2"><v>50.5</v></c>
///           <c r="C2" s="1"><f>TODAY()</f><v>44259</v></c>        a date, if that format is one
///           <c r="D2" t="inlineStr"><is><t>text</t></is></c>
///           <c r="E2" t="b"><v>1</v></c>
///         </row>
///       </sheetData>
///     </worksheet>
///
/// Formulas give the values stored with them. Numbers of the text column become texts with the
/// digits that stand in the file. A cell or a row without a reference follows the one before it;
/// one with a reference belongs where that says. Refused as damaged are references that contradict
/// their row, the same cell twice with different contents, unknown types, contents that their type
/// does not allow, and numbers under a format that the workbook does not have.
class SheetReader
{
public:
    explicit SheetReader(const SheetContext &context);

    void read(XmlCursor *xml);

private:
    using Store = void (SheetReader::*)(const QByteArray &);

    void readRow();
    void readCell();
    void readCellAttributes();
    void readContents();
    void checkLength();
    bool moveTo(const char *reference);
    bool setType(const char *name);

    void storeNumber(const QByteArray &text);
    void storeDate(double days);
    void storeIsoDate(const QByteArray &text);
    double daysOf(const QDate &date) const;
    void storeBoolean(const QByteArray &text);
    void storeError(const QByteArray &utf8);
    void storeString(const QByteArray &utf8);
    void storeSharedString(const QByteArray &index);
    void storeText(const QString &text);
    void write(const QVariant &value, bool isDate = false);

    SheetContext m_context;
    XmlCursor *m_xml = nullptr;
    QXlsx::Format m_dateFormat;
    bool m_is1904;

    // The cell that is being read.
    int m_row = 0;
    int m_column = 0;
    Store m_store = nullptr; // of its type
    bool m_isInline = false;
    int m_format = 0;
    QByteArray m_value;
    QByteArray m_inlineText;
    QByteArray m_formula; // which nobody needs

    // Row and column of the last cell in reading order that holds something; all cells after it are
    // still empty.
    std::pair<int, int> m_last;
};
