#include "screens/StockOrgSetAdd.h"

#include "controls/ButtonEdit.h"
#include "remote/PageGuide.h"
#include "screens/ScreenFixture.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

RowSet Candidates()
{
    return Rows({u"SELECTED"_s, u"ORG_CODE"_s, u"ORG_NAME"_s, u"ORG_ID"_s},
                {{u"0"_s, u"H601"_s, u"市第二医院"_s, u"601"_s},
                 {u"0"_s, u"P602"_s, u"百草药房"_s, u"602"_s},
                 {u"0"_s, u"C603"_s, u"仁和医药"_s, u"603"_s}});
}

RowSet Owners()
{
    return Rows({u"ORG_ID"_s, u"ORG_CODE"_s, u"ORG_NAME"_s, u"ORG_ABBR"_s, u"ORG_NAME_PY"_s,
                 u"ORG_NAME_WB"_s, u"ORG_TYPE"_s},
                {{u"501"_s, u"H501"_s, u"市第一医院"_s, u"一院"_s, u"SDYYY"_s, u"YTGBA"_s, u"4"_s},
                 {u"504"_s, u"H504"_s, u"长征医院"_s, u"长征"_s, u"CZYY"_s, u"TTAB"_s, u"4"_s}});
}

/// The dialog over a server that knows two owners and three of 45 candidates.
class Dialog : public ScreenFixture
{
public:
    Dialog()
    {
        server.OnQuery(u"select '0' as selected"_s).Answer(Candidates(), 45);
        server.OnQuery(u"SELECT A.* FROM (SELECT * FROM BAS_ORG ) A"_s).Answer(Owners());
    }

    /// Opens the picker with `open` and takes one of its rows; -1 cancels.
    void PickOwner(int row, const std::function<void()> &open)
    {
        ModalVisitor picker([row](QWidget *orgSelect) {
            if (row < 0)
                return Click(orgSelect, u"BtnCancel"_s);
            Type(orgSelect, u"edOrg"_s, u"医院"_s);
            Click(orgSelect, u"BtnQuery"_s);
            Child<DataGrid>(orgSelect, u"GridQueryView"_s)->DataSet()->SetRecNo(row);
            Click(orgSelect, u"BtnSelect"_s);
        });
        open();
    }
    void ChooseOwner(int row = 0)
    {
        PickOwner(row, [this] { Owner().PressButton(0); });
    }
    void Query() { Click(&form, u"btnQuery"_s); }
    void Tick(const QList<int> &rows)
    {
        for (const int row : rows)
            ClickCell(Grid(), row, u"SELECTED");
    }
    void Save() { Click(&form, u"cxButton1"_s); }
    ScriptedServer::Script &OnSave()
    {
        return server.OnPost(u"com.business.stock.StockManager"_s, u"stockOrgManager"_s);
    }
    /// The question after a save is answered with no; every other box is confirmed.
    void StopAfterSaving()
    {
        hook.SetAnswer([](const TMessageBox &box) {
            return box.icon == TBoxIcon::Question ? TBoxButton::No : TBoxButton::Ok;
        });
    }
    QStringList CandidateStatements() { return server.Statements().filter(u"'0' as selected"_s); }
    ButtonEdit &Owner() { return *Child<ButtonEdit>(&form, u"edOwnerOrg"_s); }
    DataGrid &Grid() { return *Child<DataGrid>(&form, u"GridOrgView"_s); }
    ClientDataSet &Listed() { return *Grid().DataSet(); }
    TPageGuide &Pages() { return *Child<TPageGuide>(&form, u"PageGuide1"_s); }

    TFrmStockOrgSetAdd form;
};

/// The dialog, shown.
class Shown : public Dialog
{
public:
    Shown() { ShowScreen(form); }
};

const QString ChooseOwnerFirst = u"Information|提示|请选择本机构！|Ok"_s;
const QString ChooseViewers = u"Information|提示|请选择查看本机构库存的机构！|Ok"_s;
const QString SaveFailed = u"Information|提示|保存失败！|Ok"_s;
const QString KeepGoing = u"Question|提示|保存成功，是否继续维护库存设置？|Yes"_s;

} // namespace

