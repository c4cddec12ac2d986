// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/differential/places.h"

#include <algorithm>
#include <array>

#include "xlsx/reading/differential/namespaces.h"

namespace
{

// The sheet more often than the other parts, which have less to say.
constexpr std::array<DicedWorkbook::Role, 12> roles = {
    DicedWorkbook::Sheet,    DicedWorkbook::Sheet,   DicedWorkbook::Sheet,
    DicedWorkbook::Sheet,    DicedWorkbook::Texts,   DicedWorkbook::Texts,
    DicedWorkbook::Formats,  DicedWorkbook::Formats, DicedWorkbook::Workbook,
    DicedWorkbook::Workbook, DicedWorkbook::Links,   DicedWorkbook::PackageLinks};

const QStringList placeNames = {
    "Relationship", "workbookPr", "sheets", "sheet", "sheetData", "row",    "c",       "v", "f",
    "is",           "t",          "r",      "si",    "numFmts",   "numFmt", "cellXfs", "xf"};
const QStringList readAttributes = {"r",  "t",  "s",    "numFmtId", "formatCode", "state",
                                    "id", "Id", "Type", "Target",   "TargetMode", "date1904"};
const QStringList passedNames = {"cellStyleXfs", "dxfs", "rPr", "rPh", "extLst"};

void collect(DicedWorkbook::Part *part, XmlPiece *parent, const QStringList &names,
             QVector<Place> *places)
{
    for (std::size_t i = 0; i < parent->content.size(); ++i) {
        XmlPiece *const piece = &parent->content.at(i);
        if (piece->kind != XmlPiece::Element || passedNames.contains(piece->name)) {
            continue;
        }
        if (placeNames.contains(piece->name) && (names.isEmpty() || names.contains(piece->name))) {
            places->append({part, parent, i});
        }
        collect(part, piece, names, places);
    }
}

void collectElements(XmlPiece *piece, QVector<XmlPiece *> *elements)
{
    if (piece->kind == XmlPiece::Element) {
        elements->append(piece);
        for (XmlPiece &child : piece->content) {
            collectElements(&child, elements);
        }
    }
}

} // namespace

Place pickPlace(DicedWorkbook *workbook, Dice *dice, const QStringList &names)
{
    QVector<Place> places;
    DicedWorkbook::Part *const first = workbook->part(dice->pick(roles));
    if (first != nullptr) {
        collect(first, &first->root, names, &places);
    }
    for (DicedWorkbook::Part &part : workbook->parts) {
        if (places.isEmpty() && part.role != DicedWorkbook::Unread
            && part.role != DicedWorkbook::OtherSheet) {
            collect(&part, &part.root, names, &places);
        }
    }
    return places.isEmpty() ? Place() : dice->pick(places);
}

XmlPiece *pickElement(DicedWorkbook *workbook, Dice *dice)
{
    DicedWorkbook::Part *part = workbook->part(dice->pick(roles));
    part = part == nullptr ? workbook->part(DicedWorkbook::Sheet) : part;
    QVector<XmlPiece *> elements;
    collectElements(&part->root, &elements);
    return dice->pick(elements);
}

void insertAnywhere(XmlPiece *parent, const XmlPiece &piece, Dice *dice)
{
    auto &content = parent->content;
    content.insert(content.begin() + dice->below(qint64(content.size()) + 1), piece);
}

void declareIgnorable(XmlPiece *element, const QString &space)
{
    const QString prefix = "i" + QString::number(element->prefixes.size());
    element->declare(prefix, space);
    for (XmlPiece::Attribute &attribute : element->attributes) {
        if (attribute.name == "Ignorable" && attribute.space == Namespaces::compatibility()) {
            attribute.value += ' ' + prefix;
            return;
        }
    }
    element->give("Ignorable", prefix, Namespaces::compatibility());
}

QString otherSpace(const QString &space, Dice *dice)
{
    static const QStringList spaces = {"",
                                       "",
                                       Namespaces::unknown(),
                                       Namespaces::unknown(),
                                       Namespaces::transitional(),
                                       Namespaces::strict(),
                                       Namespaces::compatibility(),
                                       Namespaces::transitionalLinks()};
    const QString other = dice->pick(spaces);
    return other == space ? Namespaces::unknown() : other;
}

void moveToSpace(XmlPiece *piece, const QString &from, const QString &to)
{
    piece->space = piece->space == from ? to : piece->space;
    for (XmlPiece &child : piece->content) {
        moveToSpace(&child, from, to);
    }
}

XmlPiece::Attribute *pickAttribute(const Place &place, Dice *dice)
{
    QVector<XmlPiece::Attribute *> found;
    for (XmlPiece::Attribute &attribute : place.element().attributes) {
        if (readAttributes.contains(attribute.name) && attribute.space != Namespaces::xml()) {
            found.append(&attribute);
        }
    }
    return found.isEmpty() ? nullptr : dice->pick(found);
}

XmlPiece compatibilityPiece(const QString &name)
{
    return pieceOf(Namespaces::compatibility(), name);
}

XmlPiece pieceOf(const QString &space, const QString &name)
{
    XmlPiece piece;
    piece.space = space;
    piece.name = name;
    return piece;
}
