#include "screens/UniUnionOrgNew.h"

#include "controls/ButtonEdit.h"
#include "controls/DataGrid.h"
#include "controls/ImageComboBox.h"
#include "frame/FormTitle.h"
#include "remote/PageGuide.h"
#include "screens/ScreenFixture.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScopeGuard>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QString NoRoles = u"0000"_s;

RowSet Candidates()
{
    const auto candidate = [](const QString &id, const QString &name) {
        return QStringList{u"0"_s, u"0"_s, u"0"_s, u"0"_s, u"0"_s, Null(), u" "_s, id, name};
    };
    return Rows({u"SELECTED"_s, u"BUYER_FLAG"_s, u"SALER_FLAG"_s, u"SENDER_FLAG"_s, u"ADMIN_FLAG"_s,
                 u"ORG_TYPE_ID"_s, u"REMARK"_s, u"ORG_ID"_s, u"ORG_NAME"_s},
                {candidate(u"501"_s, u"市第一医院"_s), candidate(u"502"_s, u"仁和医药"_s),
                 candidate(u"503"_s, u"百草药房"_s)});
}

RowSet Types()
{
    return Rows({u"ORG_TYPE_ID"_s, u"ORG_TYPE_NAME"_s, u"BUYER_FLAG"_s, u"SALER_FLAG"_s,
                 u"ADMIN_FLAG"_s, u"SENDER_FLAG"_s, u"REMARK"_s},
                {{u"1"_s, u"供货成员"_s, u"0"_s, u"1"_s, u"0"_s, u"0"_s, u"只供货"_s},
                 {u"2"_s, u"采购配送"_s, u"1"_s, u"0"_s, u"0"_s, u"1"_s, u"采购并配送"_s}});
}

/// The dialog for group 10, shown, and a server that knows two types and three of 120 candidates.
class Batch : public ScreenFixture
{
public:
    Batch()
        : form(nullptr, u"10"_s)
    {
        server.OnQuery(u"uni_org_type"_s).Answer(Types());
        server.OnQuery(u"FROM BAS_ORG A"_s).Answer(Candidates(), 120);
        server.OnQuery(u"from BAS_REGION"_s)
            .Answer(Rows(
                {u"REGION_ID"_s, u"PARENT_ID"_s, u"REGION_CODE"_s, u"REGION_NAME"_s, u"FULL_NAME"_s,
                 u"CHINA_FLAG"_s},
                {{u"13"_s, u"-1"_s, u"13"_s, u"河北省"_s, u"河北省"_s, u"1"_s},
                 {u"1301"_s, u"13"_s, u"1301"_s, u"石家庄市"_s, u"河北省石家庄市"_s, u"1"_s}}));
        ShowScreen(form);
        server.ClearRecords();
    }

    void Query() { Click(&form, u"BtnQuery"_s); }
    void Save() { Click(&form, u"BtnSave"_s); }
    DataGrid &Grid() { return *Child<DataGrid>(&form, u"GridQuery"_s); }
    ClientDataSet &Table() { return *Grid().DataSet(); }
    TPageGuide &Pages() { return *Child<TPageGuide>(&form, u"PageGuide1"_s); }
    ButtonEdit &Region() { return *Child<ButtonEdit>(&form, u"bdRegion"_s); }
    QCheckBox &SelectAllBox() { return *Child<QCheckBox>(&form, u"cbSelectAll"_s); }
    bool SaveEnabled() { return Child<QPushButton>(&form, u"BtnSave"_s)->isEnabled(); }
    QString RecordCount() { return Child<QLabel>(&form, u"lbRecordCount"_s)->text(); }

