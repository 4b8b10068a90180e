#include "faults/Domain.h"

#include "store/Credentials.h"

using namespace Qt::StringLiterals;

namespace Qel::Faults {

namespace {

constexpr int StaffCount = 12;
constexpr int MovableCount = 16;
constexpr int PricedCount = 8;
constexpr char Token[] = "0123456789abcdef-faults";

QString UserCode(const Domain &domain)
{
    return QString::fromLatin1(domain.credential.left(domain.credential.indexOf(':')));
}

void AddUser(Store::Connection &connection, const QString &id, const QString &code,
             const QString &name, const QString &orgId)
{
    connection.Run("INSERT INTO USR_USER (USER_ID, USER_CODE, USER_NAME, ORG_ID)"
                   " VALUES (?1, ?2, ?3, ?4)",
                   {id, code, name, orgId});
}

/// Column 0 names the record; the others, joined, are its value.
void ReadInto(Records &records, Store::Connection &connection, const QString &kind,
              const QByteArray &sql, const QString &key)
{
    const auto statement = connection.Prepare(sql);
    statement->Bind(1, key);
    while (statement->Step()) {
        QStringList values;
        for (int column = 1; column < statement->ColumnCount(); ++column)
            values += statement->ColumnText(column);
        records[kind + u' ' + statement->ColumnText(0)] = values.join(u'|');
    }
}

} // namespace

Domain::Domain(int number)
    : orgId(QString::number(9'000'000 + number * 1'000))
    , groupId(QString::number(9'000'000 + number * 1'000 + 1))
    , userId(QString::number(9'000'000 + number * 1'000 + 2))
    , userName(u"测试员%1"_s.arg(number))
    , credential("faults" + QByteArray::number(number) + ':' + Token)
{
    const auto ids = [this](int first, int count) {
        QStringList list;
        for (int at = 0; at < count; ++at)
            list += QString::number(orgId.toInt() + first + at);
        return list;
    };
    staff = ids(100, StaffCount);
    movable = ids(200, MovableCount);
    priced = ids(300, PricedCount);
}

void AddDomain(Store::Connection &connection, const Domain &domain)
{
    connection.Run("INSERT INTO BAS_ORG (ORG_ID, ORG_CODE, ORG_NAME, ORG_ABBR, ORG_TYPE)"
                   " VALUES (?1, ?2, ?3, ?3, '4')",
                   {domain.orgId, u'F' + domain.orgId, domain.userName + u"医院"_s});
    AddUser(connection, domain.userId, UserCode(domain), domain.userName, domain.orgId);
    Store::SetToken(connection, UserCode(domain), Token);
    for (const QString &user : domain.staff)
        AddUser(connection, user, u'f' + user, u"药师"_s + user, domain.orgId);
    connection.Run("INSERT INTO UNI_UNION (UNION_ID, UNION_CODE, UNION_NAME, MASTER_ORGID)"
                   " VALUES (?1, ?1, ?2, ?3)",
                   {domain.groupId, domain.userName + u"采购组"_s, domain.orgId});
    connection.Run("INSERT INTO UNI_ORG_TYPE (ORG_TYPE_ID, UNION_ID, ORG_TYPE_NAME, BUYER_FLAG,"
                   " SALER_FLAG, SENDER_FLAG) VALUES (?1, ?1, '成员', '1', '1', '1')",
                   {domain.groupId});
    connection.Run("INSERT INTO UNI_ORG (UNION_ID, ORG_ID, ORG_TYPE_ID) VALUES (?1, ?2, ?1)",
                   {domain.groupId, domain.orgId});
    for (const QString &product : domain.movable + domain.priced)
        connection.Run("INSERT INTO BAS_PRODUCT (PRODUCT_ID, PRODUCT_SERIAL, PRODUCT_NAME)"
                       " VALUES (?1, ?2, '阿莫西林胶囊')",
                       {product, u'F' + product});
    for (const QString &product : domain.priced)
        connection.Run("INSERT INTO UNI_PRODUCT (UNION_ID, PRODUCT_ID) VALUES (?1, ?2)",
                       {domain.groupId, product});
}

Records ReadRecords(Store::Connection &connection, const Domain &domain)
{
    const Store::Snapshot snapshot(connection);
    Records records;
    ReadInto(records, connection, u"rule"_s,
             "SELECT RULE_CODE, RULE_VALUE, REMARK FROM UNI_ORG_RULE"
             " WHERE ORG_ID = ?1 AND LAST_OPERATE <> 'D'",
             domain.orgId);
    ReadInto(records, connection, u"product"_s,
             "SELECT PRODUCT_ID FROM UNI_PRODUCT WHERE UNION_ID = ?1 AND LAST_OPERATE <> 'D'",
             domain.groupId);
    ReadInto(records, connection, u"price"_s,
             "SELECT PRODUCT_ID, COST_PRICE, PRICE_01, PRICE_09 FROM PRC_UNI_PRICE_PRODUCT"
             " WHERE UNION_ID = ?1 AND LAST_OPERATE <> 'D'",
             domain.groupId);
    ReadInto(records, connection, u"store"_s,
             "SELECT CATALOG_NAME FROM TRA_BUY_CATALOG WHERE BUY_ORGID = ?1"
             " AND LAST_OPERATE <> 'D'",
             domain.orgId);
    ReadInto(records, connection, u"user"_s,
             "SELECT C.CATALOG_NAME || ' ' || A.USER_ID, A.RELATION_FLAG"
             " FROM TRA_USER_BUY_CATALOG A, TRA_BUY_CATALOG C WHERE C.BUY_ORGID = ?1"
             " AND A.CATALOG_ID = C.CATALOG_ID AND A.LAST_OPERATE <> 'D'",
             domain.orgId);
    return records;
}

QHash<QString, QString> ReadStores(Store::Connection &connection, const Domain &domain)
{
    const auto statement = connection.Prepare("SELECT CATALOG_NAME, CATALOG_ID FROM TRA_BUY_CATALOG"
                                              " WHERE BUY_ORGID = ?1 AND LAST_OPERATE <> 'D'");
    statement->Bind(1, domain.orgId);
    QHash<QString, QString> ids;
    while (statement->Step())
        ids[statement->ColumnText(0)] = statement->ColumnText(1);
    return ids;
}

QStringList ReadEntries(Store::Connection &connection, const Domain &domain, qint64 &after)
{
    const auto statement = connection.Prepare(
        "SELECT LOG_ID, TABLE_NAME, CASE"
        " WHEN TABLE_NAME IN ('TRA_BUY_CATALOG', 'TRA_USER_BUY_CATALOG') THEN"
        " (SELECT CATALOG_NAME FROM TRA_BUY_CATALOG WHERE CATALOG_ID = KEY_ID1)"
        " WHEN TABLE_NAME = 'PRC_UNI_PRICE_PRODUCT' THEN"
        " (SELECT PRODUCT_ID FROM PRC_UNI_PRICE_PRODUCT WHERE PRICE_ID = KEY_ID1)"
        " ELSE KEY_ID1 END, KEY_ID2, OPTION_TYPE FROM SYS_UPDATE_LOG"
        " WHERE USER_ID = ?1 AND CAST(LOG_ID AS BIGINT) > ?2 ORDER BY CAST(LOG_ID AS BIGINT)");
    statement->Bind(1, domain.userId);
    statement->BindInt(2, after);
    QStringList entries;
    while (statement->Step()) {
        after = statement->ColumnText(0).toLongLong();
        entries += QStringList{statement->ColumnText(1), statement->ColumnText(2),
                               statement->ColumnText(3), statement->ColumnText(4)}
                       .join(u' ');
    }
    return entries;
}

bool KeepsKey(Store::Connection &connection, const QByteArray &key)
{
    return connection.Exists("SELECT 1 FROM SRV_IDEMPOTENCY WHERE KEY = ?1",
                             {QString::fromLatin1(key)});
}

} // namespace Qel::Faults
