#include "screens/PriceScreen.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QString ChooseUnion = u"Information|提示|请选择集团！|Ok"_s;
const QString ChooseSeller = u"Information|提示|请选择报价企业！|Ok"_s;
const QString NoTypes = u"Information|提示|企业价格类型未维护，请到价格类型维护页面先维护！|Ok"_s;

QStringList BoxItems(const PriceScreen &screen, const QString &name)
{
    return Child<ImageComboBox>(screen.form, name)->Items();
}

QString BoxValue(const PriceScreen &screen, const QString &name)
{
    return Child<ImageComboBox>(screen.form, name)->EditValue();
}

} // namespace

/// The price screen: layout, the chain from group to price types, the product list.
class PrcUniPriceTest : public QObject
{
    Q_OBJECT

private slots:
    // --- Statements ----------------------------------------------------------------------------

    void LookUpStatementsAreExact()
    {
        const TQuote odd{u"1'0"_s, u"5'1"_s};
        QCOMPARE(PrcUniPriceSql::Unions(u"7'1"_s), Expected(u"prices.unions.apostrophe"_s));
        QCOMPARE(PrcUniPriceSql::Sellers(u"1'0"_s), Expected(u"prices.sellers.apostrophe"_s));
        QCOMPARE(PrcUniPriceSql::PriceTypes(odd), Expected(u"prices.types.apostrophe"_s));
        QCOMPARE(PrcUniPriceSql::Buyers(odd, u"  "_s), Expected(u"prices.buyers.apostrophe"_s));
        QCOMPARE(PrcUniPriceSql::Buyers({u"10"_s, u"501"_s}, u" yy'市 "_s),
                 Expected(u"prices.buyers.key"_s));
    }

    void ProductStatementsAreExact_data()
    {
        QTest::addColumn<QString>("information");
        QTest::addColumn<QString>("factory");
        QTest::addColumn<QString>("status");
        QTest::addColumn<QString>("productClass");
        QTest::newRow("prices.products.all") << u"  "_s << u" "_s << u""_s << u""_s;
        QTest::newRow("prices.products.class") << u""_s << u""_s << u""_s << u"02"_s;
        QTest::newRow("prices.products.information") << u" ab'c "_s << u""_s << u""_s << u""_s;
        QTest::newRow("prices.products.factory") << u""_s << u" 齐鲁 "_s << u""_s << u""_s;
        QTest::newRow("prices.products.unquoted") << u""_s << u""_s << u"0"_s << u""_s;
        QTest::newRow("prices.products.quoted") << u""_s << u""_s << u"1"_s << u""_s;
        QTest::newRow("prices.products.full") << u"阿莫"_s << u"ql"_s << u"1"_s << u"0'1"_s;
        QTest::newRow("prices.products.odd") << u"50%_';"_s << u"50%_';"_s << u""_s << u""_s;
    }
    void ProductStatementsAreExact()
    {
        QFETCH(QString, information);
        QFETCH(QString, factory);
        QFETCH(QString, status);
        QFETCH(QString, productClass);
        QCOMPARE(PrcUniPriceSql::Products({u"10"_s, u"501"_s},
                                          {information, factory, status, productClass}),
                 Expected(QString::fromLatin1(QTest::currentDataTag())));
    }

    void IdsOfAQuoteAreQuotedWhereverTheyStand()
    {
        QCOMPARE(PrcUniPriceSql::Products({u"1'0"_s, u"5'1"_s}, {}),
                 Expected(u"prices.products.apostrophe"_s));
    }

    // --- Layout --------------------------------------------------------------------------------

    void CaptionsAreExact()
    {
        PriceScreen screen;
        QCOMPARE(screen.form->windowTitle(), u"企业报价维护"_s);
        const auto *tabs = Child<QTabWidget>(screen.form, u"cxPageControl2"_s);
        QCOMPARE(tabs->count(), 2);
        QCOMPARE(tabs->tabText(0), u"企业报价维护"_s);
        QCOMPARE(tabs->tabText(1), u"价格类型维护"_s);
        QCOMPARE(tabs->currentWidget()->objectName(), u"cxTabSheet2"_s);
        QCOMPARE(tabs->widget(1)->objectName(), u"cxTabSheet3"_s);
        const QList<std::pair<QString, QString>> buttons{
            {u"BtnQuery"_s, u"查询"_s},  {u"btnSave"_s, u"保存"_s},     {u"BtnClose"_s, u"返回"_s},
            {u"cxButton1"_s, u"保存"_s}, {u"btnOrgQuery"_s, u"查询"_s}, {u"cxButton4"_s, u"保存"_s},
            {u"cxButton2"_s, u"返回"_s},
        };
        for (const auto &[name, caption] : buttons)
            QCOMPARE(Caption(*screen.form, name), caption);
    }

