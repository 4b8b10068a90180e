#include "e2e/Hands.h"
#include "e2e/Site.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QString Manager = u"com.business.admin.UniPrice"_s;
const QString RetailPrice = u"成本价"_s; // the caption for all products but herbal pieces

/// The price screen in the first group, with a seller there who quotes nothing yet.
class Story
{
public:
    Story()
        : screen(site.OpenScreen(u"ADMIN02"_s))
        , group(Box(u"cxUnion"_s).currentData().toString())
    {
        QComboBox &sellers = Box(u"cxUniOrg"_s);
        for (int at = 0; at < sellers.count(); ++at) {
            seller = sellers.itemData(at).toString();
            if (Count(u"PRC_UNI_PRICE_TYPE"_s) + Count(u"PRC_UNI_PRICE_PRODUCT"_s) > 0)
                continue;
            sellers.setCurrentIndex(at);
            return;
        }
        FailTest(u"every seller of the group quotes"_s);
    }

    QComboBox &Box(const QString &name) { return *Child<QComboBox>(screen, name); }
    void ShowTab(int tab) { Child<QTabWidget>(screen, u"cxPageControl2"_s)->setCurrentIndex(tab); }
    QTableView &Products() { return Grid(screen, u"UniPriceGrid"_s); }
    QTableView &Slots() { return Grid(screen, u"GridPriceType"_s); }
    QTableView &Buyers() { return Grid(screen, u"GridUniOrg"_s); }
    bool CanSave() { return Child<QPushButton>(screen, u"btnSave"_s)->isEnabled(); }

    QString Mine() const
    {
        return u" WHERE UNION_ID='%1' AND SALE_ORGID='%2'"_s.arg(group, seller);
    }
    int Count(const QString &table) const
    {
        return site.Select(u"SELECT count(*) FROM "_s + table + Mine()).value(0).toInt();
    }
    /// An expression over the seller's rows of a table, in the order of another.
    QStringList Stored(const QString &table, const QString &what, const QString &order) const
    {
        return site.Select(u"SELECT %1 FROM %2%3 ORDER BY %4"_s.arg(what, table, Mine(), order));
    }
    /// The operators of the changes that this test made to a table.
    QStringList Log(const QString &table) const
    {
        return site.Select(u"SELECT USER_NAME||'/'||OPTION_TYPE FROM SYS_UPDATE_LOG WHERE "
                           "TABLE_NAME='"_s +
                           table + u"' AND OPTION_DATE > "_s + BeforeTheStory() +
                           u" ORDER BY CAST(LOG_ID AS INTEGER)"_s);
    }

    /// Types into a cell and leaves it with Enter.
    static void Write(QTableView &grid, int row, const QString &caption, const QString &text)
    {
        grid.setFocus();
        grid.setCurrentIndex(Cell(grid, row, caption));
        grid.edit(Cell(grid, row, caption));
        auto *editor = grid.viewport()->findChild<QLineEdit *>();
        if (!editor)
            FailTest(u"no editor below "_s + caption);
        Type(editor, text);
        Press(editor, Qt::Key_Return);
        LetEditorGo();
    }

    void NameSlot(int slot, const QString &name)
    {
        ShowTab(1);
        Write(Slots(), slot - 1, u"价格类型名称"_s, name);
    }
    void SwitchSlot(int slot) { ClickCell(Slots(), slot - 1, u"是否启用"_s); }
    QString SaveTypes()
    {
        ShowTab(1);
        return Answer(u"Ok"_s, [&] { Click(screen, u"cxButton1"_s); });
    }
    void QuoteAtTwoPrices()
    {
        NameSlot(1, u"医院价"_s);
        SwitchSlot(1);
        NameSlot(2, u"药房价"_s);
        SwitchSlot(2);
        if (SaveTypes() != u"保存成功！")
            FailTest(u"the price types are not stored"_s);
    }

