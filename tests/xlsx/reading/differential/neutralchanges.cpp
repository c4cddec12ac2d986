// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>

#include "xlsx/reading/differential/changes.h"
#include "xlsx/reading/differential/namespaces.h"
#include "xlsx/reading/differential/places.h"

namespace
{

using Role = DicedWorkbook::Role;

bool addComments(DicedWorkbook *workbook, Dice *dice)
{
    for (int i = 0; i < 4; ++i) {
        XmlPiece *const element = pickElement(workbook, dice);
        const XmlPiece added = dice->chance(50)
            ? XmlPiece::other(XmlPiece::Comment, " <c>9</c> ")
            : XmlPiece::other(XmlPiece::Instruction, "a b=\"9\"");
        auto &content = element->content;
        if (content.size() == 1 && content.front().kind == XmlPiece::Text) {
            const QString text = content.front().text;
            const int half = dice->below(text.size());
            const int cut = text.at(half).isLowSurrogate() ? half - 1 : half;
            content = {XmlPiece::other(XmlPiece::Text, text.left(cut)), added,
                       XmlPiece::other(XmlPiece::Text, text.mid(cut))};
        } else {
            insertAnywhere(element, added, dice);
        }
    }
    return true;
}

bool changeStyle(DicedWorkbook *workbook, Dice *dice)
{
    for (DicedWorkbook::Part &part : workbook->parts) {
        XmlStyle &style = part.style;
        style.markedSections = dice->chance(30);
        style.characterReferences = dice->chance(30);
        style.shuffledAttributes = dice->chance(50);
        style.indented = dice->chance(30);
        style.declaration = dice->chance(70);
        style.quote = QLatin1Char(dice->chance(30) ? '\'' : '"');
    }
    return true;
}

bool changeEncoding(DicedWorkbook *workbook, Dice *dice)
{
    for (DicedWorkbook::Part &part : workbook->parts) {
        part.style.encoding = XmlStyle::Encoding(dice->below(4));
        part.style.byteOrderMark = dice->chance(50);
    }
    return true;
}

bool changePrefix(DicedWorkbook *workbook, Dice *dice)
{
    static const QStringList prefixes = {"", "x", "main", "ns0"};
    for (DicedWorkbook::Part &part : workbook->parts) {
        if (!part.root.prefixes.isEmpty()) {
            part.root.prefixes.front().first = dice->pick(prefixes);
        }
    }
    XmlPiece *const inner = pickElement(workbook, dice);
    if (inner->space.isEmpty()) {
        return false;
    }
    inner->declare("inner" + QString::number(inner->prefixes.size()), inner->space);
    return true;
}

XmlPiece extension(const QString &space)
{
    XmlPiece list = pieceOf(space, "extLst");
    XmlPiece &one = list.add("ext", {{"uri", "{x}", {}}});
    one.content.push_back(pieceOf(Namespaces::unknown(), "thing"));
    XmlPiece &cell = one.add("c", {{"r", "B2", {}}});
    cell.add("v", {}, "99");
    return list;
}

bool addExtension(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice, {"row", "c", "xf"});
    if (!place) {
        return false;
    }
    place.element().content.push_back(extension(place.element().space));
    if (DicedWorkbook::Part *const texts = workbook->part(Role::Texts); dice->chance(50) && texts) {
        texts->root.content.push_back(extension(texts->root.space));
    }
    return true;
}

bool addForeignAttribute(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    if (place.element().attribute("other") != nullptr) {
        return false;
    }
    place.element().give("other", "9", Namespaces::unknown());
    return true;
}

bool addXmlAttribute(DicedWorkbook *workbook, Dice *dice)
{
    const QString name = dice->chance(50) ? "space" : "lang";
    const Place place = pickPlace(workbook, dice);
    if (!place || place.element().attribute(name) != nullptr) {
        return false;
    }
    place.element().give(name, dice->chance(50) ? "preserve" : "default", Namespaces::xml());
    return true;
}