    void EachFilterHasItsLabel()
    {
        PriceScreen screen;
        const QList<std::pair<QString, QString>> labels{
            {u"cxUnion"_s, u"集  团"_s},       {u"cxUniOrg"_s, u"报价企业"_s},
            {u"cxInformation"_s, u"商品名"_s}, {u"cxFactory"_s, u"生产企业"_s},
            {u"cxStatus"_s, u"报价状态"_s},    {u"edKey"_s, u"机构名称"_s},
        };
        QHash<QString, QString> shown;
        for (const auto *label : screen.form->findChildren<QLabel *>()) {
            if (label->buddy())
                shown.insert(label->buddy()->objectName(), label->text());
        }
        for (const auto &[filter, caption] : labels)
            QCOMPARE(shown.value(filter), caption);
    }

    void FilterTextsAreBounded()
    {
        PriceScreen screen;
        QCOMPARE(Child<QLineEdit>(screen.form, u"cxInformation"_s)->maxLength(), 100);
        QCOMPARE(Child<QLineEdit>(screen.form, u"cxFactory"_s)->maxLength(), 150);
        QCOMPARE(Child<QLineEdit>(screen.form, u"edKey"_s)->maxLength(), 100);
    }

    void StatusBoxStandsOnAll()
    {
        PriceScreen screen;
        QCOMPARE(BoxItems(screen, u"cxStatus"_s),
                 QStringList({u"|全部"_s, u"0|未报价"_s, u"1|已报价"_s}));
        QCOMPARE(Child<ImageComboBox>(screen.form, u"cxStatus"_s)->currentIndex(), 0);
        QCOMPARE(BoxValue(screen, u"cxStatus"_s), u""_s);
    }

    void ProductColumnsAreExactUntilTheScreenIsShown()
    {
        const TFrmPrcUniPrice form;
        QStringList columns{u"PRODUCT_SERIAL 编码"_s,  u"PRODUCT_NAME 通用名"_s,
                            u"TRADE_NAME 商品名"_s,    u"DOSE_NAME 剂型"_s,
                            u"WRAP_NAME 包装材质"_s,   u"FULL_SPEC 包装规格"_s,
                            u"FACTORY_NAME 生产企业"_s};
        for (int slot = 1; slot <= 9; ++slot)
            columns << u"PRICE_0%1  hidden"_s.arg(slot);
        columns << u"COST_PRICE 零售价"_s << u"PRODUCT_LEVEL 质量层次"_s;
        QCOMPARE(ColumnsOf(*Child<DataGrid>(&form, u"UniPriceGrid"_s)), columns);
    }

    void OnlyPricesCanBeEditedAndTheyAreCurrency()
    {
        PriceScreen screen;
        QStringList editable;
        for (const GridColumn &column : screen.Products().Model()->Columns()) {
            if (!column.IsEditable())
                continue;
            QCOMPARE(column.editor, GridEditor::Currency);
            QCOMPARE(column.alignment, Qt::AlignRight);
            editable << column.field;
        }
        QStringList prices;
        for (int slot = 1; slot <= 9; ++slot)
            prices << u"PRICE_0%1"_s.arg(slot);
        QCOMPARE(editable, prices + QStringList{u"COST_PRICE"_s});
    }

    void BandsSeparateProductPricesAndQuality()
    {
        PriceScreen screen;
        QStringList captions;
        for (const QString &band : screen.Products().Bands())
            captions << band.section(u'|', 0, 0);
        QCOMPARE(captions, QStringList({u"产品"_s, u"价格（元）"_s, u"质量"_s}));
    }

