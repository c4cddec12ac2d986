// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>

#include "xlsx/reading/differential/changes.h"
#include "xlsx/reading/differential/namespaces.h"
#include "xlsx/reading/differential/places.h"

namespace
{

bool dropElement(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    place.parent->content.erase(place.parent->content.begin() + qint64(place.index));
    return true;
}

bool doubleElement(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    const XmlPiece copy = place.element();
    insertAnywhere(place.parent, copy, dice);
    return true;
}

bool moveElement(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    const XmlPiece moved = place.element();
    place.parent->content.erase(place.parent->content.begin() + qint64(place.index));
    const Place target = pickPlace(workbook, dice);
    if (!target) {
        return false;
    }
    insertAnywhere(dice->chance(70) ? &target.element() : target.parent, moved, dice);
    return true;
}

bool nestElement(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    XmlPiece copy = place.element();
    if (XmlPiece::Attribute *const number = copy.attribute("numFmtId")) {
        number->value = "14";
    }
    place.element().content.push_back(copy);
    return true;
}

bool swapSiblings(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    auto &content = place.parent->content;
    std::swap(content.at(place.index),
              content.at(std::size_t(dice->below(qint64(content.size())))));
    return true;
}

bool renameElement(DicedWorkbook *workbook, Dice *dice)
{
    static const QStringList names = {"row",    "c",   "v",  "f",        "is",    "t",
                                      "r",      "si",  "xf", "numFmt",   "sheet", "rPh",
                                      "extLst", "rPr", "x",  "sheetData"};
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    XmlPiece &element = place.element();
    element.name = dice->chance(30) ? element.name.toUpper() : dice->pick(names);
    return true;
}

bool changeNamespace(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    place.element().space = otherSpace(place.element().space, dice);
    return true;
}

bool changeNamespaceOfAll(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    const QString from = place.element().space;
    moveToSpace(&place.element(), from, otherSpace(from, dice));
    return true;
}

bool changeNamespaceOfPart(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    const QString from = place.part->root.space;
    const QString other = dice->chance(50) ? otherSpace(from, dice)
        : from == Namespaces::strict()     ? Namespaces::transitional()
                                           : Namespaces::strict();
    moveToSpace(&place.part->root, from, other);
    return true;
}

bool wrapElement(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    const QString space = place.element().space;
    XmlPiece wrapper = pieceOf(dice->chance(40) ? space : otherSpace(space, dice),
                               dice->chance(70) ? "box" : place.parent->name);
    wrapper.content.push_back(place.element());
    if (dice->chance(30) && place.index + 1 < place.parent->content.size()) {
        wrapper.content.push_back(place.parent->content.at(place.index + 1));
        place.parent->content.erase(place.parent->content.begin() + qint64(place.index) + 1);
    }
    place.element() = wrapper;
    return true;
}

bool insertElement(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    XmlPiece added = place.element();
    const QString from = added.space;
    if (dice->chance(70)) {
        moveToSpace(&added, from, otherSpace(from, dice));
    } else {
        added = pieceOf(from, "unheardOf");
    }
    insertAnywhere(place.parent, added, dice);
    return true;
}

bool wrapPart(DicedWorkbook *workbook, Dice *dice)
{
    static const QStringList names = {"sheetData", "sheets", "cellXfs", "numFmts", "workbookPr"};
    const Place place = pickPlace(workbook, dice, names);
    if (!place) {
        return false;
    }
    XmlPiece copy = place.element();
    const QString space = dice->chance(50) ? copy.space : otherSpace(copy.space, dice);
    XmlPiece wrapper = dice->chance(30) ? compatibilityPiece("AlternateContent")
                                        : pieceOf(space, dice->chance(50) ? "box" : "extLst");
    wrapper.content.push_back(copy);
    if (dice->chance(50)) {
        place.element() = wrapper;
    } else {
        place.parent->content.insert(place.parent->content.begin() + qint64(place.index), wrapper);
    }
    return true;
}

bool putIntoFormula(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice, {"row", "c", "v"});
    if (!place) {
        return false;
    }
    const XmlPiece moved = place.element();
    const Place formula = pickPlace(workbook, dice, {"f"});
    if (!formula || place.parent->name == "f") {
        return false;
    }
    formula.element().content.push_back(moved);
    return true;
}

