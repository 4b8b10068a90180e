#include "screens/MrgOrgAffiliation.h"

#include "screens/ScreenFixture.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QString Delete = u"deleteOrgAffiliation"_s;
const QString Save = u"insertUpdateOrgAffiliation"_s;

QStringList Place(const QString &id, const QString &orgId, const QString &parent,
                  const QString &code, const QString &level, const QString &abbr,
                  const QString &name)
{
    return {id, orgId, parent, code, level, u"1"_s, abbr, name};
}

RowSet Table(const QList<QStringList> &places)
{
    return Rows({u"ID"_s, u"ORG_ID"_s, u"PARENT_ORGID"_s, u"TREE_CODE"_s, u"TREE_LEVEL"_s,
                 u"ENABLE_FLAG"_s, u"ORG_ABBR"_s, u"ORG_NAME"_s},
                places);
}

/// 501 at the top with 502 and 503 below it, 504 at the top, and one on the deepest level whose
/// superior the list does not hold.
RowSet Places()
{
    return Table({
        Place(u"90"_s, u"501"_s, Null(), u"0001"_s, u"1"_s, u"中心"_s, u"省采购中心"_s),
        Place(u"91"_s, u"502"_s, u"501"_s, u"000101"_s, u"2"_s, u"一院"_s, u"市第一医院"_s),
        Place(u"92"_s, u"503"_s, u"501"_s, u"000102"_s, u"2"_s, u"二院"_s, u"市第二医院"_s),
        Place(u"93"_s, u"504"_s, u"-1"_s, u"0002"_s, u"1"_s, u"药房"_s, u"仁和药房"_s),
        Place(u"94"_s, u"505"_s, u"777"_s, u"000301020304"_s, u"5"_s, u"末院"_s, u"末级医院"_s),
    });
}

/// The screen, shown, and a server that knows five places and an organisation without one.
class Screen : public ScreenFixture
{
public:
    Screen()
    {
        server.OnQuery(u"AS CODE"_s).Answer(Rows({u"CODE"_s}, {{u"103"_s}}));
        server.OnQuery(u"FROM BAS_ORG_AFFILIATION A"_s).Answer(Places());
        server.OnQuery(u"SELECT * FROM BAS_ORG"_s)
            .Answer(Rows(
                {u"ORG_ID"_s, u"ORG_CODE"_s, u"ORG_NAME"_s, u"ORG_ABBR"_s, u"ORG_NAME_PY"_s,
                 u"ORG_NAME_WB"_s, u"ORG_TYPE"_s},
                {{u"599"_s, u"H599"_s, u"新城医院"_s, u"新院"_s, u"XCYY"_s, u"UFAB"_s, u"4"_s}}));
        ShowScreen(form);
    }

    void Query() { Trigger(&form, u"ActionQuery"_s); }
    DataTree &Tree() { return *Child<DataTree>(&form, u"TreeGrid"_s); }
    ClientDataSet &List() { return *Tree().DataSet(); }
    bool Enabled(const QString &action) { return ActionEnabled(&form, action); }
    QString Count() { return Child<QLabel>(&form, u"LabelCout"_s)->text(); }
    void Focus(const QString &orgId) { Tree().FocusNode(List().Find(u"ORG_ID", {orgId})); }
    QString Focused() { return List().FieldText(u"ORG_ID"); }

    /// Opens the editor and is inside it meanwhile.
    void InEditor(const QString &action, const std::function<void(QWidget *)> &visit)
    {
        ModalVisitor visitor(visit);
        Trigger(&form, action);
        QVERIFY(visitor.Visited());
    }

    static void Choose(QWidget *dialog)
    {
        ModalVisitor picker([](QWidget *orgSelect) {
            Child<QLineEdit>(orgSelect, u"edOrg"_s)->clear();
            Click(orgSelect, u"BtnQuery"_s);
            Click(orgSelect, u"BtnSelect"_s);
        });
        PressInside(dialog, u"edOrgName"_s);
    }

    TFrmMrgOrgAffiliation form;
};

const QStringList RowActions{u"ActionChildNew"_s, u"ActionModify"_s, u"ActionDelete"_s};

QString EditText(QWidget *dialog, const QString &name)
{
    return Child<QLineEdit>(dialog, name)->text();
}

} // namespace

class MrgOrgAffiliationTest : public QObject
{
    Q_OBJECT

private slots:
    void StatementsAreExact()
    {
        QCOMPARE(AffiliationSql::Places(u"  "_s), Expected(u"places.all"_s));
        QCOMPARE(AffiliationSql::Places(u" ab'c "_s), Expected(u"places.filtered"_s));
    }