class StockOrgSetAddTest : public QObject
{
    Q_OBJECT

private slots:
    void StatementsAreExact()
    {
        QCOMPARE(StockCandidatesSql(u"501"_s, u" "_s), Expected(u"viewers.all"_s));
        QCOMPARE(StockCandidatesSql(u"5'01"_s, {}), Expected(u"viewers.quoted"_s));
        QCOMPARE(StockCandidatesSql(u"501"_s, u" ab'c "_s), Expected(u"viewers.filtered"_s));
    }

    /// What the rows say is the server's part; see the stories of stock and rules.
    void OnlyMembersOfTheOwnersGroupsAndNeverTheOwnerAreAskedFor()
    {
        Shown dialog;
        dialog.ChooseOwner();
        dialog.Query();
        const QString sql = dialog.CandidateStatements().value(0);
        QVERIFY(sql.contains(u"select distinct union_id from uni_org where org_id = '501'"_s));
        QVERIFY(sql.contains(u"u.union_id = v.union_id and u.last_operate<> 'D'"_s));
        QVERIFY(sql.contains(u"and b.org_id is null and d.org_id <> '501' "_s));
    }

    void CaptionsAndColumnsAreExact()
    {
        Shown dialog;
        QCOMPARE(dialog.form.windowTitle(), u"新增库存开放机构"_s);
        const auto label = [&](const QString &name) {
            return Child<QLabel>(&dialog.form, name)->text();
        };
        QCOMPARE(label(u"lbOwnerOrg"_s), u"本机构"_s);
        QCOMPARE(label(u"lbType"_s), u"库存数量显示类型："_s);
        QCOMPARE(label(u"lbKey"_s), u"机构名称"_s);
        const auto button = [&](const QString &name) {
            return Child<QAbstractButton>(&dialog.form, name)->text();
        };
        QCOMPARE(button(u"cbType1"_s), u"显示有或无"_s);
        QCOMPARE(button(u"cbType2"_s), u"显示具体数值"_s);
        QCOMPARE(button(u"btnQuery"_s), u"查询(&Q)"_s);
        QCOMPARE(button(u"cxButton1"_s), u"保存(&S)"_s);
        QCOMPARE(button(u"cxButton2"_s), u"关闭(&C)"_s);
        QCOMPARE(dialog.Owner().Buttons(), QStringList({u"选择"_s, u"清空"_s}));
        QCOMPARE(ColumnsOf(dialog.Grid()),
                 QStringList({u"selected 选择"_s, u"ORG_CODE 机构编码"_s, u"ORG_NAME 机构名称"_s}));
        QVERIFY(Child<QRadioButton>(&dialog.form, u"cbType1"_s)->isChecked());
    }

    void PagingValuesAreTheLayoutsBecauseNoStylingPassRuns()
    {
        Shown dialog;
        QCOMPARE(dialog.Pages().PageSizeSet(), u"20,50,100"_s);
        QCOMPARE(dialog.Pages().PageSize(), 20);
        QCOMPARE(dialog.Pages().ShowAllLimit(), -1);
        QVERIFY(dialog.Pages().ShowSelectAll());
    }

    void ShowQueriesNothing()
    {
        Shown dialog;
        QVERIFY(dialog.server.Queries().isEmpty());
        QCOMPARE(FocusName(dialog.form), u"edOwnerOrg"_s);
    }

    // --- The owner -------------------------------------------------------------------------------

    void OwnerIsPickedByTheButtonOrByEnter_data()
    {
        QTest::addColumn<bool>("byEnter");
        QTest::newRow("button") << false;
        QTest::newRow("Enter") << true;
    }
    void OwnerIsPickedByTheButtonOrByEnter()
    {
        QFETCH(bool, byEnter);
        Dialog dialog; // where Enter otherwise goes to the next control
        ShowModally(dialog.form, [&](QWidget *) {
            dialog.PickOwner(1, [&] {
                if (byEnter)
                    Press(&dialog.Owner(), Qt::Key_Return);
                else
                    PressInside(&dialog.form, u"edOwnerOrg"_s);
            });
            QCOMPARE(dialog.Owner().text(), u"长征医院"_s);
            QCOMPARE(dialog.Owner().ChosenValue(), u"504"_s);
            QCOMPARE(FocusName(dialog.form), u"edKey"_s);
        });
    }