    void ColumnsOfTheOtherTabAreExact()
    {
        PriceScreen screen;
        QCOMPARE(
            ColumnsOf(screen.Types()),
            QStringList({u"SNO 序号"_s, u"Price_name 价格类型名称"_s, u"enable_flag 是否启用"_s}));
        QCOMPARE(
            ColumnsOf(screen.Buyers()),
            QStringList({u"selected 选择"_s, u"org_name 机构名称"_s, u"PRICE_TYPE_ID 价格类型"_s}));
        const auto editors = [](const DataGrid &grid) {
            QList<GridEditor> list;
            for (const GridColumn &column : grid.Model()->Columns())
                list << (column.IsEditable() ? column.editor : GridEditor::None);
            return list;
        };
        QCOMPARE(editors(screen.Types()),
                 QList({GridEditor::None, GridEditor::Text, GridEditor::Check}));
        QCOMPARE(editors(screen.Buyers()),
                 QList({GridEditor::Check, GridEditor::None, GridEditor::Combo}));
    }

    void PagingBarTakesTheValuesOfTheStylingPass()
    {
        PriceScreen screen;
        QCOMPARE(screen.Pages().PageSizeSet(), u"50,100,200"_s);
        QCOMPARE(screen.Pages().PageSize(), 50);
        QCOMPARE(screen.Pages().ShowAllLimit(), 1000);
        QVERIFY(!screen.Pages().ShowSelectAll());
    }

    void MenuItemsWithoutBehaviourAreUnavailableEvenWithRows()
    {
        PriceScreen screen;
        screen.Query();
        QStringList menu;
        for (const QAction *action : screen.Products().actions())
            menu << (action->isSeparator()
                         ? u"-"_s
                         : action->text() + (action->isEnabled() ? u" on"_s : u""_s));
        QCOMPARE(menu, QStringList({u"启用"_s, u"禁用"_s, u"-"_s, u"移出"_s, u"查看日志"_s, u"-"_s,
                                    u"列表设置"_s}));
    }

    // --- Captions by class of products ---------------------------------------------------------

    void ShowingWithoutAParameterTakesTheCaptionsOfOtherProducts()
    {
        PriceScreen screen;
        QCOMPARE(screen.Products().ColumnCaption(u"FULL_SPEC"), u"规格包装"_s);
        QCOMPARE(screen.Products().ColumnCaption(u"TRADE_NAME"), u"商品名"_s);
        QCOMPARE(screen.Products().ColumnCaption(u"COST_PRICE"), u"成本价"_s);
        QVERIFY(screen.Products().IsColumnVisible(u"DOSE_NAME"));
        QVERIFY(screen.Products().IsColumnVisible(u"PRODUCT_LEVEL"));
    }

    void HerbalPiecesHaveCaptionsAndAConditionOfTheirOwn()
    {
        PriceScreen screen(u"02"_s);
        screen.Query();
        const QList<std::pair<QString, QString>> captions{
            {u"PRODUCT_NAME"_s, u"品 名"_s},    {u"TRADE_NAME"_s, u"产 地"_s},
            {u"FACTORY_NAME"_s, u"厂家"_s},     {u"FULL_SPEC"_s, u"规 格"_s},
            {u"COST_PRICE"_s, u"十克零售价"_s},
        };
        for (const auto &[field, caption] : captions)
            QCOMPARE(screen.Products().ColumnCaption(field), caption);
        for (const auto &field : {u"DOSE_NAME"_s, u"WRAP_NAME"_s, u"PRODUCT_LEVEL"_s})
            QVERIFY(!screen.Products().IsColumnVisible(field));
        QCOMPARE(screen.server.LastQuery().sql, Expected(u"prices.products.class"_s));
    }

    void AnotherClassHasTheCaptionsOfOtherProductsAndTheCondition()
    {
        PriceScreen screen(u"01"_s);
        screen.Query();
        QCOMPARE(screen.Products().ColumnCaption(u"PRODUCT_NAME"), u"通用名"_s);
        QVERIFY(screen.Products().IsColumnVisible(u"WRAP_NAME"));
        QVERIFY(screen.server.LastQuery().sql.contains(u" and a.product_class = '01'"_s));
    }

    // --- Opening -------------------------------------------------------------------------------

