// SPDX-License-Identifier: Apache-2.0
#include <common/TestMain.h>
#include <common/SeededRandom.h>

#include <device/Encoder.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <functional>
#include <limits>

namespace {

QByteArray textOf(const pps_encoder_t* encoder)
{
    return QByteArray(pps_encoder_buffer(encoder), pps_encoder_length(encoder));
}

QByteArray textOf(const device::Encoder& encoder)
{
    return QByteArray(encoder.text().data(), qsizetype(encoder.text().size()));
}

// The platform's calls.
class Encoder
{
public:
    explicit Encoder(bool encodeJson) { pps_encoder_initialize(&encoder, encodeJson); }
    ~Encoder() { pps_encoder_cleanup(&encoder); }
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    operator pps_encoder_t*() { return &encoder; }

    pps_encoder_t encoder;
};

// A random value of every kind, as QJsonValue. Names within an object differ, so that no parser has to choose.
class RandomValues
{
public:
    explicit RandomValues(const QRandomGenerator& random)
        : m_random(random)
    {
    }

    QJsonValue value(int depth)
    {
        switch (m_random.bounded(depth > 0 ? 6 : 4)) {
        case 0:
            return QJsonValue::Null;
        case 1:
            return m_random.bounded(2) == 1;
        case 2:
            return static_cast<int>(m_random.generate());
        case 3:
            return string();
        case 4:
            return array(depth);
        default:
            return object(depth);
        }
    }
    QString string()
    {
        static const char32_t edges[] = {0,     1,     0x1F,   '"',    '\\',   '/',    0x7F,    0x80,
                                         0x7FF, 0x800, 0xD7FF, 0xE000, 0xFFFD, 0xFFFF, 0x10000, 0x10FFFF};
        QString text = QStringLiteral(""); // not null: with such a name beside others, Qt 6.8's object crashes
        for (int i = m_random.bounded(24); i > 0; --i) {
            const char32_t plain = U' ' + char32_t(m_random.bounded(95));
            const char32_t edge = edges[m_random.bounded(int(std::size(edges)))];
            text += QString::fromUcs4(m_random.bounded(3) > 0 ? &plain : &edge, 1);
        }
        return text;
    }
    QJsonArray array(int depth)
    {
        QJsonArray result;
        for (int i = m_random.bounded(6); i > 0; --i)
            result.append(value(depth - 1));
        return result;
    }
    QJsonObject object(int depth)
    {
        QJsonObject result;
        for (int i = m_random.bounded(6); i > 0; --i)
            result.insert(string(), value(depth - 1));
        return result;
    }

private:
    QRandomGenerator m_random;
};

// Writes a value with the encoder's calls; a null name is no name.
void write(device::Encoder& encoder, const QByteArray& name, const QJsonValue& value)
{
    const device::Text text = name.isNull() ? device::Text() : device::Text(name);
    if (value.isBool()) {
        encoder.addBool(text, value.toBool());
    } else if (value.isDouble()) {
        encoder.addInt(text, value.toInt());
    } else if (value.isString()) {
        encoder.addString(text, value.toString().toUtf8());
    } else if (value.isArray()) {
        encoder.startArray(text);
        for (const QJsonValue element : value.toArray())
            write(encoder, QByteArray(), element);
        encoder.endArray();
    } else if (value.isObject()) {
        encoder.startObject(text);
        const QJsonObject object = value.toObject();
        for (auto member = object.begin(); member != object.end(); ++member)
            write(encoder, member.key().toUtf8() + "", member.value());
        encoder.endObject();
    } else {
        encoder.addNull(text);
    }
}

// The same value with its members inserted one by one. A parsed object keeps its members in the order of their bytes,
// an object made by hand in the order of their 16-bit units, and comparing relies on the order.
QJsonValue normalized(const QJsonValue& value)
{
    if (value.isArray()) {
        QJsonArray array;
        for (const QJsonValue element : value.toArray())
            array.append(normalized(element));
        return array;
    }
    if (!value.isObject())
        return value;
    QJsonObject object;
    const QJsonObject from = value.toObject();
    for (auto member = from.begin(); member != from.end(); ++member)
        object.insert(member.key(), normalized(member.value()));
    return object;
}

} // namespace