    void Query()
    {
        ShowTab(0);
        Click(screen, u"BtnQuery"_s);
    }
    void Price(int row, const QString &caption, const QString &price)
    {
        Write(Products(), row, caption, price);
    }
    QString SavePrices()
    {
        return Answer(u"Ok"_s, [&] { Click(screen, u"btnSave"_s); });
    }
    QString ProductId(int row)
    {
        return site
            .Select(u"SELECT PRODUCT_ID FROM BAS_PRODUCT WHERE PRODUCT_SERIAL='"_s +
                    Text(Products(), row, u"编码"_s) + u'\'')
            .value(0);
    }

    Site site;
    QWidget *screen;
    QString group;
    QString seller;
};

} // namespace

/// A seller's prices from the first price type to the buyer who gets it, checked in the database,
/// with another operator and another program at work on the same rows.
class PriceStoryTest : public QObject
{
    Q_OBJECT

private slots:
    void SellerNamesPricesQuotesProductsAndGivesBuyersTheirPrice()
    {
        Story story;
        // Nothing can be quoted before a price has a name.
        QCOMPARE(Answer(u"Ok"_s, [&] { story.Query(); }),
                 u"企业价格类型未维护，请到价格类型维护页面先维护！"_s);
        story.QuoteAtTwoPrices();
        QCOMPARE(story.Stored(u"PRC_UNI_PRICE_TYPE"_s,
                              u"PRICE_FIELD||PRICE_NAME||ENABLE_FLAG||LAST_OPERATE||LAST_USER"_s,
                              u"PRICE_FIELD"_s),
                 QStringList({u"01医院价11admin"_s, u"02药房价11admin"_s}));
        QCOMPARE(story.Log(u"PRC_UNI_PRICE_TYPE"_s), QStringList(2, u"系统管理员/1"_s));

        story.Query();
        QCOMPARE(story.Products().model()->rowCount(), 50);
        QVERIFY(!story.CanSave());
        story.Price(0, RetailPrice, u"12.5"_s);
        story.Price(0, u"医院价"_s, u"11"_s);
        story.Price(1, u"医院价"_s, u"8"_s);
        story.Price(2, u"药房价"_s, u"99999999"_s);
        QStringList ids;
        for (int row = 0; row < 3; ++row)
            ids << story.ProductId(row);
        QCOMPARE(story.SavePrices(), u"保存成功！"_s);
        QVERIFY(!story.CanSave());
        const auto prices = [&](const QString &productId) {
            return story.site
                .Select(u"SELECT COST_PRICE, PRICE_01, PRICE_02, PRICE_03, LAST_USER, "
                        "SEND_ORGID=SALE_ORGID FROM PRC_UNI_PRICE_PRODUCT"_s +
                        story.Mine() + u" AND PRODUCT_ID='"_s + productId + u'\'')
                .join(u'|');
        };
        QCOMPARE(prices(ids[0]), u"12.5/11/-/-/系统管理员/1"_s);
        QCOMPARE(prices(ids[1]), u"-/8/-/-/系统管理员/1"_s);
        QCOMPARE(prices(ids[2]), u"-/-/99999999/-/系统管理员/1"_s);

        // The keys came back: an edit changes the row that the first save made.
        const QStringList keys =
            story.Stored(u"PRC_UNI_PRICE_PRODUCT"_s, u"PRICE_ID"_s, u"PRICE_ID"_s);
        story.Price(0, RetailPrice, u""_s);
        QCOMPARE(story.SavePrices(), u"保存成功！"_s);
        QCOMPARE(prices(ids[0]), u"-/11/-/-/系统管理员/1"_s);
        QCOMPARE(story.Stored(u"PRC_UNI_PRICE_PRODUCT"_s, u"PRICE_ID"_s, u"PRICE_ID"_s), keys);
        // The two rows that went along unchanged left no trace.
        QCOMPARE(story.Log(u"PRC_UNI_PRICE_PRODUCT"_s),
                 QStringList(
                     {u"系统管理员/1"_s, u"系统管理员/1"_s, u"系统管理员/1"_s, u"系统管理员/2"_s}));
        story.Box(u"cxStatus"_s).setCurrentIndex(2);
        story.Query();
        QCOMPARE(story.Products().model()->rowCount(), 3);
        story.Box(u"cxStatus"_s).setCurrentIndex(1);
        story.Query();
        QVERIFY(!Texts(story.Products(), u"医院价"_s).contains(u"11.00"_s));

        story.ShowTab(1);
        Click(story.screen, u"btnOrgQuery"_s);
        const QString first = Text(story.Buyers(), 0, u"机构名称"_s);
        const QString second = Text(story.Buyers(), 1, u"机构名称"_s);
        ChooseInCell(story.Buyers(), 0, u"价格类型"_s);
        ChooseInCell(story.Buyers(), 1, u"价格类型"_s);
        ChooseInCell(story.Buyers(), 1, u"价格类型"_s);
        const QString given = Text(story.Buyers(), 0, u"价格类型"_s);
        QVERIFY(given != Text(story.Buyers(), 1, u"价格类型"_s));
        QCOMPARE(Answer(u"Ok"_s, [&] { Click(story.screen, u"cxButton4"_s); }), u"保存成功!"_s);
        QStringList assigned = story.site.Select(
            u"SELECT (SELECT ORG_NAME FROM BAS_ORG WHERE ORG_ID=BUY_ORGID)||'/'||"
            "(SELECT PRICE_NAME FROM PRC_UNI_PRICE_TYPE T WHERE T.PRICE_TYPE_ID=O.PRICE_TYPE_ID) "
            "FROM PRC_UNI_PRICE_ORG O"_s +
            story.Mine());
        QStringList shown{first + u'/' + given,
                          second + u'/' + Text(story.Buyers(), 1, u"价格类型"_s)};
        assigned.sort();
        shown.sort();
        QCOMPARE(assigned, shown);
        QCOMPARE(story.Log(u"PRC_UNI_PRICE_ORG"_s), QStringList(2, u"系统管理员/1"_s));
        Click(story.screen, u"btnOrgQuery"_s);
        QCOMPARE(Text(story.Buyers(), 0, u"价格类型"_s), given);

        // A price that a buyer has cannot go; one that is switched off leaves the product list.
        story.NameSlot(1, u""_s);
        QCOMPARE(story.SaveTypes(), u"保存失败！"_s);
        story.NameSlot(1, u"医院价"_s);
        story.SwitchSlot(2);
        QCOMPARE(story.SaveTypes(), u"保存成功！"_s);
        QVERIFY(story.Products().isColumnHidden(9 - 1)); // PRICE_02, behind seven and PRICE_01
    }

