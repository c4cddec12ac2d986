// SPDX-License-Identifier: GPL-3.0-or-later
#include "xlsx/writing/sharedstringswriter.h"

#include "xlsx/celltext.h"
#include "xlsx/writing/zipwriter.h"

namespace
{

// Without the attribute some readers drop blanks at the ends and join lines.
bool needsPreserving(const QByteArray &text)
{
    return text.startsWith(' ') || text.endsWith(' ') || text.contains('\n') || text.contains('\t');
}

QByteArray item(const QString &text)
{
    const QByteArray encoded = CellText::encode(text);
    return (needsPreserving(encoded) ? R"(<si><t xml:space="preserve">)" : "<si><t>") + encoded
        + "</t></si>";
}

const QByteArray tail = QByteArrayLiteral("</sst>");

} // namespace

int SharedStringsWriter::enter(const QString &text)
{
    ++m_uses;
    const auto found = m_indexes.constFind(text);
    if (found != m_indexes.constEnd()) {
        return *found;
    }
    const int index = int(m_texts.size());
    m_indexes.insert(text, index);
    m_texts.append(text);
    return index;
}

QByteArray SharedStringsWriter::head() const
{
    return R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)"
           R"(<sst xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main" count=")"
        + QByteArray::number(m_uses) + R"(" uniqueCount=")" + QByteArray::number(m_texts.size())
        + R"(">)";
}

qint64 SharedStringsWriter::size() const
{
    qint64 bytes = head().size() + tail.size();
    for (const QString &text : m_texts) {
        bytes += item(text).size();
    }
    return bytes;
}

bool SharedStringsWriter::next(QByteArray *xml)
{
    if (m_written == m_texts.size()) {
        return false;
    }
    xml->resize(0);
    if (m_written < 0) {
        m_written = 0;
        xml->append(head());
    }
    while (m_written < m_texts.size() && xml->size() < ZipWriter::pieceSize) {
        xml->append(item(m_texts.at(m_written)));
        ++m_written;
    }
    if (m_written == m_texts.size()) {
        xml->append(tail);
    }
    return true;
}