bool makeIgnorable(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    const QString from = place.element().space;
    XmlPiece *const where = dice->chance(60) ? &place.part->root : &place.element();
    declareIgnorable(where, Namespaces::newer());
    moveToSpace(&place.element(), from, Namespaces::newer());
    if (dice->chance(40)) {
        XmlPiece inside = place.element();
        moveToSpace(&inside, Namespaces::newer(), from);
        place.element().content.push_back(inside);
    }
    return true;
}

bool processContent(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    XmlPiece wrapper = pieceOf(Namespaces::newer(), "box");
    wrapper.content.push_back(place.element());
    place.element() = wrapper;
    XmlPiece *const where = dice->chance(60) ? &place.part->root : place.parent;
    declareIgnorable(where, Namespaces::newer());
    where->declare("pc", Namespaces::newer());
    where->give("ProcessContent", dice->chance(70) ? "pc:box" : "pc:*",
                Namespaces::compatibility());
    return true;
}

bool mustUnderstand(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    XmlPiece *const where = dice->chance(60) ? &place.part->root : &place.element();
    where->declare("mu", dice->chance(80) ? Namespaces::unknown() : place.element().space);
    where->give("MustUnderstand", "mu", Namespaces::compatibility());
    return true;
}

bool ignoreTheUndeclared(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    XmlPiece *const where = dice->chance(60) ? &place.part->root : &place.element();
    if (XmlPiece::Attribute *const known = where->attribute("Ignorable")) {
        known->value += " undeclared";
    } else {
        where->give("Ignorable", "undeclared", Namespaces::compatibility());
    }
    return true;
}

bool ignoreTheKnown(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    declareIgnorable(&place.part->root,
                     dice->chance(60) ? place.part->root.space : Namespaces::compatibility());
    return true;
}

bool makeAlternatives(DicedWorkbook *workbook, Dice *dice)
{
    const Place place =
        dice->chance(50) ? pickPlace(workbook, dice) : pickPlace(workbook, dice, {"xf"});
    if (!place) {
        return false;
    }
    const XmlPiece real = place.element();
    XmlPiece other = real;
    if (XmlPiece::Attribute *const number = other.attribute("numFmtId")) {
        number->value = "14";
    }
    const QStringList spaces = {Namespaces::unknown(), real.space, Namespaces::strict(),
                                Namespaces::strictLinks()};
    XmlPiece alternatives = compatibilityPiece("AlternateContent");
    const int count = dice->below(3);
    for (int i = 0; i < count; ++i) {
        XmlPiece &choice = alternatives.add("Choice", {{"Requires", "q", {}}});
        choice.declare("q", dice->pick(spaces));
        choice.content.push_back(dice->chance(50) ? real : other);
    }
    const int fallbacks = dice->chance(70) ? 1 : dice->below(3);
    for (int i = 0; i < fallbacks; ++i) {
        XmlPiece &fallback = alternatives.add("Fallback");
        fallback.content.push_back(dice->chance(50) ? real : other);
        if (dice->chance(15)) {
            fallback.content.push_back(other);
        }
    }
    place.element() = alternatives;
    return true;
}

} // namespace

const QVector<Change> &elementChanges()
{
    static const QVector<Change> changes = {
        {"element dropped", &dropElement},
        {"element doubled", &doubleElement},
        {"element moved", &moveElement},
        {"element in its like", &nestElement},
        {"siblings swapped", &swapSiblings},
        {"element renamed", &renameElement},
        {"element of another namespace", &changeNamespace},
        {"element of another namespace with its content", &changeNamespaceOfAll},
        {"part of another namespace", &changeNamespaceOfPart},
        {"element wrapped", &wrapElement},
        {"element inserted", &insertElement},
        {"list elsewhere", &wrapPart},
        {"element in a formula", &putIntoFormula},
        {"element made ignorable", &makeIgnorable},
        {"ProcessContent", &processContent},
        {"MustUnderstand", &mustUnderstand},
        {"undeclared prefix ignorable", &ignoreTheUndeclared},
        {"known namespace ignorable", &ignoreTheKnown},
        {"alternatives", &makeAlternatives},
    };
    return changes;
}