    void PriceTypeThatAColleagueDeletedGoesWithTheNextSaveAndNothingElseIsLost()
    {
        Story story;
        story.QuoteAtTwoPrices();
        const QStringList ids =
            story.Stored(u"PRC_UNI_PRICE_TYPE"_s, u"PRICE_TYPE_ID"_s, u"PRICE_FIELD"_s);
        QCOMPARE(story.site.PostAsColleague(Manager, u"insertUpdatePrcUniPriceType"_s,
                                            {{u"PRICE_TYPE_ID"_s, ids[1]},
                                             {u"UNION_ID"_s, story.group},
                                             {u"SALE_ORGID"_s, story.seller},
                                             {u"PRICE_NAME"_s, u"删除"_s},
                                             {u"PRICE_FIELD"_s, u"02"_s},
                                             {u"ENABLE_FLAG"_s, u"0"_s},
                                             {u"LAST_OPERATE"_s, u"D"_s}}),
                 u"1"_s);
        // Changing what is gone is refused, and what was typed stays on the screen.
        story.NameSlot(1, u"三甲价"_s);
        story.NameSlot(2, u"连锁价"_s);
        QCOMPARE(story.SaveTypes(), u"保存失败！"_s);
        QCOMPARE(Text(story.Slots(), 1, u"价格类型名称"_s), u"连锁价"_s);
        QCOMPARE(story.Stored(u"PRC_UNI_PRICE_TYPE"_s, u"PRICE_NAME"_s, u"PRICE_FIELD"_s).value(0),
                 u"医院价"_s);
        // Left as it was, it is not made again and goes from the screen; the other one is stored.
        story.NameSlot(2, u"药房价"_s);
        QCOMPARE(story.SaveTypes(), u"保存成功！"_s);
        QCOMPARE(Texts(story.Slots(), u"价格类型名称"_s).mid(0, 2),
                 QStringList({u"三甲价"_s, u""_s}));
        QCOMPARE(
            story.Stored(u"PRC_UNI_PRICE_TYPE"_s, u"PRICE_NAME||LAST_OPERATE"_s, u"PRICE_FIELD"_s)
                .value(0),
            u"三甲价1"_s);
        // Named again it is a new one.
        story.NameSlot(2, u"连锁价"_s);
        QCOMPARE(story.SaveTypes(), u"保存成功！"_s);
        QCOMPARE(story.Stored(u"PRC_UNI_PRICE_TYPE"_s, u"PRICE_NAME||LAST_OPERATE"_s,
                              u"PRICE_FIELD, LAST_OPERATE"_s),
                 QStringList({u"三甲价1"_s, u"连锁价1"_s, u"药房价D"_s}));
    }

