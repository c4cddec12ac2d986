// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/reading/differential/plainreaders.h"

#include <algorithm>
#include <cmath>

#include <QDateTime>
#include <QLocale>
#include <QRegularExpression>
#include <QSet>
#include <QUrl>

#include "xlsx/reading/differential/archive.h"
#include "xlsx/reading/differential/namespaces.h"
#include "xlsx/reading/differential/plainxml.h"

namespace
{

using Elements = std::vector<const PlainElement *>;

const QString noMoment = "########";

// What nobody can know; it ends the reading.
struct Unclear {
    QString why;
};

void require(bool holds, const char *why, const QString &detail = {})
{
    if (!holds) {
        throw Unclear{why + (' ' + detail)};
    }
}

// How a reader finds the parts, and what it looks for in them.
class Way
{
public:
    virtual ~Way() = default;
    virtual ArchiveParts unpacked(const QByteArray &file) const = 0;
    /// The first element of \p part, which has to be \p name.
    virtual PlainPart root(const QByteArray &part, const char *name) const = 0;
    virtual Elements elements(const PlainElement &in, const char *name) const = 0;
    /// Null without such an attribute.
    virtual QString attribute(const PlainElement &of, const char *name) const = 0;
    virtual QString link(const PlainElement &of) const = 0;
    virtual QString characters(const PlainElement &of) const = 0;
    virtual QString kindOf(const QString &type) const = 0;
    /// Whether \p child of an item or a run may hold a part of its text.
    virtual bool mayHoldText(const PlainElement &in, const PlainElement &child,
                             bool isRun) const = 0;
    /// The texts directly in an item or a run.
    virtual Elements textsIn(const PlainElement &in) const = 0;
};

class LocalNames : public Way
{
public:
    explicit LocalNames(bool resolved) : m_resolved(resolved) { }

    ArchiveParts unpacked(const QByteArray &file) const override { return unpackedFromStart(file); }

    PlainPart root(const QByteArray &part, const char *name) const override
    {
        const PlainPart parsed = parsedXml(part);
        require(!parsed->unclear, "no XML");
        require(parsed->name == name, "no", name);
        return m_resolved ? withoutCompatibility(parsed) : parsed;
    }

    Elements elements(const PlainElement &in, const char *name) const override
    {
        Elements found;
        collect(in, name, &found);
        return found;
    }

    QString attribute(const PlainElement &of, const char *name) const override
    {
        QString value;
        for (const PlainElement::Attribute &given : of.attributes) {
            if (given.name == name && given.space != Namespaces::xml()) {
                require(value.isNull() || value == given.value, "two attributes", name);
                value = given.value.isNull() ? QString("") : given.value;
            }
        }
        return value;
    }

    QString link(const PlainElement &of) const override { return attribute(of, "id"); }

    QString characters(const PlainElement &of) const override
    {
        require(!of.unclear, "markup for compatibility");
        QString all = of.texts.first();
        for (std::size_t i = 0; i < of.children.size(); ++i) {
            all += characters(of.children.at(i)) + of.texts.at(int(i) + 1);
        }
        return all;
    }

    QString kindOf(const QString &type) const override { return type.section('/', -1); }

    bool mayHoldText(const PlainElement & /*in*/, const PlainElement &child,
                     bool /*isRun*/) const override
    {
        return !isPassed(child);
    }

    Elements textsIn(const PlainElement &in) const override
    {
        Elements found;
        for (const PlainElement &child : in.children) {
            if (child.name == "t") {
                found.push_back(&child);
            }
        }
        return found;
    }

private:
    static void collect(const PlainElement &in, const char *name, Elements *found)
    {
        require(!in.unclear, "markup for compatibility");
        for (const PlainElement &child : in.children) {
            if (child.name == name) {
                found->push_back(&child);
            }
            if (!isPassed(child)) {
                collect(child, name, found);
            }
        }
    }

