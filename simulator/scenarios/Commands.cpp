// SPDX-License-Identifier: Apache-2.0
// How the words of a line find their row in the tables, and what is wrong with them when they do not.
#include <simulator/scenarios/Commands.h>

#include <simulator/SimulatorPrivate.h>
#include <simulator/scenarios/CommandForms.h>
#include <simulator/scenarios/Words.h>
#include <simulator/world/People.h>
#include <simulator/world/PersonJson.h>

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace zelcore {

QString table(const QList<QStringList>& rows)
{
    QList<qsizetype> widths;
    for (const QStringList& row : rows) {
        widths.resize(qMax(widths.size(), row.size()));
        for (qsizetype i = 0; i < row.size(); ++i)
            widths[i] = qMax(widths.at(i), row.at(i).size());
    }
    QString text;
    for (const QStringList& row : rows) {
        for (qsizetype i = 0; i + 1 < row.size(); ++i)
            text += row.at(i).leftJustified(widths.at(i) + 2);
        text += row.last() + u'\n';
    }
    return text;
}

QString readPicture(const QString& word, QByteArray* data)
{
    bool isSize = false;
    const int size = word.toInt(&isSize);
    data->clear();
    if (size < 0 || size > World::largestPicture)
        return u"a picture has 1 to %1 bytes"_s.arg(World::largestPicture);
    if (isSize) {
        *data = PeopleMaker::picture(size, quint32(size));
    } else if (word.isEmpty()) {
        return u"a picture is a file, or so many made-up bytes"_s;
    } else if (word != "none"_L1) {
        QFile file(word);
        if (!file.open(QIODevice::ReadOnly))
            return u"%1: %2"_s.arg(word, file.errorString());
        *data = file.read(World::largestPicture + 1);
    }
    return {};
}

namespace {

QJsonObject objectOf(const QString& json)
{
    return QJsonDocument::fromJson(json.toUtf8()).object();
}

/// All rows, in the order of the help.
const QList<const Form*>& allForms()
{
    static const QList<const Form*> all = [] {
        QList<const Form*> forms;
        for (const auto& part : {registrationForms(), peopleForms(), boxForms(), wireForms()}) {
            for (const Form& form : part)
                forms.append(&form);
        }
        return forms;
    }();
    return all;
}

QString usageOf(const Form& form)
{
    return (QString::fromUtf16(form.name) + u' ' + QString::fromUtf16(form.arguments)).trimmed();
}

/// What is wrong with \a word as the argument \a name. Words of small letters, with bars between them, are the only
/// ones that may stand.
QString wordProblem(const QString& name, const QString& word)
{
    static const QStringList numbers{u"MS"_s, u"COUNT"_s, u"SEED"_s, u"BYTES"_s};
    static const QStringList policies = QStringList{u"auto"_s, u"manual"_s} + Simulator::registrationStates();
    bool isNumber = false;
    const double number = word.toDouble(&isNumber);
    if (numbers.contains(name) && (word.toInt(&isNumber) < 0 || !isNumber))
        return u"%1 is a number from 0, not \"%2\""_s.arg(name, word);
    if (name == "PER-SECOND"_L1 && !(isNumber && number >= 0 && number <= 100000))
        return u"%1 is a number from 0 to 100000, not \"%2\""_s.arg(name, word);
    if (name == "JSON"_L1 && objectOf(word).isEmpty() && word.simplified().remove(u' ') != "{}"_L1)
        return u"\"%1\" is no JSON object"_s.arg(word.left(60));
    if (name == "UUID"_L1 && Addressee::of(word).value_or(Addressee()).uuid.isEmpty())
        return u"\"%1\" is no UUID"_s.arg(word.left(60));
    if (name.contains(u'='))
        return word.indexOf(u'=') < 1 ? u"fields are given as FIELD=VALUE"_s : QString();
    const QStringList choices = name == "POLICY"_L1   ? policies
                                : name == "TARGET"_L1 ? InvocationTargets::names()
                                                      : name.split(u'|');
    const bool isChoice =
        name == "POLICY"_L1 || name == "TARGET"_L1 ||
        std::all_of(choices.cbegin(), choices.cend(), [](const QString& choice) { return choice.front().isLower(); });
    return isChoice && !choices.contains(word) ? u"\"%1\" is none of %2"_s.arg(word, choices.join(", "_L1)) : QString();
}

/// Whether the words behind a command are what a form of it takes; if not, why.
QString argumentProblem(const Form& form, const QStringList& words)
{
    qsizetype at = 0;
    for (QString name : QString::fromUtf16(form.arguments).split(u' ', Qt::SkipEmptyParts)) {
        const qsizetype end = name.endsWith("..."_L1) ? words.size() : qMin(at + 1, words.size());
        if (at == words.size() && !name.startsWith(u'['))
            return u"%1 is missing"_s.arg(name);
        name.remove(u'[').remove(u']').remove("..."_L1);
        for (; at < end; ++at) {
            const QString problem = wordProblem(name, words.at(at));
            if (!problem.isEmpty())
                return problem;
        }
    }
    return at < words.size() ? u"\"%1\" is one word too many"_s.arg(words.at(at)) : QString();
}

/// Why there is no form for these words, of which the first `nameLength` name a command.
QString usageProblem(const QStringList& words, qsizetype nameLength, const QString& argumentProblem)
{
    QStringList commands;
    QStringList actions;
    QStringList usages;
    for (const Form* const form : allForms()) {
        const QStringList name = QString::fromUtf16(form->name).split(u' ');
        commands.append(name.first());
        if (name.first() == words.first() && name.size() > 1)
            actions.append(name.last());
        if (name.mid(0, nameLength) == words.mid(0, nameLength))
            usages.append(usageOf(*form));
    }
    commands.removeDuplicates();
    actions.removeDuplicates();
    if (!commands.contains(words.first()))
        return u"\"%1\" is not a command; there are: %2"_s.arg(words.first().left(60), commands.join(", "_L1));
    const bool isAction = nameLength > 1 || words.size() < 2;
    if (!actions.isEmpty() && !isAction)
        return u"%1 has no action \"%2\"; there are: %3"_s.arg(words.first(), words.at(1).left(60),
                                                               actions.join(", "_L1));
    return u"%1; usage: %2"_s.arg(argumentProblem, usages.join("; "_L1));
}

} // namespace

Commands::Commands(SimulatorPrivate& simulator)
    : m_world(simulator.world)
    , m_simulator(&simulator)
{
}

std::optional<QStringList> Commands::split(const QString& line, QString* error)
{
    return splitWords(line, error, u'#');
}

bool Commands::run(const QString& line, QString* reply) const
{
    reply->clear();
    const std::optional<QStringList> words = split(line, reply);
    return words && (words->isEmpty() || run(*words, reply));
}

bool Commands::run(const QStringList& words, QString* reply) const
{
    const bool isForOne = words.value(0) == "app"_L1;
    const std::optional<Addressee> whose = isForOne ? Addressee::one(words.value(1), reply) : Addressee();
    return whose && runFor(*whose, words.mid(isForOne ? 2 : 0), reply);
}

bool Commands::runFor(const Addressee& whose, const QStringList& words, QString* reply) const
{
    qsizetype nameLength = 0;
    const Form* const form = find(words, &nameLength, reply);
    if (form && !whose.isEverybody() && !form->isForOne())
        *reply = u"\"%1\" concerns all applications"_s.arg(words.mid(0, nameLength).join(u' '));
    if (!reply->isEmpty())
        return false;
    const QStringList args = words.mid(nameLength);
    if (!m_simulator && (form->ofApplications || !form->isOfWorld())) {
        // Whoever is named must be there all the same.
        if (!form->isOfWorld() && QStringView(form->arguments) == u"HANDLE")
            m_world.findContact(args.first(), reply);
        return reply->isEmpty();
    }
    const Answer answer = act(*form, whose, args);
    *reply = answer.problem.isEmpty() ? answer.text : answer.problem;
    return answer.problem.isEmpty();
}

/// The row that takes the words; null, with a sentence in \a problem, when there is none.
const Form* Commands::find(const QStringList& words, qsizetype* nameLength, QString* problem)
{
    QString mismatch;
    const Form* fitting = nullptr;
    for (const Form* const form : allForms()) {
        const QStringList name = QString::fromUtf16(form->name).split(u' ');
        if (words.mid(0, name.size()) != name || name.size() < *nameLength)
            continue;
        // "contact add" is no contact of the name "add".
        if (name.size() > *nameLength || !fitting) {
            mismatch = argumentProblem(*form, words.mid(name.size()));
            fitting = mismatch.isEmpty() ? form : nullptr;
        }
        *nameLength = name.size();
    }
    *problem = fitting ? QString() : words.isEmpty() ? u"no command"_s : usageProblem(words, *nameLength, mismatch);
    return fitting;
}

Answer Commands::act(const Form& form, const Addressee& whose, const QStringList& args) const
{
    if (const auto* inWorld = std::get_if<InWorld>(&form.run))
        return (*inWorld)(m_world, args);
    if (const auto* inService = std::get_if<InService>(&form.run))
        return (*inService)(*m_simulator, args);
    if (const auto* forApplications = std::get_if<ForApplications>(&form.run))
        return (*forApplications)(*m_simulator, whose, args);
    QString problem;
    const QString owner = m_simulator ? m_simulator->boxOwner(whose, &problem) : whose.uuid;
    return problem.isEmpty() ? std::get<InBox>(form.run)(m_world, owner, args) : Answer{problem};
}

QString Commands::help()
{
    constexpr qsizetype column = 36;
    QString text;
    for (const Form* const form : allForms()) {
        const QString usage = usageOf(*form);
        // A long form has its explanation on a line of its own, in the same column.
        const QString gap = usage.size() > column ? u'\n' + QString(column + 2, u' ') : QString();
        text += u"  %1%2  %3\n"_s.arg(usage.leftJustified(column), gap, QString::fromUtf16(form->what));
    }
    const QStringList fields = personFieldNames();
    return text +
           u"\"app APP\" before a command of the box, of faults, latency and states means one application, by its\n"
           "number or UUID.\nA person has %1,\n%2,\n%3, picture.\nBlanks separate words; \"quotes\" keep them together "
           "(\\n in "
           "double ones is a\nline break); # begins a comment."_s.arg(
               fields.mid(0, 6).join(", "_L1), fields.mid(6, 5).join(", "_L1), fields.mid(11).join(", "_L1));
}

QStringList Commands::names()
{
    QStringList names;
    for (const Form* const form : allForms())
        names += QString::fromUtf16(form->name);
    names.removeDuplicates();
    return names;
}

} // namespace zelcore
