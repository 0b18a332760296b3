// SPDX-License-Identifier: Apache-2.0
#include <common/SeededRandom.h>

#include <Output.h>
#include <PictureFile.h>
#include <Record.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtTest/QTest>

using namespace zelctl;
using namespace Qt::StringLiterals;
using vx::platform::zel::ImageType;

namespace {

QByteArray printed(Output::Format format, const std::function<void(Output&)>& print)
{
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* stream = open_memstream(&text, &size);
    Output output(format, stream);
    print(output);
    std::fclose(stream);
    const QByteArray result(text, static_cast<qsizetype>(size));
    std::free(text);
    return result;
}

} // namespace

class TstOutput : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bringsAnyTextBackThroughJson();
    void replacesLoneSurrogates();
    void alignsTablesOfAnyScript();
    void takesTheTeethOutOfForeignTexts();
    void knowsPicturesByTheirFirstBytes();
};

void TstOutput::bringsAnyTextBackThroughJson()
{
    QRandomGenerator random = seededRandom();
    for (int round = 0; round < 500; ++round) {
        QList<char32_t> codes;
        for (int i = 0; i < 20; ++i) {
            const char32_t c = random.bounded(2) ? random.bounded(0x90) : random.bounded(0x110000);
            if (c < 0xd800 || c > 0xdfff)
                codes += c;
        }
        const QString text = QString::fromUcs4(codes.constData(), codes.size());
        const QByteArray json = toJson(Record().text("t"_L1, text));
        QVERIFY(!json.contains('\n'));
        QCOMPARE(QJsonDocument::fromJson(json).object().value("t"_L1).toString(), text);
    }
}

void TstOutput::replacesLoneSurrogates()
{
    const QString text = u"a"_s + QChar(0xd83d) + u"b"_s + QChar(0xdc31) + u"🐱"_s + QChar(0xd83d);
    QCOMPARE(toJson(Record().text("t"_L1, text)), "{\"t\":\"a\xef\xbf\xbd"
                                                  "b\xef\xbf\xbd\xf0\x9f\x90\xb1\xef\xbf\xbd\"}");
}

void TstOutput::alignsTablesOfAnyScript()
{
    const auto row = [](const QString& name, int number) {
        return Record().text("displayName"_L1, name).number("n"_L1, number);
    };
    const QByteArray table = printed(Output::Format::People, [&](Output& output) {
        output.answer("contacts"_L1, Record().list("contacts"_L1, {row(u"王小明"_s, 1), row(u"José"_s, 2)}));
    });
    QCOMPARE(QString::fromUtf8(table), u"display name  n\n王小明        1\nJosé          2\n"_s);
    QCOMPARE(columnsOf(u"e\u0301🐱"_s), 3);
}

void TstOutput::takesTheTeethOutOfForeignTexts()
{
    QCOMPARE(printable(u"a\nb\x1b[31mc\u009b\u202e"_s), u"a\\nb\\u001b[31mc\\u009b\\u202e"_s);
    const QByteArray line = printed(Output::Format::People, [](Output& output) {
        output.signal(
            Record().text("source"_L1, u"UserProfile"_s).text("signal"_L1, u"x"_s).text("value"_L1, u"1\n2"_s));
    });
    QCOMPARE(line.count('\n'), 1);
    QVERIFY(line.contains("value=\"1\\n2\""));
}

void TstOutput::knowsPicturesByTheirFirstBytes()
{
    QCOMPARE(imageTypeOf("\xff\xd8\xff\xe0", u"x"_s), ImageType::Jpg);
    QCOMPARE(imageTypeOf("\x89PNG\r\n\x1a\n...", u"x.gif"_s), ImageType::Png); // whatever it is called
    QCOMPARE(imageTypeOf("GIF89a", u"x"_s), ImageType::Gif);
    QCOMPARE(imageTypeOf("BM1234", u"x"_s), ImageType::Bmp);
    QCOMPARE(imageTypeOf("?", u"a.b/x.JPEG"_s), ImageType::Jpg); // by suffix
    QCOMPARE(imageTypeOf("?", u"x.jp"_s), ImageType::Unsupported);
    QCOMPARE(imageTypeOf("\x89PNG", u"x"_s), ImageType::Unsupported);
}

QTEST_APPLESS_MAIN(TstOutput)
#include "tst_output.moc"
