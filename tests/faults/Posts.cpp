#include "faults/Posts.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Faults {

namespace {

constexpr int MostStores = 5; // of a domain

const QString Insertion = u"1"_s;
const QString Modification = u"2"_s;
const QString Deletion = u"5"_s;

const QString DrugStores = u"com.business.admin.TraBuyCatalog"_s;

QString Entry(const QString &table, const QString &key1, const QString &key2, const QString &type)
{
    return QStringList{table, key1, key2, type}.join(u' ');
}

/// A random part of the list, in its order; at least one.
QStringList PartOf(const QStringList &list, Random &random)
{
    QStringList part;
    for (const QString &text : list)
        if (Between(random, 0, 1) == 1)
            part += text;
    return part.isEmpty() ? QStringList{list[Between(random, 0, int(list.size()) - 1)]} : part;
}

QStringList NamesOf(const Records &records, const QString &kind)
{
    QStringList names;
    for (auto at = records.cbegin(); at != records.cend(); ++at)
        if (at.key().startsWith(kind + u' '))
            names += at.key().mid(kind.size() + 1);
    return names;
}

/// Stores the record and says what type its entry in the log has.
QString Put(Records &records, const QString &name, const QString &value)
{
    const QString type = records.contains(name) ? Modification : Insertion;
    records[name] = value;
    return type;
}

/// All rules of the organisation, or, if there are any, none.
Change Rules(const Domain &domain, const Records &now, int stamp, Random &random)
{
    const QString mark = u"第%1次"_s.arg(stamp);
    const bool isDeletion = !NamesOf(now, u"rule"_s).isEmpty() && Between(random, 0, 3) == 0;
    const QList<std::pair<QString, QString>> rules{
        {u"ORG_SJJGSH"_s, u"B"_s},
        {u"ORG_DDYXQ_TS"_s, u"S"_s},
        {u"ORG_DDYXQ"_s, u"B"_s},
        {u"ORG_HPTX"_s, u"B"_s},
    };
    Change change{{u"com.business.admin.RuleManager"_s, u"insertUpdateOrgRule"_s, {}}, now};
    for (const auto &[code, type] : rules) {
        const QString value =
            QString::number(type == u"B" ? Between(random, 0, 1) : Between(random, 0, 9999));
        change.request.rows.append({{u"ORG_ID"_s, domain.orgId},
                                    {u"RULE_CODE"_s, code},
                                    {u"RULE_NAME"_s, u"规则"_s + code},
                                    {u"RULE_VALUE"_s, value},
                                    {u"VALUE_TYPE"_s, type},
                                    {u"ENABLE_FLAG"_s, u"1"_s},
                                    {u"REMARK"_s, mark},
                                    {u"LAST_OPERATE"_s, isDeletion ? u"D"_s : u"1"_s}});
        QString logged = Deletion;
        if (isDeletion)
            change.after.remove(u"rule "_s + code);
        else
            logged = Put(change.after, u"rule "_s + code, value + u'|' + mark);
        change.entries += Entry(u"UNI_ORG_RULE"_s, domain.orgId, code, logged);
    }
    return change;
}

Change MoveProducts(const Domain &domain, const Records &now, Random &random)
{
    QStringList inside;
    QStringList outside;
    for (const QString &product : domain.movable)
        (now.contains(u"product "_s + product) ? inside : outside) += product;
    const bool moveIn = inside.isEmpty() || (!outside.isEmpty() && Between(random, 0, 1) == 1);
    Change change{{u"com.business.admin.Uni_Product"_s,
                   moveIn ? u"move_in_Uni_Product"_s : u"move_out_Uni_Product"_s,
                   {}},
                  now};
    for (const QString &product : PartOf(moveIn ? outside : inside, random)) {
        change.request.rows.append({{u"UNION_ID"_s, domain.groupId}, {u"PRODUCT_ID"_s, product}});
        if (moveIn)
            change.after[u"product "_s + product] = QString();
        else
            change.after.remove(u"product "_s + product);
        change.entries +=
            Entry(u"UNI_PRODUCT"_s, domain.groupId, product, moveIn ? Insertion : Deletion);
    }
    return change;
}

Change Quote(const Domain &domain, const Records &now, int stamp, Random &random)
{
    const QString price = QString::number(stamp);
    const QStringList products = PartOf(domain.priced, random);
    Change change{Prices(domain, products, price), now};
    for (const QString &product : products) {
        const QString type =
            Put(change.after, u"price "_s + product, QStringList(3, price).join(u'|'));
        change.entries += Entry(u"PRC_UNI_PRICE_PRODUCT"_s, product, {}, type);
    }
    return change;
}

Change MakeStore(const Domain &domain, const Records &now, int stamp)
{
    const QString name = u"库%1"_s.arg(stamp);
    Change change{NewStore(domain, name), now};
    change.after[u"store "_s + name] = QString();
    change.entries += Entry(u"TRA_BUY_CATALOG"_s, name, {}, Insertion);
    return change;
}

QStringList UsersOf(const Records &now, const QString &store)
{
    QStringList users;
    for (const QString &name : NamesOf(now, u"user"_s))
        if (name.startsWith(store + u' '))
            users += name.mid(store.size() + 1);
    return users;
}

/// Removes the user of a drug store from the records and notes the log's entry.
void RemoveUser(Change &change, const QString &store, const QString &user)
{
    change.after.remove(u"user %1 %2"_s.arg(store, user));
    change.entries += Entry(u"TRA_USER_BUY_CATALOG"_s, store, user, Deletion);
}

Change DeleteStore(const Domain &domain, const Records &now, const QString &store,
                   const QString &id)
{
    Change change{{DrugStores,
                   u"deleteBuyCatalog"_s,
                   {{{u"CATALOG_ID"_s, id}, {u"BUY_ORGID"_s, domain.orgId}}}},
                  now};
    change.after.remove(u"store "_s + store);
    change.entries += Entry(u"TRA_BUY_CATALOG"_s, store, {}, Deletion);
    for (const QString &user : UsersOf(now, store))
        RemoveUser(change, store, user);
    return change;
}

Change ReplaceUsers(const Domain &domain, const Records &now, const QString &store,
                    const QString &id, Random &random)
{
    QList<std::pair<QString, QString>> users;
    for (const QString &user : PartOf(domain.staff, random))
        users.append({user, QString::number(Between(random, 0, 1))});
    Change change{ListOfUsers(domain, id, users), now};
    for (const QString &user : UsersOf(now, store))
        if (std::ranges::none_of(users, [&](const auto &one) { return one.first == user; }))
            RemoveUser(change, store, user);
    for (const auto &[user, flag] : users) {
        const QString name = u"user %1 %2"_s.arg(store, user);
        if (now.contains(name) && now[name] == flag)
            continue; // a row that changes nothing leaves no entry
        change.entries +=
            Entry(u"TRA_USER_BUY_CATALOG"_s, store, user, Put(change.after, name, flag));
    }
    return change;
}

} // namespace