    void OpeningTakesTheFirstGroupItsFirstSellerAndThatOnesPriceTypes()
    {
        PriceScreen screen;
        QCOMPARE(screen.server.Statements(),
                 QStringList({Expected(u"prices.unions"_s), Expected(u"prices.sellers"_s),
                              Expected(u"prices.types"_s)}));
        for (const auto &query : screen.server.Queries())
            QCOMPARE(query.page + query.pageSize, 0);
        QCOMPARE(BoxItems(screen, u"cxUnion"_s),
                 QStringList({u"10|华东采购联合体"_s, u"20|华南采购联合体"_s}));
        QCOMPARE(BoxValue(screen, u"cxUnion"_s), u"10"_s);
        QCOMPARE(BoxItems(screen, u"cxUniOrg"_s),
                 QStringList({u"501|医药公司501"_s, u"502|医药公司502"_s}));
        QCOMPARE(BoxValue(screen, u"cxUniOrg"_s), u"501"_s);
        QVERIFY(!screen.CanSave());
        QCOMPARE(FocusName(*screen.form), u"cxInformation"_s);
    }

    void PriceColumnsAreThoseOfTheTypesThatAreSwitchedOn()
    {
        PriceScreen screen;
        QCOMPARE(screen.ShownPriceColumns(),
                 QStringList({u"PRICE_01 一级价"_s, u"PRICE_04 四级价"_s}));
        QVERIFY(screen.Products().IsColumnVisible(u"COST_PRICE"));
    }

    void PriceTypeTableHasNineSlotsInTheirOrderNamedOrNot()
    {
        PriceScreen screen;
        const ClientDataSet &table = *screen.Types().DataSet();
        QStringList rows;
        for (int row = 0; row < table.RecordCount(); ++row)
            rows << QStringList{table.TextAt(row, u"SNO"), table.TextAt(row, u"Price_name"),
                                table.TextAt(row, u"enable_flag"),
                                table.TextAt(row, u"PRICE_TYPE_ID")}
                        .join(u' ');
        QCOMPARE(rows, QStringList({u"01 一级价 1 31"_s, u"02  0 "_s, u"03 三级价 0 33"_s,
                                    u"04 四级价 1 34"_s, u"05  0 "_s, u"06  0 "_s, u"07  0 "_s,
                                    u"08  0 "_s, u"09  0 "_s}));
        QCOMPARE(table.RecNo(), 0);
        QStringList sizes;
        for (const FieldDef &field : table.Fields())
            sizes << field.name + u' ' + QString::number(field.size);
        QCOMPARE(sizes, QStringList({u"SNO 2"_s, u"Price_name 10"_s, u"enable_flag 1"_s,
                                     u"PRICE_TYPE_ID 10"_s}));
    }

    void NameThatIsLongerThanTheTableTakesIsCut()
    {
        PriceScreen screen;
        screen.server.ClearScripts();
        screen.server.OnQuery(u"PRC_UNI_PRICE_TYPE"_s)
            .Answer(PriceTypes({u"31 09 一二三四五六七八九十余 1"_s}));
        screen.Select(u"cxUniOrg"_s, u"502"_s);
        QCOMPARE(screen.Types().DataSet()->TextAt(8, u"Price_name"), u"一二三四五六七八九十"_s);
        QCOMPARE(screen.ShownPriceColumns(), QStringList{u"PRICE_09 一二三四五六七八九十余"_s});
    }

    void UserOfNoGroupIsStoppedAtEveryQuery()
    {
        ScreenFixture fixture;
        fixture.server.OnAnyQuery().Answer(Rows({u"UNION_ID"_s, u"UNION_NAME"_s}, {}));
        TFrmPrcUniPrice form;
        ShowScreen(form);
        QCOMPARE(fixture.server.Statements(), QStringList{Expected(u"prices.unions"_s)});
        QCOMPARE(Child<ImageComboBox>(&form, u"cxUnion"_s)->count(), 0);
        Click(&form, u"BtnQuery"_s);
        Press(&form, u"cxInformation"_s, Qt::Key_Return);
        QCOMPARE(fixture.Boxes(), QStringList({ChooseUnion, ChooseUnion}));
        QCOMPARE(fixture.server.Queries().size(), 1);
    }

