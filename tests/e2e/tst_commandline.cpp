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
    void refusesWrongUse_data();
    void refusesWrongUse();
    void fitsArguments_data();
    void fitsArguments();
    void refusesArguments_data();
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

void TstCommandLine::refusesWrongUse_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::newRow("unknown option") << QStringList{u"--jsom"_s, u"state"_s};
    QTest::newRow("value for a switch") << QStringList{u"--json=yes"_s, u"state"_s};
    QTest::newRow("value missing") << QStringList{u"--uuid"_s};
    QTest::newRow("no UUID") << QStringList{u"--uuid"_s, u"4d3c2b1a"_s, u"state"_s};
    QTest::newRow("no time") << QStringList{u"--timeout"_s, u"soon"_s, u"state"_s};
    QTest::newRow("no time at all") << QStringList{u"--timeout=0"_s, u"state"_s};
    QTest::newRow("not a number") << QStringList{u"--timeout=nan"_s, u"state"_s};
    QTest::newRow("a negative number is no option") << QStringList{u"-5"_s, u"state"_s};
}

void TstCommandLine::refusesWrongUse()
{
    QFETCH(QStringList, words);
    QString error;
    QVERIFY(!CommandLine::parse(words, &error));
    QVERIFY(!error.isEmpty());
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

void TstCommandLine::refusesArguments_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("typed");
    QTest::newRow("too few") << u"invite"_s << QStringList{u"e1"_s, u"Ada"_s};
    QTest::newRow("too many") << u"set-message"_s << QStringList{u"two"_s, u"words"_s};
    QTest::newRow("too many for none") << u"state"_s << QStringList{u"--json"_s};
    QTest::newRow("no number") << u"icon-get"_s << QStringList{u"one"_s};
    QTest::newRow("number too large") << u"icon-get"_s << QStringList{u"2147483648"_s};
    QTest::newRow("option's value is no number") << u"box-add"_s << QStringList{u"x"_s, u"--icon"_s, u"1.5"_s};
    QTest::newRow("option's value is missing") << u"box-add"_s << QStringList{u"x"_s, u"--icon"_s};
    QTest::newRow("unknown option") << u"register"_s << QStringList{u"--loud"_s};
    QTest::newRow("value for a switch") << u"register"_s << QStringList{u"--silent=no"_s};
    QTest::newRow("no status") << u"set-status"_s << QStringList{u"Busy"_s, u"x"_s};
}

void TstCommandLine::refusesArguments()
{
    QFETCH(QString, command);
    QFETCH(QStringList, typed);
    QString error;
    QVERIFY(!Arguments::parse(findCommand(command)->signature, typed, &error));
    QVERIFY(!error.isEmpty());
}

QTEST_APPLESS_MAIN(TstCommandLine)
#include "tst_commandline.moc"