Change NextChange(const Domain &domain, const Records &now, const QHash<QString, QString> &stores,
                  int stamp, Random &random)
{
    const QStringList names = NamesOf(now, u"store"_s);
    const QString store =
        names.isEmpty() ? QString() : names[Between(random, 0, int(names.size()) - 1)];
    switch (Between(random, 0, 5)) {
    case 0:
        return Rules(domain, now, stamp, random);
    case 1:
        return MoveProducts(domain, now, random);
    case 2:
        return Quote(domain, now, stamp, random);
    case 3:
        return names.size() < MostStores ? MakeStore(domain, now, stamp)
                                         : DeleteStore(domain, now, store, stores[store]);
    default:
        return store.isEmpty() ? MakeStore(domain, now, stamp)
                               : ReplaceUsers(domain, now, store, stores[store], random);
    }
}

Wire::PostRequest ListOfUsers(const Domain &domain, const QString &storeId,
                              const QList<std::pair<QString, QString>> &users)
{
    Wire::PostRequest post{DrugStores, u"insertUpdateTraUserBuyCatalog"_s, {}};
    for (const auto &[user, flag] : users)
        post.rows.append({{u"USER_ID"_s, user},
                          {u"CATALOG_ID"_s, storeId},
                          {u"BUY_ORGID"_s, domain.orgId},
                          {u"RELATION_FLAG"_s, flag}});
    return post;
}

Wire::PostRequest NewStore(const Domain &domain, const QString &name)
{
    return {DrugStores,
            u"insertUpdateBuyCatalog"_s,
            {{{u"CATALOG_ID"_s, {}}, {u"CATALOG_NAME"_s, name}, {u"BUY_ORGID"_s, domain.orgId}}}};
}

Wire::PostRequest Prices(const Domain &domain, const QStringList &products, const QString &price)
{
    Wire::PostRequest post{
        u"com.business.admin.UniPrice"_s, u"insertUpdatePrcUniPriceProduct"_s, {}};
    for (const QString &product : products) {
        Wire::NamedValues row{{u"PRICE_ID"_s, {}},
                              {u"UNION_ID"_s, domain.groupId},
                              {u"SALE_ORGID"_s, domain.orgId},
                              {u"SEND_ORGID"_s, domain.orgId},
                              {u"PRODUCT_ID"_s, product},
                              {u"COST_PRICE"_s, price},
                              {u"LAST_OPERATE"_s, u"1"_s}};
        for (int slot = 1; slot <= 9; ++slot)
            row.append({u"PRICE_0%1"_s.arg(slot), price});
        post.rows.append(row);
    }
    return post;
}

} // namespace Qel::Faults