    void QueryThatFailsWhenTheScreenIsShownLeavesItOpen()
    {
        ScreenFixture fixture;
        fixture.server.OnAnyQuery().DatabaseDown();
        TFrmPrcUniPrice form;
        ShowScreen(form);
        QCOMPARE(fixture.hook.Boxes().size(), 1);
        Click(&form, u"BtnQuery"_s);
        QCOMPARE(fixture.Boxes().last(), ChooseUnion);
        Click(&form, u"BtnClose"_s);
        QVERIFY(!form.isVisible());
    }

    // --- The chain -----------------------------------------------------------------------------

    void GroupChangeReloadsSellersAndTheFirstOnesPriceTypes()
    {
        PriceScreen screen;
        screen.QueryBuyers();
        screen.server.ClearRecords();
        screen.Select(u"cxUnion"_s, u"20"_s);
        QCOMPARE(screen.server.Statements(),
                 QStringList({Expected(u"prices.sellers.20"_s), Expected(u"prices.types.601"_s)}));
        QCOMPARE(BoxItems(screen, u"cxUniOrg"_s), QStringList{u"601|医药公司601"_s});
        QCOMPARE(BoxValue(screen, u"cxUniOrg"_s), u"601"_s);
        QCOMPARE(screen.ShownPriceColumns(), QStringList{u"PRICE_02 华南价"_s});
        QVERIFY(!screen.Buyers().DataSet()->IsActive());
        QCOMPARE(screen.Types().DataSet()->RecordCount(), 9);
    }

    void GroupChangeDisablesSaveAndEmptiesTheProducts()
    {
        PriceScreen screen;
        screen.Query();
        screen.EditPrice(0, u"COST_PRICE", u"13"_s);
        QVERIFY(screen.CanSave());
        screen.Select(u"cxUnion"_s, u"20"_s);
        QVERIFY(!screen.CanSave());
        QVERIFY(!screen.Products().DataSet()->IsActive());
        QCOMPARE(screen.Pages().RecordCount(), 0);
    }

    void FirstSellerOfTheNewGroupMayBeTheOldOne()
    {
        PriceScreen screen;
        screen.server.ClearScripts();
        screen.server.OnQuery(u" select  A.ORG_ID,"_s).Answer(Sellers({u"501"_s}));
        screen.server.OnQuery(u"PRC_UNI_PRICE_TYPE"_s).Answer(PriceTypes({u"81 05 特价 1"_s}));
        screen.server.ClearRecords();
        screen.Select(u"cxUnion"_s, u"20"_s);
        QCOMPARE(screen.server.LastQuery().sql, PrcUniPriceSql::PriceTypes({u"20"_s, u"501"_s}));
        QCOMPARE(screen.ShownPriceColumns(), QStringList{u"PRICE_05 特价"_s});
    }

    void GroupWithoutSellerLeavesNothingOfTheOldOne()
    {
        PriceScreen screen;
        screen.Query();
        screen.server.ClearScripts();
        screen.server.OnQuery(u" select  A.ORG_ID,"_s).Answer(Sellers({}));
        screen.server.ClearRecords();
        screen.Select(u"cxUnion"_s, u"20"_s);
        QCOMPARE(screen.server.Statements(), QStringList{Expected(u"prices.sellers.20"_s)});
        QCOMPARE(BoxItems(screen, u"cxUniOrg"_s), QStringList());
        QVERIFY(!screen.Products().DataSet()->IsActive());
        QVERIFY(!screen.Types().DataSet()->IsActive());
        QCOMPARE(screen.ShownPriceColumns(), QStringList());
        Click(screen.form, u"BtnQuery"_s);
        QCOMPARE(screen.Boxes(), QStringList{ChooseSeller});
        QCOMPARE(screen.server.Queries().size(), 1);
    }

    void FailedSellerQueryLeavesNothingOfTheOldGroup()
    {
        PriceScreen screen;
        screen.Query();
        screen.server.ClearScripts();
        screen.server.OnAnyQuery().DatabaseDown();
        screen.Select(u"cxUnion"_s, u"20"_s);
        QCOMPARE(screen.hook.Boxes().size(), 1);
        QVERIFY(!screen.Products().DataSet()->IsActive());
        QVERIFY(!screen.Types().DataSet()->IsActive());
        Click(screen.form, u"BtnQuery"_s);
        QCOMPARE(screen.Boxes().last(), ChooseSeller);
    }

