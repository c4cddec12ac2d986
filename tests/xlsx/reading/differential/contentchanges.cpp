// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>

#include "xlsx/reading/differential/changes.h"
#include "xlsx/reading/differential/namespaces.h"
#include "xlsx/reading/differential/places.h"

namespace
{

QStringList choices(const QString &name)
{
    static const QVector<QPair<QString, QStringList>> values = {
        {"r", {"B2", "C3", "A1", "b2", "1", "2", "3", "", "B", "x", "A2 "}},
        {"t", {"s", "n", "b", "e", "str", "inlineStr", "d", "", "S", "x"}},
        {"s", {"0", "1", "3", "6", "99", "", "-1", "x", " 2 "}},
        {"numFmtId", {"0", "14", "164", "165", "200", "", "22", "x"}},
        {"formatCode", {"d.m.yyyy", "0.0", "General", "mmm yy", "#,##0.00"}},
        {"state", {"hidden", "visible", "veryHidden", "", "gone"}},
        {"id", {"rIdOther", "rIdSheet", "rIdChart", "rIdStyles", "none", ""}},
        {"Id", {"rIdOther", "rIdSheet", "rIdChart", "rIdStyles", "none", ""}},
        {"date1904", {"1", "0", "true", " 1 ", "on", "TRUE", "", "2"}},
    };
    const auto found = std::find_if(values.begin(), values.end(),
                                    [&name](const auto &entry) { return entry.first == name; });
    return found == values.end() ? QStringList({"", "1", "x"}) : found->second;
}

bool prefixAttribute(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    XmlPiece::Attribute *const attribute = pickAttribute(place, dice);
    if (attribute == nullptr) {
        return false;
    }
    const QString before = attribute->space;
    static const QStringList spaces = {Namespaces::unknown(), Namespaces::unknown(), "main",
                                       Namespaces::transitionalLinks(), Namespaces::strictLinks()};
    const QString chosen = dice->pick(spaces);
    attribute->space = chosen == "main" ? place.part->root.space : chosen;
    return attribute->space != before;
}

bool addSecondAttribute(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    XmlPiece::Attribute *const attribute = pickAttribute(place, dice);
    if (attribute == nullptr) {
        return false;
    }
    const QString space = dice->chance(60) ? Namespaces::unknown() : place.part->root.space;
    place.element().give(attribute->name, dice->pick(choices(attribute->name)), space);
    return true;
}

bool addReadAttribute(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice, {"c", "row", "xf", "sheet", "workbookPr", "v"});
    if (!place) {
        return false;
    }
    static const QStringList names = {"t", "s", "r", "state", "date1904", "T", "R"};
    const QString name = dice->pick(names);
    const QString space = dice->chance(50) ? QString() : Namespaces::unknown();
    const auto &given = place.element().attributes;
    if (std::any_of(given.begin(), given.end(), [&](const auto &attribute) {
            return attribute.name == name && attribute.space == space;
        })) {
        return false;
    }
    place.element().give(name, dice->pick(choices(name.toLower())), space);
    return true;
}

bool alterAttribute(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    XmlPiece::Attribute *const attribute = pickAttribute(place, dice);
    if (attribute == nullptr || attribute->name == "Type" || attribute->name == "Target") {
        return false;
    }
    attribute->value = dice->pick(choices(attribute->name));
    return true;
}

bool dropAttribute(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    XmlPiece::Attribute *const attribute = pickAttribute(place, dice);
    if (attribute == nullptr) {
        return false;
    }
    place.element().attributes.removeAt(int(attribute - place.element().attributes.data()));
    return true;
}

bool renameAttribute(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    XmlPiece::Attribute *const attribute = pickAttribute(place, dice);
    if (attribute == nullptr) {
        return false;
    }
    const QString name = attribute->name;
    attribute->name = name == name.toUpper() ? name.toLower() : name.toUpper();
    return true;
}

bool addStrayText(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice);
    if (!place) {
        return false;
    }
    insertAnywhere(&place.element(), XmlPiece::other(XmlPiece::Text, "5"), dice);
    return true;
}

bool alterText(DicedWorkbook *workbook, Dice *dice)
{
    static const QStringList texts = {"0", "1",    "7",     " 7 ", "",   "5,5",       "x",
                                      "2", "true", "44000", "1e3", "12", "1900-01-15"};
    const Place place = pickPlace(workbook, dice, {"v", "t"});
    if (!place) {
        return false;
    }
    const QString text = dice->pick(texts);
    place.element().content = {
        XmlPiece::other(XmlPiece::Text, dice->chance(10) ? QChar(0xfeff) + text : text)};
    return true;
}

