// SPDX-License-Identifier: Apache-2.0
#include <common/TestMain.h>

#include <iface/Logging.h>

using namespace iface;

class TstLogging : public QObject
{
    Q_OBJECT

    static bool passes(const char* path, int level = LogLevel::Error)
    {
        return loggingEnabled(path, LogLevel::Type(level), LogCategory::General);
    }

private Q_SLOTS:
    void cleanup()
    {
        setLogLevel(LogLevel::Info);
        setLogCategory(LogCategory::General);
        setFilenameFilter(QRegExp(u"*"_s, Qt::CaseInsensitive, QRegExp::Wildcard));
    }

    void writesFromItsLevelOn()
    {
        setLogCategory(LogCategory::Type(1)); // has no say
        QVERIFY(!passes("x.cpp", 0) && passes("x.cpp", 1) && passes("x.cpp", 2));
        setLogLevel(LogLevel::Error);
        QVERIFY(!passes("x.cpp", 1) && passes("x.cpp", 2));
    }

    // What is a plain expression, or none, is taken as a wildcard.
    void matchesWholeFileNamesAsWildcardsOfAnyCase()
    {
        for (const char* path : {"/a/b/Realm.cpp", "a/b\\Realm.cpp", "a\\b/Realm.cpp", "Realm.cpp"})
            QCOMPARE(filterFilename(path), u"Realm.cpp"_s);
        for (const char* const filter : {"observable*", "*("}) { // the second is none, and changes nothing
            setFilenameFilter(QRegExp(QLatin1String(filter), Qt::CaseSensitive, QRegExp::RegExp));
            QVERIFY(passes("/src/ObservableTracker.h") && !passes("/src/Realm.cpp") && !passes("MyObservable.h"));
        }
    }

    void writesOneLineInItsForm()
    {
        QTest::ignoreMessage(QtDebugMsg, "List.h [ 42 ]:  gone \"x\"");
        ZEL_IFACE_LOG("/src/List.h", 42, LogLevel::Error, LogCategory::General, u"gone \"x\""_s);
        bool composed = false;
        ZEL_IFACE_LOG("List.h", 1, LogLevel::Debug, LogCategory::General, QString::number(composed = true));
        QVERIFY(!composed);
    }
};

ZEL_TEST(TstLogging)
#include "tst_logging.moc"