    QModelIndex Cell(int row, QStringView field)
    {
        return Grid().model()->index(row, Grid().ColumnIndex(field));
    }
    void ClickCell(int row, QStringView field) { Test::ClickCell(Grid(), row, field); }
    /// The list of a type cell, open; the test fails if it is not.
    QAbstractItemView *TypeList()
    {
        auto *combo = Child<ImageComboBox>(&Grid(), u"cellEditor"_s);
        if (!combo->view()->isVisible())
            FailTest(u"the list of the cell is not open"_s);
        return combo->view();
    }
    /// Chooses entry 0 or 1 of the list as with the mouse and Enter.
    void ChooseType(int row, int entry)
    {
        ClickCell(row, u"ORG_TYPE_ID");
        QAbstractItemView *list = TypeList();
        list->setCurrentIndex(list->model()->index(entry, 0));
        Press(list, Qt::Key_Return);
        QTRY_VERIFY(!Grid().findChild<ImageComboBox *>(u"cellEditor"_s));
    }
    void Tick(int row) { ClickCell(row, u"SELECTED"); }

    QString Value(int row, QStringView field) { return Table().TextAt(row, field); }
    QString Ticks()
    {
        QString ticks;
        for (int row = 0; row < Table().RecordCount(); ++row)
            ticks += Value(row, u"SELECTED");
        return ticks;
    }
    /// Buyer, seller, deliverer, administrator: "1001".
    QString Roles(int row)
    {
        return Value(row, u"BUYER_FLAG") + Value(row, u"SALER_FLAG") + Value(row, u"SENDER_FLAG") +
               Value(row, u"ADMIN_FLAG");
    }
    /// Two rows ticked with their types, the one between them left out.
    void TickTwo()
    {
        Query();
        ChooseType(0, 1);
        ChooseType(2, 0);
    }

    TFrmUniUnionOrgNew form;
};

/// Chooses 石家庄 in the region picker that appears next.
void ChooseShijiazhuang(QWidget *picker)
{
    Type(picker, u"edInformation"_s, u"石家庄"_s);
    Press(picker, u"edInformation"_s, Qt::Key_Return);
    Trigger(picker, u"ActionSelect"_s);
}

} // namespace

class UniUnionOrgNewTest : public QObject
{
    Q_OBJECT

private slots:
    void StatementsAreExact_data()
    {
        QTest::addColumn<TCandidateFilter>("filter");
        const auto filter = [](const char *name, const TCandidateFilter &value) {
            QTest::newRow(name) << value;
        };
        filter("candidates.all", {u"10"_s, u""_s, u"  "_s, u"全部"_s, u"0"_s});
        filter("candidates.quotedgroup", {u"1'0"_s, u""_s, u""_s, u"全部"_s, u"0"_s});
        filter("candidates.text", {u"10"_s, u""_s, u" ab'c "_s, u"全部"_s, u"0"_s});
        filter("candidates.odd", {u"10"_s, u""_s, u"50%_';"_s, u"全部"_s, u"0"_s});
        filter("candidates.kind", {u"10"_s, u""_s, u""_s, u"医院"_s, u"4"_s});
        filter("candidates.region", {u"10"_s, u"1301"_s, u""_s, u"全部"_s, u"0"_s});
        filter("candidates.whole", {u"10"_s, u"1301"_s, u"ab'c"_s, u"医院"_s, u"4"_s});
    }
    void StatementsAreExact()
    {
        QFETCH(TCandidateFilter, filter);
        QCOMPARE(CandidatesSql(filter), Expected(QString::fromLatin1(QTest::currentDataTag())));
    }

    void KindIsDecidedOnTheTrimmedTextNotOnTheValue()
    {
        QCOMPARE(CandidatesSql({u"10"_s, u""_s, u""_s, u" 全部 "_s, u"4"_s}),
                 Expected(u"candidates.all"_s));
        QVERIFY(CandidatesSql({u"10"_s, u""_s, u""_s, u"任何"_s, u"0"_s})
                    .contains(u" and A.ORG_TYPE= '0'"_s));
    }

    void WithARegionOrganisationsWithoutARegionRowAreNotListed()
    {
        const QString sql = CandidatesSql({u"10"_s, u"1301"_s, u""_s, u"全部"_s, u"0"_s});
        QVERIFY(sql.contains(u"AND A.REGION_ID= C.REGION_ID "_s)); // no outer join
        QVERIFY(
            !CandidatesSql({u"10"_s, u""_s, u""_s, u"全部"_s, u"0"_s}).contains(u"BAS_REGION"_s));
    }

