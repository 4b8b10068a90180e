#include "screens/PriceScreen.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QString TypesStored = u"Information|提示|保存成功！|Ok"_s;
const QString TypesFailed = u"Information|提示|保存失败！|Ok"_s;
const QString BuyersStored = u"Information|提示|保存成功!|Ok"_s;
const QString BuyersFailed = u"Information|提示|保存失败!|Ok"_s;
const QString ChooseRecords = u"Information|提示|请选择要保存的记录！|Ok"_s;

/// Names a slot as a user does: opens the cell, types, Enter.
void Name(PriceScreen &screen, int row, const QString &name)
{
    screen.Types().DataSet()->SetRecNo(row);
    screen.Types().EditCell(u"Price_name");
    Type(QApplication::focusWidget(), name);
    Press(QApplication::focusWidget(), Qt::Key_Return);
    QCoreApplication::processEvents();
}

/// Gives a buyer a price type by its place in the drop-down.
void Choose(PriceScreen &screen, int row, const QString &type)
{
    screen.Buyers().DataSet()->SetRecNo(row);
    screen.Buyers().EditCell(u"PRICE_TYPE_ID");
    auto *list = Child<ImageComboBox>(screen.Buyers().viewport(), u"cellEditor"_s);
    list->setCurrentIndex(list->findData(type));
    emit list->activated(list->currentIndex());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QString Ticks(const PriceScreen &screen)
{
    return CellTexts(*screen.Buyers().DataSet(), u"SELECTED").join(u""_s);
}

QStringList Choices(const PriceScreen &screen)
{
    const DataGrid &grid = screen.Buyers();
    return FormatValueList(grid.Model()->Columns().at(grid.ColumnIndex(u"PRICE_TYPE_ID")).values);
}

void SaveTypes(PriceScreen &screen)
{
    screen.ShowTypes();
    Click(screen.form, u"cxButton1"_s);
}

void SaveBuyers(PriceScreen &screen)
{
    Click(screen.form, u"cxButton4"_s);
}

} // namespace

/// The price screen's other tab: naming price types, and who gets which.
class PrcUniPriceTypesTest : public QObject
{
    Q_OBJECT

private slots:
    // --- Price types ---------------------------------------------------------------------------

    void SavePostsNamedSlotsUnderTheOperatorsCode()
    {
        PriceScreen screen;
        screen.AnswerPost(u"insertUpdatePrcUniPriceType"_s, u"0"_s);
        screen.ShowTypes();
        Name(screen, 1, u"二级价"_s);
        ClickCell(screen.Types(), 1, u"enable_flag");
        Name(screen, 4, u" 五 级 "_s);
        SaveTypes(screen);
        const auto post = screen.server.LastPost();
        QCOMPARE(post.manager, u"com.business.admin.UniPrice"_s);
        QCOMPARE(post.method, u"insertUpdatePrcUniPriceType"_s);
        QCOMPARE(post.rows.size(), 5);
        QCOMPARE(RowText(post.rows.at(0)), Expected(u"prices.post.type.kept"_s));
        QCOMPARE(RowText(post.rows.at(1)), Expected(u"prices.post.type.new"_s));
        QCOMPARE(RowText(post.rows.at(2)), Expected(u"prices.post.type.disabled"_s));
        QCOMPARE(RowText(post.rows.at(4)), Expected(u"prices.post.type.trimmed"_s));
    }

    void ClearedSlotThatHadATypeIsPostedAsDeleted()
    {
        PriceScreen screen;
        screen.AnswerPost(u"insertUpdatePrcUniPriceType"_s, u"0"_s);
        screen.ShowTypes();
        Name(screen, 0, u"  "_s);
        SaveTypes(screen);
        const auto post = screen.server.LastPost();
        QCOMPARE(post.rows.size(), 3);
        QCOMPARE(RowText(post.rows.at(0)), Expected(u"prices.post.type.cleared"_s));
    }

    void ClearedSlotThatNeverHadATypeIsNotPosted()
    {
        PriceScreen screen;
        screen.AnswerPost(u"insertUpdatePrcUniPriceType"_s, u"0"_s);
        screen.ShowTypes();
        Name(screen, 1, u"二级价"_s);
        Name(screen, 1, u""_s);
        ClickCell(screen.Types(), 1, u"enable_flag");
        SaveTypes(screen);
        QCOMPARE(screen.server.LastPost().rows.size(), 3);
    }

