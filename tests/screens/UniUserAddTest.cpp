#include "screens/UniUserAdd.h"

#include "controls/ImageComboBox.h"
#include "remote/PageGuide.h"
#include "screens/ScreenFixture.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

RowSet Candidates()
{
    return Rows({u"SELECTED"_s, u"ENABLE_FLAG"_s, u"USER_ID"_s, u"USER_CODE"_s, u"USER_NAME"_s,
                 u"REMARK"_s, u"ORG_NAME"_s, u"ORG_ABBR"_s, u"ORG_TYPE"_s, u"ORG_NAME_PY"_s},
                {{u"0"_s, u"1"_s, u"801"_s, u"zhou"_s, u"周杰"_s, u"药剂科"_s, u"市第二医院"_s,
                  u"二院"_s, u"4"_s, u"SDEYY"_s},
                 {u"0"_s, u"1"_s, u"802"_s, u"wu"_s, u"吴敏"_s, Null(), u"百草药房"_s, u"百草"_s,
                  u"5"_s, u"BCYF"_s},
                 {u"0"_s, u"1"_s, u"803"_s, u"li"_s, u"李娜"_s, u"采购部"_s, u"仁和医药"_s,
                  u"仁和"_s, u"2"_s, u"RHYY"_s}});
}

/// The picker for group 10 over a server that knows three of 120 candidates, and an opener's list
/// that holds user 701.
class Dialog : public ScreenFixture
{
public:
    Dialog()
        : form(nullptr, users)
    {
        form.UnionId = u"10"_s;
        form.UnionName = u"华北联合体"_s;
        server.OnQuery(u"SELECT '0' AS SELECTED"_s).Answer(Candidates(), 120);
        users.Open(
            Rows({u"USER_ID"_s, u"UNION_ID"_s, u"USER_CODE"_s, u"USER_NAME"_s, u"ENABLE_FLAG"_s,
                  u"REMARK"_s, u"ORG_NAME"_s},
                 {{u"701"_s, u"10"_s, u"zhang"_s, u"张伟"_s, u"1"_s, u""_s, u"市第一医院"_s}}));
    }

    void Query() { Click(&form, u"btnQuery"_s); }
    void Tick(const QList<int> &rows) { Test::Tick(Grid(), rows); }
    void AnswerMoveIn(const QStringList &results)
    {
        server.OnPost(u"com.business.admin.UniUser"_s, u"insertUniUser"_s)
            .Results(ResultRows(u"USER_ID"_s, results));
    }
    void MoveIn() { Click(&form, u"btnSelect"_s); }

    DataGrid &Grid() { return *Child<DataGrid>(&form, u"GridQueryView"_s); }
    ClientDataSet &Listed() { return *Grid().DataSet(); }
    TPageGuide &Pages() { return *Child<TPageGuide>(&form, u"PageGuide1"_s); }
    bool Enabled(const QString &button) { return Child<QPushButton>(&form, button)->isEnabled(); }
    QString CandidateIds() { return CellTexts(Listed(), u"USER_ID").join(u' '); }
    QString UserIds() { return CellTexts(users, u"USER_ID").join(u' '); }

    ClientDataSet users;
    TFrmUniUserAdd form;
};

/// The picker, shown.
class Picker : public Dialog
{
public:
    Picker() { ShowScreen(form); }
};

const QString Ask = u"Question|提示|确定将用户移入到“华北联合体”中吗？|Yes"_s;
const QString ChooseUsers = u"Information|提示|请选择要加入的用户！|Ok"_s;
const QString MoveInFailed = u"Error|错误|将用户移入“华北联合体”失败！|Ok"_s;

} // namespace

class UniUserAddTest : public QObject
{
    Q_OBJECT

private slots:
    void StatementsAreExact_data()
    {
        QTest::addColumn<TUserFilter>("filter");
        const auto filter = [](const char *name, const TUserFilter &value) {
            QTest::newRow(name) << value;
        };
        filter("candidateusers.all", {u"10"_s, u"  "_s, u" "_s, u"全部"_s, u"0"_s});
        filter("candidateusers.quotedgroup", {u"1'0"_s, u""_s, u""_s, u"全部"_s, u"0"_s});
        filter("candidateusers.org", {u"10"_s, u" ab'c "_s, u""_s, u"全部"_s, u"0"_s});
        filter("candidateusers.user", {u"10"_s, u""_s, u" zhou "_s, u"全部"_s, u"0"_s});
        filter("candidateusers.odd", {u"10"_s, u""_s, u"50%_';"_s, u"全部"_s, u"0"_s});
        filter("candidateusers.kind", {u"10"_s, u""_s, u""_s, u"医院"_s, u"4"_s});
        filter("candidateusers.whole", {u"10"_s, u"协和"_s, u"li"_s, u"医院"_s, u"4"_s});
    }
    void StatementsAreExact()
    {
        QFETCH(TUserFilter, filter);
        QCOMPARE(CandidateUsersSql(filter), Expected(QString::fromLatin1(QTest::currentDataTag())));
    }

