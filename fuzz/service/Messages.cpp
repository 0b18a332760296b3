// SPDX-License-Identifier: Apache-2.0
#include "Messages.h"

#include <iterator>

namespace {

struct Entry
{
    char key;
    const char* text;
};

constexpr Entry messageTypes[] = {
    {'a', "listAll"},
    {'k', "listChunk"},
    {'e', "listElements"},
    {'+', "listAdd"},
    {'-', "listRemove"},
    {'~', "listChange"},
    {'w', "listWindow"},
    {'s', "stream"},
    {'n', "requestNewAvatarImage"},
    {'i', "requestNewProfileBoxImage"},
    {'p', "profileChangeResponse"},
    {'q', "requestEcoIdResponse"},
    {'t', "requestEcoIdStatusResponse"},
    {'v', "connectionInvitationReceived"},
    {'?', "unheardOf"},
};

/// The lists that the library follows, and the member that holds an element's id.
struct ListType
{
    char key;
    const char* name;
    const char* id;
};

constexpr ListType listTypes[] = {
    {'c', "platformContact", "userId"}, {'u', "platformUser", "userId"},     {'g', "global", "name"},
    {'i', "profileBoxItem", "itemId"},  {'b', "profileBoxImage", "imageId"}, {'?', "unheardOf", "id"},
};

constexpr Entry members[] = {
    {'u', "userId"},
    {'h', "handle"},
    {'p', "ppid"},
    {'v', "appVersion"},
    {'n', "displayName"},
    {'m', "personalMessage"},
    {'s', "currentStatus"},
    {'i', "avatarId"},
    {'y', "avatarMimeType"},
    {'z', "TimeZone"},
    {'k', "CountryCode"},
    {'P', "platformVersion"},
    {'C', "clientVersion"},
    {'b', "showBusy"},
    {'a', "showAppBox"},
    {'I', "zelInvites"},
    {'r', "registrationState"},
    {'S', "zelSetup"},
    {'t', "itemId"},
    {'T', "text"},
    {'o', "cookie"},
    {'g', "imageId"},
    {'H', "imageHash"},
    {'N', "name"},
    {'V', "value"},
    {'d', "id"},
    {'D', "streamId"},
    {'l', "last"},
    {'x', "status"},
    {'e', "ecoId"},
    {'E', "elements"},
    {'Y', "type"},
    {'\'', ""},
};

// The letters a to h are those texts, digits those numbers.
constexpr Entry values[] = {
    {'S', R"("Success")"},
    {'U', R"("Unregistered")"},
    {'P', R"("Pending")"},
    {'X', R"("Expired")"},
    {'I', R"("InvalidUuid")"},
    {'C', R"("ContactExists")"},
    {'E', R"("")"},
    {'T', "true"},
    {'F', "false"},
    {'N', "null"},
    {'O', "{}"},
    {'A', "[]"},
    {'M', R"("image/png")"},
    {'J', R"("image/bmp")"},
    {'B', R"("iVBORw0KGgoAAAA=")"},
    {'Q', R"("R0lGODlhAAAA")"},
    {'K', R"("permission")"},
    {'R', R"("platformProfile")"},
    {'i', R"("0")"},
    {'j', R"("1")"},
    {'k', R"("2")"},
    {'l', R"("-1")"},
    {'-', "-1"},
    {'+', "2147483648"},
    {'^', "1e308"},
    {'*', "1e999"},
    {'~', "-9223372036854775809"},
    {'.', "0.5"},
    {'<', R"("\ud800")"},
    {'>', R"("\udc00x\ud83d\ude00")"},
    {'$', R"("a\u0000b")"},
    {'!', "\"\xff\xc0\x80\xed\xa0\x80\""},
    {'?', "tru"},
    {'/', R"("a/b")"},
    {':', R"("a","userId":"b","name":"permission","itemId":"b","imageId":"1")"},
    {'[', R"(["a",{"userId":"a"},[{}]])"},
    {'{', R"({"userId":"a","registrationState":"Success","value":{"userId":"b"}})"},
    {'=', R"("%1%2%n%s%1")"},
    {'z', R"("é😀\n\r\t\"\\")"},
};

QByteArray repeated(const char* text, int times)
{
    return QByteArray(text).repeated(times);
}

QByteArray quoted(const QByteArray& text)
{
    return '"' + text + '"';
}

void appendMember(QByteArray& object, const QByteArray& name, const QByteArray& value)
{
    if (!object.endsWith('{'))
        object += ',';
    object += quoted(name) + ':' + value;
}

void appendMembers(QByteArray& object, Line pairs, const Learned& learned)
{
    while (!pairs.atEnd()) {
        const char member = pairs.take();
        appendMember(object, entryFor(members, member).text, valueOf(pairs.take(), learned));
    }
}

QByteArray elementOf(const ListType& list, Line word, const Learned& learned)
{
    QByteArray element = "{";
    // A digit is a number for a value, but nearly every id is a text.
    if (const char id = word.take(); id >= '0' && id <= '9')
        appendMember(element, list.id, quoted(QByteArray(1, id)));
    else if (id != '_')
        appendMember(element, list.id, valueOf(id, learned));
    if (list.key != 'g') {
        appendMembers(element, word, learned);
    } else {
        QByteArray value = "{";
        appendMembers(value, word, learned);
        appendMember(element, "value", value + '}');
    }
    return element + '}';
}

/// With `many`, each element stands for a number of users, as long as its ids are the letter a.
QByteArray elementsOf(const ListType& list, Line words, bool many, const Learned& learned)
{
    constexpr qsizetype longest = 60000; // what is longer than a read of the library is not worth making
    QByteArray elements = "[";
    while (!words.atEnd()) {
        const QByteArray element = elementOf(list, words.takeWord(), learned);
        for (int i = 0; i < (many ? 50 : 1) && elements.size() < longest; ++i) {
            if (!elements.endsWith('['))
                elements += ',';
            elements += many ? QByteArray(element).replace("\"a\"", quoted('a' + QByteArray::number(i))) : element;
        }
    }
    return elements + ']';
}

QByteArray listBodyOf(const ListType& list, QByteArrayView flags, const QByteArray& elements, const Learned& learned)
{
    const auto has = [flags](char flag) { return flags.contains(flag); };
    QByteArray body = "{";
    appendMember(body, "type", has('Y') ? "17" : quoted(list.name));
    if (has('i'))
        appendMember(body, "id", has('N') ? "null" : "\"\"");
    if (has('c'))
        appendMember(body, "cookie", quoted(learned.cookies.value(list.name)));
    if (has('w'))
        appendMember(body, "cookie", has('N') ? "17" : "\"17\"");
    if (has('d'))
        appendMember(body, "elements", "[]");
    if (has('o'))
        appendMember(body, "elements", "{\"a\":" + elements + '}');
    else if (has('n'))
        appendMember(body, "elements", "null");
    else if (!has('x'))
        appendMember(body, "elements", elements);
    if (has('l'))
        appendMember(body, "last", has('N') ? "1" : "true");
    return body + '}';
}

QByteArray bodyOf(const Entry& type, const ListType& list, QByteArrayView flags, Line words, const Learned& learned)
{
    const bool isAboutList = QByteArrayView(type.text).startsWith("list");
    if (flags.contains('B'))
        return isAboutList ? "null" : "[{}]";
    if (isAboutList)
        return listBodyOf(list, flags, elementsOf(list, words, flags.contains('m'), learned), learned);
    QByteArray body = "{";
    while (!words.atEnd())
        appendMembers(body, words.takeWord(), learned);
    return body + '}';
}

} // namespace

QByteArray valueOf(char key, const Learned& learned)
{
    if (key >= 'a' && key <= 'h')
        return quoted(QByteArray(1, key));
    if (key >= '0' && key <= '9')
        return QByteArray(1, key);
    switch (key) {
    case '@':
        return quoted(learned.streamId);
    case '#':
        return quoted(learned.imageHash);
    case 'L':
        return quoted(repeated("long ", 2000));
    case '(':
        return repeated("[", 300) + repeated("]", 300);
    case ')':
        return repeated("{\"a\":", 3000) + '0' + repeated("}", 3000);
    default:
        return entryFor(values, key).text;
    }
}

QByteArray messageOf(Line line, const Learned& learned)
{
    const Entry& type = entryFor(messageTypes, line.take());
    const ListType& list = entryFor(listTypes, line.take());
    line.take(); // the blank
    const QByteArrayView flags = line.takeWord().rest();
    QByteArray message = '{' + quoted(type.text) + ':' + bodyOf(type, list, flags, line, learned);
    if (flags.contains('2'))
        message += R"(,"stream":{"id":"a","last":true})";
    message += '}';
    if (flags.contains('t'))
        message.truncate(message.size() * 3 / 4);
    return message;
}