    void PickerSearchesTheTypedName()
    {
        Shown dialog;
        Type(&dialog.form, u"edOwnerOrg"_s, u"长征"_s);
        QString searched;
        ModalVisitor picker([&](QWidget *orgSelect) {
            searched = Child<QLineEdit>(orgSelect, u"edOrg"_s)->text();
            Click(orgSelect, u"BtnCancel"_s);
        });
        dialog.Owner().PressButton(0);
        QCOMPARE(searched, u"长征"_s);
    }

    void CancelledPickerChangesNothingButTheFocus()
    {
        Shown dialog;
        dialog.ChooseOwner(0);
        dialog.ChooseOwner(-1);
        QCOMPARE(dialog.Owner().ChosenValue(), u"501"_s);
        QCOMPARE(dialog.Owner().text(), u"市第一医院"_s);
        QCOMPARE(FocusName(dialog.form), u"edKey"_s);
    }

    void QueryWithoutAnOwnerAsksForOneAndSendsNothing()
    {
        Shown dialog;
        dialog.Query();
        Press(&dialog.form, u"edKey"_s, Qt::Key_Return);
        QCOMPARE(dialog.Boxes(), QStringList({ChooseOwnerFirst, ChooseOwnerFirst}));
        QVERIFY(dialog.server.Queries().isEmpty());
    }

    void TypingOverTheOwnerClearsItAndTheNextQueryAsksForOneAgain()
    {
        Shown dialog;
        dialog.ChooseOwner();
        QTest::keyClick(&dialog.Owner(), Qt::Key_Backspace);
        dialog.Query();
        QCOMPARE(dialog.Owner().text(), u"市第一医"_s);
        QCOMPARE(dialog.Boxes(), QStringList{ChooseOwnerFirst});
        QVERIFY(dialog.CandidateStatements().isEmpty());
    }

    void OwnerTypedOverLeavesNoCandidatesThatCouldBeSavedForNobody()
    {
        Shown dialog;
        dialog.ChooseOwner();
        dialog.Query();
        dialog.Tick({0});
        QTest::keyClick(&dialog.Owner(), Qt::Key_X);
        QCOMPARE(dialog.Listed().RecordCount(), 0);
        QCOMPARE(dialog.Pages().RecordCount(), 0);
        dialog.Save();
        QVERIFY(dialog.Boxes().isEmpty());
        QVERIFY(dialog.server.Posts().isEmpty());
    }

    void AnotherOwnerDoesNotTakeOverTheCandidatesOfTheFirst()
    {
        Shown dialog;
        dialog.ChooseOwner(0);
        dialog.Query();
        dialog.ChooseOwner(0);
        QCOMPARE(dialog.Listed().RecordCount(), 3);
        dialog.ChooseOwner(1);
        QCOMPARE(dialog.Listed().RecordCount(), 0);
        dialog.Query();
        QVERIFY(dialog.CandidateStatements().last().contains(u"owner_orgid = '504' "_s));
    }

    void ClearEmptiesTheOwner()
    {
        Shown dialog;
        dialog.ChooseOwner();
        dialog.Owner().PressButton(1);
        QVERIFY(dialog.Owner().text().isEmpty());
        dialog.Query();
        QCOMPARE(dialog.Boxes(), QStringList{ChooseOwnerFirst});
    }

    // --- The candidates --------------------------------------------------------------------------