    void AssignedDisabledAndDeletedAreNoCandidates_data()
    {
        QTest::addColumn<QString>("condition");
        QTest::newRow("disabled users") << u"AND A.ENABLE_FLAG = '1' "_s;
        QTest::newRow("disabled organisations") << u"AND B.ENABLE_FLAG = '1')"_s;
        QTest::newRow("deleted organisations") << u"AND B.LAST_OPERATE <> 'D' "_s;
        QTest::newRow("assigned and not deleted") << u"WHERE UNION_ID = '10'           "
                                                     "AND LAST_OPERATE <> 'D') D "_s;
        QTest::newRow("only those without an assignment") << u"AND D.USER_ID IS NULL "_s;
    }
    void AssignedDisabledAndDeletedAreNoCandidates()
    {
        QFETCH(QString, condition);
        Picker picker;
        picker.Query();
        QVERIFY(picker.server.LastQuery().sql.contains(condition));
    }

    void PagesAreQueriedWithoutAnOrder()
    {
        QVERIFY(!CandidateUsersSql({u"10"_s, u"a"_s, u"b"_s, u"医院"_s, u"4"_s})
                     .contains(u"ORDER BY"_s, Qt::CaseInsensitive));
    }

    void CaptionsAndColumnsAreExact()
    {
        Picker picker;
        QCOMPARE(picker.form.windowTitle(), u"选择用户"_s);
        QCOMPARE(Child<QTabWidget>(&picker.form, u"cxPageControl1"_s)->tabText(0), u"企业选择"_s);
        QCOMPARE(Caption(picker.form, u"lbUser"_s), u"用户信息"_s);
        QCOMPARE(Caption(picker.form, u"lbOrg"_s), u"机构名称"_s);
        QCOMPARE(Caption(picker.form, u"lbType"_s), u"机构类型"_s);
        QCOMPARE(Caption(picker.form, u"btnQuery"_s), u"查询"_s);
        QCOMPARE(Caption(picker.form, u"btnSelect"_s), u"移入"_s);
        QCOMPARE(Caption(picker.form, u"btnCancel"_s), u"取消"_s);
        QCOMPARE(ColumnsOf(picker.Grid()),
                 QStringList({u"SELECTED 选择"_s, u"USER_CODE 用户编码"_s, u"USER_NAME 用户名称"_s,
                              u"ORG_NAME 所属机构"_s}));
        const auto *type = Child<ImageComboBox>(&picker.form, u"edType"_s);
        QCOMPARE(type->Items(),
                 QStringList({u"0|全部"_s, u"1|生产企业"_s, u"2|商业企业"_s, u"3|物流企业"_s,
                              u"4|医院"_s, u"5|药房"_s, u"6|营运"_s}));
        QCOMPARE(type->currentText(), u"全部"_s);
    }

    void StylingPassReplacesTheLayoutsPagingValues()
    {
        Picker picker;
        QCOMPARE(picker.Pages().PageSizeSet(), u"50,100,200"_s);
        QCOMPARE(picker.Pages().PageSize(), 50);
        QCOMPARE(picker.Pages().ShowAllLimit(), 1000);
        QVERIFY(picker.Pages().ShowSelectAll());
    }

    void ShowFocusesTheUserFilterAndQueriesNothing()
    {
        Picker picker;
        QCOMPARE(FocusName(picker.form), u"edUser"_s);
        QVERIFY(picker.server.Queries().isEmpty());
    }

