// SPDX-License-Identifier: Apache-2.0
#include <Words.h>

#include <QtTest/QTest>

using zelctl::splitWords;
using namespace Qt::StringLiterals;

class TstWords : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void splitsAsAShellDoes();
    void refusesWhatIsNotClosed();
    void bringsBackWhatWasQuoted();
};

void TstWords::splitsAsAShellDoes()
{
    const std::pair<QString, QStringList> lines[] = {
        {u"  set-message \t hello  "_s, {u"set-message"_s, u"hello"_s}},
        {u" \t "_s, {}},
        {u"a '' \"\""_s, {u"a"_s, QString(), QString()}},
        {u"'a \\n \"b\"'"_s, {u"a \\n \"b\""_s}}, // single quotes are literal, double ones escape
        {u"\"a \\\"b\\\" \\\\ 'c'\""_s, {u"a \"b\" \\ 'c'"_s}},
        {u"\"one\\ntwo\""_s, {u"one\ntwo"_s}},
        {u"\"a\\zb\""_s, {u"a\\zb"_s}},
        {u"a\\ b \\'c"_s, {u"a b"_s, u"'c"_s}},
        {u"a'b c'\"d e\"f"_s, {u"ab cd ef"_s}},
        {u"chat 'Ξένια 🐱'"_s, {u"chat"_s, u"Ξένια 🐱"_s}}};
    for (const auto& [line, words] : lines) {
        QString error;
        const auto result = splitWords(line, &error);
        QVERIFY2(result, qPrintable(error));
        QCOMPARE(*result, words);
    }
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
