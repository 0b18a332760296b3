// SPDX-License-Identifier: Apache-2.0
#include <common/TestMain.h>
#include <common/SeededRandom.h>

#include <Arguments.h>
#include <CommandLine.h>
#include <Commands.h>
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

/// What zelctl takes and what it prints, without a library behind it.
class TstCommandLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void takesItsOptionsFromBeforeTheCommand()
    {
        QString error;
        const auto line = CommandLine::parse({u"--json"_s, u"--uuid=4d3c2b1a-0f9e-4d8c-8b7a-695847362514"_s,
                                              u"--timeout"_s, u"2.5"_s, u"--simulate=first-steps"_s, u"state"_s},
                                             &error);
        QVERIFY2(line, qPrintable(error));
        QVERIFY(line->json && line->simulate);
        QCOMPARE(line->scenario, u"first-steps"_s);
        QCOMPARE(line->uuid, QUuid(u"{4d3c2b1a-0f9e-4d8c-8b7a-695847362514}"_s));
        QCOMPARE(line->timeout, 2500);
        QCOMPARE(line->words, QStringList{u"state"_s});

        const auto plain = CommandLine::parse({u"--simulate"_s, u"state"_s}, &error);
        QVERIFY(plain->simulate && plain->scenario.isEmpty());
        QCOMPARE(plain->timeout, 10'000);
        QVERIFY(!plain->uuid.isNull());
        for (const QString& null : {u"null-uuid"_s, u"00000000-0000-0000-0000-000000000000"_s})
            QVERIFY(CommandLine::parse({u"--uuid"_s, null, u"register"_s}, &error)->uuid.isNull());
    }

    void leavesTheCommandsOwnWordsAlone()
    {
        QString error;
        QCOMPARE(CommandLine::parse({u"set-message"_s, u"--json"_s}, &error)->words,
                 (QStringList{u"set-message"_s, u"--json"_s}));
        QCOMPARE(CommandLine::parse({u"--"_s, u"--json"_s}, &error)->words, QStringList{u"--json"_s});
    }

    void refusesWrongUse()
    {
        const QList<QStringList> uses{{u"--jsom"_s, u"state"_s},
                                      {u"--json=yes"_s, u"state"_s},
                                      {u"--uuid"_s},
                                      {u"--uuid"_s, u"4d3c2b1a"_s, u"state"_s},
                                      {u"--timeout=soon"_s, u"state"_s},
                                      {u"--timeout=0"_s, u"state"_s},
                                      {u"--timeout=nan"_s, u"state"_s},
                                      {u"-5"_s, u"state"_s}};
        for (const QStringList& words : uses) {
            QString error;
            QVERIFY2(!CommandLine::parse(words, &error), qPrintable(words.join(u' ')));
            QVERIFY(!error.isEmpty());
        }
    }

    void fitsArguments()
    {
        const struct
        {
            QString command;
            QStringList typed;
            QStringList words;
            QString option = {};
            QString value = {};
        } rows[] = {
            {u"state"_s, {}, {}},
            {u"icon-get"_s, {u"-1"_s}, {u"-1"_s}}, // a negative number is no option
            {u"icon-get"_s, {u"+07"_s}, {u"7"_s}},
            {u"box-add"_s, {u"hi"_s, u"--icon"_s, u"-7"_s}, {u"hi"_s}, u"--icon"_s, u"-7"_s},
            {u"box-add"_s, {u"-5 degrees"_s}, {u"-5 degrees"_s}},
            {u"picture"_s, {u"-o"_s, u"f.png"_s, u"bob"_s}, {u"bob"_s}, u"-o"_s, u"f.png"_s},
            {u"box-add"_s, {u"hi"_s, u"--cookie=a=b"_s}, {u"hi"_s}, u"--cookie"_s, u"a=b"_s},
            {u"box-add"_s, {u"hi"_s, u"--cookie"_s, QString()}, {u"hi"_s}, u"--cookie"_s},
            {u"box-add"_s, {u"--"_s, u"--icon"_s}, {u"--icon"_s}}, // options ended
            {u"box-add"_s, {u"-"_s}, {u"-"_s}},
            {u"set-message"_s, {u"--silent"_s}, {u"--silent"_s}}, // a command without options has none
            {u"set-status"_s, {u"busy"_s, QString()}, {u"busy"_s, QString()}},
            {u"register"_s, {u"--silent"_s}, {}, u"--silent"_s},
        };
        for (const auto& row : rows) {
            QString error;
            const auto arguments = Arguments::parse(findCommand(row.command)->usage, row.typed, &error);
            QVERIFY2(arguments, qPrintable(row.typed.join(u' ') + u": "_s + error));
            QCOMPARE(arguments->words(), row.words);
            if (row.option.isEmpty())
                continue;
            QVERIFY(arguments->has(row.option));
            QCOMPARE(arguments->text(row.option), row.value);
            QCOMPARE(arguments->number(row.option), row.value.toInt());
        }
    }

    void refusesArguments()
    {
        const QList<QStringList> commands{
            {u"invite"_s, u"e1"_s, u"Ada"_s},    {u"set-message"_s, u"two"_s, u"words"_s},
            {u"state"_s, u"--json"_s},           {u"icon-get"_s, u"one"_s},
            {u"icon-get"_s, u"2147483648"_s},    {u"box-add"_s, u"x"_s, u"--icon"_s, u"1.5"_s},
            {u"box-add"_s, u"x"_s, u"--icon"_s}, {u"register"_s, u"--loud"_s},
            {u"register"_s, u"--silent=no"_s},   {u"set-status"_s, u"Busy"_s, u"x"_s}};
        for (const QStringList& words : commands) {
            QString error;
            QVERIFY2(!Arguments::parse(findCommand(words.first())->usage, words.mid(1), &error),
                     qPrintable(words.join(u' ')));
            QVERIFY(!error.isEmpty());
        }
    }

    void bringsAnyTextBackThroughJson()
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
            const QByteArray json = toJson(Record().add(u"t"_s, text));
            QVERIFY(!json.contains('\n'));
            QCOMPARE(QJsonDocument::fromJson(json).object().value("t"_L1).toString(), text);
        }
    }

    void replacesLoneSurrogates()
    {
        const QString text = u"a"_s + QChar(0xd83d) + u"b"_s + QChar(0xdc31) + u"🐱"_s + QChar(0xd83d);
        QCOMPARE(toJson(Record().add(u"t"_s, text)), "{\"t\":\"a\xef\xbf\xbd"
                                                     "b\xef\xbf\xbd\xf0\x9f\x90\xb1\xef\xbf\xbd\"}");
    }

    void alignsTablesOfAnyScript()
    {
        const auto row = [](const QString& name, int number) {
            return Record().add(u"displayName"_s, name).add(u"n"_s, number);
        };
        const QByteArray table = printed(Output::Format::People, [&](Output& output) {
            output.answer(u"contacts"_s,
                          Record().add(u"contacts"_s,
                                       QVariant::fromValue(QList<Record>{row(u"王小明"_s, 1), row(u"José"_s, 2)})));
        });
        QCOMPARE(QString::fromUtf8(table), u"display name  n\n王小明        1\nJosé          2\n"_s);
        QCOMPARE(columnsOf(u"e\u0301🐱"_s), 3);
    }

    void takesTheTeethOutOfForeignTexts()
    {
        QCOMPARE(printable(u"a\nb\x1b[31mc\u009b\u202e"_s), u"a\\nb\\u001b[31mc\\u009b\\u202e"_s);
        const QByteArray line = printed(Output::Format::People, [](Output& output) {
            output.signal(
                Record().add(u"source"_s, u"UserProfile"_s).add(u"signal"_s, u"x"_s).add(u"value"_s, u"1\n2"_s));
        });
        QCOMPARE(line.count('\n'), 1);
        QVERIFY(line.contains("value=\"1\\n2\""));
    }
};

ZEL_TEST_WITHOUT_APPLICATION(TstCommandLine)
#include "tst_commandline.moc"
