// SPDX-License-Identifier: Apache-2.0
// Load and soak: how it goes when there is much of something. Each run is one line of figures on standard output that
// ends in its verdict, which is the exit status, too:
//
//   soak messages [N]       N messages (1,000,000) at full speed from a service to an application
//   soak applications [N]   N applications (50) of one service; each sees each of 1,000 changes
//   soak contacts [N]       a list of N contacts (200,000), and one of a tenth of that
//   soak slow [N]           N messages (100,000), with a slot that takes a second now and then
//   soak hostile [N]        N records (10) of 60,000 bytes of each kind that makes an application keep something
#include "contacts/CoreProcess.h"
#include "contacts/Memory.h"
#include "soak/Follower.h"
#include "soak/Sender.h"
#include "soak/Usage.h"

#include <zelcore/TestService.h>

#include <QtCore/QByteArrayList>
#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QLoggingCategory>
#include <QtCore/QThread>

#include <cmath>
#include <cstdio>
#include <ctime>
#include <list>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

const QUuid application("6f8d2c4e-5b0a-4a37-9d0e-0c8f3f1f2a10");
constexpr int people = 200;

double inMegabytes(double bytes)
{
    return bytes / 1024 / 1024;
}

double secondsSince(const QElapsedTimer& clock)
{
    return double(clock.nsecsElapsed()) / 1e9;
}

/// On the processor; finer than what the kernel tells of other processes.
double ownSeconds()
{
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) / 1e9;
}

/// The end of the line, and what the program ends with.
int verdict(bool isGood, const char* words)
{
    std::printf("; %s: %s\n", words, isGood ? "held" : "NOT HELD");
    return isGood ? 0 : 1;
}

/// What may not grow while messages pass.
struct Held
{
    Usage application;
    Usage service;
    double heap = 0;

    static Held now(const Sender& service)
    {
        return {Usage::of(QCoreApplication::applicationPid()), Usage::of(service.process()),
                inMegabytes(Memory::now().inUse)};
    }
};

int messages(int count)
{
    // So much may be under way that neither side ever waits for the other.
    constexpr int ahead = 4;
    Sender service(people);
    Follower follower(application);
    follower.load(people);
    std::vector<Held> held;
    QElapsedTimer clock;
    clock.start();
    service.send(ahead);
    follower.follow(count, [&](int number) {
        if (number % Sender::portion == 0 && number + (ahead - 1) * Sender::portion < count)
            service.send(1);
        if (number == count / 10 || number == count / 2 || number == count)
            held.push_back(Held::now(service));
    });
    const double seconds = secondsSince(clock);
    std::printf("messages: %d in %.0f s, %.0f a second, %d misplaced; at 10, 50 and 100 %%:", count, seconds,
                count / seconds, follower.misplaced());
    for (const Held& at : held)
        std::printf(" [application %.1f MB, its heap %.2f MB, %d descriptors, service %.1f MB, %d descriptors]",
                    at.application.megabytes, at.heap, int(at.application.descriptors), at.service.megabytes,
                    int(at.service.descriptors));
    const Held& early = held.front();
    const Held& late = held.back();
    return verdict(follower.misplaced() == 0 && late.application.megabytes < early.application.megabytes + 1 &&
                       late.heap < early.heap + 0.25 && late.service.megabytes < early.service.megabytes + 4 &&
                       late.application.descriptors == early.application.descriptors &&
                       late.service.descriptors == early.service.descriptors,
                   "all in order, under 1 MB more of memory (0.25 of heap, the service 4) and no descriptors");
}

/// One of many, in a process of its own: says when it has the list, and then how many changes it saw out of place.
int beOneOfMany(int contacts, int changes)
{
    Follower follower(QUuid::createUuid());
    follower.load(contacts);
    std::printf("ready\n");
    std::fflush(stdout);
    follower.follow(changes, {});
    std::printf("%d\n", follower.misplaced());
    std::fflush(stdout);
    std::getchar(); // there until it has been measured
    return 0;
}

/// What it takes to serve so many.
struct Crowd
{
    double secondsToList = 0;
    double secondsOfChanges = 0;
    double servicePerDelivery = 0; ///< Microseconds on the service's processor.
    Usage serviceAlone;
    Usage service;
    double mostOfAnApplication = 0; ///< Megabytes.
    int misplaced = 0;

    Crowd(int size, int changes);
};