    void EnterInEachFilterQueriesTheFirstPage_data()
    {
        QTest::addColumn<QString>("filter");
        for (const QString &filter : {u"edUser"_s, u"edOrg"_s, u"edType"_s})
            QTest::newRow(qPrintable(filter)) << filter;
    }
    void EnterInEachFilterQueriesTheFirstPage()
    {
        QFETCH(QString, filter);
        Dialog picker; // where Enter otherwise goes to the next control
        ShowModally(picker.form, [&](QWidget *dialog) {
            Type(dialog, u"edUser"_s, u" li "_s);
            Type(dialog, u"edOrg"_s, u" 协和 "_s);
            Child<ImageComboBox>(dialog, u"edType"_s)->SetEditValue(u"4"_s);
            Press(dialog, filter, Qt::Key_Return);
        });
        QCOMPARE(picker.server.Statements(), QStringList{Expected(u"candidateusers.whole"_s)});
        QCOMPARE(picker.server.LastQuery().page, 1);
        QCOMPARE(picker.server.LastQuery().pageSize, 50);
        QCOMPARE(picker.server.LastQuery().queryType, 2);
        QCOMPARE(picker.Pages().RecordCount(), 120);
    }

    void QueryGoesToTheFirstRowAndIntoTheGrid()
    {
        Picker picker;
        picker.Query();
        picker.Listed().Last();
        Child<QLineEdit>(&picker.form, u"edOrg"_s)->setFocus();
        picker.Query();
        QCOMPARE(picker.Listed().RecNo(), 0);
        QCOMPARE(FocusName(picker.form), u"GridQueryView"_s);
    }

    void QueryWithoutRowsFocusesTheGridAllTheSame()
    {
        Picker picker;
        picker.server.ClearScripts();
        picker.server.OnAnyQuery().Answer(Rows({u"USER_ID"_s}, {}));
        picker.Query();
        QCOMPARE(picker.Pages().RecordCount(), 0);
        QCOMPARE(FocusName(picker.form), u"GridQueryView"_s);
    }

    void QueryButtonIsDisabledWhileItRuns()
    {
        Picker picker;
        QCOMPARE(picker.DisabledAtRequests(picker.form, {u"btnQuery"_s}, [&] { picker.Query(); }),
                 QStringList{u"btnQuery"_s});
    }

    void SelectAllTicksThePageAndKeepsTheCurrentRow()
    {
        Picker picker;
        picker.Query();
        picker.Listed().SetRecNo(1);
        emit picker.Pages().SelectAll(true);
        QCOMPARE(CellTexts(picker.Listed(), u"SELECTED"), QStringList(3, u"1"_s));
        QCOMPARE(picker.Listed().RecNo(), 1);
        emit picker.Pages().SelectAll(false);
        QCOMPARE(CellTexts(picker.Listed(), u"SELECTED"), QStringList(3, u"0"_s));
        QCOMPARE(picker.Listed().RecNo(), 1);
    }

    void TicksAreLostWhenThePageChanges()
    {
        Picker picker;
        picker.Query();
        picker.Tick({0, 1});
        Click(&picker.Pages(), u"btnNext"_s);
        QCOMPARE(picker.server.LastQuery().page, 2);
        QCOMPARE(picker.server.LastQuery().sql, Expected(u"candidateusers.all"_s));
        picker.MoveIn();
        QCOMPARE(picker.Boxes(), QStringList({Ask, ChooseUsers}));
        QVERIFY(picker.server.Posts().isEmpty());
    }

    void EmptyListAsksNothing()
    {
        Picker picker;
        picker.MoveIn();
        picker.server.ClearScripts();
        picker.server.OnAnyQuery().Answer(Rows({u"SELECTED"_s, u"USER_ID"_s}, {}));
        picker.Query();
        picker.MoveIn();
        QVERIFY(picker.Boxes().isEmpty());
    }

    void NothingTickedIsToldAfterTheConfirmation()
    {
        Dialog picker;
        const TModalResult result = ShowModally(picker.form, [&](QWidget *dialog) {
            picker.Query();
            Child<QLineEdit>(dialog, u"edUser"_s)->setFocus();
            picker.MoveIn();
            QCOMPARE(picker.Boxes(), QStringList({Ask, ChooseUsers}));
            QVERIFY(dialog->isVisible());
            QCOMPARE(FocusName(picker.form), u"GridQueryView"_s);
        });
        QCOMPARE(result, TModalResult::Cancel);
        QVERIFY(picker.server.Posts().isEmpty());
    }

    void AnswerNoMovesNobodyIn()
    {
        Picker picker;
        picker.hook.SetAnswer([](const TMessageBox &) { return TBoxButton::No; });
        picker.Query();
        picker.Tick({0});
        picker.MoveIn();
        QCOMPARE(picker.Boxes(), QStringList{Ask});
        QVERIFY(picker.server.Posts().isEmpty());
        QCOMPARE(picker.CandidateIds(), u"801 802 803"_s);
    }

