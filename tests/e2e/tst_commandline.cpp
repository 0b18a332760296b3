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

void TstCommandLine::fitsArguments()
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
        const auto arguments = Arguments::parse(findCommand(row.command)->signature, row.typed, &error);
        QVERIFY2(arguments, qPrintable(row.typed.join(u' ') + u": "_s + error));
        QCOMPARE(arguments->words(), row.words);
        if (row.option.isEmpty())
            continue;
        const QByteArray name = row.option.toLatin1();
        QVERIFY(arguments->has(QLatin1String(name)));
        QCOMPARE(arguments->text(QLatin1String(name)), row.value);
        QCOMPARE(arguments->number(QLatin1String(name)), row.value.toInt());
    }
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