bool writeMoment(DicedWorkbook *workbook, Dice *dice)
{
    static const QStringList moments = {"2021-03-04T10:30:00Z",
                                        "2021-03-04T10:30",
                                        "2021-03-04T10:30:15.250+02:00",
                                        "1903-12-31",
                                        "9999-12-31T23:59:59",
                                        "2021-02-30",
                                        "2021-03-04T25:00:00",
                                        "2021-03-04T10:30:005",
                                        "2021-03-04x",
                                        "2021-03-04T",
                                        "2021-3-4",
                                        "10:30",
                                        "10:30:5",
                                        "PT14H30M",
                                        QChar(0xfeff) + QString("2021-03-04")};
    const Place place = pickPlace(workbook, dice, {"c"});
    if (!place || place.element().attribute("t") == nullptr) {
        return false;
    }
    place.element().attribute("t")->value = "d";
    place.element().content.clear();
    place.element().add("v", {}, dice->pick(moments));
    return true;
}

bool alterControls(DicedWorkbook *workbook, Dice *dice)
{
    static const QVector<ushort> controls = {0xfeff, 0x7f, 0x80, 0x85, 0x92, 0x9f, 0x200b};
    const Place place = pickPlace(workbook, dice, {"t"});
    if (!place || place.element().content.empty()) {
        return false;
    }
    QString &text = place.element().content.front().text;
    text.insert(dice->below(2) == 0 ? 0 : text.size(), QChar(dice->pick(controls)));
    return true;
}

bool putElementIntoText(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice, {"v", "t", "f"});
    if (!place || place.element().content.empty()) {
        return false;
    }
    XmlPiece added = pieceOf(otherSpace({}, dice), dice->chance(50) ? "y" : place.element().name);
    added.content.push_back(XmlPiece::other(XmlPiece::Text, "3"));
    auto &content = place.element().content;
    const QString text = content.front().text;
    content = {XmlPiece::other(XmlPiece::Text, text.left(1)), added,
               XmlPiece::other(XmlPiece::Text, text.mid(1))};
    return true;
}

bool padText(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice, {"v"});
    if (!place || place.element().content.empty() || !dice->chance(20)) {
        return false;
    }
    constexpr int beyondTheLongestText = 262'200;
    QString &text = place.element().content.front().text;
    const QString blanks(beyondTheLongestText, ' ');
    text = dice->chance(50) ? blanks + text : text + blanks + "5";
    return true;
}

bool addInlineText(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickPlace(workbook, dice, {"c"});
    if (!place) {
        return false;
    }
    if (dice->chance(60)) {
        place.element().content.clear();
    }
    if (dice->chance(40)) {
        XmlPiece::Attributes &attributes = place.element().attributes;
        attributes.erase(std::remove_if(attributes.begin(), attributes.end(),
                                        [](const auto &one) { return one.name == "t"; }),
                         attributes.end());
    }
    place.element().add("is").add("t", {}, dice->chance(50) ? "1" : "0");
    return true;
}

bool doubleFormat(DicedWorkbook *workbook, Dice *dice)
{
    DicedWorkbook::Part *const formats = workbook->part(DicedWorkbook::Formats);
    static const QStringList ids = {"164", "165", "166", "14", "0"};
    static const QStringList codes = {"d.m.yyyy", "0.0", "General", "mmm yy"};
    const Place list = pickPlace(workbook, dice, {"numFmts"});
    if (formats == nullptr || !list) {
        return false;
    }
    XmlPiece &added = list.element().add("numFmt");
    if (dice->chance(85)) {
        added.give("numFmtId", dice->pick(ids));
    }
    if (dice->chance(85)) {
        added.give("formatCode", dice->pick(codes));
    }
    return true;
}

bool changeSwitches(DicedWorkbook *workbook, Dice *dice)
{
    DicedWorkbook::Part *const part = workbook->part(DicedWorkbook::Workbook);
    if (part == nullptr) {
        return false;
    }
    XmlPiece &root = part->root;
    static const QStringList values = {"1", "0", "true", "false", " 1 ", "on", "TRUE", "\t1\n", ""};
    XmlPiece added =
        pieceOf(dice->chance(70) ? root.space : otherSpace(root.space, dice), "workbookPr");
    added.give("date1904", dice->pick(values), dice->chance(80) ? "" : Namespaces::unknown());
    insertAnywhere(&root, added, dice);
    return true;
}

} // namespace

const QVector<Change> &contentChanges()
{
    static const QVector<Change> changes = {
        {"attribute prefixed", &prefixAttribute},
        {"second attribute with a prefix", &addSecondAttribute},
        {"attribute added", &addReadAttribute},
        {"attribute altered", &alterAttribute},
        {"attribute dropped", &dropAttribute},
        {"attribute renamed", &renameAttribute},
        {"stray text", &addStrayText},
        {"text altered", &alterText},
        {"moment", &writeMoment},
        {"control character", &alterControls},
        {"element in a text", &putElementIntoText},
        {"text of many blanks", &padText},
        {"inline text added", &addInlineText},
        {"number format doubled", &doubleFormat},
        {"switches of the workbook", &changeSwitches},
    };
    return changes;
}
