// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArrayView>

/// One step of an input. Bytes that are not there read as 0, so every line is a step and a change of one line leaves
/// the others what they were.
class Line
{
public:
    explicit Line(QByteArrayView text)
        : m_rest(text)
    {
    }

    bool atEnd() const { return m_rest.isEmpty(); }
    char take()
    {
        const char first = atEnd() ? '\0' : m_rest.front();
        m_rest = m_rest.sliced(atEnd() ? 0 : 1);
        return first;
    }
    /// What there is before the next blank, which is taken as well.
    Line takeWord()
    {
        const qsizetype end = m_rest.indexOf(' ');
        const Line word(end < 0 ? m_rest : m_rest.first(end));
        m_rest = end < 0 ? QByteArrayView() : m_rest.sliced(end + 1);
        return word;
    }
    QByteArrayView rest() const { return m_rest; }

private:
    QByteArrayView m_rest;
};

/// An input: a line a step.
class Script
{
public:
    explicit Script(QByteArrayView text)
        : m_rest(text)
    {
    }

    bool atEnd() const { return m_rest.isEmpty(); }
    Line next()
    {
        const qsizetype end = m_rest.indexOf('\n');
        const Line line(end < 0 ? m_rest : m_rest.first(end));
        m_rest = end < 0 ? QByteArrayView() : m_rest.sliced(end + 1);
        return line;
    }

private:
    QByteArrayView m_rest;
};

/// The entry of a table that has this key; for a key that none has, some entry.
template <typename Table>
const auto& entryFor(const Table& table, char key)
{
    for (const auto& entry : table) {
        if (entry.key == key)
            return entry;
    }
    return table[static_cast<unsigned char>(key) % std::size(table)];
}