    void TickedRowsAreMovedIntoTheOpenersList()
    {
        Dialog picker;
        picker.AnswerMoveIn({u"1 801"_s, u"1 803"_s});
        const TModalResult result = ShowModally(picker.form, [&](QWidget *) {
            picker.Query();
            picker.Tick({0, 2});
            picker.MoveIn();
        });
        QCOMPARE(result, TModalResult::Ok);
        QCOMPARE(picker.Boxes(), QStringList{Ask});
        QCOMPARE(RowTexts(picker.server.LastPost().rows),
                 QStringList({Expected(u"uniuseradd.first"_s), Expected(u"uniuseradd.third"_s)}));
        QCOMPARE(picker.server.Queries().size(), 1);
        QCOMPARE(picker.CandidateIds(), u"802"_s);
        QCOMPARE(picker.UserIds(), u"701 801 803"_s);
        QStringList first;
        for (int field = 0; field < picker.users.FieldCount(); ++field)
            first << picker.users.TextAt(1, field);
        QCOMPARE(first, QStringList({u"801"_s, u"10"_s, u"zhou"_s, u"周杰"_s, u"1"_s, u"药剂科"_s,
                                     u"市第二医院"_s}));
    }

    void WalkStopsAtTheFirstRefusalWhateverTheServerDidBehindIt()
    {
        Dialog picker;
        picker.AnswerMoveIn({u"1 801"_s, u"0 802"_s, u"1 803"_s});
        const TModalResult result = ShowModally(picker.form, [&](QWidget *dialog) {
            picker.Query();
            emit picker.Pages().SelectAll(true);
            Child<QLineEdit>(dialog, u"edUser"_s)->setFocus();
            picker.MoveIn();
            QCOMPARE(picker.Boxes(), QStringList({Ask, MoveInFailed}));
            QVERIFY(dialog->isVisible());
            QCOMPARE(picker.CandidateIds(), u"802 803"_s);
            QCOMPARE(picker.Listed().FieldText(u"USER_ID"), u"802"_s);
            QCOMPARE(FocusName(picker.form), u"GridQueryView"_s);
            QVERIFY(picker.Enabled(u"btnSelect"_s));
        });
        QCOMPARE(result, TModalResult::Cancel);
        QCOMPARE(picker.UserIds(), u"701 801"_s);
    }

    void RefusedRowIsCurrentWhileItIsTold()
    {
        Picker picker;
        picker.AnswerMoveIn({u"1 801"_s, u"1 802"_s, u"-1 803"_s});
        QString told;
        picker.hook.SetAnswer([&](const TMessageBox &box) {
            if (box.icon == TBoxIcon::Error)
                told = picker.Listed().FieldText(u"USER_ID") + u' ' +
                       QString::number(picker.Grid().model()->rowCount());
            return box.defaultButton;
        });
        picker.Query();
        emit picker.Pages().SelectAll(true);
        picker.MoveIn();
        QCOMPARE(told, u"803 1"_s);
    }

    void AnyCodeButOneIsARefusal_data()
    {
        QTest::addColumn<QString>("code");
        for (const QString &code : {u"0"_s, u"-1"_s, u"-2"_s, u"7"_s, u""_s})
            QTest::newRow(qPrintable(u"code "_s + code)) << code;
    }
    void AnyCodeButOneIsARefusal()
    {
        QFETCH(QString, code);
        Picker picker;
        picker.AnswerMoveIn({code + u" 802"_s});
        picker.Query();
        picker.Tick({1});
        picker.MoveIn();
        QCOMPARE(picker.Boxes(), QStringList({Ask, MoveInFailed}));
        QCOMPARE(picker.CandidateIds(), u"801 802 803"_s);
        QCOMPARE(picker.UserIds(), u"701"_s);
    }

    void ResultsInAnotherOrderMoveTheirOwnUsers()
    {
        Picker picker;
        picker.AnswerMoveIn({u"1 803"_s, u"0 801"_s});
        picker.Query();
        picker.Tick({0, 2});
        picker.MoveIn();
        QCOMPARE(picker.UserIds(), u"701 803"_s);
        QCOMPARE(picker.CandidateIds(), u"801 802"_s);
        QCOMPARE(picker.Listed().FieldText(u"USER_ID"), u"801"_s);
    }

