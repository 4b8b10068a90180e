#include "screens/PriceScreen.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QPushButton>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QString Stored = u"Warning|警告|保存成功！|Ok"_s;
const QString Failed = u"Warning|警告|保存失败！|Ok"_s;
const QString NothingToStore = u"Warning|警告|没有需要保存的数据！|Ok"_s;
const QString AskToLeave = u"Question|提示|价格修改尚未保存，是否确定退出！|Yes"_s;

/// Every row's mark, in one text.
QString Marks(const PriceScreen &screen)
{
    return CellTexts(*screen.Products().DataSet(), u"SELECTED").join(u""_s);
}

QString Price(const PriceScreen &screen, int row, QStringView field)
{
    return screen.Products().DataSet()->TextAt(row, field);
}

/// The editor of a row's retail price.
QWidget *OpenPrice(PriceScreen &screen, int row)
{
    screen.Products().DataSet()->SetRecNo(row);
    screen.Products().EditCell(u"COST_PRICE");
    return QApplication::focusWidget();
}

/// Enter takes effect when the key is done with.
void LeaveCell(QWidget *editor)
{
    Press(editor, Qt::Key_Return);
    QCoreApplication::processEvents();
}

void Save(PriceScreen &screen)
{
    Click(screen.form, u"btnSave"_s);
}

/// As code could, whatever the screen's rule says.
void ForceSave(PriceScreen &screen)
{
    auto *button = Child<QPushButton>(screen.form, u"btnSave"_s);
    button->setEnabled(true);
    button->click();
}

/// Changes a field of a row without the grid.
void ChangeByCode(PriceScreen &screen, int row, const QString &field, const QString &text)
{
    ClientDataSet &products = *screen.Products().DataSet();
    products.SetRecNo(row);
    products.Edit();
    products.SetFieldText(field, text);
    products.Post();
}

} // namespace

/// The price screen: how edits mark their rows, how they are stored, and how the screen is left.
class PrcUniPriceSaveTest : public QObject
{
    Q_OBJECT

private slots:
    // --- Marking -------------------------------------------------------------------------------

    void EditedPriceMarksItsRowAndEnablesSave()
    {
        PriceScreen screen;
        screen.Query();
        QCOMPARE(Marks(screen), u"000"_s);
        screen.EditPrice(1, u"COST_PRICE", u"8.25"_s);
        QCOMPARE(Marks(screen), u"010"_s);
        QVERIFY(screen.CanSave());
        QCOMPARE(Price(screen, 1, u"COST_PRICE"), u"8.25"_s);
        QCOMPARE(screen.ShownPrice(1, u"COST_PRICE"), u"8.25"_s);
    }

    void CellThatIsOpenedAndLeftAsItWasMarksNothing()
    {
        PriceScreen screen;
        screen.Query();
        LeaveCell(OpenPrice(screen, 1));
        screen.EditPrice(0, u"COST_PRICE", u"12.50"_s); // which is what it was: 12.5
        QCOMPARE(Marks(screen), u"000"_s);
        QVERIFY(!screen.CanSave());
    }

    void ChangeByOtherMeansMarksItsRowOnceTheColumnWasEdited()
    {
        PriceScreen screen;
        screen.Query();
        ChangeByCode(screen, 2, u"COST_PRICE"_s, u"4"_s);
        QCOMPARE(Marks(screen), u"000"_s);
        screen.EditPrice(0, u"COST_PRICE", u"13"_s);
        ChangeByCode(screen, 2, u"COST_PRICE"_s, u"5"_s);
        QCOMPARE(Marks(screen), u"101"_s);
        ChangeByCode(screen, 1, u"PRICE_01"_s, u"5"_s); // never edited in the grid
        QCOMPARE(Marks(screen), u"101"_s);
    }

    void MarkingOutlivesTheNextQuery()
    {
        PriceScreen screen;
        screen.Query();
        screen.EditPrice(0, u"PRICE_04", u"13"_s);
        Click(screen.form, u"BtnQuery"_s);
        QCOMPARE(Marks(screen), u"000"_s);
        QVERIFY(!screen.CanSave());
        ChangeByCode(screen, 1, u"PRICE_04"_s, u"7"_s);
        QCOMPARE(Marks(screen), u"010"_s);
        QVERIFY(screen.CanSave());
    }

    void MarkingOutlivesAnotherSellersList()
    {
        PriceScreen screen;
        screen.Query();
        screen.EditPrice(0, u"COST_PRICE", u"13"_s);
        screen.Select(u"cxUniOrg"_s, u"502"_s);
        screen.Select(u"cxUniOrg"_s, u"501"_s);
        Click(screen.form, u"BtnQuery"_s);
        ChangeByCode(screen, 2, u"COST_PRICE"_s, u"7"_s);
        QCOMPARE(Marks(screen), u"001"_s);
    }

