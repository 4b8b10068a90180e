#include "managers/NoticManager.h"

#include "managers/Audit.h"
#include "managers/Records.h"
#include "managers/References.h"
#include "store/Clock.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

const QString Announcement = u"SYS_AFFICHE"_s;
const QString Key = u"ID"_s;
const QString Published = u"1"_s;
const QString Unpublished = u"0"_s;
const QString OnlyKind = u"1"_s;
const QStringList Flags{u"PUBLIC_FLAG"_s, u"SALER_FLAG"_s, u"BUYER_FLAG"_s};

/// What a modification keeps; who published it last is not among it.
const QStringList Origin{u"CREATE_USER"_s, u"CREATE_DATE"_s};

/// What is stored, with the group first and the origin last.
const RecordTable &Announcements()
{
    static const RecordTable table(
        Announcement, {Key},
        QStringList{u"UNION_ID"_s, u"AFFICHE_TYPE"_s, u"AFFICHE_TITLE"_s, u"AFFICHE_CONTENT"_s,
                    u"START_DATE"_s, u"END_DATE"_s} +
            Flags + QStringList{u"ENABLE_FLAG"_s, u"CHECK_USER"_s, u"CHECK_DATE"_s} + Origin);
    return table;
}

/// The announcement, if the operator may act for its group: others are not listed to them.
Record FindOwn(const PostContext &post, const QString &id)
{
    const Record record = Announcements().Find(post.connection, {id});
    const bool own = record.state == RowState::Live &&
                     IsAssigned(post.connection, post.user.userId, record.values.first());
    return own ? record : Record{};
}

bool MayAddress(const PostContext &post, const QString &unionId)
{
    return IsLiveGroup(post.connection, unionId) &&
           IsAssigned(post.connection, post.user.userId, unionId);
}

/// A date as it is stored; empty if the text is neither a date nor one with a time.
QString StoredDate(const QString &text)
{
    for (const auto &form : {u"yyyy-MM-dd"_s, u"yyyy-MM-dd HH:mm:ss"_s})
        if (const QDateTime date = QDateTime::fromString(text, form); date.isValid())
            return Store::DateText(date);
    return {};
}

/// Whether the text says something, lasts some time and is told to be unpublished.
bool MakesSense(const PostedRow &row)
{
    const QString start = StoredDate(row[u"START_DATE"_s]);
    const QString end = StoredDate(row[u"END_DATE"_s]);
    const bool lasts =
        !start.isEmpty() && (row[u"END_DATE"_s].isEmpty() || (!end.isEmpty() && end >= start));
    const bool speaks = !row[u"AFFICHE_TITLE"_s].trimmed().isEmpty() &&
                        !row[u"AFFICHE_CONTENT"_s].trimmed().isEmpty();
    const QStringList flags = row.Of(Flags);
    return lasts && speaks && std::all_of(flags.begin(), flags.end(), IsFlag) &&
           row[u"AFFICHE_TYPE"_s] == OnlyKind && row[u"ENABLE_FLAG"_s] == Unpublished;
}

/// Stores a new announcement (empty ID) or changes one; answers its ID. Either way it is
/// unpublished, and who published it before is in the log. "0": it is gone, it or the group that
/// it is for is none of the operator's, or it makes no sense.
Wire::ResultRow InsertUpdateAnnouncement(PostContext &post, const PostedRow &row)
{
    const QString id = row[Key];
    const Record old = id.isEmpty() ? Record{} : FindOwn(post, id);
    if ((!id.isEmpty() && old.state != RowState::Live) || !MakesSense(row) ||
        !MayAddress(post, row[u"UNION_ID"_s]))
        return {Failed, {}};

    const QString key = id.isEmpty() ? NewKey(post.connection, Announcement, Key) : id;
    const QStringList origin =
        id.isEmpty() ? QStringList{post.user.userName, post.now} : old.values.last(Origin.size());
    Announcements().Put(
        post, old, {key},
        row.Of({u"UNION_ID"_s, u"AFFICHE_TYPE"_s, u"AFFICHE_TITLE"_s, u"AFFICHE_CONTENT"_s}) +
            QStringList{StoredDate(row[u"START_DATE"_s]), StoredDate(row[u"END_DATE"_s])} +
            row.Of(Flags) + QStringList{Unpublished, {}, {}} + origin);
    return {Stored, {{Key, key}}};
}

/// Deletes an announcement for good: what lists announcements does not look for a deletion mark.
/// "0": it is gone already, or its group is none of the operator's.
Wire::ResultRow DeleteAnnouncement(PostContext &post, const PostedRow &row)
{
    const QString id = row[Key];
    if (FindOwn(post, id).state != RowState::Live)
        return {Failed, {}};
    post.Write("DELETE FROM SYS_AFFICHE WHERE ID = ?1", {id});
    LogChange(post, Announcement, id, {}, Change::PhysicalDelete);
    return {Stored, {}};
}

/// Publishes an announcement. "0": it is published or gone already, or its group is deleted or
/// none of the operator's.
Wire::ResultRow PublishAnnouncement(PostContext &post, const PostedRow &row)
{
    const QString id = row[Key];
    const Record old = FindOwn(post, id);
    if (old.state != RowState::Live || row[u"ENABLE_FLAG"_s] != Published ||
        !MayAddress(post, old.values.first()))
        return {Failed, {}};
    const qint64 published = post.connection.Run(
        "UPDATE SYS_AFFICHE SET ENABLE_FLAG = '1', CHECK_USER = ?2, CHECK_DATE = ?3,"
        " LAST_USER = ?4, LAST_USER_ID = ?5, LAST_UPDATE = ?3 WHERE ID = ?1 AND ENABLE_FLAG <> '1'",
        {id, post.user.userName, post.now, post.lastUser, post.user.userId});
    if (published == 0)
        return {Failed, {}};
    LogChange(post, Announcement, id, {}, Change::Approve);
    return {Stored, {}};
}

} // namespace

QList<Method> NoticManagerMethods()
{
    const auto method = [](const QString &name, const QStringList &parameters, MethodFunction run) {
        return Method{.manager = u"com.notic.NoticManager"_s,
                      .name = name,
                      .table = Announcement,
                      .parameters = parameters,
                      .key = {Key},
                      .run = run};
    };
    const QStringList written{Key,
                              u"START_DATE"_s,
                              u"END_DATE"_s,
                              u"AFFICHE_TYPE"_s,
                              u"AFFICHE_TITLE"_s,
                              u"AFFICHE_CONTENT"_s,
                              u"UNION_ID"_s};
    return {method(u"insertUpdateNotic"_s, written + Flags + QStringList{u"ENABLE_FLAG"_s},
                   InsertUpdateAnnouncement),
            method(u"deleteNotic"_s, {Key}, DeleteAnnouncement),
            method(u"confirmNotic"_s, {Key, u"ENABLE_FLAG"_s}, PublishAnnouncement)};
}

} // namespace Qel::Managers