    void MembershipMarkedDeletedIsACandidateAgain()
    {
        QVERIFY(CandidatesSql({u"10"_s, u""_s, u""_s, u"全部"_s, u"0"_s})
                    .contains(u"WHERE NVL(LAST_OPERATE, '0') <> 'D'        AND Union_ID='10'"_s));
    }

    void CaptionsAndColumnsAreExact()
    {
        Batch batch;
        QCOMPARE(Caption(batch.form, u"lbOrg"_s), u"企业名称"_s);
        QCOMPARE(Caption(batch.form, u"lbType"_s), u"机构类型"_s);
        QCOMPARE(Caption(batch.form, u"lbRegion"_s), u"所在地区"_s);
        QCOMPARE(Caption(batch.form, u"BtnQuery"_s), u"查询"_s);
        QCOMPARE(Caption(batch.form, u"BtnSave"_s), u"保存"_s);
        QCOMPARE(Caption(batch.form, u"BtnCancel"_s), u"关闭"_s);
        QCOMPARE(batch.SelectAllBox().text(), u"全选"_s);
        QCOMPARE(batch.Region().Buttons(), QStringList({u"选择"_s, u"清空"_s}));
        QVERIFY(batch.Pages().ShowSelectAll());
        QCOMPARE(Child<ImageComboBox>(&batch.form, u"cbType"_s)->Items(),
                 QStringList({u"0|全部"_s, u"1|生产企业"_s, u"2|商业企业"_s, u"3|物流企业"_s,
                              u"4|医院"_s, u"5|药房"_s, u"6|营运"_s}));
        QCOMPARE(Child<ImageComboBox>(&batch.form, u"cbType"_s)->EditValue(), u"0"_s);
        QStringList captions;
        for (int column = 0; column < batch.Grid().model()->columnCount(); ++column)
            captions << batch.Grid().model()->headerData(column, Qt::Horizontal).toString();
        QCOMPARE(captions, QStringList({u"选择"_s, u"企业名称"_s, u"成员类型"_s, u"买方"_s,
                                        u"卖方"_s, u"配送"_s, u"管理"_s, u"备注"_s}));
    }

    void CaptionBecomesAddMembersWhenShown()
    {
        ScreenFixture fixture;
        TFrmUniUnionOrgNew form(nullptr, u"10"_s);
        QCOMPARE(form.windowTitle(), u"成员维护"_s);
        fixture.server.OnQuery(u"uni_org_type"_s).Answer(Types());
        ShowScreen(form);
        QCOMPARE(form.windowTitle(), u"新增成员"_s);
        QCOMPARE(Child<FormTitle>(&form, u"FormTitle"_s)->Text(), u"新增成员"_s);
    }

    void ShowLoadsTheTypesAndNoCandidates()
    {
        ScreenFixture fixture;
        fixture.server.OnQuery(u"uni_org_type"_s).Answer(Types());
        TFrmUniUnionOrgNew form(nullptr, u"10"_s);
        ShowScreen(form);
        QCOMPARE(fixture.server.Statements(), QStringList{Expected(u"unionorgedit.types"_s)});
        QCOMPARE(fixture.server.LastQuery().page, 0);
        QCOMPARE(fixture.server.LastQuery().pageSize, 0);
        QCOMPARE(form.focusWidget()->objectName(), u"edOrg"_s);
        QVERIFY(!Child<QPushButton>(&form, u"BtnSave"_s)->isEnabled());
        QCOMPARE(Child<QLabel>(&form, u"lbRecordCount"_s)->text(), u"共有条记录。"_s);
    }

    void QueryAsksForTheFirstPage()
    {
        Batch batch;
        batch.Query();
        QCOMPARE(batch.server.Statements(), QStringList{Expected(u"candidates.all"_s)});
        QCOMPARE(batch.server.LastQuery().page, 1);
        QCOMPARE(batch.server.LastQuery().pageSize, 50);
        QCOMPARE(batch.server.LastQuery().queryType, 2);
        QCOMPARE(batch.Pages().RecordCount(), 120);
        QCOMPARE(batch.RecordCount(), u"共有120条记录。"_s);
        QCOMPARE(FocusName(batch.form), u"GridQuery"_s);
        QVERIFY(batch.SaveEnabled());
    }

