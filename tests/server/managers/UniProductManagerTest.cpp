#include "ManagerSite.h"

#include <QTest>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

const QString Manager = u"com.business.admin.Uni_Product"_s;
const QString MoveIn = u"move_in_Uni_Product"_s;
const QString MoveOut = u"move_out_Uni_Product"_s;

QList<Wire::NamedValues> Products(const QStringList &ids, const QString &unionId = u"300002"_s)
{
    QList<Wire::NamedValues> rows;
    for (const QString &id : ids)
        rows += ByAdmin(
            {{u"UNION_ID"_s, unionId}, {u"PRODUCT_ID"_s, id}, {u"LAST_USER"_s, u"系统管理员"_s}});
    return rows;
}

class Site : public ManagerSite
{
public:
    /// "CODE:PRODUCT_ID" of each result.
    QStringList Move(const QString &method, const QList<Wire::NamedValues> &rows)
    {
        QStringList results;
        for (const Wire::ResultRow &result : Post(Manager, method, rows).rows) {
            results += result.code;
            for (const auto &[name, value] : result.values)
                results.last() += name == u"PRODUCT_ID"_s ? u':' + value : u'!' + name;
        }
        return results;
    }
    /// "PRODUCT_ID/ENABLE_FLAG" of what the catalogue's query finds for 300002.
    QStringList Catalogue()
    {
        return Texts("SELECT PRODUCT_ID||'/'||ENABLE_FLAG FROM UNI_PRODUCT"
                     " WHERE UNION_ID = '300002' AND LAST_OPERATE <> 'D' ORDER BY PRODUCT_ID");
    }
};

const QString First = u"500001/1"_s;

} // namespace

