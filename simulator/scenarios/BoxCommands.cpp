// SPDX-License-Identifier: Apache-2.0
#include <simulator/scenarios/CommandForms.h>

#include <simulator/world/World.h>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

Answer showBox(World& world, const QString& owner, const QStringList&)
{
    QList<QStringList> rows;
    for (const BoxItem& item : world.box(owner).items())
        rows.append({item.id, u"icon "_s + (item.iconId.isEmpty() ? u"none"_s : item.iconId),
                     u"text=\"%1\" cookie=\"%2\""_s.arg(item.text, item.cookie)});
    for (const BoxIcon& icon : world.box(owner).icons())
        rows.append({u"icon "_s + icon.id, u"%1 bytes"_s.arg(world.picture(icon.hash).size()), icon.hash});
    return say(table(rows) +
               u"items: %1, icons: %2"_s.arg(world.box(owner).items().size()).arg(world.box(owner).icons().size()));
}

Answer addItem(World& world, const QString& owner, const QStringList& args)
{
    BoxItem item{QString(), args.first(), args.value(1), args.value(2)};
    const QString problem = world.addBoxItem(item, owner);
    return outcomeOf(problem, item.id);
}

Answer changeItem(World& world, const QString& owner, const QStringList& args)
{
    const BoxItem* before = world.box(owner).item(args.first());
    BoxItem item = before ? *before : BoxItem{args.first(), {}, {}, {}};
    for (const QString& field : args.mid(1)) {
        const QString name = field.section(u'=', 0, 0);
        QString BoxItem::*member = name == "text"_L1     ? &BoxItem::text
                                   : name == "cookie"_L1 ? &BoxItem::cookie
                                   : name == "icon"_L1   ? &BoxItem::iconId
                                                         : nullptr;
        if (!member)
            return {u"no field \"%1\"; there are: text, cookie, icon"_s.arg(name)};
        item.*member = field.section(u'=', 1);
    }
    return outcomeOf(world.changeBoxItem(item, owner));
}

Answer addIcon(World& world, const QString& owner, const QStringList& args)
{
    return withPicture(args.last(),
                       [&](const QByteArray& data) { return world.addBoxIcon(args.first(), data, owner); });
}

using W = World;
using A = QStringList;

const Form forms[] = {
    {u"box", u"", u"shows the profile box", showBox},
    {u"box add", u"TEXT [COOKIE] [ICON]", u"adds an item", addItem},
    {u"box change", u"ID text|cookie|icon=VALUE...", u"changes one", changeItem, true},
    {u"box remove", u"ID", u"removes one",
     [](W& w, const QString& owner, const A& args) { return outcomeOf(w.removeBoxItem(args.first(), owner)); }, true},
    {u"box clear", u"", u"removes all",
     [](W& w, const QString& owner, const A&) { return w.clearBox(owner), Answer(); }},
    {u"box icon", u"ID none", u"removes an icon",
     [](W& w, const QString& owner, const A& args) { return outcomeOf(w.removeBoxIcon(args.first(), owner)); }, true},
    {u"box icon", u"ID FILE|SIZE", u"registers one", addIcon},
    {u"box limit", u"none", u"it takes as many items as come",
     [](W& w, const A&) { return w.setBoxLimit(-1), Answer(); }},
    {u"box limit", u"COUNT", u"it takes so many",
     [](W& w, const A& args) { return w.setBoxLimit(args.first().toInt()), Answer(); }},
    {u"eco", u"PPID", u"the eco identifier of a ppId", [](W& w, const A& args) { return say(w.ecoId(args.first())); }},
    {u"eco", u"PPID ECOID", u"sets it",
     [](W& w, const A& args) { return w.setEcoId(args.first(), args.last()), Answer(); }},
    {u"eco-status", u"ECOID", u"how the user stands with its owner",
     [](W& w, const A& args) { return say(w.ecoIdStatus(args.first())); }},
    {u"eco-status", u"ECOID Unknown|ContactExists|PendingContactExists", u"sets it",
     [](W& w, const A& args) { return outcomeOf(w.setEcoIdStatus(args.first(), args.last())); }},
};

} // namespace

std::span<const Form> boxForms()
{
    return forms;
}

} // namespace zelcore
