// SPDX-License-Identifier: Apache-2.0
#include "TextCursor.h"

#include <cstring>

namespace device {

namespace {

template <typename Word>
bool startsAlike(const char* a, const char* b)
{
    Word left;
    Word right;
    std::memcpy(&left, a, sizeof left);
    std::memcpy(&right, b, sizeof right);
    return left == right;
}

// Names are short, and the call of a function costs more than comparing one.
bool isSame(std::string_view a, std::string_view b)
{
    const size_t size = a.size();
    if (size != b.size())
        return false;
    if (size > 16)
        return std::memcmp(a.data(), b.data(), size) == 0;
    // The two halves, which may overlap.
    const auto halves = [&](auto word) {
        using Word = decltype(word);
        const size_t second = size - sizeof word;
        return startsAlike<Word>(a.data(), b.data()) && startsAlike<Word>(a.data() + second, b.data() + second);
    };
    if (size >= 8)
        return halves(uint64_t());
    if (size >= 4)
        return halves(uint32_t());
    return size < 2 ? size == 0 || a[0] == b[0] : halves(uint16_t());
}

} // namespace

bool TextCursor::begin()
{
    m_trails.clear();
    m_trail = nullptr;
    m_container = Node();
    m_element = first(m_container);
    if (!Node{0, text.objects().size()}.canBePacked())
        return false;
    for (uint32_t i = 1; i <= text.documentCount(); ++i) {
        if (!Node{i, tape(i).size()}.canBePacked())
            return false;
    }
    return true;
}

bool TextCursor::enter(Node node)
{
    if (node == m_container) {
        m_element = first(node);
        return true;
    }
    if (node.document == 0) {
        if (node.place >= text.objects().size())
            return false;
    } else {
        if (node.document > text.documentCount() || node.place == 0)
            return false;
        const JsonTape words = tape(node.document);
        if (node.place >= words.size() || !words.isContainer(node.place))
            return false;
        m_words = words;
    }
    m_container = node;
    m_element = first(node);
    m_trail = nullptr;
    return true;
}

size_t TextCursor::end(Node container) const
{
    if (container.document != 0)
        return tape(container.document).lastOf(container.place);
    const size_t attributes = text.objects()[container.place].attributeCount;
    return container.place == 0 ? attributes + text.objects().size() - 1 : attributes;
}

Value TextCursor::valueInText(size_t element) const
{
    const AttributeText::Object& object = text.objects()[m_container.place];
    if (element >= object.attributeCount)
        return {Value::Object, {0, element - object.attributeCount + 1}, nullptr};
    const AttributeText::Attribute& attribute = text.attributes()[object.firstAttribute + element];
    if (attribute.document != 0)
        return {Value::OnTape, {attribute.document, JsonTape::top}, nullptr};
    return {Value::InText, {}, &attribute};
}

std::string_view TextCursor::nameInText(size_t element) const
{
    const AttributeText::Object& object = text.objects()[m_container.place];
    if (element >= object.attributeCount)
        return text.objects()[element - object.attributeCount + 1].name;
    return text.attributes()[object.firstAttribute + element].name;
}

Value TextCursor::current() const
{
    if (isOnTape())
        return onTape(currentOnTape());
    return m_element == end(m_container) ? Value() : valueInText(m_element);
}

std::string_view TextCursor::currentName() const
{
    if (m_element == end(m_container))
        return {};
    if (!isOnTape())
        return nameInText(m_element);
    return m_words.type(m_container.place) == '{' ? m_words.string(m_element) : std::string_view();
}

size_t TextCursor::count() const
{
    return isOnTape() ? m_words.countOf(m_container.place) : end(m_container);
}

// Whether `inner` is `outer`, which is on a tape, or lies within it.
bool TextCursor::contains(Node outer, Node inner) const
{
    return outer == inner || (outer.document == inner.document && outer.place < inner.place &&
                              inner.place < tape(outer.document).after(outer.place));
}

TextCursor::Trail& TextCursor::findTrail()
{
    while (!m_trails.empty() && !contains(m_trails.back().container, m_container))
        m_trails.pop_back();
    if (m_trails.empty() || !(m_trails.back().container == m_container)) {
        const size_t start = first(m_container);
        m_trails.push_back({m_container, end(m_container), start, NameFilter(), start, 0});
    }
    m_trail = &m_trails.back();
    return *m_trail;
}

bool TextCursor::moveToIndex(size_t index)
{
    if (index >= count())
        return false;
    if (!isOnTape()) {
        m_element = index;
        return true;
    }
    Trail& way = trail();
    if (index < way.index) {
        way.index = 0;
        way.indexed = first(m_container);
    }
    const size_t name = m_words.type(m_container.place) == '{' ? 1 : 0;
    for (; way.index < index; ++way.index)
        way.indexed = m_words.after(way.indexed + name);
    m_element = way.indexed;
    return true;
}

Value TextCursor::find(std::string_view name)
{
    return isOnTape() ? onTape(findOnTape(name)) : findInText(name);
}

Value TextCursor::findInText(std::string_view name) const
{
    const size_t last = end(m_container);
    for (size_t element = 0; element != last; ++element) {
        if (nameInText(element) == name)
            return valueInText(element);
    }
    return {};
}

size_t TextCursor::currentOnTape() const
{
    if (m_element == m_words.lastOf(m_container.place))
        return 0;
    return m_words.type(m_container.place) == '{' ? m_element + 1 : m_element;
}

size_t TextCursor::findOnTape(std::string_view name)
{
    if (m_words.type(m_container.place) != '{')
        return 0;
    Trail& way = trail();
    // Members are mostly asked for in the order in which they stand.
    const size_t element = way.found;
    if (element == way.end || !isSame(m_words.string(element), name) || way.passed.mayHold(name))
        return searchOnTape(name, way);
    way.passed.add(name);
    way.found = m_words.after(element + 1);
    return element + 1;
}

size_t TextCursor::searchOnTape(std::string_view name, Trail& way) const
{
    if (way.passed.mayHold(name)) {
        for (size_t element = m_container.place + 1; element != way.found; element = m_words.after(element + 1)) {
            if (isSame(m_words.string(element), name))
                return element + 1;
        }
    }
    NameFilter passed = way.passed;
    for (size_t element = way.found; element != way.end; element = m_words.after(element + 1)) {
        const std::string_view here = m_words.string(element);
        passed.add(here);
        if (isSame(here, name)) {
            way.found = m_words.after(element + 1);
            way.passed = passed;
            return element + 1;
        }
    }
    return 0;
}

} // namespace device
