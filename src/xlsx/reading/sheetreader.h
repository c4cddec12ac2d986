// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <xlsxcell.h>
#include <xlsxformat.h>
#include <xlsxworksheet.h>

#include "xlsx/reading/cellformats.h"
#include "xlsx/reading/memorybudget.h"
#include "xlsx/reading/sharedstrings.h"
#include "xlsx/reading/textcollector.h"
#include "xlsx/reading/xmlreader.h"

/// What the cells of a sheet refer to.
struct SheetContext {
    const QVector<QString> *sharedStrings;
    const CellFormats *formats;
    /// Takes the cells; it counts days as the workbook that is read does.
    QXlsx::Worksheet *target;
    MemoryBudget *budget;
    /// The column whose numbers become texts with the digits of the file.
    int textColumn;
};

/// Reads the cells of a worksheet into another one that is empty.
///
/// Formulas give the values stored with them. Numbers of the text column become texts with the
/// digits that stand in the file. A cell or a row without a reference follows the one before it;
/// one with a reference belongs where that says. A format that the workbook does not have leaves a
/// number a number. Refused as damaged are references that contradict their row, the same cell
/// twice with different contents, unknown types, and contents that their type does not allow.
class SheetReader : public XmlReader
{
public:
    /// The types of cells that a file names.
    enum class Type { Number, Boolean, Error, SharedString, FormulaString, InlineString, Date };

    explicit SheetReader(const SheetContext &context);

private:
    void enter(int node, const XmlAttributes &attributes) override;
    void leave(int node) override;
    void text(int node, const char *data, int size) override;
    QString currentCell() const override;

    void enterRow(const XmlAttributes &attributes);
    void enterCell(const XmlAttributes &attributes);
    bool moveTo(const char *reference);
    bool setType(const char *name);
    bool setFormat(const char *index);

    // What a cell holds: the text for texts, the number for the others.
    struct Content {
        QXlsx::Cell::CellType type;
        double number;
        QString text;
        bool isDate;
    };

    void store();
    void storeNumber(const QByteArray &text);
    void storeDate(double days);
    void storeIsoDate(const QByteArray &text);
    void storeBoolean(const QByteArray &text);
    void storeError(const QString &text);
    void storeSharedString(const QByteArray &index);
    void storeText(const QString &text);
    void write(const Content &content);
    static bool isSame(const QXlsx::Cell &cell, const Content &content);
    bool isInOrder();

    SheetContext m_context;
    QXlsx::Format m_dateFormat;
    bool m_hasData = false;

    int m_row = 0;
    int m_column = 0;
    Type m_type = Type::Number;
    int m_format = 0;
    bool m_inCell = false;
    // The value and the inline text of the cell.
    int m_values = 0;
    int m_inlineTexts = 0;
    TextCollector m_value;
    TextCollector m_inlineText;

    // The last cell in reading order that holds something; all cells behind it are still empty.
    int m_lastRow = 0;
    int m_lastColumn = 0;
};
