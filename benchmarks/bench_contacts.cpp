// SPDX-License-Identifier: Apache-2.0
// Contacts as an application gets them: from the service, through the object, to the public classes; and the object by
// itself. Each run is one measurement in a process of its own, one line of JSON on standard output:
//
//   bench_contacts load library|qjson|simdjson|object N    N contacts, from the request to the last of them
//   bench_contacts change N                                one contact's change, with N contacts there
//   bench_contacts object                                  one record out and the answer in
#include "contacts/ByHand.h"
#include "contacts/CoreProcess.h"
#include "contacts/Memory.h"
#include "contacts/Packets.h"
#include "contacts/RoundTrip.h"

#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/Context.h>

#include <pps/object.h>

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QEventLoop>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QRandomGenerator>
#include <QtCore/QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include <fcntl.h>

using namespace Qt::StringLiterals;

using namespace vx::platform::zel;

/// Everything that a client does from its first message until all is there, within one function that tools find by its
/// name: `valgrind --tool=callgrind --toggle-collect=loadEverything bench_contacts load ...` counts that and nothing
/// else.
extern "C" void loadEverything(QEventLoop& loop);
extern "C" [[gnu::noinline]] void loadEverything(QEventLoop& loop)
{
    loop.exec();
}

namespace {

const QUuid application("6f8d2c4e-5b0a-4a37-9d0e-0c8f3f1f2a10");

void print(const QJsonObject& result)
{
    std::printf("%s\n", QJsonDocument(result).toJson(QJsonDocument::Compact).constData());
}

[[noreturn]] void fail(const char* why)
{
    std::fprintf(stderr, "bench_contacts: %s\n", why);
    std::exit(1);
}

double processorSeconds()
{
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) / 1e9;
}

