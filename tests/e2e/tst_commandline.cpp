// SPDX-License-Identifier: Apache-2.0
#include <Arguments.h>
#include <CommandLine.h>
#include <Commands.h>

#include <QtTest/QTest>

using namespace zelctl;
using namespace Qt::StringLiterals;

class TstCommandLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void takesItsOptionsFromBeforeTheCommand();
    void leavesTheCommandsOwnWordsAlone();
    void refusesWrongUse();
    void fitsArguments_data();
    void fitsArguments();
    void refusesArguments();
};

void TstCommandLine::takesItsOptionsFromBeforeTheCommand()
{
    QString error;
    const auto line = CommandLine::parse({u"--json"_s, u"--uuid=4d3c2b1a-0f9e-4d8c-8b7a-695847362514"_s, u"--timeout"_s,
                                          u"2.5"_s, u"--simulate=first-steps"_s, u"state"_s},
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

void TstCommandLine::leavesTheCommandsOwnWordsAlone()
{
    QString error;
    QCOMPARE(CommandLine::parse({u"set-message"_s, u"--json"_s}, &error)->words,
             (QStringList{u"set-message"_s, u"--json"_s}));
    QCOMPARE(CommandLine::parse({u"--"_s, u"--json"_s}, &error)->words, QStringList{u"--json"_s});
}

void TstCommandLine::refusesWrongUse()
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

void TstCommandLine::fitsArguments_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("typed");
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("value");
    const auto row = [](const char* name, const QString& command, const QStringList& typed, const QStringList& words,
                        const QString& option = {}, const QString& value = {}) {
        QTest::newRow(name) << command << typed << words << option << value;
    };
    row("none", u"state"_s, {}, {});
    row("negative number", u"icon-get"_s, {u"-1"_s}, {u"-1"_s});
    row("number in another spelling", u"icon-get"_s, {u"+07"_s}, {u"7"_s});
    row("negative value", u"box-add"_s, {u"hi"_s, u"--icon"_s, u"-7"_s}, {u"hi"_s}, u"--icon"_s, u"-7"_s);
    row("text like a negative number", u"box-add"_s, {u"-5 degrees"_s}, {u"-5 degrees"_s});
    row("option in front", u"picture"_s, {u"-o"_s, u"f.png"_s, u"bob"_s}, {u"bob"_s}, u"-o"_s, u"f.png"_s);
    row("value behind =", u"box-add"_s, {u"hi"_s, u"--cookie=a=b"_s}, {u"hi"_s}, u"--cookie"_s, u"a=b"_s);
    row("empty value", u"box-add"_s, {u"hi"_s, u"--cookie"_s, QString()}, {u"hi"_s}, u"--cookie"_s, QString());
    row("options ended", u"box-add"_s, {u"--"_s, u"--icon"_s}, {u"--icon"_s});
    row("a dash alone", u"box-add"_s, {u"-"_s}, {u"-"_s});
    row("no options, no option", u"set-message"_s, {u"--silent"_s}, {u"--silent"_s});
    row("empty text", u"set-status"_s, {u"busy"_s, QString()}, {u"busy"_s, QString()});
    row("switch", u"register"_s, {u"--silent"_s}, {}, u"--silent"_s, QString());
}

void TstCommandLine::fitsArguments()
{
    QFETCH(QString, command);
    QFETCH(QStringList, typed);
    QFETCH(QStringList, words);
    QFETCH(QString, option);
    QFETCH(QString, value);
    QString error;
    const auto arguments = Arguments::parse(findCommand(command)->signature, typed, &error);
    QVERIFY2(arguments, qPrintable(error));
    QCOMPARE(arguments->words(), words);
    if (option.isEmpty())
        return;
    const QByteArray name = option.toLatin1();
    QVERIFY(arguments->has(QLatin1String(name)));
    QCOMPARE(arguments->text(QLatin1String(name)), value);
    QCOMPARE(arguments->number(QLatin1String(name)), value.toInt());
}

void TstCommandLine::refusesArguments()
{
    const QList<QStringList> commands{
        {u"invite"_s, u"e1"_s, u"Ada"_s},    {u"set-message"_s, u"two"_s, u"words"_s},
        {u"state"_s, u"--json"_s},           {u"icon-get"_s, u"one"_s},
        {u"icon-get"_s, u"2147483648"_s},    {u"box-add"_s, u"x"_s, u"--icon"_s, u"1.5"_s},
        {u"box-add"_s, u"x"_s, u"--icon"_s}, {u"register"_s, u"--loud"_s},
        {u"register"_s, u"--silent=no"_s},   {u"set-status"_s, u"Busy"_s, u"x"_s}};
    for (const QStringList& words : commands) {
        QString error;
        QVERIFY2(!Arguments::parse(findCommand(words.first())->signature, words.mid(1), &error),
                 qPrintable(words.join(u' ')));
        QVERIFY(!error.isEmpty());
    }
}

QTEST_APPLESS_MAIN(TstCommandLine)
#include "tst_commandline.moc"