    void QueryWithoutRowsDisablesSaveAndFocusesTheName()
    {
        Batch batch;
        batch.Query();
        batch.server.ClearScripts();
        batch.server.OnAnyQuery().Answer(Rows({u"SELECTED"_s, u"ORG_ID"_s}, {}));
        batch.Query();
        QVERIFY(!batch.SaveEnabled());
        QCOMPARE(FocusName(batch.form), u"edOrg"_s);
        QCOMPARE(batch.RecordCount(), u"共有0条记录。"_s);
    }

    void QueryButtonIsDisabledWhileItRuns()
    {
        Batch batch;
        QCOMPARE(batch.DisabledAtRequests(batch.form, {u"BtnQuery"_s}, [&] { batch.Query(); }),
                 QStringList{u"BtnQuery"_s});
    }

    void EnterInTheNameQueriesWithAllFilters()
    {
        Batch batch;
        Type(&batch.form, u"edOrg"_s, u" ab'c "_s);
        Child<ImageComboBox>(&batch.form, u"cbType"_s)->SetEditValue(u"4"_s);
        {
            const ModalVisitor picker(ChooseShijiazhuang);
            batch.Region().PressButton(0);
        }
        batch.server.ClearRecords();
        Press(&batch.form, u"edOrg"_s, Qt::Key_Return);
        QCOMPARE(batch.server.Statements(), QStringList{Expected(u"candidates.whole"_s)});
    }

    void EnterInTheRegionOpensThePickerUntilARegionIsThereThenQueries()
    {
        Batch batch;
        {
            const ModalVisitor picker(ChooseShijiazhuang);
            Press(&batch.Region(), Qt::Key_Return);
            QVERIFY(picker.Visited());
        }
        QCOMPARE(batch.Region().text(), u"河北省石家庄市"_s);
        batch.server.ClearRecords();
        Press(&batch.Region(), Qt::Key_Return);
        QCOMPARE(batch.server.Statements(), QStringList{Expected(u"candidates.region"_s)});
    }

    void PickerOpensAtTheRegionShownAndCancelKeepsIt()
    {
        Batch batch;
        {
            const ModalVisitor picker(ChooseShijiazhuang);
            batch.Region().PressButton(0);
        }
        const ModalVisitor again([](QWidget *picker) {
            QCOMPARE(Child<QLineEdit>(picker, u"edInformation"_s)->text(), u"河北省石家庄市"_s);
            Click(picker, u"BtnCancel"_s);
        });
        batch.Region().PressButton(0);
        QCOMPARE(batch.Region().text(), u"河北省石家庄市"_s);
        batch.Query();
        QCOMPARE(batch.server.LastQuery().sql, Expected(u"candidates.region"_s));
    }

    void ClearAndDeleteTakeTheRegionAway_data()
    {
        QTest::addColumn<bool>("byKey");
        QTest::newRow("button") << false;
        QTest::newRow("Delete key") << true;
    }
    void ClearAndDeleteTakeTheRegionAway()
    {
        QFETCH(bool, byKey);
        Batch batch;
        {
            const ModalVisitor picker(ChooseShijiazhuang);
            batch.Region().PressButton(0);
        }
        if (byKey)
            Press(&batch.Region(), Qt::Key_Delete);
        else
            batch.Region().PressButton(1);
        QCOMPARE(batch.Region().text(), QString());
        batch.Query();
        QCOMPARE(batch.server.LastQuery().sql, Expected(u"candidates.all"_s));
    }

    void SelectAllOfTheDialogAndOfThePagingBarWorkOnThePage()
    {
        Batch batch;
        batch.Query();
        batch.Table().SetRecNo(1);
        batch.SelectAllBox().click();
        QCOMPARE(batch.Ticks(), u"111"_s);
        batch.SelectAllBox().click();
        QCOMPARE(batch.Ticks(), u"000"_s);
        auto *paging = Child<QCheckBox>(&batch.Pages(), u"ckSelectAll"_s);
        paging->click();
        QCOMPARE(batch.Ticks(), u"111"_s);
        QVERIFY(!batch.SelectAllBox().isChecked()); // each has a flag of its own
        paging->click();
        QCOMPARE(batch.Ticks(), u"000"_s);
        QCOMPARE(batch.Table().RecNo(), 1);
    }