    static bool isPassed(const PlainElement &element)
    {
        static const QSet<QString> names = {"extLst", "rPr", "rPh", "phoneticPr"};
        return names.contains(element.name);
    }

    bool m_resolved;
};

class ByNamespaces : public Way
{
public:
    ArchiveParts unpacked(const QByteArray &file) const override
    {
        return unpackedFromDirectory(file);
    }

    PlainPart root(const QByteArray &part, const char *name) const override
    {
        const PlainPart parsed = parsedXml(part);
        require(!parsed->unclear, "no XML");
        const bool lists =
            parsed->name == "Relationships" && parsed->space == Namespaces::package();
        require(parsed->name == name
                    && (lists || parsed->space == Namespaces::transitional()
                        || parsed->space == Namespaces::strict()),
                "no", name);
        return withoutCompatibility(parsed);
    }

    Elements elements(const PlainElement &in, const char *name) const override
    {
        require(!in.unclear, "markup for compatibility");
        Elements found;
        for (const PlainElement &child : in.children) {
            if (child.name == name && child.space == in.space) {
                found.push_back(&child);
            }
        }
        return found;
    }

    QString attribute(const PlainElement &of, const char *name) const override
    {
        return of.attribute({}, name);
    }

    QString link(const PlainElement &of) const override
    {
        const QString transitional = of.attribute(Namespaces::transitionalLinks(), "id");
        return transitional.isNull() ? of.attribute(Namespaces::strictLinks(), "id") : transitional;
    }

    QString characters(const PlainElement &of) const override
    {
        require(!of.unclear, "markup for compatibility");
        return of.texts.join(QString());
    }

    QString kindOf(const QString &type) const override
    {
        const QString folder = type.section('/', 0, -2);
        const bool known = folder == Namespaces::transitionalLinks()
            || folder == Namespaces::strictLinks()
            || folder == "http://schemas.microsoft.com/office/2006/relationships";
        return known ? type.section('/', -1) : QString();
    }

    bool mayHoldText(const PlainElement &in, const PlainElement &child, bool isRun) const override
    {
        return !isRun && child.name == "r" && child.space == in.space;
    }

    Elements textsIn(const PlainElement &in) const override { return elements(in, "t"); }
};

// What a format of dates shows for a number of days.
QString momentOf(double days, bool since1904)
{
    const QDate last(9999, 12, 31);
    // The first of March 1900 is day 61, though the days before count from the day 0 before them.
    const QDate zero = since1904 ? QDate(1904, 1, 1)
        : days < 61              ? QDate(1899, 12, 31)
                                 : QDate(1899, 12, 30);
    if (days < 0 || days >= double(zero.daysTo(last) + 1)) {
        return noMoment;
    }
    const double whole = std::floor(days);
    const QTime time = QTime(0, 0).addMSecs(int(std::lround((days - whole) * 86'400'000.0)));
    if (days < 1) {
        return time.toString("HH:mm:ss");
    }
    return zero.addDays(qint64(whole)).toString("yyyy-MM-dd")
        + (time == QTime(0, 0) ? QString() : time.toString("THH:mm:ss"));
}

// The codes that the workbooks of the test hold, and whether they show dates.
const std::map<QString, bool> &formatCodes()
{
    static const std::map<QString, bool> codes = {
        {"d.m.yyyy", true},  {"yyyy-mm-dd", true},
        {"[h]:mm", true},    {"0.0", false},
        {"General", false},  {"0.0 \"mmol/mol\"", false},
        {"#,##0.00", false}, {"[Red]0;\"day\" 0.0", false},
        {"mmm yy", true},
    };
    return codes;
}

// One reading of one file.
class Reader
{
public:
    Reader(const Way &way, const QByteArray &file) : m_way(way), m_parts(way.unpacked(file)) { }
    PlainCells read();

private:
    struct Link {
        QString kind;
        QString part;
        bool external = false;
    };
    struct Format {
        bool known = false;
        bool isDate = false;
    };

