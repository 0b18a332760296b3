// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtTest/QTest>

using namespace Qt::StringLiterals;

/// Runs what has been posted.
inline void turn()
{
    QCoreApplication::sendPostedEvents();
}

/// A floor's test classes are one program, since linking is most of what a test build takes. The process still runs one
/// class alone, because the bridge to the service is one for a process:
///
///     tst_iface TstRealm [what Qt Test takes, a function's name for one]
///
/// Each class's file ends in ZEL_TEST(TstRealm) and its moc file.
namespace testmain {

using Run = int (*)(int argc, char** argv);

/// Called before main(). The name is kept, not copied.
bool add(const char* name, Run run);

template <typename Test>
int runWithoutApplication(int argc, char** argv)
{
    Test test;
    return QTest::qExec(&test, argc, argv);
}
template <typename Test>
int run(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    return runWithoutApplication<Test>(argc, argv);
}

} // namespace testmain

#define ZEL_TEST(Test) [[maybe_unused]] static const bool isAdded = testmain::add(#Test, &testmain::run<Test>);
/// For a class that makes application objects itself, or needs none.
#define ZEL_TEST_WITHOUT_APPLICATION(Test)                                                                             \
    [[maybe_unused]] static const bool isAdded = testmain::add(#Test, &testmain::runWithoutApplication<Test>);