    void PriceRowThatWasDeletedIsQuotedAgainInItsOldRecord()
    {
        Story story;
        story.QuoteAtTwoPrices();
        story.Query();
        story.Price(0, RetailPrice, u"12.5"_s);
        story.Price(0, u"医院价"_s, u"11"_s);
        QCOMPARE(story.SavePrices(), u"保存成功！"_s);
        story.site.Change(u"UPDATE PRC_UNI_PRICE_PRODUCT SET LAST_OPERATE='D'"_s + story.Mine());
        story.Query();
        QCOMPARE(Text(story.Products(), 0, u"医院价"_s), u""_s);
        story.Price(0, u"药房价"_s, u"9.9"_s);
        QCOMPARE(story.SavePrices(), u"保存成功！"_s);
        QCOMPARE(story.Stored(u"PRC_UNI_PRICE_PRODUCT"_s,
                              u"LAST_OPERATE, COST_PRICE, PRICE_01, PRICE_02"_s, u"PRICE_ID"_s),
                 QStringList{u"1/-/-/9.9"_s});
    }

    void ProductThatAColleagueQuotedMeanwhileKeepsOneRecord()
    {
        Story story;
        story.QuoteAtTwoPrices();
        story.Query();
        Wire::NamedValues quoted{{u"PRICE_ID"_s, u""_s},
                                 {u"UNION_ID"_s, story.group},
                                 {u"SALE_ORGID"_s, story.seller},
                                 {u"SEND_ORGID"_s, story.seller},
                                 {u"PRODUCT_ID"_s, story.ProductId(0)},
                                 {u"COST_PRICE"_s, u"20"_s}};
        for (int slot = 1; slot <= 9; ++slot)
            quoted.append({u"PRICE_0%1"_s.arg(slot), slot == 2 ? u"18"_s : u""_s});
        quoted.append({u"LAST_OPERATE"_s, u"1"_s});
        QCOMPARE(story.site.PostAsColleague(Manager, u"insertUpdatePrcUniPriceProduct"_s, quoted),
                 u"1"_s);
        story.Price(0, u"医院价"_s, u"17"_s);
        QCOMPARE(story.SavePrices(), u"保存成功！"_s);
        QCOMPARE(story.Stored(u"PRC_UNI_PRICE_PRODUCT"_s, u"COST_PRICE, PRICE_01, PRICE_02"_s,
                              u"PRICE_ID"_s),
                 QStringList{u"-/17/-"_s}); // the later one's whole row
        QCOMPARE(story.Log(u"PRC_UNI_PRICE_PRODUCT"_s),
                 QStringList({story.site.Colleague() + u"/1"_s, u"系统管理员/2"_s}));
    }

    void HostThatIsQuitStopsAtPricesThatAreNotStored()
    {
        Story story;
        story.QuoteAtTwoPrices();
        story.Query();
        story.Price(0, RetailPrice, u"12.5"_s);
        QCOMPARE(Answer(u"No"_s, [&] { story.site.Window().close(); }),
                 u"价格修改尚未保存，是否确定退出！"_s);
        QVERIFY(story.site.Window().isVisible());
        QCOMPARE(Text(story.Products(), 0, RetailPrice), u"12.50"_s);
        QCOMPARE(story.SavePrices(), u"保存成功！"_s);
        QVERIFY(story.site.Window().close());
    }
};

QTEST_MAIN(PriceStoryTest)
#include "PriceStoryTest.moc"