/// The moves of a group's product catalogue, which answer row by row.
class UniProductManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void ProductMovedInIsEnabledStampedAndLogged()
    {
        Site site;
        QCOMPARE(site.Move(MoveIn, Products({u"500003"_s})), QStringList{u"1:500003"_s});
        QCOMPARE(site.Catalogue(), QStringList({First, u"500003/1"_s}));
        QCOMPARE(site.Text("SELECT LAST_OPERATE||'/'||LAST_USER||'/'||LAST_USER_ID FROM UNI_PRODUCT"
                           " WHERE PRODUCT_ID = '500003'"),
                 u"1/系统管理员/600001"_s);
        QCOMPARE(site.Log(), QStringList{u"UNI_PRODUCT/300002/500003/600001/系统管理员/1"_s});
    }

    void ProductMovedInAgainTakesOverItsOldRow()
    {
        Site site;
        QCOMPARE(site.Move(MoveIn, Products({u"500002"_s})), QStringList{u"1:500002"_s});
        QCOMPARE(site.Catalogue(), QStringList({First, u"500002/1"_s}));
        QCOMPARE(site.Number("SELECT count(*) FROM UNI_PRODUCT"), 2);
        QCOMPARE(site.Log(), QStringList{u"UNI_PRODUCT/300002/500002/600001/系统管理员/1"_s});
    }

    void RefusedRowDoesNotUndoTheOthers()
    {
        Site site;
        QCOMPARE(site.Move(MoveIn, Products({u"500002"_s, u"500001"_s, u"599999"_s, u"500003"_s})),
                 QStringList({u"1:500002"_s, u"-1:500001"_s, u"0:599999"_s, u"1:500003"_s}));
        QCOMPARE(site.Catalogue(), QStringList({First, u"500002/1"_s, u"500003/1"_s}));
        QCOMPARE(site.Log(), QStringList({u"UNI_PRODUCT/300002/500002/600001/系统管理员/1"_s,
                                          u"UNI_PRODUCT/300002/500003/600001/系统管理员/1"_s}));
    }

    void ProductAlreadyInTheCatalogueKeepsItsRow()
    {
        Site site;
        site.Connection().Run("UPDATE UNI_PRODUCT SET ENABLE_FLAG = '2'");
        QCOMPARE(site.Move(MoveIn, Products({u"500001"_s})), QStringList{u"-1:500001"_s});
        QCOMPARE(site.Catalogue(), QStringList{u"500001/2"_s});
        QCOMPARE(site.Logged(), 0);
    }

    void WhatIsNotOfferedIsNotMovedIn_data()
    {
        QTest::addColumn<QString>("product");
        QTest::addColumn<QString>("unionId");
        QTest::newRow("unknown product") << u"599999"_s << u"300002"_s;
        QTest::newRow("disabled product") << u"500004"_s << u"300002"_s;
        QTest::newRow("deleted product") << u"500005"_s << u"300002"_s;
        QTest::newRow("no product") << QString() << u"300002"_s;
        QTest::newRow("unknown group") << u"500003"_s << u"399999"_s;
        QTest::newRow("deleted group") << u"500003"_s << u"300005"_s;
    }
    void WhatIsNotOfferedIsNotMovedIn()
    {
        QFETCH(QString, product);
        QFETCH(QString, unionId);
        Site site;
        QCOMPARE(site.Move(MoveIn, Products({product}, unionId)), QStringList{u"0:"_s + product});
        QCOMPARE(site.Number("SELECT count(*) FROM UNI_PRODUCT"), 2);
        QCOMPARE(site.Logged(), 0);
    }

    void ProductMovedOutIsMarkedAndLogged()
    {
        Site site;
        QCOMPARE(site.Move(MoveOut, Products({u"500001"_s})), QStringList{u"1:500001"_s});
        QCOMPARE(site.Catalogue(), QStringList());
        QCOMPARE(site.Number("SELECT count(*) FROM UNI_PRODUCT"), 2);
        QCOMPARE(site.Log(), QStringList{u"UNI_PRODUCT/300002/500001/600001/系统管理员/5"_s});
    }

    void ProductThatAnotherOperatorMovedOutIsOut()
    {
        Site site;
        QCOMPARE(site.Move(MoveOut, Products({u"500002"_s, u"500001"_s})),
                 QStringList({u"1:500002"_s, u"1:500001"_s}));
        QCOMPARE(site.Log(), QStringList{u"UNI_PRODUCT/300002/500001/600001/系统管理员/5"_s});
    }

    void ProductThatWasNeverInTheCatalogueIsNotMovedOut()
    {
        Site site;
        QCOMPARE(site.Move(MoveOut, Products({u"500003"_s, u"599999"_s, u"500001"_s})),
                 QStringList({u"0:500003"_s, u"0:599999"_s, u"1:500001"_s}));
        QCOMPARE(site.Catalogue(), QStringList());
    }

    void LogViewerFindsTheEntriesByGroupAndProduct()
    {
        Site site;
        site.Move(MoveIn, Products({u"500003"_s}));
        site.Move(MoveOut, Products({u"500003"_s}));
        const RowSet log =
            site.Query(u" SELECT * FROM SYS_UPDATE_LOG WHERE TABLE_NAME='UNI_PRODUCT'"
                       " AND KEY_ID1='300002' AND KEY_ID2='500003'"_s);
        QCOMPARE(log.RowCount(), 2);
        const int user = log.FieldIndex(u"USER_NAME");
        const int date = log.FieldIndex(u"OPTION_DATE");
        QStringList types;
        for (int row = 0; row < 2; ++row) {
            QCOMPARE(log.Text(row, user), u"系统管理员"_s);
            QVERIFY(!log.Text(row, date).isEmpty());
            types += log.Text(row, log.FieldIndex(u"OPTION_TYPE"));
        }
        types.sort();
        QCOMPARE(types, QStringList({u"1"_s, u"5"_s}));
    }

    void ProductNamedTwiceInOneListIsRefused()
    {
        Site site;
        QCOMPARE(site.Refusal(Manager, MoveIn, Products({u"500003"_s, u"500003"_s})),
                 "post.bad_row");
        QCOMPARE(site.Catalogue(), QStringList{First});
    }

    void EmptyListIsRefused()
    {
        Site site;
        QCOMPARE(site.Refusal(Manager, MoveIn, {}), "post.bad_row");
        QCOMPARE(site.Refusal(Manager, MoveOut, {}), "post.bad_row");
    }

    void FailureInTheMiddleLeavesNothing()
    {
        Site site;
        site.Trap(ManagerSite::Trouble::Failure, "BEFORE INSERT ON SYS_UPDATE_LOG",
                  "NEW.KEY_ID2 = '500003'");
        QVERIFY_THROWS_EXCEPTION(Store::EStoreError,
                                 site.Move(MoveIn, Products({u"500002"_s, u"500003"_s})));
        QCOMPARE(site.Catalogue(), QStringList{First});
        QCOMPARE(site.Logged(), 0);
    }
};

QTEST_GUILESS_MAIN(UniProductManagerTest)
#include "UniProductManagerTest.moc"
