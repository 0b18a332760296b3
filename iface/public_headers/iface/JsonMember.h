// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

#include <QtCore/QString>

#include <cstdint>
#include <string_view>

namespace iface {

/// A member of an object as a visitor meets it: its name, and its value if that is a text, a whole number or a bool.
/// Refers to the message. Reading answers whether the value is of the type asked for, and touches the argument only
/// then.
class ZEL_EXPORT JsonMember
{
public:
    static JsonMember ofText(std::string_view name, std::string_view utf8) { return {name, Text, utf8, 0}; }
    static JsonMember ofInteger(std::string_view name, std::int64_t value) { return {name, Integer, {}, value}; }
    static JsonMember ofBool(std::string_view name, bool value) { return {name, Bool, {}, value ? 1 : 0}; }
    static JsonMember ofAnother(std::string_view name) { return {name, Another, {}, 0}; }

    std::string_view name() const { return m_name; }

    bool read(int& value) const;
    bool read(bool& value) const;
    /// A string that has this text already is left as it is: copies of it go on sharing their memory.
    bool read(QString& value) const;
    /// The text as it stands in the message, in UTF-8; good as long as that.
    bool read(std::string_view& utf8) const;

private:
    enum Type { Another, Bool, Integer, Text };

    JsonMember(std::string_view name, Type type, std::string_view text, std::int64_t number)
        : m_name(name)
        , m_text(text)
        , m_number(number)
        , m_type(type)
    {
    }

    std::string_view m_name;
    std::string_view m_text;
    std::int64_t m_number;
    Type m_type;
};

/// Gets the members of an object one after the other, in the order in which they stand. A name may come twice; readers
/// that ask by name take the first.
class ZEL_EXPORT JsonMemberVisitor
{
public:
    virtual void member(const JsonMember& member) = 0;

protected:
    ~JsonMemberVisitor() = default;
};

} // namespace iface