double medianOf(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

/// What loading n contacts costs, from start() to finish().
class LoadMeter
{
public:
    void start()
    {
        m_before = Memory::now();
        m_processor = processorSeconds();
        m_clock.start();
    }
    bool isStarted() const { return m_clock.isValid(); }

    QJsonObject finish(const QString& client, int contacts)
    {
        const double milliseconds = double(m_clock.nsecsElapsed()) / 1e6;
        const double processor = processorSeconds() - m_processor;
        const Memory after = Memory::now();
        return {{u"measurement"_s, u"load"_s},
                {u"client"_s, client},
                {u"contacts"_s, contacts},
                {u"milliseconds"_s, milliseconds},
                {u"microsecondsPerContact"_s, milliseconds * 1000 / contacts},
                {u"processorMicrosecondsPerContact"_s, processor * 1e6 / contacts},
                {u"residentBytesPerContact"_s, (after.resident - m_before.resident) / contacts},
                {u"bytesInUsePerContact"_s, (after.inUse - m_before.inUse) / contacts}};
    }

private:
    QElapsedTimer m_clock;
    double m_processor = 0;
    Memory m_before;
};

/// An application that registers and follows its contacts.
class Application
{
public:
    explicit Application(CoreProcess& core)
    {
        core.pause();
        m_context = std::make_unique<Context>(application);
        core.resume();
    }

    /// Runs `ready` once all contacts are there, in the slot that tells.
    void run(int contacts, const std::function<void()>& ready)
    {
        m_contacts = contacts;
        m_ready = ready;
        QObject::connect(m_context.get(), &Context::registrationStateUpdated, &m_loop,
                         [this](RegistrationState::Type state) { registrationChanged(state); });
        loadEverything(m_loop);
    }

    LoadMeter meter;
    /// There from Allowed on.
    std::unique_ptr<ContactService> service;

    void quit() { m_loop.quit(); }

private:
    void registrationChanged(RegistrationState::Type state)
    {
        if (state == RegistrationState::Unregistered) {
            // The library asks for contacts as soon as the service has given access, a few messages before it says
            // Allowed. So the clock starts with the request to register: a little more than loading, never less.
            meter.start();
            if (!m_context->requestRegisterApplicationSilent())
                fail("the registration was refused");
        } else if (state == RegistrationState::Allowed && !service) {
            service = std::make_unique<ContactService>(m_context.get());
            QObject::connect(service.get(), &ContactService::contactListUpdated, &m_loop, [this] { listUpdated(); });
            listUpdated();
        }
    }
    void listUpdated()
    {
        if (service->isValid() && service->contactCount() == m_contacts && m_ready)
            std::exchange(m_ready, nullptr)();
    }

    std::unique_ptr<Context> m_context;
    QEventLoop m_loop;
    std::function<void()> m_ready;
    int m_contacts = 0;
};

void loadWithLibrary(CoreProcess& service, int contacts)
{
    Application user(service);
    user.run(contacts, [&] {
        print(user.meter.finish(u"library"_s, contacts));
        user.quit();
    });
}

void loadByHand(const QString& client, int descriptor, const HandDecoder& decoder, int contacts)
{
    QEventLoop loop;
    HandClient user(descriptor, decoder);
    LoadMeter meter;
    meter.start();
    user.load([&] {
        if (user.size() != contacts)
            fail("contacts are missing");
        print(meter.finish(client, contacts));
        loop.quit();
    });
    loadEverything(loop);
}

/// One change after the other, each from the command until the application's slot.
void change(CoreProcess& service, int contacts)
{
    constexpr int changes = 1000;
    constexpr int warmUp = 50;
    Application user(service);
    QStringList handles;
    QRandomGenerator random(1);
    std::vector<double> waits;
    QElapsedTimer clock;
    double processor = 0;
    int number = 0;
    const auto next = [&] {
        const QString& handle = handles.at(random.bounded(int(handles.size())));
        clock.start();
        service.tell("contact change " + handle.toUtf8() + " personalMessage=" + QByteArray::number(++number));
    };
    user.run(contacts, [&] {
        for (const Contact& contact : user.service->contacts())
            handles.append(contact.handle());
        QObject::connect(user.service.get(), &ContactService::contactUpdated, user.service.get(), [&] {
            waits.push_back(double(clock.nsecsElapsed()) / 1000);
            if (number == warmUp) {
                waits.clear();
                processor = processorSeconds();
            }
            number < changes + warmUp ? next() : user.quit();
        });
        next();
    });
    print({{u"measurement"_s, u"change"_s},
           {u"contacts"_s, contacts},
           {u"microseconds"_s, medianOf(waits)},
           {u"processorMicroseconds"_s, (processorSeconds() - processor) * 1e6 / changes}});
}

/// Both ways in turns, so that they meet the same weather.
void object(const QString& root)
{
    constexpr int size = 4096;
    constexpr int rounds = 4000;
    const QByteArray path = root.toUtf8() + "/echo";
    std::vector<double> direct;
    std::vector<double> opened;
    for (int turn = 0; turn < 7; ++turn) {
        direct.push_back(roundTrip(connectDirectly(path), size, rounds));
        opened.push_back(roundTrip(::pps_object_open("/pps/echo", O_RDWR), size, rounds));
    }
    print({{u"measurement"_s, u"object"_s},
           {u"bytes"_s, size},
           {u"directMicroseconds"_s, medianOf(direct)},
           {u"objectMicroseconds"_s, medianOf(opened)}});
}

} // namespace

int main(int argc, char** argv)
{
    QStringList words;
    for (int i = 1; i < argc; ++i)
        words.append(QString::fromLocal8Bit(argv[i]));
    const QString what = words.value(0);
    if (what == "object"_L1) {
        const QTemporaryDir folder;
        qputenv("PPS_ROOT", folder.path().toUtf8());
        const EchoProcess echo(folder.path().toUtf8() + "/echo");
        const QCoreApplication app(argc, argv);
        object(folder.path());
        return 0;
    }

    const QCoreApplication app(argc, argv);
    const int contacts = words.isEmpty() ? 0 : words.last().toInt();
    if (contacts < 1) {
        std::fprintf(stderr, "usage: bench_contacts load library|qjson|simdjson|object N | change N | object\n");
        return 2;
    }
    CoreProcess service(QString::fromUtf8(ZELCORE_SIM), contacts);
    const QByteArray object = "/services/zelcore/platform";
    const auto direct = [&] { return connectDirectly(service.root().toUtf8() + object); };
    const QString client = words.value(1);
    if (what == "change"_L1)
        change(service, contacts);
    else if (client == "qjson"_L1)
        loadByHand(client, direct(), decodeWithQt(), contacts);
    else if (client == "simdjson"_L1)
        loadByHand(client, direct(), decodeWithSimdjson(), contacts);
    else if (client == "object"_L1)
        loadByHand(client, ::pps_object_open("/pps" + object, O_RDWR), decodeWithSimdjson(), contacts);
    else
        loadWithLibrary(service, contacts);
    return 0;
}