Crowd::Crowd(int size, int changes)
{
    CoreProcess core(QString::fromUtf8(ZELCORE_SIM), people);
    serviceAlone = Usage::of(core.process());
    QElapsedTimer clock;
    clock.start();
    std::list<QProcess> applications;
    for (int i = 0; i < size; ++i) {
        QProcess& one = applications.emplace_back();
        one.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        one.start(QCoreApplication::applicationFilePath(),
                  {u"one-of-many"_s, QString::number(people), QString::number(changes)});
    }
    const auto wordOf = [](QProcess& one) {
        while (!one.canReadLine() && one.waitForReadyRead(120000)) {
        }
        return one.readLine().trimmed();
    };
    for (QProcess& one : applications)
        misplaced += wordOf(one) != "ready";
    secondsToList = secondsSince(clock);

    zelcore::Simulator twin; // the same people
    twin.generateContacts(people, 1);
    QByteArrayList handles;
    for (const zelcore::Person& person : twin.contacts())
        handles.append(person.handle.toUtf8());
    const double before = Usage::of(core.process()).seconds;
    clock.start();
    for (int number = 1; number <= changes; ++number)
        core.tell("contact change " + handles.at(number % people) + " personalMessage=" + QByteArray::number(number));
    for (QProcess& one : applications) {
        bool isNumber = false;
        const int itsMisplaced = wordOf(one).toInt(&isNumber);
        misplaced += isNumber ? itsMisplaced : changes;
    }
    secondsOfChanges = secondsSince(clock);
    service = Usage::of(core.process());
    servicePerDelivery = (service.seconds - before) * 1e6 / size / changes;
    for (QProcess& one : applications)
        mostOfAnApplication = std::fmax(mostOfAnApplication, Usage::of(one.processId()).megabytes);
    for (QProcess& one : applications) {
        one.closeWriteChannel();
        one.waitForFinished();
    }
}

int applications(int count)
{
    constexpr int changes = 1000;
    const Crowd few(qMax(1, count / 5), changes);
    const Crowd many(count, changes);
    const double perApplication = (many.service.mostMegabytes - many.serviceAlone.megabytes) / count;
    std::printf("applications: %d, all with %d contacts after %.1f s; %d changes to each in %.1f s, %d misplaced; the "
                "service: %.1f MB alone, %.1f MB at most, %.3f MB each, %.1f us per change and application (%.1f with "
                "%d of them); an application at most %.1f MB",
                count, people, many.secondsToList, changes, many.secondsOfChanges, many.misplaced,
                many.serviceAlone.megabytes, many.service.mostMegabytes, perApplication, many.servicePerDelivery,
                few.servicePerDelivery, qMax(1, count / 5), many.mostOfAnApplication);
    return verdict(many.misplaced + few.misplaced == 0 && perApplication < 1 &&
                       many.servicePerDelivery < few.servicePerDelivery * 1.5 + 5,
                   "all seen once and in order, under 1 MB of the service for each, no more work for each");
}

/// What a list takes, in a process of its own: its figures, per contact if not said otherwise.
int list(int size)
{
    CoreProcess core(QString::fromUtf8(ZELCORE_SIM), size);
    Follower follower(application);
    const Memory before = Memory::now();
    const double processor = ownSeconds();
    QElapsedTimer clock;
    clock.start();
    follower.load(size);
    const double seconds = secondsSince(clock);
    const Memory after = Memory::now();
    std::printf("%g %g %g %g %g %g\n", seconds, (ownSeconds() - processor) * 1e6 / size,
                (after.inUse - before.inUse) / size, (after.resident - before.resident) / size,
                Usage::of(core.process()).seconds * 1e6 / size, Usage::of(core.process()).mostMegabytes);
    return 0;
}

struct List
{
    double seconds; ///< To the full list.
    double processor;
    double inUse;
    double resident;
    double serviceProcessor;
    double serviceMegabytes; ///< In all.

    /// The best of three: what else runs makes them slower, never faster.
    static List measured(int size)
    {
        List best = once(size);
        for (int again = 0; again < 2; ++again) {
            const List other = once(size);
            best = other.processor < best.processor ? other : best;
        }
        return best;
    }

private:
    static List once(int size)
    {
        QProcess process;
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(QCoreApplication::applicationFilePath(), {u"list"_s, QString::number(size)});
        process.waitForFinished(-1);
        const QList<QByteArray> words = process.readAll().simplified().split(' ');
        const auto word = [&](int i) { return words.value(i).toDouble(); };
        return {word(0), word(1), word(2), word(3), word(4), word(5)};
    }
};

int contacts(int count)
{
    const List small = List::measured(count / 10);
    const List large = List::measured(count);
    std::printf(
        "contacts: %d in %.1f s, %.1f us of the application's processor each (%.1f with %d of them), %.0f bytes "
        "in use each, %.0f resident; the service: %.1f us each (%.1f), %.0f MB at most",
        count, large.seconds, large.processor, small.processor, count / 10, large.inUse, large.resident,
        large.serviceProcessor, small.serviceProcessor, large.serviceMegabytes);
    return verdict(large.seconds > 0 && large.inUse < 1229 && large.processor < small.processor * 2 &&
                       large.serviceProcessor < small.serviceProcessor * 2,
                   "1.2 KB each, at most twice the work for each of ten times as many");
}

