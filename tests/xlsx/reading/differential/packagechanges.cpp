// SPDX-License-Identifier: GPL-3.0-or-later
#include <utility>

#include <QtEndian>

#include <zlib.h>

#include "xlsx/reading/differential/changes.h"
#include "xlsx/reading/differential/namespaces.h"
#include "xlsx/reading/differential/places.h"

namespace
{

using Role = DicedWorkbook::Role;

Place pickLink(DicedWorkbook *workbook, Dice *dice)
{
    return pickPlace(workbook, dice, {"Relationship"});
}

bool alterTarget(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickLink(workbook, dice);
    XmlPiece::Attribute *const target = place ? place.element().attribute("Target") : nullptr;
    if (target == nullptr) {
        return false;
    }
    const QString before = target->value;
    const QString name = before.section('/', -1);
    const QStringList values = {' ' + before,
                                before + "#a",
                                before + "?x",
                                before + ' ',
                                "worksheets/other.xml",
                                "none.xml",
                                "",
                                "./" + before,
                                "x/../" + before,
                                before.toUpper(),
                                "http://example.org/",
                                "/xl/" + before,
                                "%20" + before,
                                QString(before).replace('/', '\\'),
                                "../" + before,
                                name};
    target->value = dice->pick(values);
    return true;
}

bool alterType(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickLink(workbook, dice);
    XmlPiece::Attribute *const type = place ? place.element().attribute("Type") : nullptr;
    if (type == nullptr) {
        return false;
    }
    const QString name = type->value.section('/', -1);
    const QStringList values = {Namespaces::strictLinks() + '/' + name,
                                Namespaces::transitionalLinks() + '/' + name,
                                "urn:types/" + name,
                                type->value + 's',
                                type->value.toLower(),
                                ' ' + type->value,
                                "",
                                Namespaces::transitionalLinks() + "/chartsheet",
                                Namespaces::transitionalLinks() + "/worksheet",
                                Namespaces::transitionalLinks() + "/theme"};
    type->value = dice->pick(values);
    return true;
}

bool makeExternal(DicedWorkbook *workbook, Dice *dice)
{
    static const QStringList modes = {"External", "External", "Internal", "external", "", "x"};
    const Place place = pickLink(workbook, dice);
    if (!place) {
        return false;
    }
    place.element().give("TargetMode", dice->pick(modes));
    return true;
}

bool doubleLink(DicedWorkbook *workbook, Dice *dice)
{
    const Place place = pickLink(workbook, dice);
    if (!place) {
        return false;
    }
    XmlPiece copy = place.element();
    XmlPiece::Attribute *const changed =
        pickAttribute({place.part, place.parent, place.index}, dice);
    if (changed == nullptr) {
        return false;
    }
    if (XmlPiece::Attribute *const same = copy.attribute(changed->name)) {
        static const QStringList values = {"worksheets/other.xml", "rIdSheet", "rIdOther", "new"};
        same->value = dice->pick(values);
    }
    insertAnywhere(place.parent, copy, dice);
    return true;
}

DicedWorkbook::Part *pickPart(DicedWorkbook *workbook, Dice *dice)
{
    return &workbook->parts[dice->below(workbook->parts.size())];
}

bool dropPart(DicedWorkbook *workbook, Dice *dice)
{
    if (workbook->parts.size() < 2) {
        return false;
    }
    workbook->parts.removeAt(dice->below(workbook->parts.size()));
    return true;
}

bool renamePart(DicedWorkbook *workbook, Dice *dice)
{
    DicedWorkbook::Part *const part = pickPart(workbook, dice);
    const QString before = part->name;
    const QStringList names = {before.toUpper(), '/' + before, "x" + before,
                               before + 'x',     before + ' ', QString(before).replace('/', '\\'),
                               "./" + before,    before + '/', QString(before).replace("x", "%78")};
    part->name = dice->pick(names);
    return true;
}

bool doublePart(DicedWorkbook *workbook, Dice *dice)
{
    DicedWorkbook::Part copy = *pickPart(workbook, dice);
    const DicedWorkbook::Part *const other = pickPart(workbook, dice);
    const QStringList names = {copy.name, copy.name.toUpper(), other->name};
    copy.name = dice->pick(names);
    workbook->parts.insert(dice->below(workbook->parts.size() + 1), copy);
    return true;
}

bool swapParts(DicedWorkbook *workbook, Dice *dice)
{
    DicedWorkbook::Part *const first = pickPart(workbook, dice);
    DicedWorkbook::Part *const second = pickPart(workbook, dice);
    std::swap(first->name, second->name);
    return first != second;
}

bool differInName(DicedWorkbook *workbook, Dice *dice)
{
    DicedWorkbook::Part *const part = pickPart(workbook, dice);
    const QByteArray before = part->name.toUtf8();
    // Who reads from the start may take what nobody else reads for a part of that name.
    const bool isRead = part->role != Role::Unread && part->role != Role::OtherSheet;
    const QVector<QByteArray> names = {
        before + QByteArray(1, '\0'), before + QByteArray(1, '\0') + "x", "x" + before,
        before.toUpper(), isRead ? pickPart(workbook, dice)->name.toUtf8() : QByteArray("other")};
    (dice->chance(50) ? part->entry.name : part->entry.localName) = dice->pick(names);
    if (dice->chance(20)) {
        part->entry.localName = part->entry.name;
    }
    return true;
}

bool addUnicodePath(DicedWorkbook *workbook, Dice *dice)
{
    DicedWorkbook::Part *const part = pickPart(workbook, dice);
    const QByteArray name = part->name.toUtf8();
    const QByteArray path = dice->chance(60) ? pickPart(workbook, dice)->name.toUtf8() : name;
    QByteArray field(9, '\0');
    const auto sum =
        quint32(crc32(0, reinterpret_cast<const Bytef *>(name.constData()), uInt(name.size())));
    qToLittleEndian<quint16>(0x7075, field.data());
    qToLittleEndian(quint16(path.size() + 5), field.data() + 2);
    field[4] = 1;
    qToLittleEndian(sum, field.data() + 5);
    part->entry.centralExtra = field + path;
    if (dice->chance(50)) {
        part->entry.localExtra = part->entry.centralExtra;
    }
    return true;
}

bool breakEntry(DicedWorkbook *workbook, Dice *dice)
{
    ArchiveEntry &entry = pickPart(workbook, dice)->entry;
    static const QVector<quint32> errors = {1, 2, 0xffffffff, 100};
    const quint32 error = dice->pick(errors);
    switch (dice->below(8)) {
    case 0:
        entry.checksumError = error;
        break;
    case 1:
        entry.sizeError = error;
        break;
    case 2:
        entry.packedSizeError = error;
        break;
    case 3:
        entry.offsetError = error;
        break;
    case 4:
        entry.localChecksumError = error;
        break;
    case 5:
        entry.centralFlags = quint16(dice->chance(50) ? 1 : 8);
        break;
    case 6:
        entry.methodError = quint16(error);
        break;
    default:
        entry.unlisted = true;
    }
    return true;
}

bool breakEnd(DicedWorkbook *workbook, Dice *dice)
{
    Archive &archive = workbook->archive;
    const QByteArray junk = dice->chance(50) ? QByteArray("junk") : QByteArray("PK\5\6 not an end");
    switch (dice->below(8)) {
    case 0:
        archive.before = junk;
        break;
    case 1:
        archive.beforeDirectory = junk;
        break;
    case 2:
        archive.afterDirectory = junk;
        break;
    case 3:
        archive.comment = junk;
        break;
    case 4:
        archive.after = junk;
        break;
    case 5:
        archive.countError = dice->chance(50) ? 1 : 0xffff;
        break;
    case 6:
        archive.directoryOffsetError = dice->chance(50) ? 1 : 0xffffffff;
        break;
    default:
        archive.directorySizeError = dice->chance(50) ? 1 : 0xffffffff;
    }
    return true;
}

bool addArchive(DicedWorkbook *workbook, Dice *dice)
{
    Dice otherDice(unsigned(dice->below(1 << 30)));
    const QByteArray other = DicedWorkbook(&otherDice).bytes(&otherDice);
    switch (dice->below(3)) {
    case 0:
        workbook->archive.before = other;
        break;
    case 1:
        workbook->archive.after = other;
        break;
    default:
        workbook->archive.comment = other;
    }
    return true;
}

bool declareWrongEncoding(DicedWorkbook *workbook, Dice *dice)
{
    static const QStringList names = {"UTF-16",   "ISO-8859-1",   "UTF-8",    "utf8",
                                      "us-ascii", "windows-1250", "UTF-16LE", "x"};
    pickPart(workbook, dice)->style.wrongEncoding = dice->pick(names);
    return true;
}

} // namespace

const QVector<Change> &packageChanges()
{
    static const QVector<Change> changes = {
        {"target altered", &alterTarget},     {"type of a relationship altered", &alterType},
        {"mode of a target", &makeExternal},  {"relationship doubled", &doubleLink},
        {"part dropped", &dropPart},          {"part renamed", &renamePart},
        {"part doubled", &doublePart},        {"parts swapped", &swapParts},
        {"names of an entry", &differInName}, {"Unicode path", &addUnicodePath},
        {"entry broken", &breakEntry},        {"end of the archive broken", &breakEnd},
        {"second archive", &addArchive},      {"wrong encoding", &declareWrongEncoding},
    };
    return changes;
}