    void CaptionsAndColumnsAreExact()
    {
        Screen screen;
        QCOMPARE(screen.form.windowTitle(), u"机构从属关系"_s);
        QCOMPARE(Child<QLabel>(&screen.form, u"lbInfo"_s)->text(), u"机构名称"_s);
        QCOMPARE(Child<QLineEdit>(&screen.form, u"edInfo"_s)->maxLength(), 150);
        const QList<std::pair<QString, QString>> buttons{
            {u"BtnQuery"_s, u"查询"_s},          {u"BtnNew"_s, u"新增主机构"_s},
            {u"BtnChildNew"_s, u"新增子机构"_s}, {u"BtnModify"_s, u"修改"_s},
            {u"BtnDelete"_s, u"删除"_s},         {u"BtnClose"_s, u"返回"_s}};
        for (const auto &[name, caption] : buttons)
            QCOMPARE(Child<QPushButton>(&screen.form, name)->text(), caption);
        QCOMPARE(ColumnsOf(screen.Tree()),
                 QStringList({u"TREE_CODE 编码"_s, u"TREE_LEVEL 级数 "_s, u"ORG_ABBR 机构简称"_s,
                              u"ORG_NAME 机构名称"_s}));
    }

    void ActionOfTheChildButtonHasACaptionOfItsOwn()
    {
        Screen screen;
        screen.Query(); // the button follows the action's enabling, not its text
        auto *button = Child<QPushButton>(&screen.form, u"BtnChildNew"_s);
        QVERIFY(button->isEnabled());
        QCOMPARE(button->text(), u"新增子机构"_s);
        QCOMPARE(Child<QAction>(&screen.form, u"ActionChildNew"_s)->text(), u"添加机构"_s);
    }

    void TreeShowsAllItsColumnsInTheHostsFirstWindow()
    {
        Screen screen;
        screen.form.resize(1280, 720);
        screen.Query();
        QTRY_COMPARE(screen.form.width(), 1280);
        QCOMPARE(screen.Tree().horizontalScrollBar()->maximum(), 0);
    }

    void ShowFocusesTheFilterAndQueriesNothing()
    {
        Screen screen;
        QCOMPARE(FocusName(screen.form), u"edInfo"_s);
        QVERIFY(screen.server.Queries().isEmpty());
        for (const QString &action : RowActions)
            QVERIFY2(!screen.Enabled(action), qPrintable(action));
        QVERIFY(screen.Enabled(u"ActionNew"_s));
        QCOMPARE(screen.Count(), u"共有：0条记录。"_s);
    }

    void QueryLoadsTheTreeCountsAndFocusesIt()
    {
        Screen screen;
        Type(&screen.form, u"edInfo"_s, u" 院 "_s);
        Press(&screen.form, u"edInfo"_s, Qt::Key_Return);
        QCOMPARE(screen.server.Statements(), QStringList{AffiliationSql::Places(u"院"_s)});
        QCOMPARE(screen.server.LastQuery().page, 0);
        QCOMPARE(screen.server.LastQuery().pageSize, 0);
        QCOMPARE(FocusName(screen.form), u"TreeGrid"_s);
        QCOMPARE(screen.Count(), u"共有：5条记录。"_s);
        QCOMPARE(screen.Focused(), u"501"_s);
        for (const QString &action : {u"ActionQuery"_s, u"ActionChildNew"_s, u"ActionModify"_s})
            QVERIFY2(screen.Enabled(action), qPrintable(action));
    }

    void RowsWithoutSuperiorAreAtTheTop()
    {
        Screen screen;
        screen.Query();
        // NULL, the root value, and a superior that the list does not hold.
        QStringList top;
        for (int at = 0; at < screen.Tree().TopLevelCount(); ++at)
            top << screen.Tree().NodeText(screen.Tree().TopLevelNode(at), u"TREE_CODE");
        QCOMPARE(top, QStringList({u"0001"_s, u"0002"_s, u"000301020304"_s}));
        QVERIFY(screen.Tree().HasChildren(0));
    }

    void QueryWithoutMatchDisablesTheRowActions()
    {
        Screen screen;
        screen.Query();
        screen.server.ClearScripts();
        screen.server.OnQuery(u"FROM BAS_ORG_AFFILIATION A"_s).Answer(Table({}));
        screen.Query();
        for (const QString &action : RowActions)
            QVERIFY2(!screen.Enabled(action), qPrintable(action));
        QVERIFY(screen.Enabled(u"ActionNew"_s));
        QCOMPARE(screen.Count(), u"共有：0条记录。"_s);
        QCOMPARE(FocusName(screen.form), u"TreeGrid"_s);
    }