class TstEncoder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesAttributesAsLinesAndWhatIsBelowAsJson()
    {
        Encoder e(false);
        pps_encoder_add_string(e, "msg", "zel");
        pps_encoder_add_bool(e, "on", true);
        pps_encoder_add_int(e, "low", std::numeric_limits<int>::min());
        pps_encoder_add_null(e, "none");
        pps_encoder_start_object(e, "dat");
        pps_encoder_start_object(e, "");
        pps_encoder_start_array(e, "list");
        pps_encoder_add_int(e, nullptr, -1);
        pps_encoder_start_object(e, nullptr);
        pps_encoder_end_object(e);
        pps_encoder_start_array(e, nullptr);
        pps_encoder_end_array(e);
        pps_encoder_add_json(e, nullptr, "{\"ready\":1}");
        pps_encoder_end_array(e);
        pps_encoder_add_string(e, "twice", "a");
        pps_encoder_add_string(e, "twice", "b");
        pps_encoder_end_object(e);
        pps_encoder_end_object(e);
        pps_encoder_start_array(e, "last");
        pps_encoder_end_array(e);
        QCOMPARE(textOf(e),
                 QByteArray("msg::zel\non:b:true\nlow:n:-2147483648\nnone:json:null\n"
                            "dat:json:{\"\":{\"list\":[-1,{},[],{\"ready\":1}],\"twice\":\"a\",\"twice\":\"b\"}}\n"
                            "last:json:[]\n"));
    }

    void writesStringsWithTheEscapesOfTheirForm()
    {
        struct Case
        {
            QByteArray string, json, attribute;
        };
        QList<Case> cases{{"plain / text", "plain / text", "plain / text"},
                          {"a\"b\\c", "a\\\"b\\\\c", "a\"b\\\\c"},
                          {"a\nb\r\tc", "a\\nb\\r\\tc", "a\\nb\\r\tc"},
                          {QByteArray("a\0b", 3), "a\\u0000b", "a\\0b"},
                          {"\b\f\x1f\x7f", "\\b\\f\\u001f\x7f", "\b\f\x1f\x7f"},
                          {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"}};
        for (int i = 0; i < 9; ++i) { // at every place of an eight-byte step
            const QByteArray before(i, 'x');
            cases.append({before + "\"tail-tail", before + "\\\"tail-tail", before + "\"tail-tail"});
        }
        for (const auto& [string, json, attribute] : std::as_const(cases)) {
            device::Encoder asJson(device::Encoder::Json);
            asJson.addString({}, string);
            QCOMPARE(textOf(asJson), '"' + json + '"');
            device::Encoder asAttribute(device::Encoder::Attributes);
            asAttribute.addString("s", string);
            QCOMPARE(textOf(asAttribute), "s::" + attribute + '\n');
        }
    }

    void replacesBytesThatAreNotUtf8()
    {
        // A continuation alone, overlong forms, a surrogate, past the last, cut short, never used: byte for byte.
        for (const char* const bytes : {"\x80", "\xC0\xAF", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF",
                                        "\xF4\x90\x80\x80", "\xF0\x9F\x98", "\xFE\xFF"}) {
            Encoder e(true);
            pps_encoder_add_string(e, nullptr, ("a" + QByteArray(bytes) + "z").constData());
            QCOMPARE(textOf(e), "\"a" + QByteArray("\xEF\xBF\xBD").repeated(qstrlen(bytes)) + "z\"");
        }
    }

    void anotherParserReadsWhatWasWritten()
    {
        RandomValues random(seededRandom());
        for (int i = 0; i < 400; ++i) {
            const QJsonArray value = normalized(QJsonArray{random.value(4)}).toArray();
            device::Encoder e(device::Encoder::Json);
            write(e, QByteArray(), value);
            const QByteArray text = textOf(e);

            QJsonParseError error;
            QCOMPARE(normalized(QJsonDocument::fromJson(text, &error).array()).toArray(), value);
            QCOMPARE(error.error, QJsonParseError::NoError);
        }
    }

    void keepsReadyMadeJsonOnOneLine()
    {
        Encoder e(false);
        QCOMPARE(pps_encoder_add_json(e, "dat", "{\n\"a\" :\r\n1}"), PPS_ENCODER_OK);
        QCOMPARE(pps_encoder_add_json(e, "empty", ""), PPS_ENCODER_OK);
        QCOMPARE(textOf(e), QByteArray("dat:json:{ \"a\" :  1}\nempty:json:\n"));
    }

    void answersMisuseAndKeepsTheForm()
    {
        const struct
        {
            const char* what;
            bool encodeJson;
            std::function<pps_encoder_error_t(pps_encoder_t*)> calls;
            pps_encoder_error_t error;
            QByteArray text;
        } cases[] = {
            {"end without start", false, pps_encoder_end_object, PPS_ENCODER_UNBALANCED, ""},
            {"end of the other kind", true,
             [](pps_encoder_t* e) {
                 pps_encoder_start_array(e, nullptr);
                 const auto error = pps_encoder_end_object(e);
                 pps_encoder_end_array(e);
                 return error;
             },
             PPS_ENCODER_UNBALANCED, "[]"},
            {"name in an array", true,
             [](pps_encoder_t* e) {
                 pps_encoder_start_array(e, nullptr);
                 const auto error = pps_encoder_start_object(e, "name");
                 pps_encoder_end_object(e);
                 pps_encoder_add_int(e, "name", 1);
                 pps_encoder_end_array(e);
                 return error;
             },
             PPS_ENCODER_NAME_NOT_ALLOWED, "[{},1]"},
            {"member without a name", true,
             [](pps_encoder_t* e) {
                 pps_encoder_start_object(e, nullptr);
                 const auto error = pps_encoder_start_array(e, nullptr);
                 pps_encoder_end_array(e);
                 pps_encoder_end_object(e);
                 return error;
             },
             PPS_ENCODER_NAME_MISSING, "{\"\":[]}"},
            {"attribute without a name", false, [](pps_encoder_t* e) { return pps_encoder_add_int(e, nullptr, 1); },
             PPS_ENCODER_NAME_MISSING, ":n:1\n"},
            {"name that breaks the line", false, [](pps_encoder_t* e) { return pps_encoder_add_int(e, "@a:b\nc@", 1); },
             PPS_ENCODER_BAD_NAME, "_a_b_c@:n:1\n"},
            {"no string", false, [](pps_encoder_t* e) { return pps_encoder_add_string(e, "s", nullptr); },
             PPS_ENCODER_BAD_VALUE, "s:json:null\n"},
            {"second value, with all that is in it", true,
             [](pps_encoder_t* e) {
                 pps_encoder_start_array(e, nullptr);
                 pps_encoder_end_array(e);
                 pps_encoder_start_object(e, nullptr);
                 pps_encoder_start_array(e, "inner");
                 const auto error = pps_encoder_add_int(e, nullptr, 1);
                 pps_encoder_end_array(e);
                 pps_encoder_end_object(e);
                 return error;
             },
             PPS_ENCODER_COMPLETE, "[]"},
        };
        for (const auto& one : cases) {
            Encoder e(one.encodeJson);
            QVERIFY2(one.calls(e) == one.error, one.what);
            QCOMPARE(textOf(e), one.text);
        }
    }

    void failsHarmlesslyWhenNotInitialized()
    {
        pps_encoder_t e = {};
        QCOMPARE(pps_encoder_start_object(&e, "a"), PPS_ENCODER_NOT_INITIALIZED);
        QCOMPARE(pps_encoder_add_string(&e, "a", "b"), PPS_ENCODER_NOT_INITIALIZED);
        QCOMPARE(pps_encoder_end_object(&e), PPS_ENCODER_NOT_INITIALIZED);
        QCOMPARE(pps_encoder_buffer(&e), "");
        QCOMPARE(pps_encoder_length(&e), 0);
        pps_encoder_cleanup(&e);
        pps_encoder_initialize(&e, true);
        pps_encoder_cleanup(&e);
        pps_encoder_cleanup(&e);
        QCOMPARE(pps_encoder_add_int(&e, nullptr, 1), PPS_ENCODER_NOT_INITIALIZED);
    }
};

ZEL_TEST_WITHOUT_APPLICATION(TstEncoder)
#include "tst_encoder.moc"