    void EnterInTheFilterQueriesTheFirstPage()
    {
        Dialog dialog;
        ShowModally(dialog.form, [&](QWidget *) {
            dialog.ChooseOwner();
            Type(&dialog.form, u"edKey"_s, u" ab'c "_s);
            Press(&dialog.form, u"edKey"_s, Qt::Key_Return);
            QCOMPARE(dialog.server.LastQuery().sql, Expected(u"viewers.filtered"_s));
            QCOMPARE(dialog.server.LastQuery().page, 1);
            QCOMPARE(dialog.server.LastQuery().pageSize, 20);
            QCOMPARE(dialog.server.LastQuery().queryType, 2);
            QCOMPARE(dialog.Pages().RecordCount(), 45);
            QCOMPARE(FocusName(dialog.form), u"GridOrgView"_s);
        });
    }

    void PageChangesQueryThatPage()
    {
        Shown dialog;
        dialog.ChooseOwner();
        dialog.Query();
        Click(&dialog.Pages(), u"btnNext"_s);
        QCOMPARE(dialog.server.LastQuery().page, 2);
        QCOMPARE(dialog.server.LastQuery().sql, Expected(u"viewers.all"_s));
    }

    void QueryButtonIsDisabledWhileItRuns()
    {
        Shown dialog;
        dialog.ChooseOwner();
        bool enabled = true;
        connect(&dialog.server, &ScriptedServer::RequestArrived, &dialog.form,
                [&] { enabled = Child<QPushButton>(&dialog.form, u"btnQuery"_s)->isEnabled(); });
        dialog.Query();
        QVERIFY(!enabled);
        QVERIFY(Child<QPushButton>(&dialog.form, u"btnQuery"_s)->isEnabled());
    }

    void SelectAllTicksThePageAndKeepsTheCurrentRow()
    {
        Shown dialog;
        dialog.ChooseOwner();
        dialog.Query();
        dialog.Listed().SetRecNo(1);
        emit dialog.Pages().SelectAll(true);
        QCOMPARE(CellTexts(dialog.Listed(), u"SELECTED"), QStringList(3, u"1"_s));
        QCOMPARE(dialog.Listed().RecNo(), 1);
        emit dialog.Pages().SelectAll(false);
        QCOMPARE(CellTexts(dialog.Listed(), u"SELECTED"), QStringList(3, u"0"_s));
    }

    // --- Saving ----------------------------------------------------------------------------------

    void SaveOnAnEmptyListDoesNothing()
    {
        Shown dialog;
        dialog.Save();
        QVERIFY(dialog.Boxes().isEmpty());
        QVERIFY(dialog.server.Posts().isEmpty());
    }

    void SaveWithoutATickAsksForViewers()
    {
        Shown dialog;
        dialog.ChooseOwner();
        dialog.Query();
        dialog.Save();
        QCOMPARE(dialog.Boxes(), QStringList{ChooseViewers});
        QVERIFY(dialog.server.Posts().isEmpty());
    }

    void TickedRowsArePosted()
    {
        Dialog dialog;
        dialog.OnSave().Code(u"1"_s);
        dialog.StopAfterSaving();
        const TModalResult result = ShowModally(dialog.form, [&](QWidget *) {
            dialog.ChooseOwner();
            dialog.Query();
            dialog.Tick({0, 2});
            dialog.Save();
        });
        QCOMPARE(result, TModalResult::Ok);
        QVERIFY(dialog.form.HasSaved());
        QCOMPARE(dialog.Boxes(), QStringList{KeepGoing});
        QCOMPARE(dialog.server.Posts().size(), 1);
        QCOMPARE(RowTexts(dialog.server.LastPost().rows),
                 QStringList({Expected(u"stock.add.first"_s), Expected(u"stock.add.third"_s)}));
    }

    void SecondKindShowsTheQuantity()
    {
        Shown dialog;
        dialog.OnSave().Code(u"1"_s);
        dialog.ChooseOwner();
        dialog.Query();
        dialog.Tick({1});
        Click(&dialog.form, u"cbType2"_s);
        dialog.Save();
        QCOMPARE(RowTexts(dialog.server.LastPost().rows),
                 QStringList{Expected(u"stock.add.quantity"_s)});
    }