    void NineEmptyNewSlotsAreSavedByDoingNothingAtAll()
    {
        PriceScreen screen;
        screen.Select(u"cxUniOrg"_s, u"502"_s);
        screen.server.ClearRecords();
        SaveTypes(screen);
        QVERIFY(screen.server.Posts().isEmpty());
        QVERIFY(screen.server.Queries().isEmpty());
        QCOMPARE(screen.Boxes(), QStringList());
    }

    void NameThatIsStillInItsEditorIsSavedToo()
    {
        PriceScreen screen;
        screen.AnswerPost(u"insertUpdatePrcUniPriceType"_s, u"0"_s);
        screen.ShowTypes();
        screen.Types().DataSet()->SetRecNo(1);
        screen.Types().EditCell(u"Price_name");
        Type(QApplication::focusWidget(), u"二级价"_s);
        Child<QPushButton>(screen.form, u"cxButton1"_s)->click(); // takes no focus
        QCOMPARE(screen.server.LastPost().Value(u"PRICE_NAME"_s, 1), u"二级价"_s);
    }

    void NameIsBoundedByTheTable()
    {
        PriceScreen screen;
        screen.ShowTypes();
        Name(screen, 1, u"一二三四五六七八九十余"_s);
        QCOMPARE(screen.Types().DataSet()->TextAt(1, u"Price_name"), u"一二三四五六七八九十"_s);
    }

    void StoredTypesAreReadAgainForTableColumnsAndDropDown()
    {
        PriceScreen screen;
        screen.QueryBuyers();
        QCOMPARE(Choices(screen), QStringList({u"|"_s, u"34|四级价"_s, u"31|一级价"_s}));
        screen.server.ClearScripts();
        screen.AnswerPost(u"insertUpdatePrcUniPriceType"_s, u"1"_s);
        screen.server.OnQueryExact(Expected(u"prices.types"_s))
            .Answer(PriceTypes({u"31 01 一级价 0"_s, u"32 02 二级价 1"_s}));
        screen.server.ClearRecords();
        SaveTypes(screen);
        QCOMPARE(screen.server.Statements(), QStringList{Expected(u"prices.types"_s)});
        QCOMPARE(screen.ShownPriceColumns(), QStringList{u"PRICE_02 二级价"_s});
        QCOMPARE(CellTexts(*screen.Types().DataSet(), u"PRICE_TYPE_ID"),
                 QStringList({u"31"_s, u"32"_s}) + QStringList(7, u""_s));
        QCOMPARE(Choices(screen), QStringList({u"|"_s, u"32|二级价"_s}));
        QCOMPARE(screen.Boxes(), QStringList{TypesStored});
    }

    void StoredTypesThatCouldNotBeReadAgainAreReadByTheNextQuery()
    {
        PriceScreen screen;
        screen.ShowTypes();
        Name(screen, 1, u"二级价"_s);
        screen.server.ClearScripts();
        screen.AnswerPost(u"insertUpdatePrcUniPriceType"_s, u"1"_s);
        screen.server.OnAnyQuery().DatabaseDown().Times(1);
        screen.server.OnQueryExact(Expected(u"prices.types"_s))
            .Answer(PriceTypes({u"32 02 二级价 1"_s}));
        screen.server.OnQuery(u" SELECT A.PRODUCT_SERIAL, "_s).Answer(PricedProducts(), 120);
        SaveTypes(screen);
        QCOMPARE(screen.hook.Boxes().size(), 1);
        QVERIFY(!screen.Boxes().contains(TypesStored));
        Click(screen.form, u"cxButton2"_s);
        screen.Query();
        QCOMPARE(screen.hook.Boxes().size(), 1);
        QCOMPARE(screen.Types().DataSet()->TextAt(1, u"PRICE_TYPE_ID"), u"32"_s);
        QCOMPARE(screen.ShownPriceColumns(), QStringList{u"PRICE_02 二级价"_s});
    }