    void SellerChangeReloadsPriceTypesAndEmptiesTheProducts()
    {
        PriceScreen screen;
        screen.Query();
        screen.EditPrice(0, u"COST_PRICE", u"13"_s);
        QVERIFY(screen.CanSave());
        screen.server.ClearRecords();
        screen.Select(u"cxUniOrg"_s, u"502"_s);
        QCOMPARE(screen.server.Statements(), QStringList{Expected(u"prices.types.502"_s)});
        QVERIFY(!screen.CanSave());
        QVERIFY(!screen.Products().DataSet()->IsActive());
        QCOMPARE(screen.Pages().RecordCount(), 0);
        QCOMPARE(screen.ShownPriceColumns(), QStringList());
        QCOMPARE(CellTexts(*screen.Types().DataSet(), u"Price_name"), QStringList(9, u""_s));
    }

    void SellerChangeLeavesTheBuyersAsTheyWere()
    {
        PriceScreen screen;
        screen.QueryBuyers();
        screen.Select(u"cxUniOrg"_s, u"502"_s);
        QCOMPARE(screen.Buyers().DataSet()->RecordCount(), 3);
    }

    void FailedPriceTypeQueryLeavesNothingOfTheOldSeller()
    {
        PriceScreen screen;
        screen.server.ClearScripts();
        screen.server.OnAnyQuery().DatabaseDown();
        screen.Select(u"cxUniOrg"_s, u"502"_s);
        QCOMPARE(screen.hook.Boxes().size(), 1);
        QVERIFY(!screen.Types().DataSet()->IsActive());
        QCOMPARE(screen.ShownPriceColumns(), QStringList());
        screen.ShowTypes();
        Click(screen.form, u"cxButton1"_s);
        QVERIFY(screen.server.Posts().isEmpty());
    }

    void PriceTypesThatCouldNotBeReadAreReadByTheNextQuery()
    {
        PriceScreen screen;
        screen.Select(u"cxUniOrg"_s, u"502"_s);
        screen.server.ClearScripts();
        screen.server.OnAnyQuery().DatabaseDown().Times(2);
        screen.server.OnQueryExact(Expected(u"prices.types"_s))
            .Answer(PriceTypes({u"31 01 一级价 1"_s}));
        screen.server.OnQuery(u" SELECT A.PRODUCT_SERIAL, "_s).Answer(PricedProducts(), 120);
        screen.Select(u"cxUniOrg"_s, u"501"_s);
        screen.Query(); // fails, too, and does not say that there are no types
        QCOMPARE(screen.hook.Boxes().size(), 2);
        QVERIFY(!screen.Boxes().contains(NoTypes));
        QCOMPARE(screen.Tab(), 0);
        screen.server.ClearRecords();
        screen.Query();
        QCOMPARE(screen.hook.Boxes().size(), 2);
        QCOMPARE(screen.server.Statements(),
                 QStringList({Expected(u"prices.types"_s), Expected(u"prices.products.all"_s)}));
        QCOMPARE(screen.ShownPriceColumns(), QStringList{u"PRICE_01 一级价"_s});
        QCOMPARE(screen.Types().DataSet()->TextAt(0, u"PRICE_TYPE_ID"), u"31"_s);
        QCOMPARE(screen.Products().DataSet()->RecordCount(), 3);
    }

    // --- The product list ----------------------------------------------------------------------

    void SellerWithoutAnyPriceTypeIsSentToThePriceTypes()
    {
        PriceScreen screen;
        screen.Select(u"cxUniOrg"_s, u"502"_s);
        screen.server.ClearRecords();
        screen.Query();
        QCOMPARE(screen.Boxes(), QStringList{NoTypes});
        QCOMPARE(screen.Tab(), 1);
        QVERIFY(screen.server.Queries().isEmpty());
        QCOMPARE(CellTexts(*screen.Types().DataSet(), u"Price_name"), QStringList(9, u""_s));
        QCOMPARE(CellTexts(*screen.Types().DataSet(), u"enable_flag"), QStringList(9, u"0"_s));
    }

    void QueryLoadsAPageAndFocusesTheGrid()
    {
        PriceScreen screen;
        screen.Query();
        const auto query = screen.server.LastQuery();
        QCOMPARE(query.sql, Expected(u"prices.products.all"_s));
        QCOMPARE(query.page, 1);
        QCOMPARE(query.pageSize, 50);
        QCOMPARE(query.queryType, 2);
        QCOMPARE(screen.Pages().RecordCount(), 120);
        QCOMPARE(FocusName(*screen.form), u"UniPriceGrid"_s);
        QVERIFY(!screen.CanSave());
    }