    void FailedQueryLeavesTheQueryUsable()
    {
        Screen screen;
        screen.Query();
        screen.server.ClearScripts();
        screen.server.OnQuery(u"BAS_ORG_AFFILIATION"_s)
            .Error(500, u"server.error"_s, u"数据库不可用"_s, u"R1"_s);
        screen.Query();
        QVERIFY(screen.hook.Boxes().last().text.contains(u"数据库不可用"_s));
        QVERIFY(screen.Enabled(u"ActionQuery"_s));
        QCOMPARE(screen.Count(), u"共有：0条记录。"_s);
        for (const QString &action : RowActions)
            QVERIFY2(!screen.Enabled(action), qPrintable(action));
    }

    void OnlyANodeWithoutChildrenCanBeDeleted()
    {
        Screen screen;
        screen.Query();
        QVERIFY(!screen.Enabled(u"ActionDelete"_s));
        screen.Focus(u"502"_s);
        QVERIFY(screen.Enabled(u"ActionDelete"_s));
        screen.Focus(u"501"_s);
        QVERIFY(!screen.Enabled(u"ActionDelete"_s));
        screen.Focus(u"504"_s);
        QVERIFY(screen.Enabled(u"ActionDelete"_s));
    }

    void RowWithATwelveCharacterCodeRefusesASubordinate()
    {
        Screen screen;
        screen.Query();
        screen.Focus(u"505"_s);
        Trigger(&screen.form, u"ActionChildNew"_s);
        QCOMPARE(screen.Boxes(), QStringList{u"Information|提示|不能添加下级！|Ok"_s});
        // So a code of 14 characters cannot come about.
        QCOMPARE(screen.server.Queries().size(), 1);
    }

    void NewTopLevelOpensTheEditorWithoutAParent()
    {
        Screen screen;
        screen.Query();
        screen.InEditor(u"ActionNew"_s, [&](QWidget *dialog) {
            QCOMPARE(EditText(dialog, u"edParentCode"_s), QString());
            QCOMPARE(EditText(dialog, u"edParentName"_s), QString());
            QCOMPARE(EditText(dialog, u"edTREE_CODE"_s), u"0103"_s);
            QCOMPARE(screen.server.LastQuery().sql, Expected(u"place.code.top"_s));
            Click(dialog, u"BtnClose"_s);
        });
    }

    void NewBelowExpandsTheNodeAndHandsItOverAsParent()
    {
        Screen screen;
        screen.Query();
        QVERIFY(!screen.Tree().IsExpanded(0));
        screen.InEditor(u"ActionChildNew"_s, [&](QWidget *dialog) {
            QVERIFY(screen.Tree().IsExpanded(0));
            QCOMPARE(EditText(dialog, u"edParentCode"_s), u"0001"_s);
            QCOMPARE(EditText(dialog, u"edParentName"_s), u"省采购中心"_s);
            QCOMPARE(EditText(dialog, u"edTREE_CODE"_s), u"03"_s);
            Click(dialog, u"BtnClose"_s);
        });
    }

    void RowInsertedAMinuteAgoIsInTheTreeAndCanBeModified()
    {
        Screen screen;
        screen.Query();
        screen.server.OnPost(Save).Code(u"1"_s, {{u"ID"_s, u"97"_s}});
        screen.InEditor(u"ActionChildNew"_s, [&](QWidget *dialog) {
            Screen::Choose(dialog);
            Click(dialog, u"BtnSave"_s);
            QCOMPARE(screen.Count(), u"共有：6条记录。"_s);
            Click(dialog, u"BtnClose"_s);
        });
        const int node = screen.List().Find(u"ORG_ID", {u"599"_s});
        QCOMPARE(screen.Tree().Model()->ParentRecNo(node), 0);
        QCOMPARE(screen.Tree().FocusedNode(), node);
        screen.InEditor(u"ActionModify"_s, [&](QWidget *dialog) {
            QCOMPARE(EditText(dialog, u"edTREE_CODE"_s), u"03"_s);
            Type(dialog, u"edTREE_CODE"_s, u"44"_s);
            Click(dialog, u"BtnSave"_s);
        });
        QCOMPARE(RowTexts(screen.server.LastPost().rows), QStringList{Expected(u"place.again"_s)});
        QCOMPARE(screen.List().FieldText(u"TREE_CODE"), u"000144"_s);
    }

