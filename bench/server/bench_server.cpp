#include "HttpLine.h"
#include "Organisations.h"
#include "Pages.h"
#include "ServerRun.h"

#include "store/Database.h"
#include "store/Schema.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <sqlite3.h>

using namespace Qel;
using namespace Qel::Bench;
using namespace Qt::StringLiterals;

namespace {

constexpr int Organisations = 100'000;
constexpr int Products = 5'000; // all in one group's catalogue
constexpr int GroupSize = 200;  // members; every organisation is in one group
constexpr int Opened = 100;     // members to whom one owner of so many organisations opens

/// What scans says LOWER, which the search index knows nothing of.
const PageCase Cases[]{
    {"50 of 100,000, LIKE filter that scans", 50,
     u"SELECT A.* FROM (SELECT * FROM BAS_ORG ) A WHERE 1=1  AND ((LOWER(A.ORG_CODE) like '%中医%') "
     "or (LOWER(A.ORG_NAME) like '%中医%') or (LOWER(A.ORG_ABBR) like '%中医%') or "
     "(LOWER(A.ORG_NAME_PY) like '%中医%')) ORDER BY A.ORG_NAME "_s,
     1.1, 31},
    {"50 of 100,000, indexed condition", 50,
     u"SELECT * FROM BAS_ORG WHERE REGION_ID='000123' ORDER BY ORG_NAME "_s, 3.0, 301},
    {"200 of 5,000, a group's catalogue", 200,
     u" SELECT A.*,    '0' AS SELECTED,    B.PRODUCT_SERIAL,    B.PRODUCT_NAME,    B.DOSE_NAME,    "
     "B.FULL_SPEC,    B.WRAP_NAME,    B.TRADE_NAME,    B.FACTORY_NAME,    B.FACTORY_ABBR  FROM "
     "UNI_PRODUCT A,    BAS_PRODUCT B  WHERE A.Union_ID='300001'   AND A.PRODUCT_ID=B.PRODUCT_ID  "
     "  AND nvl(A.LAST_OPERATE,'null') <> 'D' "_s,
     3.0, 101},
    {"50 of 100,000 stock permissions", 50,
     u" select a.org_name as Owner_OrgName, b.org_name, c.*  from bas_org a,      bas_org b,"
     "    stk_org_set c where a.org_id = c.owner_orgid  and b.org_id = c.org_id "
     " and c.last_operate <> 'D'  order by a.org_name, b.org_name "_s,
     3.0, 31},
    {"the same, LIKE filter that scans", 50,
     u" select a.org_name as Owner_OrgName, b.org_name, c.*  from bas_org a,      bas_org b,"
     "    stk_org_set c where a.org_id = c.owner_orgid  and b.org_id = c.org_id "
     " and c.last_operate <> 'D'  and ((LOWER(a.org_code) like '%中医%') or (LOWER(a.org_name) "
     "like '%中医%') or (LOWER(a.org_name_py) like '%中医%') or (LOWER(b.org_code) like '%中医%') "
     "or (LOWER(b.org_name) like '%中医%') or (LOWER(b.org_name_py) like '%中医%'))"
     " order by a.org_name, b.org_name "_s,
     1.1, 31},
    {"20 of 99 who may be shown a stock", 20,
     u" select '0' as selected,a.org_code,a.org_name,a.org_id  from bas_org a,"
     " ( select * from stk_org_set where owner_orgid = '200100'    and last_operate<> 'D' ) b,"
     " (select distinct u.org_id from uni_org u,     ( select distinct union_id from uni_org where"
     " org_id = '200100'            and last_operate <> 'D' ) v      where u.union_id = v.union_id"
     " and u.last_operate<> 'D' ) d  where  d.org_id = a.org_id  and d.org_id = b.org_id(+) "
     " and b.org_id is null and d.org_id <> '200100' order by a.org_name "_s,
     3.0, 301},
};

void FillCatalogue(Store::Connection &connection)
{
    const auto product = connection.Prepare(
        "INSERT INTO BAS_PRODUCT (PRODUCT_ID, PRODUCT_SERIAL, PRODUCT_NAME, DOSE_NAME, FULL_SPEC,"
        " WRAP_NAME, TRADE_NAME, FACTORY_NAME, FACTORY_ABBR)"
        " VALUES (?1, ?2, ?3, '片剂', '0.25g×24片/盒', '铝塑板', '安舒宁', ?4, ?5)");
    const auto membership =
        connection.Prepare("INSERT INTO UNI_PRODUCT (UNION_ID, PRODUCT_ID) VALUES ('300001', ?1)");
    for (int at = 0; at < Products; ++at) {
        const QString id = QString::number(500'001 + at);
        const QStringList row{id, u"YP"_s + id, u"阿莫西林%1片"_s.arg(at),
                              u"第%1制药有限公司"_s.arg(at % 230), u"第%1制药"_s.arg(at % 230)};
        for (int column = 0; column < row.size(); ++column)
            product->Bind(column + 1, row[column]);
        product->Step();
        product->Reset();
        membership->Bind(1, id);
        membership->Step();
        membership->Reset();
    }
}

/// Groups of neighbours, in each of which two let the first half see their stock.
void FillStock(Store::Connection &connection)
{
    const auto membership =
        connection.Prepare("INSERT INTO UNI_ORG (UNION_ID, ORG_ID) VALUES (?1, ?2)");
    const auto permission = connection.Prepare(
        "INSERT INTO STK_ORG_SET (OWNER_ORGID, ORG_ID, SHOW_QTY) VALUES (?1, ?2, ?3)");
    for (int at = 0; at < Organisations; ++at) {
        membership->Bind(1, QString::number(310'000 + at / GroupSize));
        membership->Bind(2, QString::number(200'000 + at));
        membership->Step();
        membership->Reset();
        const int owner = at / Opened * Opened;
        const int viewer = owner / GroupSize * GroupSize + at % Opened;
        permission->Bind(1, QString::number(200'000 + owner));
        permission->Bind(2, QString::number(200'000 + viewer));
        permission->Bind(3, QString::number(at % 2));
        permission->Step();
        permission->Reset();
    }
}

void Fill(const QString &url)
{
    const auto database = Store::Database::Open(url);
    const auto connection = database->OpenWriter();
    Store::CreateSchema(*connection);
    Store::Transaction transaction(*connection);
    FillOrganisations(*connection, Organisations);
    FillCatalogue(*connection);
    FillStock(*connection);
    AddOperator(*connection);
    transaction.Commit();
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    sqlite3_initialize(); // before the server's parts configure it: the peer is SQLite as it comes
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"bench.sqlite"_s);
    Fill(u"sqlite:"_s + file);

    sqlite3 *database = OpenPeer(file);
    PrintPageHeads();
    bool met = true;
    {
        const ServerRun server(u"sqlite:"_s + file);
        HttpLine line(server.Port());
        for (const PageCase &test : Cases)
            met = MeasurePage(test, database, line) && met;
    }
    sqlite3_close(database);
    return met ? 0 : 2;
}