    void QueryWithoutRowsFocusesTheFirstFilter()
    {
        PriceScreen screen;
        screen.server.ClearScripts();
        screen.server.OnAnyQuery().Answer(Rows({u"ProductID"_s, u"SELECTED"_s}, {}));
        screen.Query();
        QCOMPARE(screen.Pages().RecordCount(), 0);
        QCOMPARE(FocusName(*screen.form), u"cxInformation"_s);
    }

    void StatusFilterListsProductsWithoutOrWithAPriceRowOnly_data()
    {
        QTest::addColumn<QString>("status");
        QTest::addColumn<QString>("statement");
        QTest::newRow("未报价") << u"0"_s << u"prices.products.unquoted"_s;
        QTest::newRow("已报价") << u"1"_s << u"prices.products.quoted"_s;
    }
    void StatusFilterListsProductsWithoutOrWithAPriceRowOnly()
    {
        QFETCH(QString, status);
        QFETCH(QString, statement);
        PriceScreen screen;
        screen.Select(u"cxStatus"_s, status);
        screen.Query();
        QCOMPARE(screen.server.LastQuery().sql, Expected(statement));
    }

    void EnterInAFilterAsksForTheFirstPage_data()
    {
        QTest::addColumn<QString>("statement");
        QTest::newRow("cxInformation") << u"prices.products.information"_s;
        QTest::newRow("cxFactory") << u"prices.products.factory"_s;
    }
    void EnterInAFilterAsksForTheFirstPage()
    {
        QFETCH(QString, statement);
        const QString filter = QString::fromLatin1(QTest::currentDataTag());
        PriceScreen screen;
        screen.Query();
        Click(&screen.Pages(), u"btnNext"_s);
        QCOMPARE(screen.server.LastQuery().page, 2);
        Type(screen.form, filter, filter == u"cxFactory" ? u" 齐鲁 "_s : u" ab'c "_s);
        Press(screen.form, filter, Qt::Key_Return);
        QCOMPARE(screen.server.LastQuery().sql, Expected(statement));
        QCOMPARE(screen.server.LastQuery().page, 1);
    }

    void QueryAndSaveAreDisabledWhileAPageIsLoaded()
    {
        PriceScreen screen;
        screen.Query();
        screen.EditPrice(0, u"COST_PRICE", u"13"_s);
        QCOMPARE(screen.DisabledAtRequests(*screen.form, {u"BtnQuery"_s}, [&] { screen.Query(); }),
                 QStringList{u"BtnQuery"_s});
        bool couldSave = true;
        screen.EditPrice(0, u"COST_PRICE", u"13"_s);
        QObject::connect(&screen.server, &ScriptedServer::RequestArrived, screen.form,
                         [&] { couldSave = screen.CanSave(); });
        screen.Query();
        QVERIFY(!couldSave);
    }

    void FailedQueryLeavesTheScreenUsable()
    {
        PriceScreen screen;
        screen.Query();
        screen.server.ClearScripts();
        screen.server.OnAnyQuery().DatabaseDown().Times(1);
        screen.server.OnAnyQuery().Answer(PricedProducts());
        Click(screen.form, u"BtnQuery"_s);
        QCOMPARE(screen.hook.Boxes().size(), 1);
        Click(screen.form, u"BtnQuery"_s);
        QCOMPARE(screen.Products().DataSet()->RecordCount(), 3);
        QVERIFY(!screen.Products().DataSet()->ControlsDisabled());
    }

    void PricesAreShownWithTwoDecimals()
    {
        PriceScreen screen;
        screen.Query();
        QCOMPARE(screen.ShownPrice(0, u"COST_PRICE"), u"12.50"_s);
        QCOMPARE(screen.ShownPrice(0, u"PRICE_01"), u"11.00"_s);
        QCOMPARE(screen.ShownPrice(1, u"COST_PRICE"), u""_s);
    }
};

QTEST_MAIN(PrcUniPriceTest)
#include "PrcUniPriceTest.moc"