bool addKnownAttribute(DicedWorkbook *workbook, Dice *dice)
{
    static const QVector<QPair<QString, QStringList>> known = {
        {"row", {"ht", "customFormat", "hidden", "thickTop", "s", "outlineLevel", "ph"}},
        {"c", {"cm", "vm", "ph"}},
        {"xf", {"quotePrefix", "somethingOfItsOwn", "fillId"}},
        {"v", {"t"}},
        {"workbookPr", {"dateCompatibility", "codeName", "unheardOf"}},
    };
    const auto &kind = dice->pick(known);
    const Place place = pickPlace(workbook, dice, {kind.first});
    if (!place) {
        return false;
    }
    const QString name = dice->pick(kind.second);
    // The attribute ph is one of cells.
    if (!place || place.element().attribute(name) != nullptr
        || (kind.first == "row" && name == "ph")) {
        return false;
    }
    place.element().give(name, "1");
    return true;
}

XmlPiece decoy(const QString &space, const QString &cellSpace, Dice *dice)
{
    XmlPiece piece = pieceOf(space, dice->chance(30) ? "c" : "box");
    piece.content.push_back(pieceOf(cellSpace, "c"));
    piece.content.back().add("v", {}, "99");
    return piece;
}

bool addElsewhere(DicedWorkbook *workbook, Dice *dice)
{
    static const QStringList spaces = {"", Namespaces::unknown(), Namespaces::strict(),
                                       Namespaces::transitional()};
    DicedWorkbook::Part *const part =
        workbook->part(dice->chance(50) ? Role::Sheet : Role::Workbook);
    insertAnywhere(&part->root, decoy(dice->pick(spaces), part->root.space, dice), dice);
    return true;
}

bool addAlternativesElsewhere(DicedWorkbook *workbook, Dice *dice)
{
    DicedWorkbook::Part *const part =
        workbook->part(dice->chance(50) ? Role::Sheet : Role::Workbook);
    XmlPiece alternatives = compatibilityPiece("AlternateContent");
    XmlPiece &choice = alternatives.add("Choice", {{"Requires", "u", {}}});
    choice.declare("u", Namespaces::unknown());
    choice.content.push_back(decoy(Namespaces::unknown(), part->root.space, dice));
    alternatives.add("Fallback").content.push_back(decoy(part->root.space, part->root.space, dice));
    part->root.content.push_back(alternatives);
    return true;
}

bool addIgnorable(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    declareIgnorable(dice->chance(70) ? &place.part->root : &place.element(), Namespaces::newer());
    XmlPiece added = decoy(Namespaces::newer(), place.element().space, dice);
    added.name = dice->chance(50) ? place.element().name : added.name;
    insertAnywhere(&place.element(), added, dice);
    static const QStringList names = {"r", "t", "s", "Id", "numFmtId", "other"};
    const auto &given = place.element().attributes;
    if (dice->chance(30) && std::none_of(given.begin(), given.end(), [](const auto &attribute) {
            return attribute.space == Namespaces::newer();
        })) {
        place.element().give(dice->pick(names), "3", Namespaces::newer());
    }
    return true;
}

bool addPhonetics(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice, {"si", "is"});
    if (!place) {
        return false;
    }
    place.element().add("rPh", {{"sb", "0", {}}, {"eb", "1", {}}}).add("t", {}, "9");
    place.element().add("phoneticPr", {{"fontId", "0", {}}});
    return true;
}

bool addEmptyCell(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice, {"row"});
    if (!place) {
        return false;
    }
    auto &content = place.element().content;
    XmlPiece cell = pieceOf(place.element().space, "c");
    cell.give("s", "99");
    if (dice->chance(50)) {
        cell.add("f", {}, "A1");
    }
    const auto last = std::find_if(content.rbegin(), content.rend(),
                                   [](const XmlPiece &piece) { return piece.isElement("c"); });
    content.insert(last.base(), cell);
    return true;
}

