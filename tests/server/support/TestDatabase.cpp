#include "support/TestDatabase.h"

#include "store/Schema.h"

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

void AddUsers(Store::Connection &connection)
{
    const QList<QStringList> users{{u"600001"_s, u"admin"_s, u"系统管理员"_s, u"200001"_s, u"1"_s},
                                   {u"600002"_s, u"zhang"_s, u"张伟"_s, u"200002"_s, u"1"_s},
                                   {u"600003"_s, u"gone"_s, u"李娜"_s, u"200002"_s, u"0"_s}};
    for (const QStringList &user : users)
        connection.Run("INSERT INTO USR_USER (USER_ID, USER_CODE, USER_NAME, ORG_ID, ENABLE_FLAG)"
                       " VALUES (?1, ?2, ?3, ?4, ?5)",
                       {user[0], user[1], user[2], user[3], user[4]});
    Store::SetToken(connection, u"admin"_s, TestDatabase::AdminToken);
}

void AddOrganisations(Store::Connection &connection)
{
    connection.Run("INSERT INTO BAS_REGION (REGION_ID, PARENT_ID, REGION_NAME, FULL_NAME)"
                   " VALUES ('100001', '-1', '浙江省', '浙江省')");
    for (int number = 1; number <= 8; ++number) {
        const QString id = QString::number(200000 + number);
        const QString name =
            number == 1 ? TestDatabase::Admin().orgName : u"第%1人民医院"_s.arg(number);
        const QString abbr = number == 1 ? TestDatabase::Admin().orgAbbr : u"%1院"_s.arg(number);
        connection.Run("INSERT INTO BAS_ORG (ORG_ID, ORG_CODE, ORG_NAME, ORG_ABBR, ORG_TYPE)"
                       " VALUES (?1, ?2, ?3, ?4, '4')",
                       {id, u'H' + id, name, abbr});
    }
}

void AddGroups(Store::Connection &connection)
{
    const QList<QStringList> groups{
        {u"300001"_s, {}, u"0001"_s, u"浙江采购联合体"_s, u"200001"_s, u"1"_s},
        {u"300002"_s, u"300001"_s, u"000101"_s, u"杭州采购小组"_s, u"200002"_s, u"1"_s},
        {u"300003"_s, u"300002"_s, u"00010101"_s, u"西湖采购小组"_s, u"200003"_s, u"1"_s},
        {u"300004"_s, {}, u"0002"_s, u"江苏采购联合体"_s, u"200004"_s, u"1"_s},
        {u"300005"_s, {}, u"0003"_s, u"旧采购联合体"_s, u"200006"_s, u"D"_s},
    };
    for (const QStringList &group : groups)
        connection.Run("INSERT INTO UNI_UNION (UNION_ID, PARENT_ID, UNION_CODE, UNION_NAME,"
                       " MASTER_ORGID, LAST_OPERATE, ENABLE_FLAG)"
                       " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?6)",
                       {group[0], group[1], group[2], group[3], group[4], group[5]});
    connection.Run("INSERT INTO UNI_ORG (UNION_ID, ORG_ID, ORG_TYPE_ID)"
                   " VALUES ('300002', '200007', '400001')");
}

} // namespace

void TestDatabase::Fill(Store::Connection &connection, Content content)
{
    if (content == TestDatabase::Content::Nothing)
        return;
    Store::CreateSchema(connection);
    if (content == Content::Tables)
        return;
    Store::Transaction transaction(connection);
    AddUsers(connection);
    AddOrganisations(connection);
    AddGroups(connection);
    transaction.Commit();
}

TestDatabase::TestDatabase(Content content)
{
    const auto fill = [content](Store::Connection &connection) { Fill(connection, content); };
    if (TestsRunOnPostgres())
        postgres_ =
            std::make_unique<TestPostgres>(content == Content::Rows     ? u"template_rows"_s
                                           : content == Content::Tables ? u"template_tables"_s
                                                                        : u"template_nothing"_s,
                                           fill);
    database_ = Store::Database::Open(Url());
    connection_ = database_->OpenWriter();
    if (!postgres_)
        fill(*connection_);
}

QString TestDatabase::Url() const
{
    return postgres_ ? postgres_->Url() : u"sqlite:"_s + directory_.filePath(u"test.sqlite"_s);
}

QString TestDatabase::Text(const QByteArray &sql)
{
    return connection_->QueryText(sql).value_or(QString());
}

Store::Operator TestDatabase::Admin()
{
    return {u"600001"_s, u"admin"_s,      u"系统管理员"_s,
            u"200001"_s, u"省采购中心"_s, u"省药品采购服务中心"_s};
}

} // namespace Qel
