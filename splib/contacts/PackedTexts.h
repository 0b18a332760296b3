// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/JsonMember.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <algorithm>
#include <array>
#include <string_view>

namespace zelsplib {

/// Several texts, known by their numbers, that lie one after the other as they came, in UTF-8: there are very many
/// records with a dozen short texts each, most of which nobody ever reads. A text that was never set is a null one.
///
/// A value, as a string is one. What is no text, half of a surrogate pair, is kept as a question mark, as it is sent.
template <int count>
class PackedTexts
{
public:
    static constexpr int Count = count;

    PackedTexts() = default;
    /// Those without data are not there.
    explicit PackedTexts(const std::array<std::string_view, count>& texts)
    {
        int end = 0;
        for (int i = 0; i < count; ++i) {
            m_ends[i] = end += int(texts[i].size());
            m_there |= unsigned(texts[i].data() != nullptr) << i;
        }
        m_all = QByteArray(end, Qt::Uninitialized);
        char* to = m_all.data();
        for (const std::string_view text : texts) {
            if (!text.empty())
                to = std::copy(text.begin(), text.end(), to);
        }
    }

    /// All of them, as view() has them.
    std::array<std::string_view, count> views() const
    {
        std::array<std::string_view, count> texts;
        for (int i = 0; m_there != 0 && i < count; ++i)
            texts[i] = view(i);
        return texts;
    }
    /// Good until the next change. One that was never set is without data.
    std::string_view view(int number) const
    {
        return isThere(number) ? std::string_view(m_all.constData() + begin(number), std::size_t(sizeOf(number)))
                               : std::string_view();
    }
    /// Made anew each time.
    QString text(int number) const
    {
        QString text;
        if (isThere(number))
            iface::JsonMember::ofText({}, view(number)).read(text);
        return text;
    }
    void set(int number, const QString& text)
    {
        const QByteArray utf8 = text.toUtf8();
        const int growth = int(utf8.size()) - sizeOf(number);
        m_all.replace(begin(number), sizeOf(number), utf8);
        for (int i = number; i < count; ++i)
            m_ends[i] += growth;
        noteThere(number, !text.isNull());
    }

    /// As strings compare: one that is null equals one that is empty.
    friend bool operator==(const PackedTexts& a, const PackedTexts& b)
    {
        return a.m_ends == b.m_ends && a.m_all == b.m_all;
    }

private:
    int begin(int number) const { return number > 0 ? m_ends[number - 1] : 0; }
    int sizeOf(int number) const { return m_ends[number] - begin(number); }
    bool isThere(int number) const { return (m_there & 1U << number) != 0; }
    void noteThere(int number, bool isThere) { m_there = (m_there & ~(1U << number)) | unsigned(isThere) << number; }

    static_assert(count <= 32);
    QByteArray m_all;
    std::array<int, count> m_ends = {};
    unsigned m_there = 0; ///< one bit a text
};

} // namespace zelsplib