    void SelectAllInAnEmptyListDoesNothing()
    {
        Batch batch;
        batch.SelectAllBox().click();
        QVERIFY(batch.SelectAllBox().isChecked());
        QVERIFY(batch.Boxes().isEmpty());
    }

    void AnotherPageDropsTheTicks()
    {
        Batch batch;
        batch.Query();
        batch.SelectAllBox().click();
        Click(&batch.Pages(), u"btnNext"_s);
        QCOMPARE(batch.server.LastQuery().page, 2);
        QCOMPARE(batch.Ticks(), u"000"_s);
        QVERIFY(!batch.SelectAllBox().isChecked());
    }

    void TicksArePostedToTheTableAtOnce()
    {
        Batch batch;
        batch.Query();
        batch.Tick(1);
        QCOMPARE(batch.Ticks(), u"010"_s);
        QCOMPARE(batch.Table().CurrentState(), ClientDataSet::State::Browse);
        batch.Tick(1);
        QCOMPARE(batch.Ticks(), u"000"_s);
    }

    void ChoosingATypeTicksTheRowAndCopiesItsRolesAndRemark()
    {
        Batch batch;
        batch.Query();
        QCOMPARE(batch.Roles(1), NoRoles);
        batch.ChooseType(1, 1);
        QCOMPARE(batch.Value(1, u"ORG_TYPE_ID"), u"2"_s);
        QCOMPARE(batch.Cell(1, u"ORG_TYPE_ID").data().toString(), u"采购配送"_s);
        QCOMPARE(batch.Ticks(), u"010"_s);
        QCOMPARE(batch.Roles(1), u"1010"_s);
        QCOMPARE(batch.Value(1, u"REMARK"), u"采购并配送"_s);
        QCOMPARE(batch.Table().CurrentState(), ClientDataSet::State::Browse);
        QCOMPARE(batch.Roles(0) + batch.Roles(2), NoRoles + NoRoles);
        batch.ChooseType(1, 0);
        QCOMPARE(batch.Roles(1), u"0100"_s);
        QCOMPARE(batch.Value(1, u"REMARK"), u"只供货"_s);
    }

    void TypeIsChosenByKeyboardAlone()
    {
        Batch batch;
        batch.Query(); // the focus is in the grid now
        Press(&batch.Grid(), Qt::Key_Down);
        Press(&batch.Grid(), Qt::Key_Right);
        Press(&batch.Grid(), Qt::Key_Right);
        Press(&batch.Grid(), Qt::Key_F2);
        QAbstractItemView *list = batch.TypeList();
        Press(list, Qt::Key_Down); // from the first, which the open list starts at
        Press(list, Qt::Key_Return);
        QCOMPARE(batch.Value(1, u"SELECTED"), u"1"_s);
        QCOMPARE(batch.Value(1, u"ORG_TYPE_ID"), u"2"_s);
        QVERIFY(batch.Grid().hasFocus());
    }