    void RefusedTypesStayAsTheyWereTyped_data() { Refusals(); }
    void RefusedTypesStayAsTheyWereTyped()
    {
        QFETCH(QString, code);
        PriceScreen screen;
        screen.AnswerPost(u"insertUpdatePrcUniPriceType"_s, code);
        screen.ShowTypes();
        Name(screen, 1, u"二级价"_s);
        screen.server.ClearRecords();
        SaveTypes(screen);
        QCOMPARE(screen.Boxes(), QStringList{TypesFailed});
        QVERIFY(screen.server.Queries().isEmpty());
        QCOMPARE(screen.Types().DataSet()->TextAt(1, u"Price_name"), u"二级价"_s);
    }

    void SlotThatIsNamedButNotSwitchedOnHasNoColumnAndNoChoiceAndItsPricesAreSent()
    {
        PriceScreen screen;
        screen.AnswerSavedPrices({u"91 71"_s});
        screen.QueryBuyers();
        QVERIFY(!Choices(screen).contains(u"33|三级价"_s));
        Click(screen.form, u"cxButton2"_s);
        screen.Query();
        QVERIFY(!screen.Products().IsColumnVisible(u"PRICE_03"));
        screen.EditPrice(0, u"COST_PRICE", u"13"_s);
        Click(screen.form, u"btnSave"_s);
        QCOMPARE(screen.server.LastPost().Value(u"PRICE_03"_s), u"9"_s);
    }

    void TypesAreNotAskedForWhenTheScreenIsLeft()
    {
        PriceScreen screen;
        screen.ShowTypes();
        Name(screen, 1, u"二级价"_s);
        QVERIFY(!screen.CanSave());
        screen.form->close();
        QCOMPARE(screen.Boxes(), QStringList());
    }

    // --- Buyers --------------------------------------------------------------------------------

    void BuyerQueryLoadsAllRowsAndTheChoices()
    {
        PriceScreen screen;
        screen.QueryBuyers();
        const auto query = screen.server.LastQuery();
        QCOMPARE(query.sql, Expected(u"prices.buyers.all"_s));
        QCOMPARE(query.page + query.pageSize, 0);
        QCOMPARE(screen.Buyers().DataSet()->RecordCount(), 3);
        QCOMPARE(Choices(screen), QStringList({u"|"_s, u"34|四级价"_s, u"31|一级价"_s}));
        QCOMPARE(FocusName(*screen.form), u"GridUniOrg"_s);
        const int column = screen.Buyers().ColumnIndex(u"PRICE_TYPE_ID");
        QCOMPARE(screen.Buyers().model()->index(1, column).data().toString(), u"一级价"_s);
        QCOMPARE(screen.Buyers().model()->index(0, column).data().toString(), u""_s);
    }

    void EnterInTheBuyerFilterQueries()
    {
        PriceScreen screen;
        screen.ShowTypes();
        Type(screen.form, u"edKey"_s, u" yy'市 "_s);
        Press(screen.form, u"edKey"_s, Qt::Key_Return);
        QCOMPARE(screen.server.LastQuery().sql, Expected(u"prices.buyers.key"_s));
    }

    void BuyerQueryWithoutRowsLeavesTheChoicesAndFocusesTheFilter()
    {
        PriceScreen screen;
        screen.ShowTypes();
        screen.server.ClearScripts();
        screen.server.OnAnyQuery().Answer(Rows({u"SELECTED"_s, u"ORG_ID"_s}, {}));
        screen.QueryBuyers();
        QCOMPARE(Choices(screen), QStringList());
        QCOMPARE(FocusName(*screen.form), u"edKey"_s);
    }

    void SellerWithoutAnyTypeOffersNotEvenTheEmptyChoice()
    {
        PriceScreen screen;
        screen.Select(u"cxUniOrg"_s, u"502"_s);
        screen.QueryBuyers();
        QCOMPARE(Choices(screen), QStringList());
    }

    void BuyerQueryButtonIsDisabledWhileItRuns()
    {
        PriceScreen screen;
        QCOMPARE(screen.DisabledAtRequests(*screen.form, {u"btnOrgQuery"_s},
                                           [&] { screen.QueryBuyers(); }),
                 QStringList{u"btnOrgQuery"_s});
    }

