#include "managers/Records.h"

#include "managers/Audit.h"

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

/// "A = ?1 AND B = ?2"
QString KeyCondition(const QStringList &keys)
{
    QStringList terms;
    for (qsizetype key = 0; key < keys.size(); ++key)
        terms += u"%1 = ?%2"_s.arg(keys[key]).arg(key + 1);
    return terms.join(u" AND "_s);
}

Store::Values Parameters(const QStringList &texts, const PostContext &post)
{
    Store::Values parameters;
    parameters.reserve(texts.size() + 3);
    for (const QString &text : texts)
        parameters.append(text);
    parameters.append(post.lastUser);
    parameters.append(post.user.userId);
    parameters.append(post.now);
    return parameters;
}

} // namespace

RecordTable::RecordTable(const QString &name, const QStringList &keys, const QStringList &values)
    : name_(name)
{
    const QStringList stamps{u"LAST_USER"_s, u"LAST_USER_ID"_s, u"LAST_UPDATE"_s};
    const QStringList stored = values + stamps;
    QStringList places;
    QStringList changes;
    for (qsizetype place = 1; place <= keys.size() + stored.size(); ++place)
        places += u"?%1"_s.arg(place);
    for (const QString &column : stored + QStringList{u"LAST_OPERATE"_s})
        changes += column + u" = excluded."_s + column;
    QStringList stampChanges;
    for (qsizetype stamp = 0; stamp < stamps.size(); ++stamp)
        stampChanges += u"%1 = ?%2"_s.arg(stamps[stamp]).arg(keys.size() + stamp + 1);

    find_ =
        u"SELECT %1 FROM %2 WHERE %3"_s
            .arg((QStringList{u"LAST_OPERATE"_s} + values).join(u", "_s), name, KeyCondition(keys))
            .toUtf8();
    store_ =
        u"INSERT INTO %1 (%2, LAST_OPERATE) VALUES (%3, '1') ON CONFLICT (%4) DO UPDATE SET %5"_s
            .arg(name, (keys + stored).join(u", "_s), places.join(u", "_s), keys.join(u", "_s),
                 changes.join(u", "_s))
            .toUtf8();
    delete_ = u"UPDATE %1 SET LAST_OPERATE = 'D', %2 WHERE %3 AND LAST_OPERATE <> 'D'"_s
                  .arg(name, stampChanges.join(u", "_s), KeyCondition(keys))
                  .toUtf8();
}

Record RecordTable::Find(Store::Connection &connection, const QStringList &keys) const
{
    return Ask(connection, keys)();
}

RecordTable::RecordLater RecordTable::Ask(Store::Connection &connection,
                                          const QStringList &keys) const
{
    const Store::Values parameters(keys.begin(), keys.end());
    return [later = connection.AskRow(find_, parameters)]() -> Record {
        auto row = later();
        if (!row)
            return {};
        const QString operation = row->takeFirst();
        return {operation == Deletion ? RowState::Deleted : RowState::Live, *std::move(row)};
    };
}

void RecordTable::Put(PostContext &post, const Record &old, const QStringList &keys,
                      const QStringList &values) const
{
    const bool isLive = old.state == RowState::Live;
    if (isLive && old.values == values)
        return;
    post.Write(store_, Parameters(keys + values, post));
    LogChange(post, name_, keys.value(0), keys.value(1), isLive ? Change::Modify : Change::Insert);
}

bool RecordTable::Delete(PostContext &post, const QStringList &keys) const
{
    if (post.connection.Run(delete_, Parameters(keys, post)) == 0)
        return false;
    LogChange(post, name_, keys.value(0), keys.value(1), Change::LogicalDelete);
    return true;
}

bool RecordTable::EnsureDeleted(PostContext &post, const QStringList &keys) const
{
    return Delete(post, keys) || Find(post.connection, keys).state == RowState::Deleted;
}

} // namespace Qel::Managers