    void RefusedUserCanBeUntickedAndTheRestMovedInAgain()
    {
        Dialog picker;
        picker.AnswerMoveIn({u"1 801"_s, u"0 802"_s, u"1 803"_s});
        const TModalResult result = ShowModally(picker.form, [&](QWidget *) {
            picker.Query();
            emit picker.Pages().SelectAll(true);
            picker.MoveIn();
            picker.Tick({0}); // takes the tick off
            picker.server.ClearScripts();
            picker.AnswerMoveIn({u"1 803"_s});
            picker.MoveIn();
        });
        QCOMPARE(result, TModalResult::Ok);
        QCOMPARE(RowTexts(picker.server.LastPost().rows),
                 QStringList{Expected(u"uniuseradd.third"_s)});
        QCOMPARE(picker.UserIds(), u"701 801 803"_s);
    }

    void EmptyListIsBuiltAnew_data()
    {
        QTest::addColumn<bool>("open");
        QTest::addColumn<QString>("result");
        QTest::newRow("closed") << false << u"1 801"_s;
        QTest::newRow("open with other fields") << true << u"1 801"_s;
        QTest::newRow("although the user is refused") << true << u"0 801"_s;
    }
    void EmptyListIsBuiltAnew()
    {
        QFETCH(bool, open);
        QFETCH(QString, result);
        Picker picker;
        picker.users.Open(Rows({u"NAME:3"_s}, {}));
        if (!open)
            picker.users.Close();
        picker.AnswerMoveIn({result});
        picker.Query();
        picker.Tick({0});
        picker.MoveIn();
        QStringList fields;
        for (const FieldDef &field : picker.users.Fields())
            fields << field.name + u' ' + QString::number(field.size) + u' ' +
                          QString::fromLatin1(FieldTypeName(field.type));
        QCOMPARE(fields,
                 QStringList({u"USER_ID 10 text"_s, u"UNION_ID 10 text"_s, u"USER_CODE 20 text"_s,
                              u"USER_NAME 50 text"_s, u"ENABLE_FLAG 1 text"_s, u"REMARK 100 text"_s,
                              u"ORG_NAME 100 text"_s}));
        QCOMPARE(picker.UserIds(), result == u"1 801" ? u"801"_s : u""_s);
    }

    void ListWithUsersKeepsItsFields()
    {
        Picker picker;
        picker.users.Open(
            Rows({u"USER_ID"_s, u"USER_NAME"_s, u"DUTY"_s}, {{u"701"_s, u"张伟"_s, u"主任"_s}}));
        picker.AnswerMoveIn({u"1 801"_s});
        picker.Query();
        picker.Tick({0});
        picker.MoveIn();
        QCOMPARE(picker.users.FieldCount(), 3);
        QCOMPARE(CellTexts(picker.users, u"USER_NAME"), QStringList({u"张伟"_s, u"周杰"_s}));
        QCOMPARE(picker.users.TextAt(0, u"DUTY"), u"主任"_s);
    }

    void MoveInIsDisabledWhileItsPostRuns()
    {
        Picker picker;
        picker.AnswerMoveIn({u"0 801"_s});
        picker.Query();
        picker.Tick({0});
        QCOMPARE(picker.DisabledAtRequests(picker.form, {u"btnSelect"_s}, [&] { picker.MoveIn(); }),
                 QStringList{u"btnSelect"_s});
    }

    void BrokenPostChangesNeitherList()
    {
        Dialog picker;
        picker.server.OnPost(u"insertUniUser"_s).DatabaseDown();
        const TModalResult result = ShowModally(picker.form, [&](QWidget *dialog) {
            picker.Query();
            picker.Tick({0});
            picker.MoveIn();
            QVERIFY(dialog->isVisible());
            QVERIFY(picker.Enabled(u"btnSelect"_s));
        });
        QCOMPARE(result, TModalResult::Cancel);
        QVERIFY(picker.hook.Boxes().last().text.contains(u"数据库不可用"_s));
        QCOMPARE(picker.CandidateIds(), u"801 802 803"_s);
        QCOMPARE(picker.UserIds(), u"701"_s);
    }

    void EscCancels()
    {
        Dialog picker;
        const TModalResult result = ShowModally(picker.form, [&picker](QWidget *dialog) {
            picker.Query();
            Press(&picker.Grid(), Qt::Key_Escape);
            QVERIFY(!dialog->isVisible());
        });
        QCOMPARE(result, TModalResult::Cancel);
        QVERIFY(picker.server.Posts().isEmpty());
    }
};

QTEST_MAIN(UniUserAddTest)
#include "UniUserAddTest.moc"
