// SPDX-License-Identifier: Apache-2.0
// Changes inputs by whole steps, which changing bytes seldom does: a step in between is a step that means something.
#include <QtCore/QByteArray>
#include <QtCore/QByteArrayList>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <random>

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);

namespace {

class Dice
{
public:
    explicit Dice(unsigned seed)
        : m_random(seed)
    {
    }

    qsizetype below(qsizetype end) { return static_cast<qsizetype>(m_random() % static_cast<unsigned>(end)); }
    bool oneIn(int times) { return below(times) == 0; }
    char of(QByteArrayView letters) { return letters.at(below(letters.size())); }
    /// Up to so many of the letters.
    QByteArray some(qsizetype most, QByteArrayView letters)
    {
        QByteArray text;
        for (qsizetype i = below(most + 1); i > 0; --i)
            text += of(letters);
        return text;
    }

private:
    std::minstd_rand m_random;
};

/// What the members of a list's elements are called, see Messages.cpp.
QByteArrayView membersOf(char list)
{
    switch (list) {
    case 'g':
        return "aIrSrrrhnmsibyu";
    case 'i':
        return "Togg";
    case 'b':
        return "H";
    default:
        return "hhhhnmsiibypvPC";
    }
}

QByteArray randomElement(Dice& dice, char list)
{
    QByteArray element(1, dice.of(list == 'g' ? "KRRa" : list == 'b' ? "012aE" : "aaabbbcdeE_N"));
    for (qsizetype i = dice.below(4); i > 0; --i) {
        element += dice.of(membersOf(list));
        element += dice.oneIn(3) ? dice.of("SUPXITFNOAMBQ-+^~.<>$!/[{=zL(@#017") : dice.of("abcdeSXEij");
    }
    return element;
}

/// A message that is not about a list, and its members.
struct OtherMessage
{
    char type;
    const char* members;
};

constexpr OtherMessage otherMessages[] = {{'s', "dVl"}, {'s', "dVl"}, {'n', "D"},  {'i', "gD"},
                                          {'p', "x"},   {'q', "pe"},  {'t', "ex"}, {'v', "u"}};

QByteArray randomOtherMessage(Dice& dice)
{
    const OtherMessage& message = otherMessages[dice.below(std::size(otherMessages))];
    QByteArray text = message.type + QByteArray("?  ");
    for (const char* member = message.members; *member; ++member) {
        text += *member;
        text += dice.of(*member == 'l' ? "TTTF" : *member == 'g' ? "ijk1" : *member == 'V' ? "BQaEN" : "@@@abcS#E");
    }
    return text;
}

QByteArray randomMessage(Dice& dice)
{
    if (dice.oneIn(5))
        return randomOtherMessage(dice);
    const char list = dice.of("cccuuuugiib");
    QByteArray message = dice.of("aakkkee+++--~~~w") + QByteArray(1, list) + ' ' + dice.some(2, "lllccc") +
                         (dice.oneIn(12) ? dice.some(2, "iwdonxtmB2NY") : QByteArray());
    for (qsizetype i = dice.below(4); i > 0; --i)
        message += ' ' + randomElement(dice, list);
    return message;
}

QByteArray randomStep(Dice& dice)
{
    switch (dice.below(16)) {
    case 0:
        return 's' + dice.some(6, "nnnnrrddgCSzZ.RDMPEI+-_");
    case 1:
        return 'a' + QByteArray(1, dice.of("RQDDMSPPEFVW+*-_IIZZ")) + dice.of("ab") + dice.of("abc012<LnE") +
               dice.of("ab12");
    case 2:
        return 'o' + QByteArray(1, dice.of("abcdefghijkl")) + dice.some(1, "-");
    case 3:
        return "x";
    case 4:
        return 'y' + QByteArray(1, dice.of("0123M"));
    case 5:
        return QByteArray(1, dice.of("tigc")) + dice.of("12345");
    case 6:
        return 'M' + randomMessage(dice);
    default:
        return 'm' + randomMessage(dice);
    }
}

QByteArray mutatedStep(const QByteArray& step)
{
    QByteArray bytes = step;
    bytes.resize(step.size() + 16);
    bytes.truncate(
        static_cast<qsizetype>(LLVMFuzzerMutate(reinterpret_cast<uint8_t*>(bytes.data()),
                                                static_cast<size_t>(step.size()), static_cast<size_t>(bytes.size()))));
    return bytes.replace('\n', ' ');
}

void mutate(QByteArrayList& steps, Dice& dice)
{
    const qsizetype at = dice.below(steps.size());
    switch (dice.below(8)) {
    case 0:
        steps.removeAt(at);
        return;
    case 1:
        steps.insert(at, steps.at(dice.below(steps.size())));
        return;
    case 2:
        steps.move(at, dice.below(steps.size()));
        return;
    case 3:
        steps[at] = mutatedStep(steps.at(at));
        return;
    case 4:
        steps[at] = randomStep(dice);
        return;
    default:
        steps.insert(at, randomStep(dice));
    }
}

} // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned seed)
{
    Dice dice(seed);
    if (dice.oneIn(4))
        return LLVMFuzzerMutate(data, size, maxSize);
    QByteArrayList steps = QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)).split('\n');
    for (qsizetype i = dice.below(4); i >= 0; --i) {
        mutate(steps, dice);
        if (steps.isEmpty())
            steps.append(randomStep(dice));
    }
    const QByteArray text = steps.join('\n');
    const size_t length = std::min(maxSize, static_cast<size_t>(text.size()));
    std::memcpy(data, text.constData(), length);
    return length;
}
