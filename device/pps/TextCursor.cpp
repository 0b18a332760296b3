// SPDX-License-Identifier: Apache-2.0
#include "TextCursor.h"

namespace device {

namespace {

uint64_t bitOf(std::string_view name)
{
    if (name.empty())
        return 1;
    const auto front = static_cast<uint8_t>(name.front());
    const auto back = static_cast<uint8_t>(name.back());
    return uint64_t(1) << ((name.size() * 5 + front + back * 3u) & 63);
}

} // namespace

bool TextCursor::begin()
{
    m_trails.clear();
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
    if (!isContainer(node))
        return false;
    m_container = node;
    m_element = first(node);
    return true;
}

bool TextCursor::isContainer(Node node) const
{
    if (node.document == 0)
        return node.place < text.objects().size();
    if (node.document > text.documentCount() || node.place == 0)
        return false;
    const JsonTape words = tape(node.document);
    return node.place < words.size() && words.isContainer(node.place);
}

bool TextCursor::isObject(Node container) const
{
    return container.document == 0 || tape(container.document).type(container.place) == '{';
}

size_t TextCursor::end(Node container) const
{
    if (container.document != 0)
        return tape(container.document).lastOf(container.place);
    const size_t attributes = text.objects()[container.place].attributeCount;
    return container.place == 0 ? attributes + text.objects().size() - 1 : attributes;
}

size_t TextCursor::next(Node container, size_t element) const
{
    if (container.document == 0)
        return element + 1;
    const JsonTape words = tape(container.document);
    return words.after(words.type(container.place) == '{' ? element + 1 : element);
}

Value TextCursor::valueAt(Node container, size_t element) const
{
    if (container.document != 0)
        return {Value::OnTape, {container.document, isObject(container) ? element + 1 : element}, nullptr};
    const AttributeText::Object& object = text.objects()[container.place];
    if (element >= object.attributeCount)
        return {Value::Object, {0, element - object.attributeCount + 1}, nullptr};
    const AttributeText::Attribute& attribute = text.attributes()[object.firstAttribute + element];
    if (attribute.document != 0)
        return {Value::OnTape, {attribute.document, JsonTape::top}, nullptr};
    return {Value::InText, {}, &attribute};
}

std::string_view TextCursor::nameAt(Node container, size_t element) const
{
    if (container.document != 0)
        return tape(container.document).string(element);
    const AttributeText::Object& object = text.objects()[container.place];
    if (element >= object.attributeCount)
        return text.objects()[element - object.attributeCount + 1].name;
    return text.attributes()[object.firstAttribute + element].name;
}

std::string_view TextCursor::currentName() const
{
    if (m_element == end(m_container) || !isObject(m_container))
        return {};
    return nameAt(m_container, m_element);
}

size_t TextCursor::count() const
{
    return m_container.document == 0 ? end(m_container) : tape(m_container.document).countOf(m_container.place);
}

// Whether `inner` is `outer` or lies within it.
bool TextCursor::contains(Node outer, Node inner) const
{
    if (outer == inner || outer == Node())
        return true;
    if (outer.document == 0) {
        const AttributeText::Object& object = text.objects()[outer.place];
        return inner.document >= object.firstDocument && inner.document < object.endDocument;
    }
    return outer.document == inner.document && outer.place < inner.place &&
           inner.place < tape(outer.document).after(outer.place);
}

TextCursor::Trail& TextCursor::trail()
{
    while (!m_trails.empty() && !contains(m_trails.back().container, m_container))
        m_trails.pop_back();
    if (m_trails.empty() || !(m_trails.back().container == m_container)) {
        const size_t start = first(m_container);
        m_trails.push_back({m_container, start, 0, start, 0});
    }
    return m_trails.back();
}

bool TextCursor::moveToIndex(size_t index)
{
    if (index >= count())
        return false;
    if (m_container.document == 0) {
        m_element = index;
        return true;
    }
    Trail& way = trail();
    if (index < way.index) {
        way.index = 0;
        way.indexed = first(m_container);
    }
    for (; way.index < index; ++way.index)
        way.indexed = next(m_container, way.indexed);
    m_element = way.indexed;
    return true;
}

Value TextCursor::find(std::string_view name)
{
    if (!isObject(m_container))
        return {};
    Trail& way = trail();
    const uint64_t bit = bitOf(name);
    if (way.passed & bit) {
        for (size_t element = first(m_container); element != way.found; element = next(m_container, element)) {
            if (nameAt(m_container, element) == name)
                return valueAt(m_container, element);
        }
    }
    uint64_t passed = way.passed;
    const size_t last = end(m_container);
    for (size_t element = way.found; element != last; element = next(m_container, element)) {
        const std::string_view here = nameAt(m_container, element);
        passed |= bitOf(here);
        if (here == name) {
            way.found = next(m_container, element);
            way.passed = passed;
            return valueAt(m_container, element);
        }
    }
    return {};
}

bool TextCursor::parent(Node* parent, size_t* element) const
{
    if (m_container == Node())
        return false;
    // Down from the root, each time into the element in which the container lies.
    for (Node node;;) {
        for (size_t i = first(node);; i = next(node, i)) {
            if (i == end(node))
                return false;
            const Value value = valueAt(node, i);
            if (value.kind == Value::InText || !isContainer(value.node) || !contains(value.node, m_container))
                continue;
            if (value.node == m_container) {
                *parent = node;
                *element = i;
                return true;
            }
            node = value.node;
            break;
        }
    }
}

} // namespace device
