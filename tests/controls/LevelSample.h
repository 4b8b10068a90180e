#pragma once

#include "TestTable.h"

#include "controls/LevelGrid.h"
#include "dataset/ClientDataSet.h"

namespace Qel::Test {

using namespace Qt::StringLiterals;

/// Three tables as they hang together:
///
///     市一医院 (o1)
///         西药库 (s1)     王 甲, 李 乙
///         中药库 (s3)
///     县医院 (o2)
///     大药房 (o3)
///         总库 (s2)       赵 丙
///
/// and one store (s4) of an organisation that is not there.
struct LevelSample
{
    ClientDataSet orgs;
    ClientDataSet stores;
    ClientDataSet users;

    void OpenOrgs()
    {
        orgs.Open(
            Rows({u"ORG_ID"_s, u"ORG_NAME"_s, u"ORG_TYPE"_s}, {{u"o1"_s, u"市一医院"_s, u"4"_s},
                                                               {u"o2"_s, u"县医院"_s, u"4"_s},
                                                               {u"o3"_s, u"大药房"_s, u"5"_s}}));
    }
    void OpenStores()
    {
        stores.Open(
            Rows({u"STORE_ID"_s, u"STORE_NAME"_s, u"ORG_ID"_s}, {{u"s1"_s, u"西药库"_s, u"o1"_s},
                                                                 {u"s2"_s, u"总库"_s, u"o3"_s},
                                                                 {u"s3"_s, u"中药库"_s, u"o1"_s},
                                                                 {u"s4"_s, u"无主库"_s, u"o9"_s}}));
    }
    void OpenUsers()
    {
        users.Open(Rows({u"USER_ID"_s, u"USER_NAME"_s, u"LINKED"_s, u"STORE_ID"_s},
                        {{u"u1"_s, u"王 甲"_s, u"1"_s, u"s1"_s},
                         {u"u3"_s, u"赵 丙"_s, u"0"_s, u"s2"_s},
                         {u"u2"_s, u"李 乙"_s, u"0"_s, u"s1"_s}}));
    }
    void Open()
    {
        OpenOrgs();
        OpenStores();
        OpenUsers();
    }
    void AppendStore(const QString &id, const QString &name, const QString &org)
    {
        stores.Append();
        stores.SetFieldText(u"STORE_ID", id);
        stores.SetFieldText(u"STORE_NAME", name);
        stores.SetFieldText(u"ORG_ID", org);
        stores.Post();
    }
};

inline QStringList SampleLevels()
{
    return {u"OrgView|ORG_ID"_s, u"StoreView|STORE_ID|ORG_ID"_s, u"UserView|USER_ID|STORE_ID"_s};
}

inline QStringList SampleColumns()
{
    return {u"OrgView.ORG_NAME|机构|200"_s,     u"OrgView.ORG_TYPE|类型|80"_s,
            u"StoreView.STORE_NAME|药库|150"_s, u"StoreView.STORE_ID|编号|90||hidden"_s,
            u"UserView.USER_NAME|用户|120"_s,   u"UserView.LINKED|关联|60|check|readonly"_s,
            u"UserView.USER_ID|编号|60"_s};
}

} // namespace Qel::Test