    void ModifyHandsOverAndSplitsTheCode()
    {
        Screen screen;
        screen.Query();
        screen.Focus(u"502"_s);
        screen.InEditor(u"ActionModify"_s, [](QWidget *dialog) {
            QCOMPARE(EditText(dialog, u"edParentCode"_s), u"0001"_s);
            QCOMPARE(EditText(dialog, u"edParentName"_s), u"省采购中心"_s);
            QCOMPARE(EditText(dialog, u"edTREE_CODE"_s), u"01"_s);
            QCOMPARE(EditText(dialog, u"edOrgName"_s), u"市第一医院"_s);
            QVERIFY(!Child<QLineEdit>(dialog, u"edTREE_CODE"_s)->isReadOnly());
            Click(dialog, u"BtnClose"_s);
        });
        screen.Focus(u"505"_s);
        screen.InEditor(u"ActionModify"_s, [](QWidget *dialog) {
            QCOMPARE(EditText(dialog, u"edParentCode"_s), u"0003010203"_s);
            QCOMPARE(EditText(dialog, u"edParentName"_s), QString()); // not in the list
            QCOMPARE(EditText(dialog, u"edTREE_CODE"_s), u"04"_s);
            Click(dialog, u"BtnClose"_s);
        });
    }

    void CodeOfASuperiorIsShownWholeAndReadOnly()
    {
        Screen screen;
        screen.Query();
        screen.InEditor(u"ActionModify"_s, [](QWidget *dialog) {
            QCOMPARE(EditText(dialog, u"edParentCode"_s), QString());
            QCOMPARE(EditText(dialog, u"edTREE_CODE"_s), u"0001"_s);
            QVERIFY(Child<QLineEdit>(dialog, u"edTREE_CODE"_s)->isReadOnly());
            Click(dialog, u"BtnClose"_s);
        });
    }

    void ChildrenFollowAnExchangedOrganisation()
    {
        Screen screen;
        screen.Query();
        screen.Tree().ExpandNode(0);
        screen.server.OnPost(Save).Code(u"1"_s, {{u"ID"_s, u"90"_s}});
        screen.InEditor(u"ActionModify"_s, [](QWidget *dialog) {
            Screen::Choose(dialog);
            Click(dialog, u"BtnSave"_s);
        });
        QCOMPARE(RowTexts(screen.server.LastPost().rows),
                 QStringList{Expected(u"place.exchange"_s)});
        QCOMPARE(CellTexts(screen.List(), u"ORG_ID"),
                 QStringList({u"599"_s, u"502"_s, u"503"_s, u"504"_s, u"505"_s}));
        QCOMPARE(CellTexts(screen.List(), u"PARENT_ORGID"),
                 QStringList({u""_s, u"599"_s, u"599"_s, u"-1"_s, u"777"_s}));
        QCOMPARE(screen.List().TextAt(0, u"ORG_NAME"), u"新城医院"_s);
        QCOMPARE(screen.List().TextAt(0, u"ORG_ABBR"), u"新院"_s);
        QCOMPARE(screen.List().TextAt(0, u"TREE_CODE"), u"0001"_s);
        QCOMPARE(screen.Focused(), u"599"_s);
        QCOMPARE(screen.Tree().Model()->ChildCount(0), 2);
        QVERIFY(screen.Tree().IsExpanded(0));
        QVERIFY(!screen.Enabled(u"ActionDelete"_s));
    }

    void CancelledModifyChangesNothing()
    {
        Screen screen;
        screen.Query();
        screen.server.OnPost(Save).Code(u"-2"_s);
        screen.InEditor(u"ActionModify"_s, [](QWidget *dialog) {
            Screen::Choose(dialog);
            Click(dialog, u"BtnSave"_s); // refused
            Click(dialog, u"BtnClose"_s);
        });
        QCOMPARE(screen.Focused(), u"501"_s);
        QCOMPARE(screen.List().TextAt(1, u"PARENT_ORGID"), u"501"_s);
    }

    void DeletingAsksPostsOneRowAndCountsAnew()
    {
        Screen screen;
        screen.Query();
        screen.Focus(u"503"_s);
        screen.server.OnPost(u"com.business.basedata.OrgAffiliationManager"_s, Delete).Code(u"1"_s);
        Trigger(&screen.form, u"ActionDelete"_s);
        QCOMPARE(screen.Boxes(), QStringList{u"Question|提示|是否真的要删除该数据？|Yes"_s});
        QCOMPARE(RowTexts(screen.server.LastPost().rows), QStringList{Expected(u"place.delete"_s)});
        QCOMPARE(screen.List().Find(u"ORG_ID", {u"503"_s}), -1);
        QCOMPARE(screen.Count(), u"共有：4条记录。"_s);
    }