    void EditingTheSameColumnTwiceMarksAsOnce()
    {
        PriceScreen screen;
        screen.Query();
        screen.EditPrice(0, u"COST_PRICE", u"13"_s);
        screen.EditPrice(0, u"COST_PRICE", u"14"_s);
        screen.EditPrice(1, u"COST_PRICE", u"15"_s);
        QCOMPARE(Marks(screen), u"110"_s);
        QCOMPARE(Price(screen, 0, u"COST_PRICE"), u"14.00"_s);
    }

    void PageQueryForgetsEditsAndDisablesSave()
    {
        PriceScreen screen;
        screen.Query();
        screen.EditPrice(0, u"COST_PRICE", u"13"_s);
        Click(&screen.Pages(), u"btnNext"_s);
        QVERIFY(!screen.CanSave());
        QCOMPARE(Price(screen, 0, u"COST_PRICE"), u"12.5"_s);
    }

    // --- What a price may be -------------------------------------------------------------------

    void PriceThatIsNoneDoesNotGetIntoTheCell_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("stays");
        QTest::newRow("letters") << u"abc"_s << u""_s;
        QTest::newRow("digits and letters") << u"1a2"_s << u"12"_s;
        QTest::newRow("negative") << u"-5"_s << u"5"_s;
        QTest::newRow("nine digits") << u"123456789"_s << u"12345678"_s;
        QTest::newRow("highest") << u"99999999"_s << u"99999999"_s;
        QTest::newRow("exponent") << u"1e5"_s << u"15"_s;
    }
    void PriceThatIsNoneDoesNotGetIntoTheCell()
    {
        QFETCH(QString, typed);
        QFETCH(QString, stays);
        PriceScreen screen;
        screen.Query();
        auto *editor = qobject_cast<QLineEdit *>(OpenPrice(screen, 1));
        QTest::keyClicks(editor, typed);
        QCOMPARE(editor->text(), stays);
        LeaveCell(editor);
        QCOMPARE(Price(screen, 1, u"COST_PRICE"), stays.isEmpty() ? u""_s : stays + u".00"_s);
    }

    void PastedPriceIsTakenWholeOrNotAtAll_data()
    {
        QTest::addColumn<QString>("pasted");
        QTest::addColumn<QString>("stays");
        QTest::newRow("price") << u"1234.5"_s << u"1234.50"_s;
        QTest::newRow("price with groups") << u" 1,234.50 "_s << u"1234.50"_s;
        QTest::newRow("letters") << u"12元"_s << u""_s;
        QTest::newRow("negative") << u"-12"_s << u""_s;
        QTest::newRow("nine digits") << u"123456789"_s << u""_s;
        QTest::newRow("two lines") << u"12\n13"_s << u""_s;
    }
    void PastedPriceIsTakenWholeOrNotAtAll()
    {
        QFETCH(QString, pasted);
        QFETCH(QString, stays);
        PriceScreen screen;
        screen.Query();
        QApplication::clipboard()->setText(pasted);
        QWidget *editor = OpenPrice(screen, 1);
        QTest::keySequence(editor, QKeySequence::Paste);
        LeaveCell(editor);
        QCOMPARE(Price(screen, 1, u"COST_PRICE"), stays);
        QCOMPARE(Marks(screen), stays.isEmpty() ? u"000"_s : u"010"_s);
    }

    void PriceMayBeTakenBackToNone()
    {
        PriceScreen screen;
        screen.Query();
        screen.EditPrice(0, u"COST_PRICE", u""_s);
        QCOMPARE(Price(screen, 0, u"COST_PRICE"), u""_s);
        QCOMPARE(Marks(screen), u"100"_s);
    }

    // --- Saving --------------------------------------------------------------------------------

    void SavePostsTheMarkedRowsWithTheirHiddenPricesUnderTheOperatorsName()
    {
        PriceScreen screen;
        screen.AnswerSavedPrices({u"91 71"_s, u"92 72"_s});
        screen.Query();
        screen.EditPrice(1, u"COST_PRICE", u"8.25"_s);
        ChangeByCode(screen, 0, u"SELECTED"_s, u"1"_s);
        Save(screen);
        const auto post = screen.server.LastPost();
        QCOMPARE(post.manager, u"com.business.admin.UniPrice"_s);
        QCOMPARE(post.method, u"insertUpdatePrcUniPriceProduct"_s);
        QCOMPARE(RowTexts(post.rows), QStringList({Expected(u"prices.post.quoted"_s),
                                                   Expected(u"prices.post.unquoted"_s)}));
        QCOMPARE(screen.Boxes(), QStringList{Stored});
        QVERIFY(!screen.CanSave());
    }

    void ProductWithoutAPriceRowLearnsItsKeyByItsProduct()
    {
        PriceScreen screen;
        screen.AnswerSavedPrices({u"92 72"_s, u"55 99"_s}); // 55 is not in the list
        screen.Query();
        screen.EditPrice(1, u"COST_PRICE", u"8.25"_s);
        Save(screen);
        QCOMPARE(CellTexts(*screen.Products().DataSet(), u"PRICE_ID"),
                 QStringList({u"71"_s, u"72"_s, u"73"_s}));
        // The row's mark stays: it goes with the next save again, with its key.
        screen.EditPrice(2, u"PRICE_01", u"2.4"_s);
        Save(screen);
        QCOMPARE(screen.server.LastPost().rows.size(), 2);
        QCOMPARE(RowText(screen.server.LastPost().rows.at(0)),
                 Expected(u"prices.post.unquoted.again"_s));
    }

    void MarksStayAfterASaveAndGoWithTheNextQuery()
    {
        PriceScreen screen;
        screen.AnswerSavedPrices({u"92 72"_s});
        screen.Query();
        screen.EditPrice(1, u"COST_PRICE", u"8.25"_s);
        Save(screen);
        QCOMPARE(Marks(screen), u"010"_s);
        QVERIFY(!screen.CanSave());
        Click(screen.form, u"BtnQuery"_s);
        QCOMPARE(Marks(screen), u"000"_s);
    }

    void CurrentRowStaysWhereItIsDuringASave()
    {
        PriceScreen screen;
        screen.AnswerSavedPrices({u"91 71"_s, u"92 72"_s});
        screen.Query();
        screen.EditPrice(1, u"COST_PRICE", u"8.25"_s);
        screen.Products().DataSet()->SetRecNo(2);
        Save(screen);
        QCOMPARE(screen.Products().DataSet()->RecNo(), 2);
        QVERIFY(!screen.Products().DataSet()->ControlsDisabled());
    }

    void TypedPriceThatIsStillInItsEditorIsSavedToo()
    {
        PriceScreen screen;
        screen.AnswerSavedPrices({u"92 72"_s});
        screen.Query();
        screen.EditPrice(1, u"COST_PRICE", u"8"_s);
        Type(OpenPrice(screen, 1), u"8.25"_s);
        Child<QPushButton>(screen.form, u"btnSave"_s)->click(); // takes no focus
        QCOMPARE(RowText(screen.server.LastPost().rows.at(0)), Expected(u"prices.post.unquoted"_s));
        QVERIFY(!screen.CanSave());
    }

    void SaveWithNothingMarkedSaysSoAndPostsNothing()
    {
        PriceScreen screen;
        screen.Query();
        ForceSave(screen);
        QCOMPARE(screen.Boxes(), QStringList{NothingToStore});
        QVERIFY(screen.server.Posts().isEmpty());
        QVERIFY(!screen.CanSave());
    }

    void SaveWithoutProductsDoesNothing()
    {
        PriceScreen screen;
        ForceSave(screen);
        QCOMPARE(screen.Boxes(), QStringList());
        QVERIFY(screen.server.Posts().isEmpty());
        QVERIFY(!screen.CanSave());
    }

    void RefusedSaveSaysSoAndLosesNothing_data()
    {
        QTest::addColumn<QString>("code");
        for (const char *code : {"0", "-1", "-2", "7", ""})
            QTest::newRow(code) << QString::fromLatin1(code);
    }
    void RefusedSaveSaysSoAndLosesNothing()
    {
        QFETCH(QString, code);
        PriceScreen screen;
        screen.AnswerPost(u"insertUpdatePrcUniPriceProduct"_s, code);
        screen.Query();
        screen.EditPrice(1, u"COST_PRICE", u"8.25"_s);
        Save(screen);
        QCOMPARE(screen.Boxes(), QStringList{Failed});
        QVERIFY(screen.CanSave());
        QCOMPARE(Marks(screen), u"010"_s);
        QCOMPARE(Price(screen, 1, u"PRICE_ID"), u""_s);
    }

    void FailedPostLosesNothingAndSaveIsOfferedAgain()
    {
        PriceScreen screen;
        screen.server.OnPost(u"insertUpdatePrcUniPriceProduct"_s).DatabaseDown().Times(1);
        screen.AnswerSavedPrices({u"92 72"_s});
        screen.Query();
        screen.EditPrice(1, u"COST_PRICE", u"8.25"_s);
        Save(screen);
        QCOMPARE(screen.hook.Boxes().size(), 1);
        QVERIFY(screen.CanSave());
        Save(screen);
        QCOMPARE(screen.Boxes().last(), Stored);
        QCOMPARE(screen.server.Posts().size(), 2);
    }

    void SecondClickDuringASaveIsNone()
    {
        PriceScreen screen;
        screen.AnswerSavedPrices({u"92 72"_s});
        screen.Query();
        screen.EditPrice(1, u"COST_PRICE", u"8.25"_s);
        bool enabled = true;
        QObject::connect(&screen.server, &ScriptedServer::RequestArrived, screen.form,
                         [&] { enabled = screen.CanSave(); });
        DoubleClick(Child<QWidget>(screen.form, u"btnSave"_s));
        QVERIFY(!enabled);
        QCOMPARE(screen.server.Posts().size(), 1);
    }

    // --- Leaving -------------------------------------------------------------------------------

    void LeavingWithoutEditsAsksNothing_data() { WaysToLeave(); }
    void LeavingWithoutEditsAsksNothing()
    {
        QFETCH(QString, way);
        PriceScreen screen;
        screen.Query();
        Leave(screen, way);
        QCOMPARE(screen.Boxes(), QStringList());
        QVERIFY(!screen.form->isVisible());
    }

    void LeavingWithEditsAsksOnceAndYesLeaves_data() { WaysToLeave(); }
    void LeavingWithEditsAsksOnceAndYesLeaves()
    {
        QFETCH(QString, way);
        PriceScreen screen;
        screen.Query();
        screen.EditPrice(1, u"COST_PRICE", u"8.25"_s);
        Leave(screen, way);
        QCOMPARE(screen.Boxes(), QStringList{AskToLeave});
        QVERIFY(!screen.form->isVisible());
    }

    void LeavingWithEditsAndNoKeepsScreenAndEdits_data() { WaysToLeave(); }
    void LeavingWithEditsAndNoKeepsScreenAndEdits()
    {
        QFETCH(QString, way);
        PriceScreen screen;
        screen.Query();
        screen.EditPrice(1, u"COST_PRICE", u"8.25"_s);
        screen.hook.SetAnswer([](const TMessageBox &) { return TBoxButton::No; });
        Leave(screen, way);
        QCOMPARE(screen.Boxes(), QStringList{AskToLeave});
        QVERIFY(screen.form->isVisible());
        QCOMPARE(Price(screen, 1, u"COST_PRICE"), u"8.25"_s);
        QVERIFY(screen.CanSave());
    }

    void PriceThatIsStillInItsEditorIsAnEditToo()
    {
        PriceScreen screen;
        screen.Query();
        screen.hook.SetAnswer([](const TMessageBox &) { return TBoxButton::No; });
        Type(OpenPrice(screen, 1), u"8.25"_s);
        screen.form->close();
        QCOMPARE(screen.Boxes(), QStringList{AskToLeave});
        QCOMPARE(Price(screen, 1, u"COST_PRICE"), u"8.25"_s);
    }

    void StoredPricesAreNotAskedFor()
    {
        PriceScreen screen;
        screen.AnswerSavedPrices({u"92 72"_s});
        screen.Query();
        screen.EditPrice(1, u"COST_PRICE", u"8.25"_s);
        Save(screen);
        Click(screen.form, u"BtnClose"_s);
        QCOMPARE(screen.Boxes(), QStringList{Stored});
        QVERIFY(!screen.form->isVisible());
    }

    void EscInTheScreenDoesNothing()
    {
        PriceScreen screen;
        screen.Query();
        screen.EditPrice(1, u"COST_PRICE", u"8.25"_s);
        Press(screen.form, u"cxInformation"_s, Qt::Key_Escape);
        QVERIFY(screen.form->isVisible());
        QCOMPARE(screen.Boxes(), QStringList());
    }

    void EmbeddedScreenFreesItselfWhenItIsLeft()
    {
        PriceScreen screen;
        screen.form->MakeEmbedded();
        screen.form->show();
        Click(screen.form, u"BtnClose"_s);
        QTRY_VERIFY(!screen.form);
    }

private:
    static void WaysToLeave()
    {
        QTest::addColumn<QString>("way");
        for (const char *way : {"BtnClose", "BtnFormTitleClose", "the window"})
            QTest::newRow(way) << QString::fromLatin1(way);
    }

    static void Leave(PriceScreen &screen, const QString &way)
    {
        if (way == u"the window")
            screen.form->close();
        else
            Click(screen.form, way);
    }
};

QTEST_MAIN(PrcUniPriceSaveTest)
#include "PrcUniPriceSaveTest.moc"
