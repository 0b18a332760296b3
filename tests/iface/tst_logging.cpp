// SPDX-License-Identifier: Apache-2.0
#include <iface/Logging.h>

#include <QTest>

using namespace iface;

class TstLogging : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void takesTheFileNameBehindTheLastSeparator_data();
    void takesTheFileNameBehindTheLastSeparator();
    void writesFromLevelOneOnAtFirst();
    void ignoresCategories();
    void matchesWholeFileNamesAsWildcardsOfAnyCase();
    void keepsItsFilterWhenGivenAnInvalidOne();
    void writesOneLineInItsForm();
    void composesNothingThatIsNotWritten();
};

void TstLogging::cleanup()
{
    setLogLevel(LogLevel::Info);
    setLogCategory(LogCategory::General);
    setFilenameFilter(QRegExp(u"*"_qs, Qt::CaseInsensitive, QRegExp::Wildcard));
}

void TstLogging::takesTheFileNameBehindTheLastSeparator_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QString>("name");
    QTest::newRow("slashes") << QByteArray("/a/b/Realm.cpp") << u"Realm.cpp"_qs;
    QTest::newRow("backslash last") << QByteArray("a/b\\Realm.cpp") << u"Realm.cpp"_qs;
    QTest::newRow("slash last") << QByteArray("a\\b/Realm.cpp") << u"Realm.cpp"_qs;
    QTest::newRow("bare") << QByteArray("Realm.cpp") << u"Realm.cpp"_qs;
    QTest::newRow("separator at the end") << QByteArray("a/") << QString();
}

void TstLogging::takesTheFileNameBehindTheLastSeparator()
{
    QFETCH(QByteArray, path);
    QTEST(filterFilename(path.constData()), "name");
}

void TstLogging::writesFromLevelOneOnAtFirst()
{
    QVERIFY(!loggingEnabled("x.cpp", LogLevel::Debug, LogCategory::General));
    QVERIFY(loggingEnabled("x.cpp", LogLevel::Info, LogCategory::General));
    QVERIFY(loggingEnabled("x.cpp", LogLevel::Error, LogCategory::General));
    setLogLevel(LogLevel::Error);
    QVERIFY(!loggingEnabled("x.cpp", LogLevel::Info, LogCategory::General));
    QVERIFY(loggingEnabled("x.cpp", LogLevel::Error, LogCategory::General));
}

void TstLogging::ignoresCategories()
{
    for (const int category : {-1, 0, 7}) {
        setLogCategory(static_cast<LogCategory::Type>(category & 1));
        QVERIFY(loggingEnabled("x.cpp", LogLevel::Info, LogCategory::General));
        QVERIFY(!loggingEnabled("x.cpp", LogLevel::Debug, LogCategory::General));
    }
}

void TstLogging::matchesWholeFileNamesAsWildcardsOfAnyCase()
{
    const auto passes = [](const char* path) { return loggingEnabled(path, LogLevel::Error, LogCategory::General); };
    // As a plain expression this would mean something else.
    setFilenameFilter(QRegExp(u"observable*"_qs, Qt::CaseSensitive, QRegExp::RegExp));
    QVERIFY(passes("/src/ObservableTracker.h"));
    QVERIFY(!passes("/src/Realm.cpp"));
    QVERIFY(!passes("/src/MyObservable.h"));
    setFilenameFilter(QRegExp(u"Realm"_qs));
    QVERIFY(!passes("/src/Realm.cpp"));
}

void TstLogging::keepsItsFilterWhenGivenAnInvalidOne()
{
    setFilenameFilter(QRegExp(u"Realm*"_qs));
    setFilenameFilter(QRegExp(u"*("_qs, Qt::CaseInsensitive, QRegExp::RegExp));
    QVERIFY(loggingEnabled("Realm.cpp", LogLevel::Error, LogCategory::General));
    QVERIFY(!loggingEnabled("Other.cpp", LogLevel::Error, LogCategory::General));
}

void TstLogging::writesOneLineInItsForm()
{
    QTest::ignoreMessage(QtDebugMsg, "List.h [ 42 ]:  gone \"x\"");
    ZEL_IFACE_LOG("/src/List.h", 42, LogLevel::Error, LogCategory::General, u"gone \"x\""_qs);
}

void TstLogging::composesNothingThatIsNotWritten()
{
    int composed = 0;
    const auto message = [&] {
        ++composed;
        return QString();
    };
    ZEL_IFACE_LOG("List.h", 1, LogLevel::Debug, LogCategory::General, message());
    QCOMPARE(composed, 0);
}

QTEST_GUILESS_MAIN(TstLogging)
#include "tst_logging.moc"
