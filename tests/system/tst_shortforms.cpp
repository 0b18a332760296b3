// SPDX-License-Identifier: Apache-2.0
#include <common/TestMain.h>

#include <device/Decoder.h>
#include <device/Log.h>
#include <zel/JsonWriter.h>
#include <zel/PpsJsonSource.h>

using namespace Qt::StringLiterals;

/// What becomes of what the platform's calls have no form for.
class TstShortForms : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textsGoOutUpToTheirFirstNul()
    {
        const auto text = [](const char* utf8, qsizetype size) { return QString::fromUtf8(utf8, size); };
        zel::JsonWriter writer(u"m"_s, u"zel"_s);
        writer.addAttribute(text("na\0me", 5), text("va\0lue", 6));
        writer.addAttribute(u"long"_s, QString(300, u'x'));
        writer.addAttribute(u"empty"_s, QString());
        QCOMPARE(writer.toString(),
                 QStringLiteral(R"({"m":{"na":"va","long":"%1","empty":""}})").arg(QString(300, u'x')));
    }

    void textsComeInUpToTheirFirstNul()
    {
        device::Decoder decoder(R"(dat:json:{"a\u0000b":"c\u0000d","e":"\u0000"})");
        QVERIFY(decoder.isValid());
        QCOMPARE(pps_decoder_push(decoder.get(), "dat"), PPS_DECODER_OK);
        QVERIFY(device::currentName(decoder.get()) == "a");
        zel::PpsJsonSource source(decoder.get());
        const iface::JsonNodeReader reader = source.startParsing();
        QString value;
        QVERIFY(reader[0].read(value));
        QCOMPARE(value, u"c"_s);
        QVERIFY(reader.readString("e", value));
        QVERIFY(value.isEmpty() && !value.isNull());
        // The text itself ends there, too.
        device::Decoder cut(QByteArray("n:n:1\ndat:json:{\"a\":\0 1}\n", 25));
        QCOMPARE(pps_decoder_length(cut.get()), 1);
    }

    void everyLineIsHandedToTheLog() { QVERIFY(device::isLogged(7)); }
};

ZEL_TEST_WITHOUT_APPLICATION(TstShortForms)
#include "tst_shortforms.moc"