    void DeletingTheLastRowDisablesTheRowActions()
    {
        Screen screen;
        screen.server.ClearScripts();
        screen.server.OnQuery(u"FROM BAS_ORG_AFFILIATION A"_s)
            .Answer(Table(
                {Place(u"93"_s, u"504"_s, Null(), u"0002"_s, u"1"_s, u"药房"_s, u"仁和药房"_s)}));
        screen.server.OnPost(Delete).Code(u"1"_s);
        screen.Query();
        Trigger(&screen.form, u"ActionDelete"_s);
        for (const QString &action : RowActions)
            QVERIFY2(!screen.Enabled(action), qPrintable(action));
        QCOMPARE(screen.Count(), u"共有：0条记录。"_s);
    }

    void AnswerNoDeletesNothing()
    {
        Screen screen;
        screen.hook.SetAnswer([](const TMessageBox &) { return TBoxButton::No; });
        screen.Query();
        screen.Focus(u"503"_s);
        Trigger(&screen.form, u"ActionDelete"_s);
        QVERIFY(screen.server.Posts().isEmpty());
        QCOMPARE(screen.List().RecordCount(), 5);
    }

    void RefusedDeletionSaysWhyAndTheRowStays_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("box");
        QTest::newRow("members") << u"-2"_s << u"Warning|警告|该集团存在成员,不能删除！|Ok"_s;
        QTest::newRow("subordinates") << u"-1"_s << u"Warning|警告|存在下级不能删除数据！|Ok"_s;
        QTest::newRow("failure") << u"0"_s << u"Error|错误|数据删除失败！|Ok"_s;
        QTest::newRow("unknown code") << u"7"_s << QString();
    }
    void RefusedDeletionSaysWhyAndTheRowStays()
    {
        QFETCH(QString, code);
        QFETCH(QString, box);
        Screen screen;
        screen.Query();
        screen.Focus(u"503"_s);
        screen.server.OnPost(Delete).Code(code);
        Trigger(&screen.form, u"ActionDelete"_s);
        QCOMPARE(screen.Boxes().value(1), box);
        QCOMPARE(screen.Boxes().size(), box.isEmpty() ? 1 : 2);
        QCOMPARE(screen.Focused(), u"503"_s);
        QCOMPARE(screen.List().RecordCount(), 5);
        QVERIFY(screen.Enabled(u"ActionDelete"_s));
    }

    void F3FindsByCodeLevelAndAbbreviationAmongTheFirstTopLevelNodes()
    {
        Screen screen;
        screen.Query();
        const auto find = [&](const QString &text) {
            Type(&screen.form, u"edInfo"_s, text);
            Press(&screen.Tree(), Qt::Key_F3);
            return screen.Focused();
        };
        QCOMPARE(find(u" 0301 "_s), u"505"_s);
        screen.Focus(u"501"_s);
        QCOMPARE(find(u"药房"_s), u"504"_s);
        screen.Focus(u"501"_s);
        QCOMPARE(find(u"5"_s), u"505"_s); // its level
        QVERIFY(screen.Boxes().isEmpty());
        screen.Focus(u"501"_s);
        QCOMPARE(find(u"仁和"_s), u"501"_s); // only in its name
        QCOMPARE(screen.Boxes(), QStringList{u"Information|提示|搜索 \"仁和\" 完毕！|Ok"_s});
    }

    void F3OnAMatchExpandsItAndGoesOnFromItsPlaceInTheWholeTree()
    {
        Screen screen;
        screen.Query();
        Type(&screen.form, u"edInfo"_s, u"000"_s);
        Press(&screen.Tree(), Qt::Key_F3); // 501 is on place 0 of the whole tree
        QCOMPARE(screen.Focused(), u"504"_s);
        QVERIFY(screen.Tree().IsExpanded(0));
        Press(&screen.Tree(), Qt::Key_F3); // 504 is on place 3: past the top-level nodes
        QCOMPARE(screen.Focused(), u"504"_s);
        QCOMPARE(screen.Boxes(), QStringList{u"Information|提示|搜索 \"000\" 完毕！|Ok"_s});
    }

    void F3WithAnEmptyTextDoesNothing()
    {
        Screen screen;
        screen.Query();
        Type(&screen.form, u"edInfo"_s, u"  "_s);
        Press(&screen.Tree(), Qt::Key_F3);
        QCOMPARE(screen.Focused(), u"501"_s);
        QVERIFY(screen.Boxes().isEmpty());
    }

    void BackClosesTheScreen()
    {
        Screen screen;
        Click(&screen.form, u"BtnClose"_s);
        QVERIFY(!screen.form.isVisible());
    }
};

QTEST_MAIN(MrgOrgAffiliationTest)
#include "MrgOrgAffiliationTest.moc"
