#include "ManagerSite.h"

#include <QTest>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

const QString Manager = u"com.business.admin.UniPrice"_s;
const QString SavePrices = u"insertUpdatePrcUniPriceProduct"_s;
const QString SaveTypes = u"insertUpdatePrcUniPriceType"_s;
const QString SaveBuyers = u"insertUpdatePrcUniPriceOrg"_s;

/// Besides the site: 200005 sells to the group 300002, whose buyer is 200007; the catalogue has
/// 500001 and 500003. 200005 has the types 91 in slot 01, assigned to 200007, and 92 in slot 02.
class Site : public ManagerSite
{
public:
    Site()
    {
        Connection().Run("INSERT INTO UNI_ORG (UNION_ID, ORG_ID, ORG_TYPE_ID)"
                         " VALUES ('300002', '200005', '400002')");
        Connection().Run("INSERT INTO UNI_PRODUCT (UNION_ID, PRODUCT_ID)"
                         " VALUES ('300002', '500003')");
        Connection().Run(
            "INSERT INTO PRC_UNI_PRICE_TYPE (PRICE_TYPE_ID, UNION_ID, SALE_ORGID,"
            " PRICE_NAME, PRICE_FIELD) VALUES ('91', '300002', '200005', '一级', '01'),"
            " ('92', '300002', '200005', '二级', '02')");
        Connection().Run("INSERT INTO PRC_UNI_PRICE_ORG (UNION_ID, SALE_ORGID, BUY_ORGID,"
                         " PRICE_TYPE_ID) VALUES ('300002', '200005', '200007', '91')");
    }
};

Wire::NamedValues Price(const QString &product, const QString &price, const QString &id = {},
                        const QString &seller = u"200005"_s, const QString &operation = u"1"_s)
{
    Wire::NamedValues row{{u"PRICE_ID"_s, id},
                          {u"UNION_ID"_s, u"300002"_s},
                          {u"SALE_ORGID"_s, seller},
                          {u"SEND_ORGID"_s, seller},
                          {u"PRODUCT_ID"_s, product},
                          {u"COST_PRICE"_s, price},
                          {u"LAST_OPERATE"_s, operation},
                          {u"LAST_USER"_s, u"系统管理员"_s}};
    for (int slot = 1; slot <= 9; ++slot)
        row.append({u"PRICE_0%1"_s.arg(slot), slot == 1 ? price : QString()});
    return row;
}

Wire::NamedValues PriceDeletion(const QString &product, const QString &id = {})
{
    return Price(product, {}, id, u"200005"_s, u"D"_s);
}

Wire::NamedValues Type(const QString &id, const QString &name, const QString &slot,
                       const QString &operation = u"1"_s)
{
    return {{u"PRICE_TYPE_ID"_s, id},       {u"UNION_ID"_s, u"300002"_s},
            {u"SALE_ORGID"_s, u"200005"_s}, {u"PRICE_NAME"_s, name},
            {u"PRICE_FIELD"_s, slot},       {u"ENABLE_FLAG"_s, u"1"_s},
            {u"LAST_USER"_s, u"admin"_s},   {u"LAST_OPERATE"_s, operation}};
}

Wire::NamedValues Buyer(const QString &buyer, const QString &type)
{
    return {{u"BUY_ORGID"_s, buyer},
            {u"SALE_ORGID"_s, u"200005"_s},
            {u"UNION_ID"_s, u"300002"_s},
            {u"PRICE_TYPE_ID"_s, type},
            {u"LAST_USER"_s, u"系统管理员"_s}};
}

} // namespace

class UniPriceManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void EveryRowAnswersProductAndPriceKey()
    {
        Site site;
        const auto answer =
            site.Post(Manager, SavePrices, {Price(u"500001"_s, u"12.5"_s), Price(u"500003"_s, {})});
        QCOMPARE(answer.rows.size(), 2);
        for (const Wire::ResultRow &row : answer.rows) {
            QCOMPARE(row.code, u"1"_s);
            QCOMPARE(row.values.size(), 2);
            QCOMPARE(row.values[0].first, u"PRODUCT_ID"_s);
            QCOMPARE(row.values[1].first, u"PRICE_ID"_s);
            QCOMPARE(site.Text("SELECT PRODUCT_ID FROM PRC_UNI_PRICE_PRODUCT WHERE PRICE_ID = '" +
                               row.values[1].second.toUtf8() + "'"),
                     row.values[0].second);
        }
        QCOMPARE(
            site.Texts("SELECT coalesce(CAST(COST_PRICE AS TEXT), '-') FROM PRC_UNI_PRICE_PRODUCT"
                       " ORDER BY PRODUCT_ID"),
            QStringList({u"12.5"_s, u"-"_s}));
    }

    void PriceIsKeptOnceAndUnchangedLeavesNoTrace()
    {
        Site site;
        QCOMPARE(site.Codes(Manager, SavePrices, {Price(u"500001"_s, u"12.5"_s)}), u"1"_s);
        QCOMPARE(site.Codes(Manager, SavePrices, {Price(u"500001"_s, u"12.50"_s)}), u"1"_s);
        QCOMPARE(site.Logged(), 1);
        QCOMPARE(site.Codes(Manager, SavePrices, {Price(u"500001"_s, u"13"_s)}), u"1"_s);
        QCOMPARE(site.Number("SELECT count(*) FROM PRC_UNI_PRICE_PRODUCT"), 1);
        QCOMPARE(site.Logged(), 2);
    }

    void PriceBelowACentIsKeptToItsLastDigit()
    {
        Site site;
        QCOMPARE(site.Codes(Manager, SavePrices, {Price(u"500001"_s, u"0.034567"_s)}), u"1"_s);
        QCOMPARE(site.Row("SELECT COST_PRICE, PRICE_01 FROM PRC_UNI_PRICE_PRODUCT"),
                 u"0.034567/0.034567"_s);
        QCOMPARE(site.Codes(Manager, SavePrices, {Price(u"500001"_s, u"0.03"_s)}), u"1"_s);
        QCOMPARE(site.Logged(), 2);
    }

    void PriceIsStoredAsItIsShown()
    {
        Site site;
        const QString posted = u"0.12345678901234567"_s;
        QCOMPARE(site.Codes(Manager, SavePrices, {Price(u"500001"_s, posted)}), u"1"_s);
        const QString shown = u"0.123456789012346"_s; // 15 digits
        QCOMPARE(site.Row("SELECT COST_PRICE FROM PRC_UNI_PRICE_PRODUCT"), shown);
        QVERIFY(site.Connection().Exists("SELECT 1 FROM PRC_UNI_PRICE_PRODUCT"
                                         " WHERE COST_PRICE = 0.123456789012346"));
        for (const QString &again : {shown, posted})
            QCOMPARE(site.Codes(Manager, SavePrices, {Price(u"500001"_s, again)}), u"1"_s);
        QCOMPARE(site.Logged(), 1);
    }

    void HighestPriceAndZeroArePrices()
    {
        Site site;
        QCOMPARE(site.Codes(Manager, SavePrices,
                            {Price(u"500001"_s, u"99999999"_s), Price(u"500003"_s, u" -0 "_s)}),
                 u"1 1"_s);
        QCOMPARE(site.Texts("SELECT COST_PRICE FROM PRC_UNI_PRICE_PRODUCT ORDER BY PRODUCT_ID"),
                 QStringList({u"99999999"_s, u"0"_s}));
    }

    void DeletedPriceIsTakenOverByTheNext()
    {
        Site site;
        const auto keyOf = [](const Wire::PostAnswer &answer) {
            return answer.rows.value(0).values.value(1).second;
        };
        const QString key = keyOf(site.Post(Manager, SavePrices, {Price(u"500001"_s, u"12.5"_s)}));
        QCOMPARE(keyOf(site.Post(Manager, SavePrices, {PriceDeletion(u"500001"_s, key)})), key);
        QCOMPARE(site.Number("SELECT count(*) FROM PRC_UNI_PRICE_PRODUCT"
                             " WHERE LAST_OPERATE <> 'D'"),
                 0);
        // Of one who still had it on screen, and of one who had it not.
        for (const QString &known : {key, QString()}) {
            QCOMPARE(keyOf(site.Post(Manager, SavePrices, {Price(u"500001"_s, u"9"_s, known)})),
                     key);
            QCOMPARE(site.Row("SELECT COST_PRICE, LAST_OPERATE FROM PRC_UNI_PRICE_PRODUCT"),
                     u"9/1"_s);
            QCOMPARE(site.Codes(Manager, SavePrices, {PriceDeletion(u"500001"_s)}), u"1"_s);
        }
        const QString entry = u"PRC_UNI_PRICE_PRODUCT/%1/-/600001/系统管理员/"_s.arg(key);
        QCOMPARE(site.Log(), QStringList({entry + u'1', entry + u'5', entry + u'1', entry + u'5',
                                          entry + u'1', entry + u'5'}));
    }

    void PriceThatAnotherOperatorDeletedIsDeleted()
    {
        Site site;
        site.Post(Manager, SavePrices, {Price(u"500001"_s, u"1"_s)});
        for (int time = 0; time < 2; ++time)
            QCOMPARE(site.Codes(Manager, SavePrices, {PriceDeletion(u"500001"_s)}), u"1"_s);
        QCOMPARE(site.Logged(), 2);
        QCOMPARE(site.Codes(Manager, SavePrices, {PriceDeletion(u"500003"_s)}), u"0"_s);
    }

    void PriceOfAProductThatLeftTheCatalogueIsDeletedButNotChanged()
    {
        Site site;
        site.Post(Manager, SavePrices, {Price(u"500001"_s, u"1"_s)});
        site.Connection().Run("UPDATE UNI_PRODUCT SET LAST_OPERATE = 'D'");
        QCOMPARE(site.Codes(Manager, SavePrices, {Price(u"500001"_s, u"2"_s)}), u"0"_s);
        QCOMPARE(site.Codes(Manager, SavePrices, {PriceDeletion(u"500001"_s)}), u"1"_s);
    }

    void RefusedPriceLeavesTheWholeListUnstored_data()
    {
        QTest::addColumn<Wire::NamedValues>("row");
        QTest::newRow("not in the catalogue") << Price(u"500002"_s, u"1"_s);
        QTest::newRow("deleted product") << Price(u"500005"_s, u"1"_s);
        QTest::newRow("buyer quotes") << Price(u"500003"_s, u"1"_s, {}, u"200007"_s);
        QTest::newRow("no member quotes") << Price(u"500003"_s, u"1"_s, {}, u"200006"_s);
        QTest::newRow("negative") << Price(u"500003"_s, u"-1"_s);
        QTest::newRow("letters") << Price(u"500003"_s, u"abc"_s);
        QTest::newRow("nine digits") << Price(u"500003"_s, u"100000000"_s);
        QTest::newRow("no number") << Price(u"500003"_s, u"nan"_s);
        QTest::newRow("infinite") << Price(u"500003"_s, u"inf"_s);
        QTest::newRow("a cent above the highest") << Price(u"500003"_s, u"99999999.01"_s);
        QTest::newRow("unknown record") << Price(u"500003"_s, u"1"_s, u"77"_s);
        QTest::newRow("no price to delete") << PriceDeletion(u"500003"_s);
    }
    void RefusedPriceLeavesTheWholeListUnstored()
    {
        QFETCH(Wire::NamedValues, row);
        Site site;
        QCOMPARE(site.Codes(Manager, SavePrices, {Price(u"500001"_s, u"1"_s), row}), u"0 0"_s);
        QCOMPARE(site.Number("SELECT count(*) FROM PRC_UNI_PRICE_PRODUCT"), 0);
        QCOMPARE(site.Logged(), 0);
    }

    void SlotHasOneType()
    {
        Site site;
        QCOMPARE(site.Codes(Manager, SaveTypes, {Type({}, u"三级"_s, u"03"_s)}), u"1"_s);
        QCOMPARE(site.Codes(Manager, SaveTypes, {Type({}, u"又三级"_s, u"03"_s)}), u"-1"_s);
        for (const QString &slot : {u"00"_s, u"10"_s, u"1"_s, QString()})
            QCOMPARE(site.Codes(Manager, SaveTypes, {Type({}, u"四级"_s, slot)}), u"0"_s);
        QCOMPARE(site.Number("SELECT count(*) FROM PRC_UNI_PRICE_TYPE"), 3);
        QCOMPARE(site.Text("SELECT LAST_USER FROM PRC_UNI_PRICE_TYPE WHERE PRICE_FIELD = '03'"),
                 u"admin"_s);
    }

    void TypeThatIsAssignedIsNotDeleted()
    {
        Site site;
        QCOMPARE(site.Codes(Manager, SaveTypes,
                            {Type(u"92"_s, u"删除"_s, u"02"_s, u"D"_s),
                             Type(u"91"_s, u"删除"_s, u"01"_s, u"D"_s)}),
                 u"-1 -1"_s);
        QCOMPARE(site.Logged(), 0);
        QCOMPARE(site.Codes(Manager, SaveBuyers, {Buyer(u"200007"_s, {})}), u"1"_s);
        QCOMPARE(site.Codes(Manager, SaveTypes, {Type(u"91"_s, u"删除"_s, u"01"_s, u"D"_s)}),
                 u"1"_s);
    }

    void TypeOfAFormerMemberIsDeletedAndDoesNotComeBackWithTheMember()
    {
        Site site;
        site.Connection().Run("UPDATE UNI_ORG SET LAST_OPERATE = 'D'"
                              " WHERE UNION_ID = '300002' AND ORG_ID = '200007'");
        QCOMPARE(site.Codes(Manager, SaveTypes, {Type(u"91"_s, u"删除"_s, u"01"_s, u"D"_s)}),
                 u"1"_s);
        site.Connection().Run("UPDATE UNI_ORG SET LAST_OPERATE = '1'"
                              " WHERE UNION_ID = '300002' AND ORG_ID = '200007'");
        QCOMPARE(site.Codes(Manager, SaveTypes, {Type({}, u"新一级"_s, u"01"_s)}), u"1"_s);
        QCOMPARE(site.Number("SELECT count(*) FROM PRC_UNI_PRICE_ORG O, PRC_UNI_PRICE_TYPE T"
                             " WHERE T.PRICE_TYPE_ID = O.PRICE_TYPE_ID AND O.BUY_ORGID = '200007'"
                             " AND T.LAST_OPERATE <> 'D'"),
                 0);
    }

    void TypeAnswersItsKey()
    {
        Site site;
        const auto answer = site.Post(
            Manager, SaveTypes, {Type(u"91"_s, u"甲级"_s, u"01"_s), Type({}, u"三级"_s, u"03"_s)});
        QCOMPARE(answer.rows.value(0).values, Wire::NamedValues({{u"PRICE_TYPE_ID"_s, u"91"_s}}));
        QCOMPARE(answer.rows.value(1).values,
                 Wire::NamedValues(
                     {{u"PRICE_TYPE_ID"_s, site.Text("SELECT PRICE_TYPE_ID FROM PRC_UNI_PRICE_TYPE"
                                                     " WHERE PRICE_FIELD = '03'")}}));
    }

    void UnchangedTypeThatAnotherOperatorDeletedStaysDeletedAndHoldsUpNoOther()
    {
        Site site;
        QCOMPARE(site.Codes(Manager, SaveTypes, {Type(u"92"_s, u"删除"_s, u"02"_s, u"D"_s)}),
                 u"1"_s);
        QCOMPARE(site.Codes(Manager, SaveTypes,
                            {Type(u"91"_s, u"甲级"_s, u"01"_s), Type(u"92"_s, u"二级"_s, u"02"_s)}),
                 u"1 1"_s);
        QCOMPARE(
            site.Text("SELECT LAST_OPERATE FROM PRC_UNI_PRICE_TYPE WHERE PRICE_TYPE_ID = '92'"),
            u"D"_s);
        QCOMPARE(site.Log(), QStringList({u"PRC_UNI_PRICE_TYPE/92/-/600001/系统管理员/5"_s,
                                          u"PRC_UNI_PRICE_TYPE/91/-/600001/系统管理员/2"_s}));
        // A change to it would be lost: refused.
        QCOMPARE(site.Codes(Manager, SaveTypes, {Type(u"92"_s, u"乙级"_s, u"02"_s)}), u"0"_s);
    }

    void TypeThatAnotherOperatorDeletedIsDeleted()
    {
        Site site;
        for (int time = 0; time < 2; ++time)
            QCOMPARE(site.Codes(Manager, SaveTypes, {Type(u"92"_s, u"删除"_s, u"02"_s, u"D"_s)}),
                     u"1"_s);
        QCOMPARE(site.Logged(), 1);
    }

    void TypeThatIsAssignedCanBeDisabled()
    {
        Site site;
        Wire::NamedValues row = Type(u"91"_s, u"一级"_s, u"01"_s);
        row[5].second = u"0"_s;
        QCOMPARE(row[5].first, u"ENABLE_FLAG"_s);
        QCOMPARE(site.Codes(Manager, SaveTypes, {row}), u"1"_s);
        QCOMPARE(site.Text("SELECT ENABLE_FLAG FROM PRC_UNI_PRICE_TYPE WHERE PRICE_TYPE_ID = '91'"),
                 u"0"_s);
        QCOMPARE(site.Codes(Manager, SaveBuyers, {Buyer(u"200007"_s, u"91"_s)}), u"0"_s);
    }

    void RefusedTypeLeavesNoTrace_data()
    {
        QTest::addColumn<Wire::NamedValues>("row");
        const auto with = [](int at, const QString &value) {
            Wire::NamedValues row = Type({}, u"三级"_s, u"03"_s);
            row[at].second = value;
            return row;
        };
        QTest::newRow("unknown group") << with(1, u"399999"_s);
        QTest::newRow("buyer quotes") << with(2, u"200007"_s);
        QTest::newRow("blank name") << with(3, u" "_s);
        QTest::newRow("no flag") << with(5, u"2"_s);
        QTest::newRow("unknown type") << Type(u"99"_s, u"三级"_s, u"03"_s);
        QTest::newRow("deletion of none") << Type({}, u"删除"_s, u"03"_s, u"D"_s);
    }
    void RefusedTypeLeavesNoTrace()
    {
        QFETCH(Wire::NamedValues, row);
        Site site;
        QCOMPARE(site.Codes(Manager, SaveTypes, {row}), u"0"_s);
        QCOMPARE(site.Number("SELECT count(*) FROM PRC_UNI_PRICE_TYPE"), 2);
        QCOMPARE(site.Logged(), 0);
    }

    void TypeOfAnotherSellerIsNeitherChangedNorGiven()
    {
        Site site;
        site.Connection().Run("UPDATE PRC_UNI_PRICE_TYPE SET SALE_ORGID = '200006'"
                              " WHERE PRICE_TYPE_ID = '92'");
        QCOMPARE(site.Codes(Manager, SaveTypes, {Type(u"92"_s, u"我的"_s, u"02"_s)}), u"0"_s);
        QCOMPARE(site.Codes(Manager, SaveBuyers, {Buyer(u"200007"_s, u"92"_s)}), u"0"_s);
    }

    void BuyerGetsATypeOfTheSeller()
    {
        Site site;
        QCOMPARE(site.Codes(Manager, SaveBuyers, {Buyer(u"200007"_s, u"92"_s)}), u"1"_s);
        QCOMPARE(site.Text("SELECT PRICE_TYPE_ID FROM PRC_UNI_PRICE_ORG"), u"92"_s);
        QCOMPARE(site.Log(), QStringList{u"PRC_UNI_PRICE_ORG/200005/200007/600001/系统管理员/2"_s});
        QCOMPARE(site.Codes(Manager, SaveBuyers, {Buyer(u"200007"_s, u"99"_s)}), u"0"_s);
        QCOMPARE(site.Codes(Manager, SaveBuyers, {Buyer(u"200005"_s, u"91"_s)}), u"0"_s);
    }
};

QTEST_GUILESS_MAIN(UniPriceManagerTest)
#include "UniPriceManagerTest.moc"