    void TypeIsChosenByMouseAlone()
    {
        // For that long a list takes a release for the one of the click that opened it.
        const int interval = QApplication::doubleClickInterval();
        const auto restore =
            qScopeGuard([interval] { QApplication::setDoubleClickInterval(interval); });
        QApplication::setDoubleClickInterval(0);
        Batch batch;
        batch.Query();
        batch.ClickCell(2, u"ORG_TYPE_ID");
        QAbstractItemView *list = batch.TypeList();
        QCoreApplication::processEvents();
        const QPoint second = list->visualRect(list->model()->index(1, 0)).center();
        QTest::mouseMove(list->viewport(), second);
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, second);
        QCOMPARE(batch.Value(2, u"SELECTED"), u"1"_s);
        QCOMPARE(batch.Value(2, u"ORG_TYPE_ID"), u"2"_s);
        QCOMPARE(batch.Roles(2), u"1010"_s);
    }

    void LeavingTheListWithEscChangesNothing()
    {
        Batch batch;
        batch.Query();
        batch.ClickCell(0, u"ORG_TYPE_ID");
        Press(batch.TypeList(), Qt::Key_Escape);
        Press(Child<ImageComboBox>(&batch.Grid(), u"cellEditor"_s), Qt::Key_Escape);
        QCOMPARE(batch.Ticks(), u"000"_s);
        QVERIFY(batch.Value(0, u"ORG_TYPE_ID").isEmpty());
        QVERIFY(batch.form.isVisible());
    }

    void NameRolesAndRemarkAreForReading()
    {
        Batch batch;
        batch.Query();
        for (const auto &field : {u"ORG_NAME"_s, u"BUYER_FLAG"_s, u"SALER_FLAG"_s, u"SENDER_FLAG"_s,
                                  u"ADMIN_FLAG"_s, u"REMARK"_s})
            QVERIFY2(
                !(batch.Cell(0, field).flags() & (Qt::ItemIsEditable | Qt::ItemIsUserCheckable)),
                qPrintable(field));
    }

    void SaveWithoutATickAsksForOrganisations()
    {
        Batch batch;
        batch.Query();
        batch.Save();
        QCOMPARE(batch.Boxes(), QStringList{u"Information|提示|请选择机构！|Ok"_s});
        QVERIFY(batch.server.Posts().isEmpty());
        QVERIFY(batch.form.isVisible());
    }

    void TickedRowWithoutTypeStopsTheWholeSave()
    {
        Batch batch;
        batch.TickTwo();
        batch.Tick(1);
        batch.Table().SetRecNo(0);
        bool detached = false;
        batch.hook.SetAnswer([&](const TMessageBox &) {
            detached = batch.Table().ControlsDisabled();
            return TBoxButton::Ok;
        });
        batch.Save();
        QCOMPARE(batch.Boxes(), QStringList{u"Information|提示|请选择成员机构类型！|Ok"_s});
        QVERIFY(batch.server.Posts().isEmpty());
        QVERIFY(detached);
        QVERIFY(!batch.Table().ControlsDisabled());
        QCOMPARE(batch.Grid().currentIndex().row(), 1); // the row that wants a type
        QCOMPARE(batch.Ticks(), u"111"_s);
        QVERIFY(batch.SaveEnabled());
    }

    void SavePostsTheTickedRowsInOneRequestAndCloses()
    {
        Batch batch;
        batch.TickTwo();
        batch.server.OnPost(u"com.business.admin.UniUnionOrg"_s, u"insert_update_UniUnionOrg"_s)
            .Code(u"1"_s);
        batch.Save();
        QCOMPARE(batch.Boxes(), QStringList{u"Question|系统提示|是否要新增[2]个成员|Yes"_s});
        QCOMPARE(batch.server.Posts().size(), 1);
        QCOMPARE(batch.server.LastPost().rows.size(), 2);
        QCOMPARE(RowText(batch.server.LastPost().rows.value(0)), Expected(u"unionorgnew.first"_s));
        QCOMPARE(RowText(batch.server.LastPost().rows.value(1)), Expected(u"unionorgnew.third"_s));
        QCOMPARE(batch.form.ModalResult(), TModalResult::Ok);
        QVERIFY(!batch.form.isVisible());
    }

    void AnswerNoAddsNobody()
    {
        Batch batch;
        batch.TickTwo();
        batch.hook.SetAnswer([](const TMessageBox &) { return TBoxButton::No; });
        batch.Save();
        QVERIFY(batch.server.Posts().isEmpty());
        QCOMPARE(batch.Ticks(), u"101"_s);
        QVERIFY(!batch.Table().ControlsDisabled());
    }

    void RefusedSaveSaysSoAndKeepsTicksAndTypes_data()
    {
        QTest::addColumn<QString>("code");
        QTest::newRow("failure") << u"0"_s;
        QTest::newRow("another operator added one meanwhile") << u"-1"_s;
        QTest::newRow("second rule") << u"-2"_s;
        QTest::newRow("unknown code") << u"7"_s;
        QTest::newRow("no code") << QString();
    }
    void RefusedSaveSaysSoAndKeepsTicksAndTypes()
    {
        QFETCH(QString, code);
        Batch batch;
        batch.TickTwo();
        batch.server.OnPost(u"insert_update_UniUnionOrg"_s).Code(code);
        batch.Save();
        QCOMPARE(batch.Boxes().last(), u"Information|提示|保存失败！|Ok"_s);
        QVERIFY(batch.form.isVisible());
        QCOMPARE(batch.Table().RecordCount(), 3);
        QCOMPARE(batch.Ticks(), u"101"_s);
        QCOMPARE(batch.Value(0, u"ORG_TYPE_ID") + batch.Value(2, u"ORG_TYPE_ID"), u"21"_s);
        QVERIFY(batch.SaveEnabled());
        QVERIFY(!batch.Table().ControlsDisabled());
    }

    void ServerFailureLocksNothingAndKeepsTheTicks()
    {
        Batch batch;
        batch.TickTwo();
        batch.server.OnPost(u"insert_update_UniUnionOrg"_s).DatabaseDown().Times(1);
        batch.Save();
        QCOMPARE(batch.hook.Boxes().last().icon, TBoxIcon::Error);
        QVERIFY(batch.form.isVisible() && batch.SaveEnabled());
        QVERIFY(!batch.Table().ControlsDisabled());
        QCOMPARE(batch.Ticks(), u"101"_s);
        batch.server.OnPost(u"insert_update_UniUnionOrg"_s).Code(u"1"_s);
        batch.Save();
        QCOMPARE(batch.form.ModalResult(), TModalResult::Ok);
    }

    void DoubleClickOnSaveStoresOnce()
    {
        Batch batch;
        batch.TickTwo();
        batch.server.OnPost(u"insert_update_UniUnionOrg"_s).Code(u"0"_s).HoldUntilReleased();
        auto *save = Child<QPushButton>(&batch.form, u"BtnSave"_s);
        QObject::connect(&batch.server, &ScriptedServer::RequestArrived, &batch.form, [&] {
            // The second click of a double click, while the post is on its way.
            QTest::mouseClick(save, Qt::LeftButton);
            QMetaObject::invokeMethod(
                &batch.form, [&] { batch.server.Release(); }, Qt::QueuedConnection);
        });
        Click(save);
        QCoreApplication::processEvents();
        QCOMPARE(batch.server.Posts().size(), 1);
    }

    void FailedQueryLeavesTheDialogUsable()
    {
        Batch batch;
        batch.Query();
        batch.server.ClearScripts();
        batch.server.OnAnyQuery().DatabaseDown().Times(1);
        batch.Query();
        QCOMPARE(batch.hook.Boxes().size(), 1);
        QVERIFY(!batch.SaveEnabled());
        QVERIFY(!batch.Table().ControlsDisabled());
        batch.server.OnAnyQuery().Answer(Candidates(), 120);
        batch.Query();
        QVERIFY(batch.SaveEnabled());
    }

    void EscPressesClose()
    {
        ScreenFixture fixture;
        fixture.server.OnQuery(u"uni_org_type"_s).Answer(Types());
        TFrmUniUnionOrgNew form(nullptr, u"10"_s);
        const ModalVisitor visitor(
            [](QWidget *dialog) { Press(dialog, u"edOrg"_s, Qt::Key_Escape); });
        QCOMPARE(form.ShowModal(), TModalResult::Cancel);
    }

    void HeadingMovesTheDialog()
    {
        ScreenFixture fixture;
        fixture.server.OnQuery(u"uni_org_type"_s).Answer(Types());
        TFrmUniUnionOrgNew form(nullptr, u"10"_s);
        const ModalVisitor visitor([](QWidget *dialog) {
            auto *title = Child<FormTitle>(dialog, u"FormTitle"_s);
            const QPoint before = dialog->pos();
            QTest::mousePress(title, Qt::LeftButton, {}, QPoint(100, 10));
            QTest::mouseMove(title, QPoint(140, 40));
            QTest::mouseRelease(title, Qt::LeftButton);
            QCOMPARE(dialog->pos() - before, QPoint(40, 30));
            Click(dialog, u"BtnCancel"_s);
        });
        form.ShowModal();
    }
};

QTEST_MAIN(UniUnionOrgNewTest)
#include "UniUnionOrgNewTest.moc"
