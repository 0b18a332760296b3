// SPDX-License-Identifier: Apache-2.0
#include <Words.h>

#include <QtTest/QTest>

using zelctl::splitWords;
using namespace Qt::StringLiterals;

class TstWords : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void splitsAsAShellDoes_data();
    void splitsAsAShellDoes();
    void refusesWhatIsNotClosed();
    void bringsBackWhatWasQuoted();
};

void TstWords::splitsAsAShellDoes_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("words");
    QTest::newRow("blanks") << u"  set-message \t hello  "_s << QStringList{u"set-message"_s, u"hello"_s};
    QTest::newRow("nothing") << u" \t "_s << QStringList();
    QTest::newRow("empty words") << u"a '' \"\""_s << QStringList{u"a"_s, QString(), QString()};
    QTest::newRow("single quotes are literal") << u"'a \\n \"b\"'"_s << QStringList{u"a \\n \"b\""_s};
    QTest::newRow("double quotes escape") << u"\"a \\\"b\\\" \\\\ 'c'\""_s << QStringList{u"a \"b\" \\ 'c'"_s};
    QTest::newRow("line breaks") << u"\"one\\ntwo\""_s << QStringList{u"one\ntwo"_s};
    QTest::newRow("other pairs stand") << u"\"a\\zb\""_s << QStringList{u"a\\zb"_s};
    QTest::newRow("backslash outside") << u"a\\ b \\'c"_s << QStringList{u"a b"_s, u"'c"_s};
    QTest::newRow("parts join") << u"a'b c'\"d e\"f"_s << QStringList{u"ab cd ef"_s};
    QTest::newRow("any script") << u"chat 'Ξένια 🐱'"_s << QStringList{u"chat"_s, u"Ξένια 🐱"_s};
}

void TstWords::splitsAsAShellDoes()
{
    QFETCH(QString, line);
    QFETCH(QStringList, words);
    QString error;
    const auto result = splitWords(line, &error);
    QVERIFY2(result, qPrintable(error));
    QCOMPARE(*result, words);
}

void TstWords::refusesWhatIsNotClosed()
{
    for (const QString& line : {u"a 'b"_s, u"a \"b"_s, u"a \"b\\\""_s, u"a \\"_s}) {
        QString error;
        QVERIFY2(!splitWords(line, &error), qPrintable(line));
        QVERIFY(!error.isEmpty());
        QVERIFY(!splitWords(line, nullptr));
    }
}

/// Whatever a word holds, there is a way to write it.
void TstWords::bringsBackWhatWasQuoted()
{
    const QString word = u"it's \"a\" \\ $HOME `x`\t\nend"_s;
    QString quoted = word;
    quoted.replace(u'\\', u"\\\\"_s).replace(u'"', u"\\\""_s).replace(u'\n', u"\\n"_s);
    QCOMPARE(splitWords(u"x \""_s + quoted + u"\" y"_s, nullptr), (QStringList{u"x"_s, word, u"y"_s}));
}

QTEST_APPLESS_MAIN(TstWords)
#include "tst_words.moc"
