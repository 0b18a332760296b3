// SPDX-License-Identifier: Apache-2.0
#include <simulator/world/People.h>

#include <simulator/world/World.h>

#include <QtCore/QtEndian>

#include <array>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

/// People who share a script. Words are separated by a bar.
struct Culture
{
    const char16_t* given;
    const char16_t* family;
    const char16_t* messages;
    const char16_t* timeZone;
    const char16_t* country;
};

constexpr std::array<Culture, 10> cultures{{
    {u"Anna|Ben|Chloë|Dario|Elif|Françoise|Jürgen|Zoë", u"Alder|Brandt|Castellón|Dvořák|Engström|O’Neill",
     u"Out for a run|Back at five|Gone fishing 🎣|Café, s’il vous plaît|Grüße aus der Küche", u"Europe/Berlin", u"DE"},
    {u"Анна|Борис|Вера|Дмитрий|Жанна|Олег", u"Белова|Ершов|Крылов|Соколова",
     u"На даче|Скоро буду|Читаю «Войну и мир»|Не беспокоить", u"Europe/Sofia", u"BG"},
    {u"Αλέξης|Ελένη|Γιώργος|Σοφία", u"Παππάς|Νικολάου|Δημητρίου",
     u"Στη θάλασσα|Επιστρέφω αμέσως|Καλημέρα ☀️", u"Europe/Athens", u"GR"},
    {u"أحمد|ليلى|سمير|نور", u"حداد|منصور|الزين", u"في الطريق|مشغول الآن|صباح الخير", u"Africa/Cairo", u"EG"},
    {u"נועה|אורי|תמר|איתן", u"לוי|כהן|ברק", u"בדרך הביתה|שותה קפה|אחזור מאוחר", u"Asia/Jerusalem", u"IL"},
    {u"美咲|健太|さくら|ハルト", u"佐藤|鈴木|高橋", u"会議中です|散歩に行ってきます|また明日 🌸", u"Asia/Tokyo", u"JP"},
    {u"伟|芳|秀英|子轩", u"王|李|张|刘", u"在路上|晚点联系|喝茶中 🍵", u"Asia/Shanghai", u"CN"},
    {u"지우|서연|민준", u"김|이|박", u"회의 중|잠시 자리 비움|좋은 하루", u"Asia/Seoul", u"KR"},
    {u"आरव|दीपा|ईशान|मीरा", u"शर्मा|पटेल|राव", u"काम पर|जल्दी लौटूँगा|चाय का समय", u"Asia/Kolkata", u"IN"},
    {u"🦊 Robin|Sam 🚀|Alex 👩‍👩‍👧|Kim 🇫🇮", u"Vale|Storm|Reed",
     u"🎵🎵🎵|👍🏽|🏔️ → 🏖️|😀", u"Europe/Helsinki", u"FI"},
}};

constexpr const char16_t* statuses = u"Available|In a meeting|On the phone|At lunch|Away";

constexpr std::array<int, 12> pictureSizes{300, 777, 1024, 2048, 3000, 4096, 6000, 9000, 12000, 15360, 15361, 20000};

QString pick(const char16_t* words, PeopleMaker& maker)
{
    const QStringList list = QString::fromUtf16(words).split(u'|');
    return list.at(maker.below(int(list.size())));
}

/// A part of a PNG file: its length, \a name, \a data and their checksum.
QByteArray pngPart(const char* name, const QByteArray& data)
{
    const auto bytesOf = [](quint32 number) {
        const quint32 bigEndian = qToBigEndian(number);
        return QByteArray(reinterpret_cast<const char*>(&bigEndian), sizeof bigEndian);
    };
    const QByteArray summed = name + data;
    quint32 sum = ~0U;
    for (const char byte : summed) {
        sum ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            sum = sum >> 1 ^ (sum % 2 == 1 ? 0xedb88320U : 0U);
    }
    return bytesOf(quint32(data.size())) + summed + bytesOf(~sum);
}

/// A PNG picture of 8 by 8 pixels in the only colour of its palette. The pixels are not compressed, so that the bytes
/// are the same whatever library compresses on this machine.
QByteArray square(const std::array<char, 3>& color)
{
    const QByteArray header = QByteArray::fromHex("00000008 00000008 01 03 00 00 00");
    const QByteArray pixels =
        QByteArray::fromHex("7801 01 1000 efff") + QByteArray(16, '\0') + QByteArray::fromHex("00100001");
    return QByteArrayLiteral("\x89PNG\r\n\x1a\n") + pngPart("IHDR", header) +
           pngPart("PLTE", QByteArray(color.data(), color.size())) + pngPart("IDAT", pixels) + pngPart("IEND", {});
}

} // namespace

PeopleMaker::PeopleMaker(quint32 seed)
    : m_random(seed)
{
}

int PeopleMaker::below(int limit)
{
    return int(m_random() % quint32(limit));
}

Person PeopleMaker::next(int number)
{
    const Culture& culture = cultures[size_t(below(int(cultures.size())))];
    Person person;
    person.handle = u"friend%1"_s.arg(number, 5, 10, QChar(u'0'));
    person.userId = u"user-%1"_s.arg(person.handle);
    person.ppId = u"pp-%1"_s.arg(person.handle);
    person.appVersion = u"1.%1"_s.arg(below(10));
    const QString given = pick(culture.given, *this);
    person.displayName = given + u' ' + pick(culture.family, *this);
    person.personalMessage = below(4) == 0 ? QString() : pick(culture.messages, *this);
    person.statusMessage = status();
    person.timeZone = QString::fromUtf16(culture.timeZone);
    person.countryCode = QString::fromUtf16(culture.country);
    person.showBusy = below(5) == 0;
    person.clientVersion = 600 + below(200);
    if (below(3) == 0) {
        person.avatarId = World::hashOf(pictures().at(below(int(pictures().size()))));
        person.avatarMimeType = u"image/png"_s;
    }
    return person;
}

QString PeopleMaker::message()
{
    return pick(cultures[size_t(below(int(cultures.size())))].messages, *this);
}

QString PeopleMaker::status()
{
    return pick(statuses, *this);
}

const QList<QByteArray>& PeopleMaker::pictures()
{
    if (m_pictures.isEmpty()) {
        for (const int size : pictureSizes)
            m_pictures.append(picture(size, quint32(size)));
    }
    return m_pictures;
}

QByteArray PeopleMaker::picture(int size, quint32 seed)
{
    std::mt19937 noise(seed);
    const quint32 color = noise();
    QByteArray data = square({char(color), char(color >> 8), char(color >> 16)}).left(size);
    while (data.size() < size)
        data.append(char(noise() & 0xff));
    return data;
}

QString addPeople(World& world, int count, quint32 seed)
{
    constexpr qsizetype mostPeople = 1'000'000; // each takes a kilobyte or two
    if (count > mostPeople - world.everybody().size())
        return u"a world has room for %1 contacts"_s.arg(mostPeople);
    PeopleMaker maker(seed);
    for (const QByteArray& picture : maker.pictures())
        world.keepPicture(picture);
    QString problem;
    for (int i = 0; i < count && problem.isEmpty(); ++i) {
        Person person = maker.next(world.addedContacts());
        problem = world.addContact(person, true);
    }
    return problem;
}

} // namespace zelcore