    QByteArray part(const QString &name) const;
    void readLinks(const QString &source);
    QString linkedPart(const QString &kind) const;
    Link linkOf(const QString &id) const;
    QString sheetPart(const PlainElement &workbook) const;
    void readSwitches(const PlainElement &workbook);
    void readTexts();
    void readFormats();
    void readRow(const PlainElement &row);
    void readCell(const PlainElement &cell);
    QString richText(const PlainElement &item, bool isRun) const;
    void keep(const PlainCell &cell);
    void keepText(const QString &text);
    void keepNumber(const QString &text, const PlainElement &cell);
    void keepMoment(const QString &iso);
    void keepTruth(const QString &text);
    void keepError(const QString &text);

    const Way &m_way;
    ArchiveParts m_parts;
    std::multimap<QString, Link> m_links;
    QVector<Link> m_allLinks;
    bool m_since1904 = false;
    QStringList m_texts;
    bool m_hasFormats = false;
    QVector<Format> m_formats;
    int m_row = 0;
    int m_column = 0;
    PlainCells m_cells;
};

int wholeNumber(const QString &text, int least)
{
    bool known = false;
    const int number = text.trimmed().toInt(&known);
    require(known && number >= least, "no index:", text);
    return number;
}

QString plainPath(QString path)
{
    path = QUrl::fromPercentEncoding(path.toUtf8()).replace('\\', '/');
    while (path.startsWith('/')) {
        path.remove(0, 1);
    }
    return path.toLower();
}

QString decoded(const QString &text)
{
    static const QRegularExpression escape("_x([0-9A-Fa-f]{4})_");
    QString plain;
    int at = 0;
    auto matches = escape.globalMatch(text);
    while (matches.hasNext()) {
        const auto match = matches.next();
        plain += text.mid(at, int(match.capturedStart()) - at);
        plain += QChar(ushort(match.captured(1).toUInt(nullptr, 16)));
        at = int(match.capturedEnd());
    }
    plain += text.mid(at);
    return plain.replace("\r\n", "\n").replace('\r', '\n');
}

QString withoutBlanks(const QString &text)
{
    static const QRegularExpression around("^[ \t\r\n]+|[ \t\r\n]+$");
    return QString(text).remove(around);
}

QByteArray Reader::part(const QString &name) const
{
    QByteArray content;
    int found = 0;
    for (const auto &known : m_parts.parts) {
        if (plainPath(QString::fromUtf8(known.first)) == plainPath(name)) {
            content = known.second;
            ++found;
        }
    }
    require(found < 2, "two parts", name);
    return found == 0 ? QByteArray() : content.isNull() ? QByteArray("") : content;
}

void Reader::readLinks(const QString &source)
{
    const QString folder = source.section('/', 0, -2, QString::SectionIncludeTrailingSep);
    const QByteArray xml = part(folder + "_rels/" + source.section('/', -1) + ".rels");
    require(!xml.isNull(), "no relationships");
    const PlainPart root = m_way.root(xml, "Relationships");
    m_links.clear();
    m_allLinks.clear();
    for (const PlainElement *const element : m_way.elements(*root, "Relationship")) {
        const QString id = m_way.attribute(*element, "Id");
        QString target = m_way.attribute(*element, "Target").replace('\\', '/');
        target = target.startsWith('/') ? target.mid(1) : folder + target;
        QUrl url;
        url.setPath('/' + target);
        const Link link = {m_way.kindOf(m_way.attribute(*element, "Type")),
                           url.adjusted(QUrl::NormalizePathSegments).path().mid(1),
                           m_way.attribute(*element, "TargetMode") == "External"};
        m_links.insert({id, link});
        m_allLinks.append(link);
    }
}

// The one part of a kind; empty without one.
QString Reader::linkedPart(const QString &kind) const
{
    QString found;
    for (const Link &link : m_allLinks) {
        if (link.kind == kind) {
            require(!link.external, "external", kind);
            require(found.isEmpty() || plainPath(found) == plainPath(link.part), "two", kind);
            found = link.part;
        }
    }
    return found;
}

Reader::Link Reader::linkOf(const QString &id) const
{
    const auto found = m_links.equal_range(id);
    require(found.first != found.second && !id.isEmpty(), "sheet without a part");
    const Link &link = found.first->second;
    require(std::all_of(found.first, found.second,
                        [&link](const auto &other) {
                            return other.second.kind == link.kind && other.second.part == link.part
                                && other.second.external == link.external;
                        }),
            "two relationships", id);
    return link;
}

QString Reader::sheetPart(const PlainElement &workbook) const
{
    static const QSet<QString> others = {"chartsheet", "dialogsheet", "xlMacrosheet",
                                         "xlIntlMacrosheet"};
    const Elements lists = m_way.elements(workbook, "sheets");
    require(lists.size() == 1, "sheets");
    for (const bool hidden : {false, true}) {
        for (const PlainElement *const sheet : m_way.elements(*lists.front(), "sheet")) {
            const QString state = m_way.attribute(*sheet, "state");
            const QString id = m_way.link(*sheet);
            if ((state == "hidden" || state == "veryHidden") != hidden) {
                continue;
            }
            const Link link = linkOf(id);
            if (others.contains(link.kind)) {
                continue;
            }
            require(link.kind == "worksheet" && !link.external, "no worksheet");
            return link.part;
        }
    }
    throw Unclear{"no sheet"};
}

void Reader::readSwitches(const PlainElement &workbook)
{
    const Elements switches = m_way.elements(workbook, "workbookPr");
    require(switches.size() < 2, "two workbookPr");
    if (switches.empty()) {
        return;
    }
    const QString since = m_way.attribute(*switches.front(), "date1904");
    const QString value = withoutBlanks(since);
    m_since1904 = value == "1" || value == "true";
    require(m_since1904 || since.isNull() || value == "0" || value == "false", "date1904");
}

void Reader::readTexts()
{
    const QString name = linkedPart("sharedStrings");
    const QByteArray xml = name.isEmpty() ? QByteArray() : part(name);
    if (!xml.isNull()) {
        const PlainPart root = m_way.root(xml, "sst");
        for (const PlainElement *const item : m_way.elements(*root, "si")) {
            m_texts.append(decoded(richText(*item, false)));
        }
    }
}

void Reader::readFormats()
{
    const QString name = linkedPart("styles");
    const QByteArray xml = name.isEmpty() ? QByteArray() : part(name);
    if (xml.isNull()) {
        return;
    }
    const PlainPart root = m_way.root(xml, "styleSheet");
    std::map<int, Format> declared;
    for (const PlainElement *const list : m_way.elements(*root, "numFmts")) {
        for (const PlainElement *const format : m_way.elements(*list, "numFmt")) {
            const QString id = m_way.attribute(*format, "numFmtId");
            const auto code = formatCodes().find(m_way.attribute(*format, "formatCode"));
            if (id.isNull() || code == formatCodes().end()) {
                continue;
            }
            const int number = wholeNumber(id, 0);
            const auto same = declared.find(number);
            const bool clear = same == declared.end() || same->second.isDate == code->second;
            declared[number] = {clear, code->second};
        }
    }
    const Elements tables = m_way.elements(*root, "cellXfs");
    require(tables.size() < 2, "two cellXfs");
    m_hasFormats = !tables.empty();
    for (const PlainElement *const xf :
         m_hasFormats ? m_way.elements(*tables.front(), "xf") : Elements()) {
        const QString id = m_way.attribute(*xf, "numFmtId");
        const int number = id.isEmpty() ? 0 : wholeNumber(id, 0);
        const auto own = declared.find(number);
        const bool builtinDate = (number >= 14 && number <= 22) || (number >= 27 && number <= 36)
            || (number >= 45 && number <= 47) || (number >= 50 && number <= 58)
            || (number >= 71 && number <= 81);
        m_formats.append(own == declared.end() ? Format{number < 164, builtinDate} : own->second);
    }
}

// The text of an item or, inside of one, of a run.
QString Reader::richText(const PlainElement &item, bool isRun) const
{
    const Elements texts = m_way.textsIn(item);
    require(texts.size() < 2, "two texts");
    QString all;
    for (const PlainElement &child : item.children) {
        if (!texts.empty() && &child == texts.front()) {
            all += m_way.characters(child);
        } else if (m_way.mayHoldText(item, child, isRun)) {
            all += richText(child, true);
        }
    }
    require(!item.unclear, "markup for compatibility");
    return all;
}

void Reader::keep(const PlainCell &cell)
{
    const auto added = m_cells.insert({{m_row, m_column}, cell});
    require(added.second || added.first->second == cell, "cell with two contents");
}

void Reader::keepText(const QString &text)
{
    constexpr int longest = 32767;
    if (text.size() > longest) {
        keep({PlainCell::Text, 0.0, text.left(longest - 1) + QChar(0x2026)});
    } else if (!text.isEmpty()) {
        keep({PlainCell::Text, 0.0, text});
    }
}

void Reader::keepTruth(const QString &text)
{
    const QString value = withoutBlanks(text);
    require(QStringList({"0", "1", "true", "false"}).contains(value), "truth");
    keep({PlainCell::Truth, 0.0, value == "1" || value == "true" ? "true" : "false"});
}

void Reader::keepError(const QString &text)
{
    bool isNumber = false;
    text.toDouble(&isNumber);
    require(!isNumber, "error that is a number");
    keepText(decoded(text));
}

void Reader::keepNumber(const QString &text, const PlainElement &cell)
{
    static const QRegularExpression decimal(
        R"(\A[+-]?([0-9]+(\.[0-9]*)?|\.[0-9]+)([eE][+-]?[0-9]+)?\z)");
    const QString digits = withoutBlanks(text);
    if (digits.isEmpty()) {
        return;
    }
    require(decimal.match(digits).hasMatch(), "number");
    const double number = digits.toDouble();
    require(std::isfinite(number), "number");
    const QString named = m_way.attribute(cell, "s");
    const int index = named.isEmpty() ? 0 : wholeNumber(named, 0);
    const bool usual = index == 0 && m_formats.isEmpty();
    require(usual || (index < m_formats.size() && m_formats.at(index).known), "unknown format");
    if (!usual && m_formats.at(index).isDate) {
        const QString words = momentOf(number, m_since1904);
        keep({words == noMoment ? PlainCell::Text : PlainCell::Moment, 0.0, words});
    } else if (m_column == 1) {
        const bool shortened = digits.contains('e', Qt::CaseInsensitive);
        keepText(shortened ? QString::number(number, 'f', QLocale::FloatingPointShortest) : digits);
    } else {
        keep({PlainCell::Number, number, {}});
    }
}

void Reader::keepMoment(const QString &iso)
{
    static const QRegularExpression shape(R"(\A(?:([0-9]{4}-[0-9]{2}-[0-9]{2})(?:T(?!\z)|\z))?)"
                                          R"((?:([0-9]{2}:[0-9]{2})(:[0-9]{2})?(?:\.[0-9]+)?)"
                                          R"((?:Z|[+-][0-9]{2}:[0-9]{2})?)?\z)");
    const QString text = withoutBlanks(iso);
    if (text.isEmpty()) {
        return;
    }
    const auto match = shape.match(text);
    const QDate day = QDate::fromString(match.captured(1), "yyyy-MM-dd");
    const QString clock =
        match.captured(2) + (match.captured(3).isEmpty() ? QString(":00") : match.captured(3));
    const QTime time = QTime::fromString(clock, "HH:mm:ss");
    const bool hasDay = !match.captured(1).isEmpty();
    const bool hasTime = !match.captured(2).isEmpty();
    const QDate first = m_since1904 ? QDate(1904, 1, 1) : QDate(1900, 1, 1);
    const bool exists =
        match.hasMatch() && (!hasDay || day >= first) && (!hasTime || time.isValid());
    QString words = hasDay ? day.toString("yyyy-MM-dd") : QString();
    if (hasTime && (!hasDay || time != QTime(0, 0))) {
        words += time.toString(hasDay ? "THH:mm:ss" : "HH:mm:ss");
    }
    keep(exists ? PlainCell{PlainCell::Moment, 0.0, words}
                : PlainCell{PlainCell::Text, 0.0, noMoment});
}

void Reader::readCell(const PlainElement &cell)
{
    static const QRegularExpression reference(R"(\A([A-Za-z]{1,3})([0-9]{1,7})\z)");
    ++m_column;
    if (const QString place = m_way.attribute(cell, "r"); !place.isNull()) {
        const auto match = reference.match(place);
        require(match.hasMatch() && match.captured(2).toInt() == m_row, "reference", place);
        m_column = 0;
        for (const QChar letter : match.captured(1).toUpper()) {
            m_column = m_column * 26 + letter.unicode() - 'A' + 1;
        }
    }
    require(m_column <= 16384, "column");
    const Elements values = m_way.elements(cell, "v");
    const Elements texts = m_way.elements(cell, "is");
    const QString given = m_way.attribute(cell, "t");
    const QString type = given.isNull() ? "n" : given;
    require(values.size() < 2 && texts.size() < 2, "two contents");
    require(texts.empty() || type == "inlineStr", "inline text under another type");
    const QString value = values.empty() ? QString() : m_way.characters(*values.front());
    if (type == "inlineStr") {
        keepText(texts.empty() ? decoded(value) : decoded(richText(*texts.front(), false)));
    } else if (type == "str") {
        keepText(decoded(value));
    } else if (type == "n") {
        keepNumber(value, cell);
    } else if (type == "d") {
        keepMoment(value);
    } else if (type == "s" && !value.isEmpty()) {
        const int index = wholeNumber(value, 0);
        require(index < m_texts.size(), "index of a text");
        keepText(m_texts.at(index));
    } else if (type == "b" && !value.isEmpty()) {
        keepTruth(value);
    } else if (type == "e") {
        keepError(value);
    } else {
        require(type == "s" || type == "b", "type", type);
    }
}

void Reader::readRow(const PlainElement &row)
{
    const QString number = m_way.attribute(row, "r");
    m_row = number.isNull() ? m_row + 1 : wholeNumber(number, 1);
    require(m_row <= 1048576, "row");
    m_column = 0;
    for (const PlainElement *const cell : m_way.elements(row, "c")) {
        readCell(*cell);
    }
}

PlainCells Reader::read()
{
    require(m_parts.clear, "no archive");
    readLinks({});
    const QString workbookPart = linkedPart("officeDocument");
    const PlainPart workbook = m_way.root(part(workbookPart), "workbook");
    readSwitches(*workbook);
    readLinks(workbookPart);
    const QString name = sheetPart(*workbook);
    readFormats();
    readTexts();
    const PlainPart sheet = m_way.root(part(name), "worksheet");
    const Elements data = m_way.elements(*sheet, "sheetData");
    require(data.size() == 1, "sheetData");
    for (const PlainElement *const row : m_way.elements(*data.front(), "row")) {
        readRow(*row);
    }
    return m_cells;
}

PlainReading reading(const Way &way, const QByteArray &file)
{
    try {
        return {{}, Reader(way, file).read()};
    } catch (const Unclear &unclear) {
        return {unclear.why, {}};
    }
}

} // namespace

QString PlainCell::toString() const
{
    static const QStringList kinds = {"number ", "text ", "truth ", "moment "};
    return kinds.at(kind) + (kind == Number ? QString::number(number, 'g', 17) : words);
}

namespace PlainReaders
{

PlainReading byLocalNames(const QByteArray &file, bool resolved)
{
    return reading(LocalNames(resolved), file);
}

PlainReading byNamespaces(const QByteArray &file)
{
    return reading(ByNamespaces(), file);
}

} // namespace PlainReaders