/// A slot that takes a second, five times, while the service goes on sending.
int slow(int count)
{
    constexpr int sleeps = 5;
    Sender service(people);
    Follower follower(application);
    follower.load(people);
    const Held before = Held::now(service);
    QElapsedTimer clock;
    clock.start();
    service.send(count / Sender::portion);
    follower.follow(count, [count](int number) {
        if (number % (count / sleeps) == count / sleeps / 2)
            QThread::sleep(1);
    });
    const double seconds = secondsSince(clock);
    const Held after = Held::now(service);
    const Sender::Pace pace = service.finish();
    const double perMessage = (after.service.mostMegabytes - before.service.megabytes) * 1024 * 1024 / count;
    std::printf(
        "slow: %d in %.1f s, %d of them asleep, %d misplaced; the service: waited %d times, %.1f ms for %d of "
        "them at most, %.1f MB before, %.1f at most, %.0f bytes for each; the application: %.1f MB before, %.1f "
        "at most",
        count, seconds, sleeps, follower.misplaced(), pace.waits, pace.longestMilliseconds, Sender::portion,
        before.service.megabytes, after.service.mostMegabytes, perMessage, before.application.megabytes,
        after.application.mostMegabytes);
    return verdict(follower.misplaced() == 0 && pace.waits == 0 && perMessage < 600 &&
                       after.application.mostMegabytes < before.application.mostMegabytes + 4,
                   "nothing lost, the service never waits, under 600 bytes there for each, under 4 MB in the "
                   "application");
}

/// What a service that means harm can make an application keep: of each kind as many elements as fit into a record,
/// which are never taken back, a list and pictures that never end, and news of nothing.
int hostile(int count)
{
    struct Form
    {
        const char* name;
        int records; ///< for each of what is asked for
        const char* message;
        QByteArray begin;
        QByteArray element; ///< with % for a number
        QByteArray end;
    };
    const QByteArray items = R"({"type":"profileBoxItem","last":false,"elements":[)";
    const QByteArray images = R"({"type":"profileBoxImage","last":false,"elements":[)";
    const Form forms[] = {
        {"contacts", 1, "listAdd", R"({"type":"platformContact","elements":[)", R"({"userId":"%"},)", "{}]}"},
        {"records", 1, "listAdd", R"({"type":"platformUser","elements":[)", R"({"userId":"%","handle":"%"},)", "{}]}"},
        {"items", 1, "listAdd", items, R"({"itemId":"%"},)", "{}]}"},
        {"icons", 1, "listAdd", images, R"({"imageId":"%"},)", "{}]}"},
        {"a list without end", 1, "listChunk", items, R"({"itemId":"more%"},)", "{}]}"},
        {"and without elements", 1, "listChunk", images, "0,", "0]}"},
        {"a picture without end", 1, "stream", R"({"id":"long","value":")", "QUJD", "\"}"},
        {"pictures without end", 100, "stream", R"({"id":"%","value":"QUJD"})", {}, {}},
        {"news of nothing", 1, "unheardOf", R"({"elements":[)", R"({"x":"%"},)", "{}]}"},
    };
    QLoggingCategory::setFilterRules(u"zelcore.warning=false"_s); // it has nothing more of those whom it lists
    zelcore::TestService service;
    service.generateContacts(1, 1);
    const QString change = u"contact change %1 personalMessage=%2"_s.arg(service.contacts().first().handle);
    Follower follower(application);
    follower.load(1);
    int passed = 0;
    double most = 0;
    std::printf("hostile: %d records of 60,000 bytes; bytes kept for each that was sent:", count);
    for (const Form& form : forms) {
        const double before = Memory::now().inUse;
        double sent = 0;
        const auto send = [&](const char* message, const QByteArray& body) {
            sent += double(qstrlen(message) + size_t(body.size()));
            service.execute(u"send %1 '%2'"_s.arg(QLatin1String(message), QString::fromLatin1(body)));
        };
        if (qstrcmp(form.message, "listChunk") == 0) // counts only where a list has begun
            send("listAll", form.begin + "{}]}");
        for (int record = 0, number = 0; record < count * form.records; ++record) {
            QByteArray body = QByteArray(form.begin).replace('%', QByteArray::number(record));
            while (!form.element.isEmpty() && body.size() < 60000)
                body += QByteArray(form.element).replace('%', QByteArray::number(++number, 36));
            send(form.message, body + form.end);
        }
        service.execute(change.arg(++passed));
        follower.follow(1, [](int) {});
        const double kept = (Memory::now().inUse - before) / sent;
        most = std::fmax(most, kept);
        std::printf("%s %s %.1f", &form == std::begin(forms) ? "" : ",", form.name, kept);
    }
    return verdict(most < 100, "under 100");
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication app(argc, argv);
    const QStringList words = QCoreApplication::arguments().mid(1);
    const QString what = words.value(0);
    const int count = words.value(words.size() - 1).toInt();
    const auto orElse = [count](int usual) { return count > 0 ? count : usual; };
    if (what == "messages"_L1)
        return messages(orElse(1000000));
    if (what == "applications"_L1)
        return applications(orElse(50));
    if (what == "contacts"_L1)
        return contacts(orElse(200000));
    if (what == "slow"_L1)
        return slow(orElse(100000));
    if (what == "hostile"_L1)
        return hostile(orElse(10));
    // What the others start.
    if (what == "serve"_L1)
        return Sender::serve(words.value(1), count);
    if (what == "one-of-many"_L1)
        return beOneOfMany(words.value(1).toInt(), count);
    if (what == "list"_L1)
        return list(count);
    std::fprintf(stderr, "usage: soak messages|applications|contacts|slow|hostile [N]\n");
    return 2;
}