    void GoingOnClosesTheCandidatesWithoutAQueryAndStaysOpen()
    {
        Dialog dialog;
        dialog.OnSave().Code(u"1"_s);
        const TModalResult result = ShowModally(dialog.form, [&](QWidget *form) {
            dialog.ChooseOwner();
            dialog.Query();
            dialog.Tick({0});
            const auto queries = dialog.server.Queries().size();
            dialog.Save();
            QCOMPARE(dialog.Boxes(), QStringList{KeepGoing});
            QVERIFY(form->isVisible());
            QVERIFY(!dialog.Listed().IsActive());
            QCOMPARE(dialog.Pages().RecordCount(), 0);
            QCOMPARE(dialog.server.Queries().size(), queries);
            QCOMPARE(FocusName(dialog.form), u"edOwnerOrg"_s);
            Click(&dialog.form, u"cxButton2"_s);
        });
        QCOMPARE(result, TModalResult::Cancel);
        QVERIFY(dialog.form.HasSaved());
    }

    void AnyFirstCodeButOneIsAFailure_data()
    {
        QTest::addColumn<QStringList>("codes");
        QTest::newRow("0") << QStringList{u"0"_s, u"1"_s};
        QTest::newRow("-1") << QStringList{u"-1"_s, u"1"_s};
        QTest::newRow("-2") << QStringList{u"-2"_s, u"-2"_s};
        QTest::newRow("unknown") << QStringList{u"7"_s, u"1"_s};
    }
    void AnyFirstCodeButOneIsAFailure()
    {
        QFETCH(QStringList, codes);
        Shown dialog;
        dialog.OnSave().Codes(codes);
        dialog.ChooseOwner();
        dialog.Query();
        dialog.Tick({0, 2});
        dialog.Save();
        QCOMPARE(dialog.Boxes(), QStringList{SaveFailed});
        QCOMPARE(CellTexts(dialog.Listed(), u"SELECTED"), QStringList({u"1"_s, u"0"_s, u"1"_s}));
        QVERIFY(!dialog.form.HasSaved());
    }

    void OnlyTheFirstCodeIsLookedAt()
    {
        Shown dialog;
        dialog.OnSave().Codes({u"1"_s, u"0"_s});
        dialog.ChooseOwner();
        dialog.Query();
        dialog.Tick({0, 2});
        dialog.Save();
        QCOMPARE(dialog.Boxes(), QStringList{KeepGoing});
    }

    void SaveButtonIsDisabledWhileItsPostRuns()
    {
        Shown dialog;
        dialog.OnSave().Code(u"0"_s);
        dialog.ChooseOwner();
        dialog.Query();
        dialog.Tick({0});
        bool enabled = true;
        connect(&dialog.server, &ScriptedServer::RequestArrived, &dialog.form,
                [&] { enabled = Child<QPushButton>(&dialog.form, u"cxButton1"_s)->isEnabled(); });
        dialog.Save();
        QVERIFY(!enabled);
        QVERIFY(Child<QPushButton>(&dialog.form, u"cxButton1"_s)->isEnabled());
    }

    void BrokenSaveKeepsTheTicks()
    {
        Shown dialog;
        dialog.OnSave().Error(500, u"server.failure"_s, u"数据库不可用"_s, u"R-1"_s);
        dialog.ChooseOwner();
        dialog.Query();
        dialog.Tick({1});
        dialog.Save();
        QVERIFY(dialog.hook.Boxes().last().text.contains(u"数据库不可用"_s));
        QCOMPARE(CellTexts(dialog.Listed(), u"SELECTED"), QStringList({u"0"_s, u"1"_s, u"0"_s}));
        QVERIFY(!dialog.form.HasSaved());
    }

    void EscClosesWithCancel()
    {
        Dialog dialog;
        const TModalResult result = ShowModally(dialog.form, [&](QWidget *form) {
            Press(&dialog.form, u"edKey"_s, Qt::Key_Escape);
            QVERIFY(!form->isVisible());
        });
        QCOMPARE(result, TModalResult::Cancel);
        QVERIFY(!dialog.form.HasSaved());
    }
};

QTEST_MAIN(StockOrgSetAddTest)
#include "StockOrgSetAddTest.moc"
