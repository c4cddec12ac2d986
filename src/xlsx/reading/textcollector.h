// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

/// Collects the UTF-8 of one text piece by piece. It keeps more than CellText::decode leaves of any
/// text and drops the rest.
class TextCollector
{
public:
    // Reserved memory stays when the text is cleared.
    TextCollector() { m_utf8.reserve(usual); }

    void clear()
    {
        m_utf8.resize(0);
        m_hasText = false;
    }
    /// Before a text element; false if one stood there before in the same run.
    bool begin()
    {
        const bool first = !m_hasText;
        m_hasText = true;
        return first;
    }
    /// Before a run, which has a text element of its own.
    void beginRun() { m_hasText = false; }
    const QByteArray &utf8() const { return m_utf8; }

    void append(const char *data, int size)
    {
        m_utf8.append(data, qMin(size, bound - m_utf8.size()));
    }

private:
    // More than the longest text takes with each character as an escape of seven bytes.
    static constexpr int bound = 256 * 1024;
    static constexpr int usual = 256;

    QByteArray m_utf8;
    bool m_hasText = false;
};