    void ChoosingATypeTicksTheRow()
    {
        PriceScreen screen;
        screen.QueryBuyers();
        Choose(screen, 2, u"34"_s);
        QCOMPARE(Ticks(screen), u"001"_s);
        Choose(screen, 1, u"31"_s); // which it has
        QCOMPARE(Ticks(screen), u"001"_s);
    }

    void SavePostsTheTickedBuyersAnEmptyTypeAsItIs()
    {
        PriceScreen screen;
        screen.AnswerPost(u"insertUpdatePrcUniPriceOrg"_s, u"1"_s);
        screen.QueryBuyers();
        Choose(screen, 0, u"31"_s);
        Choose(screen, 1, u""_s);
        Choose(screen, 2, u"34"_s);
        screen.Buyers().DataSet()->SetRecNo(1);
        SaveBuyers(screen);
        const auto post = screen.server.LastPost();
        QCOMPARE(post.manager, u"com.business.admin.UniPrice"_s);
        QCOMPARE(post.method, u"insertUpdatePrcUniPriceOrg"_s);
        QCOMPARE(RowTexts(post.rows), QStringList({Expected(u"prices.post.buyer.typed"_s),
                                                   Expected(u"prices.post.buyer.none"_s),
                                                   Expected(u"prices.post.buyer.third"_s)}));
        QCOMPARE(screen.Boxes(), QStringList{BuyersStored});
        QCOMPARE(Ticks(screen), u"000"_s);
        QCOMPARE(screen.Buyers().DataSet()->RecNo(), 1);
    }

    void UntickedBuyerIsNotPostedWhateverWasChosen()
    {
        PriceScreen screen;
        screen.QueryBuyers();
        Choose(screen, 0, u"31"_s);
        ClickCell(screen.Buyers(), 0, u"selected");
        QCOMPARE(Ticks(screen), u"000"_s);
        SaveBuyers(screen);
        QCOMPARE(screen.Boxes(), QStringList{ChooseRecords});
        QVERIFY(screen.server.Posts().isEmpty());
    }

    void SaveWithoutBuyersDoesNothing()
    {
        PriceScreen screen;
        screen.ShowTypes();
        SaveBuyers(screen);
        QCOMPARE(screen.Boxes(), QStringList());
        QVERIFY(screen.server.Posts().isEmpty());
    }

    void RefusedBuyersStayTicked_data() { Refusals(); }
    void RefusedBuyersStayTicked()
    {
        QFETCH(QString, code);
        PriceScreen screen;
        screen.AnswerPost(u"insertUpdatePrcUniPriceOrg"_s, code);
        screen.QueryBuyers();
        Choose(screen, 0, u"31"_s);
        SaveBuyers(screen);
        QCOMPARE(screen.Boxes(), QStringList{BuyersFailed});
        QCOMPARE(Ticks(screen), u"100"_s);
    }

    void SaveButtonsAreDisabledWhileTheyRun()
    {
        PriceScreen screen;
        screen.AnswerPost(u"insertUpdatePrcUniPriceOrg"_s, u"1"_s);
        screen.AnswerPost(u"insertUpdatePrcUniPriceType"_s, u"0"_s);
        screen.QueryBuyers();
        Choose(screen, 0, u"31"_s);
        const auto save = [&] {
            SaveBuyers(screen);
            SaveTypes(screen);
        };
        QCOMPARE(screen.DisabledAtRequests(*screen.form, {u"cxButton1"_s, u"cxButton4"_s}, save),
                 QStringList({u"cxButton4"_s, u"cxButton1"_s}));
    }

    void BackReturnsToThePrices()
    {
        PriceScreen screen;
        screen.ShowTypes();
        Click(screen.form, u"cxButton2"_s);
        QCOMPARE(screen.Tab(), 0);
        QVERIFY(screen.form->isVisible());
    }

private:
    static void Refusals()
    {
        QTest::addColumn<QString>("code");
        for (const char *code : {"0", "-1", "-2", "7", ""})
            QTest::newRow(code) << QString::fromLatin1(code);
    }
};

QTEST_MAIN(PrcUniPriceTypesTest)
#include "PrcUniPriceTypesTest.moc"