bool addAlternativeFormats(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice, {"xf"});
    if (!place || place.parent->name != "cellXfs") {
        return false;
    }
    const XmlPiece real = place.element();
    XmlPiece other = real;
    other.attribute("numFmtId")->value = "14";
    const bool known = dice->chance(30);
    XmlPiece alternatives = compatibilityPiece("AlternateContent");
    XmlPiece &choice = alternatives.add("Choice", {{"Requires", "q", {}}});
    choice.declare("q", known ? real.space : Namespaces::unknown());
    choice.content.push_back(known ? real : other);
    alternatives.add("Fallback").content.push_back(known ? other : real);
    place.element() = alternatives;
    return true;
}

bool changeUnreadParts(DicedWorkbook *workbook, Dice *dice)
{
    const auto unread = std::find_if(workbook->parts.begin(), workbook->parts.end(),
                                     [](const auto &part) { return part.role == Role::Unread; });
    if (unread == workbook->parts.end()) {
        return false;
    }
    const DicedWorkbook::Part part = *unread;
    switch (dice->below(4)) {
    case 0:
        workbook->parts.erase(unread);
        break;
    case 1:
        workbook->parts.append(part);
        break;
    case 2:
        unread->entry.checksumError = 1;
        break;
    default:
        unread->root.name = "other";
    }
    return true;
}

bool addLinks(DicedWorkbook *workbook, Dice *dice)
{
    DicedWorkbook::Part *const part =
        workbook->part(dice->chance(50) ? Role::Links : Role::PackageLinks);
    XmlPiece &list = part->root;
    XmlPiece &added = list.add("Relationship",
                               {{"Id", "rIdMore", {}},
                                {"Type", Namespaces::transitionalLinks() + "/hyperlink", {}},
                                {"Target", "http://example.org/#a b?c", {}}});
    if (dice->chance(70)) {
        added.give("TargetMode", "External");
    }
    return true;
}

bool changeArchive(DicedWorkbook *workbook, Dice *dice)
{
    for (DicedWorkbook::Part &part : workbook->parts) {
        ArchiveEntry &entry = part.entry;
        entry.deflated = dice->chance(60);
        entry.descriptor = entry.deflated && dice->chance(30);
        entry.wide = !entry.descriptor && dice->chance(20);
        // A time of the last change.
        const QByteArray time = QByteArray::fromHex("5554050001000000ff");
        entry.localExtra = dice->chance(30) ? time : QByteArray();
        entry.centralExtra = dice->chance(30) ? time : QByteArray();
    }
    for (int i = 1; i < workbook->parts.size(); ++i) {
        std::swap(workbook->parts[i], workbook->parts[dice->below(i + 1)]);
    }
    workbook->archive.wideEnd = dice->chance(30);
    if (dice->chance(30)) {
        ArchiveEntry folder;
        folder.name = "xl/";
        folder.deflated = false;
        workbook->archive.entries.append(folder);
    }
    return true;
}

} // namespace

const QVector<Change> &neutralChanges()
{
    static const QVector<Change> changes = {
        {"comments", &addComments},
        {"style of XML", &changeStyle},
        {"encoding", &changeEncoding},
        {"prefixes", &changePrefix},
        {"extensions", &addExtension},
        {"foreign attribute", &addForeignAttribute},
        {"attribute of XML", &addXmlAttribute},
        {"known attribute", &addKnownAttribute},
        {"unknown element elsewhere", &addElsewhere},
        {"alternatives elsewhere", &addAlternativesElsewhere},
        {"ignorable element", &addIgnorable},
        {"phonetics", &addPhonetics},
        {"empty cell", &addEmptyCell},
        {"alternative formats", &addAlternativeFormats},
        {"parts that nobody reads", &changeUnreadParts},
        {"more relationships", &addLinks},
        {"archive", &changeArchive},
    };
    return changes;
}
