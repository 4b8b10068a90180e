#include "screens/UniUnion.h"

#include "controls/DataGrid.h"
#include "controls/DataTree.h"
#include "screens/ScreenFixture.h"
#include "screens/UniMemberType.h"
#include "screens/UniProduct.h"
#include "screens/UniRuleConfigure.h"
#include "screens/Unions.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

QStringList Group(const QString &id, const QString &parent, const QString &code,
                  const QString &name)
{
    return {id,        parent,   code,        name,          u"2"_s,
            u"1301"_s, u"501"_s, u"旧备注"_s, u"石家庄市"_s, u"市第一医院"_s};
}

/// 0013 with sub-group 001309, then 0014, then a group on the deepest level.
RowSet Groups()
{
    return Rows(UnionColumns(), {
                                    Group(u"10"_s, Null(), u"0013"_s, u"华北联合体"_s),
                                    Group(u"11"_s, u"10"_s, u"001309"_s, u"石家庄小组"_s),
                                    Group(u"12"_s, Null(), u"0014"_s, u"华东联合体"_s),
                                    Group(u"13"_s, Null(), u"001401020304"_s, u"最末级小组"_s),
                                });
}

RowSet Members(const QString &unionId)
{
    return Rows({u"UNION_ID"_s, u"ORG_TYPE_ID"_s, u"ORG_TYPE_NAME"_s, u"BUYER_FLAG"_s,
                 u"SALER_FLAG"_s, u"SENDER_FLAG"_s, u"ADMIN_FLAG"_s, u"REMARK"_s, u"ORG_ID"_s,
                 u"ORG_CODE"_s, u"ORG_NAME"_s},
                {{unionId, u"1"_s, u"采购成员"_s, u"1"_s, u"0"_s, u"0"_s, u"0"_s, u""_s, u"501"_s,
                  u"H501"_s, u"市第一医院"_s},
                 {unionId, u"2"_s, u"配送成员"_s, u"0"_s, u"1"_s, u"1"_s, u"0"_s, u""_s, u"502"_s,
                  u"D502"_s, u"仁和医药"_s}});
}

/// The screen, shown, and a server that knows four groups and two members of each.
class Screen : public ScreenFixture
{
public:
    Screen()
    {
        server.OnQuery(u"FROM UNI_UNION A"_s).Answer(Groups());
        for (const auto &id : {u"10"_s, u"11"_s, u"12"_s, u"13"_s})
            server.OnQuery(u"A.UNION_ID= '"_s + id + u'\'').Answer(Members(id));
        ShowScreen(form);
    }

    void Query() { Trigger(&form, u"ActionQuery"_s); }
    DataTree &Tree() { return *Child<DataTree>(&form, u"TreeGrid"_s); }
    DataGrid &Grid() { return *Child<DataGrid>(&form, u"GridOrg"_s); }
    bool Enabled(const QString &action) { return ActionEnabled(&form, action); }
    /// Focuses a group and waits until its members are there.
    void Focus(const QString &unionId)
    {
        const int before = int(server.Queries().size());
        Tree().FocusNode(Tree().DataSet()->Find(u"UNION_ID", {unionId}));
        QTRY_VERIFY(server.Queries().size() > before && Grid().DataSet()->IsActive());
    }

    TFrmUniUnion form;
};

const QStringList GroupActions{u"UniChildNew"_s,      u"UniModify"_s,     u"OrgNew"_s,
                               u"ActRuleConfigure"_s, u"ActUniProduct"_s, u"ActMemberType"_s};

} // namespace

class UniUnionTest : public QObject
{
    Q_OBJECT

private slots:
    void StatementsAreExact()
    {
        QCOMPARE(UnionsSql(u"  "_s), Expected(u"groups.all"_s));
        QCOMPARE(UnionsSql(u" ab'c "_s), Expected(u"groups.filtered"_s));
        QCOMPARE(UniUnionSql::Members(u"10'1"_s), Expected(u"members"_s));
    }

    void CaptionsAreExact_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("caption");
        const QList<std::pair<QString, QString>> rows{
            {u"BtnQuery"_s, u"查询"_s},
            {u"btnMemberType"_s, u"成员类型设置"_s},
            {u"BtnNewUni"_s, u"新增集团"_s},
            {u"BtnChildUni"_s, u"新增子集团"_s},
            {u"BtnModifyUni"_s, u"修改集团"_s},
            {u"BtnDeleteUni"_s, u"删除集团"_s},
            {u"btnRuleConfigure"_s, u"规则设置"_s},
            {u"btnUniproduct"_s, u"产品维护"_s},
            {u"BtnNewOrg"_s, u"新增成员"_s},
            {u"BtnModifyOrg"_s, u"修改成员"_s},
            {u"BtnDeleteOrg"_s, u"删除成员"_s},
            {u"cxButton5"_s, u"返回"_s},
        };
        for (const auto &[button, caption] : rows)
            QTest::newRow(qPrintable(button)) << button << caption;
    }
    void CaptionsAreExact()
    {
        QFETCH(QString, button);
        QFETCH(QString, caption);
        Screen screen;
        QCOMPARE(Child<QPushButton>(&screen.form, button)->text(), caption);
    }

    void ColumnsAreExact()
    {
        Screen screen;
        const auto captions = [](const QAbstractItemModel &model) {
            QStringList texts;
            for (int column = 0; column < model.columnCount(); ++column)
                texts << model.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
            return texts;
        };
        QCOMPARE(captions(*screen.Tree().Model()).first(), u"编码"_s);
        QCOMPARE(screen.Tree().Model()->columnCount(), 4);
        QCOMPARE(captions(*screen.Grid().Model()),
                 QStringList({u"机构编码"_s, u"机构名称"_s, u"成员类型名称"_s, u"买方"_s, u"卖方"_s,
                              u"配送"_s, u"管理"_s, u"备注"_s}));
    }

    void BothListsShowAllTheirColumnsInTheHostsFirstWindow()
    {
        Screen screen;
        screen.form.resize(1280, 720);
        screen.Query();
        QTRY_COMPARE(screen.form.width(), 1280);
        QCOMPARE(screen.Grid().horizontalScrollBar()->maximum(), 0);
        QCOMPARE(screen.Tree().horizontalScrollBar()->maximum(), 0);
    }

    void ContextMenusHoldTheirActionsInOrder()
    {
        Screen screen;
        const auto menu = [](const QWidget &widget) {
            QStringList names;
            for (const QAction *action : widget.actions())
                names << (action->isSeparator() ? u"-"_s : action->objectName());
            return names;
        };
        QCOMPARE(menu(screen.Tree()), QStringList({u"UniNew"_s, u"UniChildNew"_s, u"-"_s,
                                                   u"UniModify"_s, u"UniDelete"_s}));
        QCOMPARE(menu(screen.Grid()),
                 QStringList({u"OrgNew"_s, u"OrgModify"_s, u"-"_s, u"OrgDelete"_s}));
    }

    void ShowFocusesTheFilterAndQueriesNothing()
    {
        Screen screen;
        QCOMPARE(FocusName(screen.form), u"edInfo"_s);
        QVERIFY(screen.server.Queries().isEmpty());
        for (const QString &action :
             GroupActions + QStringList{u"UniDelete"_s, u"OrgModify"_s, u"OrgDelete"_s})
            QVERIFY2(!screen.Enabled(action), qPrintable(action));
        QVERIFY(screen.Enabled(u"UniNew"_s));
        QVERIFY(screen.Enabled(u"ActionQuery"_s));
    }

    void QueryLoadsGroupsThenTheMembersOfTheFirst()
    {
        Screen screen;
        Type(&screen.form, u"edInfo"_s, u" 华 "_s);
        Press(&screen.form, u"edInfo"_s, Qt::Key_Return);
        QCOMPARE(screen.server.Statements(),
                 QStringList({UnionsSql(u"华"_s), UniUnionSql::Members(u"10"_s)}));
        for (const auto &query : screen.server.Queries()) {
            QCOMPARE(query.page, 0);
            QCOMPARE(query.pageSize, 0);
            QCOMPARE(query.queryType, 1);
        }
        QCOMPARE(screen.Tree().FocusedNode(), 0);
        QVERIFY(screen.Tree().IsExpanded(0));
        QCOMPARE(FocusName(screen.form), u"TreeGrid"_s);
        QCOMPARE(screen.Grid().Model()->rowCount(), 2);
        for (const QString &action : GroupActions + QStringList{u"OrgModify"_s, u"OrgDelete"_s})
            QVERIFY2(screen.Enabled(action), qPrintable(action));
        QCoreApplication::processEvents();
        QCOMPARE(screen.server.Queries().size(), 2); // filling the tree loads nothing by itself
    }

    void QueryWithoutMatchEmptiesMembersDisablesGroupActionsAndFocusesTheFilter()
    {
        Screen screen;
        screen.Query();
        screen.server.ClearScripts();
        screen.server.OnQuery(u"FROM UNI_UNION A"_s).Answer(Rows(UnionColumns(), {}));
        screen.Query();
        QCOMPARE(screen.Grid().Model()->rowCount(), 0);
        for (const QString &action :
             GroupActions + QStringList{u"UniDelete"_s, u"OrgModify"_s, u"OrgDelete"_s})
            QVERIFY2(!screen.Enabled(action), qPrintable(action));
        QCOMPARE(FocusName(screen.form), u"edInfo"_s);
    }

    void FocusedGroupsMembersAreLoaded()
    {
        Screen screen;
        screen.Query();
        screen.Focus(u"12"_s);
        QCOMPARE(screen.server.LastQuery().sql, UniUnionSql::Members(u"12"_s));
        QCOMPARE(screen.Grid().DataSet()->FieldText(u"UNION_ID"), u"12"_s);
    }

    void OnlyTheGroupWhereTheFocusRestsIsLoaded()
    {
        Screen screen;
        screen.Query();
        screen.server.ClearRecords();
        for (int step = 0; step < 3; ++step)
            Press(&screen.Tree(), Qt::Key_Down);
        QTRY_VERIFY(!screen.server.Queries().isEmpty());
        QCoreApplication::processEvents();
        QCOMPARE(screen.server.Statements(), QStringList{UniUnionSql::Members(u"13"_s)});
    }

    void GroupWithSubGroupsCannotBeDeletedFromTheScreen()
    {
        Screen screen;
        screen.Query();
        QVERIFY(!screen.Enabled(u"UniDelete"_s)); // 0013 has a sub-group
        screen.Focus(u"11"_s);
        QVERIFY(screen.Enabled(u"UniDelete"_s));
        screen.Focus(u"10"_s);
        QVERIFY(!screen.Enabled(u"UniDelete"_s));
    }

    void DeletingAGroupAsksAndPostsOneRow()
    {
        Screen screen;
        screen.Query();
        screen.Focus(u"11"_s);
        screen.server.OnPost(u"com.business.admin.UniUnion"_s, u"delete_UniUnion"_s).Code(u"1"_s);
        Trigger(&screen.form, u"UniDelete"_s);
        QCOMPARE(screen.Boxes(), QStringList{u"Question|提示|是否真的要删除该数据？|Yes"_s});
        QCOMPARE(RowText(screen.server.LastPost().rows.value(0)), Expected(u"union.delete"_s));
        QCOMPARE(screen.Tree().DataSet()->RecordCount(), 3);
        QCOMPARE(screen.Tree().DataSet()->Find(u"UNION_ID", {u"11"_s}), -1);
    }

    void AnswerNoDeletesNothing()
    {
        Screen screen;
        screen.hook.SetAnswer([](const TMessageBox &) { return TBoxButton::No; });
        screen.Query();
        screen.Focus(u"11"_s);
        Trigger(&screen.form, u"UniDelete"_s);
        Trigger(&screen.form, u"OrgDelete"_s);
        QVERIFY(screen.server.Posts().isEmpty());
        QCOMPARE(screen.Boxes().size(), 2);
    }

    void RefusedDeletionSaysWhyAndKeepsTheRow_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("box");
        QTest::newRow("members") << u"-2"_s << u"Warning|警告|该集团存在成员,不能删除！|Ok"_s;
        QTest::newRow("sub-groups") << u"-1"_s << u"Warning|警告|存在下级不能删除数据！|Ok"_s;
        QTest::newRow("failure") << u"0"_s << u"Error|错误|数据删除失败！|Ok"_s;
        QTest::newRow("unknown code") << u"7"_s << QString();
    }
    void RefusedDeletionSaysWhyAndKeepsTheRow()
    {
        QFETCH(QString, code);
        QFETCH(QString, box);
        Screen screen;
        screen.Query();
        screen.Focus(u"11"_s);
        screen.server.OnPost(u"delete_UniUnion"_s).Code(code);
        Trigger(&screen.form, u"UniDelete"_s);
        QCOMPARE(screen.Boxes().value(1), box);
        QCOMPARE(screen.Boxes().size(), box.isEmpty() ? 1 : 2);
        QCOMPARE(screen.Tree().DataSet()->RecordCount(), 4);
        QVERIFY(screen.Enabled(u"UniDelete"_s));
    }

    void DeletingAMemberPostsGroupAndOrganisation()
    {
        Screen screen;
        screen.Query();
        screen.server.OnPost(u"com.business.admin.UniUnionOrg"_s, u"delete_UniOrg"_s).Code(u"1"_s);
        Trigger(&screen.form, u"OrgDelete"_s);
        QCOMPARE(screen.Boxes(), QStringList{u"Question|提示|是否真的要删除该数据？|Yes"_s});
        QCOMPARE(RowText(screen.server.LastPost().rows.value(0)), Expected(u"org.delete"_s));
        QCOMPARE(screen.Grid().DataSet()->RecordCount(), 1);
        screen.server.ClearScripts();
        screen.server.OnPost(u"delete_UniOrg"_s).Code(u"0"_s);
        Trigger(&screen.form, u"OrgDelete"_s);
        QCOMPARE(screen.Boxes().last(), u"Error|错误|数据删除失败！|Ok"_s);
        QCOMPARE(screen.Grid().DataSet()->RecordCount(), 1);
    }

    void GroupWithATwelveCharacterCodeAcceptsNoSubGroup()
    {
        Screen screen;
        screen.Query();
        screen.Focus(u"13"_s);
        Trigger(&screen.form, u"UniChildNew"_s);
        QCOMPARE(screen.Boxes(), QStringList{u"Information|提示|不能添加下级！|Ok"_s});
    }

    void NewSubGroupStartsFromTheFocusedGroup()
    {
        Screen screen;
        screen.server.OnQuery(u"AS CODE"_s).Answer(Rows({u"CODE"_s}, {{u"1310"_s}}));
        screen.Query();
        ModalVisitor visitor([&](QWidget *dialog) {
            QCOMPARE(Child<QLineEdit>(dialog, u"edParentCode"_s)->text(), u"0013"_s);
            QCOMPARE(Child<QLineEdit>(dialog, u"edParentName"_s)->text(), u"华北联合体"_s);
            QCOMPARE(Child<QLineEdit>(dialog, u"edUnion_CODE"_s)->text(), u"10"_s);
            Click(dialog, u"BtnClose"_s);
        });
        Trigger(&screen.form, u"UniChildNew"_s);
        QVERIFY(visitor.Visited());
    }

    void ModifyHandsOverTheFocusedGroup()
    {
        Screen screen;
        screen.Query();
        screen.Focus(u"11"_s);
        ModalVisitor visitor([&](QWidget *dialog) {
            const auto text = [dialog](const QString &name) {
                return Child<QLineEdit>(dialog, name)->text();
            };
            QCOMPARE(text(u"edParentCode"_s), u"0013"_s);
            QCOMPARE(text(u"edParentName"_s), u"华北联合体"_s);
            QCOMPARE(text(u"edUnion_CODE"_s), u"09"_s);
            QCOMPARE(text(u"edUnion_NAME"_s), u"石家庄小组"_s);
            QCOMPARE(text(u"edRegionName"_s), u"石家庄市"_s);
            QCOMPARE(text(u"edMasterOrgName"_s), u"市第一医院"_s);
            Click(dialog, u"BtnClose"_s);
        });
        Trigger(&screen.form, u"UniModify"_s);
        QVERIFY(visitor.Visited());
    }

    void F3FindsTheNextGroupInTreeOrder()
    {
        Screen screen;
        screen.Query();
        Type(&screen.form, u"edInfo"_s, u" 小组 "_s);
        Press(&screen.Tree(), Qt::Key_F3);
        QCOMPARE(screen.Tree().NodeText(screen.Tree().FocusedNode(), u"UNION_NAME"),
                 u"石家庄小组"_s);
        Press(&screen.Tree(), Qt::Key_F3);
        QCOMPARE(screen.Tree().NodeText(screen.Tree().FocusedNode(), u"UNION_NAME"),
                 u"最末级小组"_s);
        QVERIFY(screen.Boxes().isEmpty());
        Press(&screen.Tree(), Qt::Key_F3);
        QCOMPARE(screen.Boxes(), QStringList{u"Information|提示|搜索 \"小组\" 完毕！|Ok"_s});
        QCOMPARE(screen.Tree().NodeText(screen.Tree().FocusedNode(), u"UNION_NAME"),
                 u"最末级小组"_s);
    }

    void F3LooksAtEveryColumnAndMindsTheCase()
    {
        Screen screen;
        screen.server.ClearScripts();
        QStringList row = Group(u"12"_s, Null(), u"0014"_s, u"Beta"_s);
        row[9] = u"Alpha医院"_s;
        screen.server.OnQuery(u"FROM UNI_UNION A"_s)
            .Answer(Rows(UnionColumns(), {Group(u"10"_s, Null(), u"0013"_s, u"甲"_s), row}));
        screen.server.OnQuery(u"Uni_ORG A"_s).Answer(Members(u"10"_s));
        screen.Query();
        Type(&screen.form, u"edInfo"_s, u"alpha"_s);
        Press(&screen.Tree(), Qt::Key_F3);
        QCOMPARE(screen.Boxes().size(), 1);
        Type(&screen.form, u"edInfo"_s, u"Alpha"_s);
        Press(&screen.Tree(), Qt::Key_F3);
        QCOMPARE(screen.Tree().NodeText(screen.Tree().FocusedNode(), u"UNION_ID"), u"12"_s);
    }

    void F3WithAnEmptyTextDoesNothing()
    {
        Screen screen;
        screen.Query();
        Press(&screen.Tree(), Qt::Key_F3);
        QCOMPARE(screen.Tree().FocusedNode(), 0);
        QVERIFY(screen.Boxes().isEmpty());
    }

    void QueryActionIsDisabledWhileItRuns()
    {
        Screen screen;
        QCOMPARE(
            screen.DisabledAtRequests(screen.form, {u"ActionQuery"_s}, [&] { screen.Query(); }),
            QStringList(2, u"ActionQuery"_s));
    }

    void FailedQueryLeavesTheScreenUsable()
    {
        Screen screen;
        screen.Query();
        screen.server.ClearScripts();
        screen.server.OnQuery(u"FROM UNI_UNION A"_s).DatabaseDown().Times(1);
        screen.Query();
        QCOMPARE(screen.hook.Boxes().size(), 1);
        QCOMPARE(screen.hook.Boxes().first().icon, TBoxIcon::Error);
        QVERIFY(screen.hook.Boxes().first().text.contains(u"数据库不可用"_s));
        QVERIFY(screen.Enabled(u"ActionQuery"_s));
        QVERIFY(!screen.Enabled(u"UniModify"_s));
        screen.server.OnQuery(u"FROM UNI_UNION A"_s).Answer(Groups());
        screen.server.OnQuery(u"Uni_ORG A"_s).Answer(Members(u"10"_s));
        screen.Query();
        QCOMPARE(screen.Grid().Model()->rowCount(), 2);
    }

    void MemberTypesOpenForTheFocusedGroupAndOnOkTheMembersAreReloaded_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("reloads");
        QTest::newRow("saved") << u"BtnOk"_s << 1;
        QTest::newRow("cancelled") << u"BtnClose"_s << 0;
    }
    void MemberTypesOpenForTheFocusedGroupAndOnOkTheMembersAreReloaded()
    {
        QFETCH(QString, button);
        QFETCH(int, reloads);
        Screen screen;
        screen.Query();
        screen.Focus(u"11"_s);
        screen.server.OnQuery(u"uni_Org_type"_s)
            .Answer(Rows({u"ORG_TYPE_ID"_s, u"LAST_OPERATE"_s}, {{u"T1"_s, u"1"_s}}));
        screen.server.OnPost(u"insert_update_UniOrgType"_s).Code(u"1"_s);
        screen.server.ClearRecords();
        ModalVisitor visitor([&](QWidget *dialog) {
            QCOMPARE(dialog->windowTitle(), u"成员类型维护"_s);
            QCOMPARE(screen.server.Statements(), QStringList{UniMemberTypeSql(u"11"_s)});
            Click(dialog, button);
        });
        Trigger(&screen.form, u"ActMemberType"_s);
        QCOMPARE(screen.server.Statements().mid(1),
                 QStringList(reloads, UniUnionSql::Members(u"11"_s)));
    }

    void RulesOpenForTheFocusedGroup()
    {
        Screen screen;
        screen.Query();
        screen.Focus(u"11"_s);
        screen.server.OnQuery(u"UNI_Union_RULE"_s).Answer(Rows({u"RULE_CODE"_s}, {}));
        screen.server.ClearRecords();
        ModalVisitor visitor([&](QWidget *dialog) {
            QCOMPARE(dialog->windowTitle(), u"集团项目规则设置"_s);
            Click(dialog, u"BtnOk"_s);
        });
        Trigger(&screen.form, u"ActRuleConfigure"_s);
        QCOMPARE(screen.server.Statements(), QStringList{UniRuleSql::Rules(u"11"_s)});
    }

    void ProductCatalogueOpensForTheFocusedGroupAndFreesItself()
    {
        Screen screen;
        screen.Query();
        screen.Focus(u"11"_s);
        screen.server.OnQuery(u"FROM UNI_PRODUCT A"_s).Answer(Rows({u"PRODUCT_ID"_s}, {}));
        screen.server.ClearRecords();
        QPointer<QWidget> catalogue;
        int freed = 0;
        ModalVisitor visitor([&](QWidget *dialog) {
            catalogue = dialog;
            connect(dialog, &QObject::destroyed, this, [&freed] { ++freed; });
            QCOMPARE(dialog->windowTitle(), u"集团产品维护"_s);
            QCOMPARE(TFrmUniProduct::Instance(), dialog);
            Click(dialog, u"BtnQuery"_s);
            Click(dialog, u"BtnClose"_s);
        });
        Trigger(&screen.form, u"ActUniProduct"_s);
        QCOMPARE(screen.server.Statements(),
                 QStringList{UniProductSql::Catalogue(u"11"_s, {{}, {}, u"全部"_s, {}})});
        QCOMPARE(TFrmUniProduct::Instance(), nullptr);
        QTRY_VERIFY(!catalogue);
        QCOMPARE(freed, 1);
    }

    void AddedMembersAreLoadedAfterOk()
    {
        Screen screen;
        screen.server.OnQuery(u"uni_org_type"_s)
            .Answer(Rows({u"ORG_TYPE_ID"_s, u"ORG_TYPE_NAME"_s}, {{u"1"_s, u"采购成员"_s}}));
        screen.server.OnQuery(u"FROM BAS_ORG A"_s)
            .Answer(Rows({u"SELECTED"_s, u"ORG_TYPE_ID"_s, u"ORG_ID"_s, u"ORG_NAME"_s},
                         {{u"1"_s, u"1"_s, u"503"_s, u"百草药房"_s}}));
        screen.server.OnPost(u"insert_update_UniUnionOrg"_s).Code(u"1"_s);
        screen.Query();
        screen.Focus(u"12"_s);
        ModalVisitor visitor([&](QWidget *dialog) {
            QCOMPARE(dialog->windowTitle(), u"新增成员"_s);
            Click(dialog, u"BtnQuery"_s);
            screen.server.ClearRecords();
            Click(dialog, u"BtnSave"_s);
        });
        Trigger(&screen.form, u"OrgNew"_s);
        QVERIFY(visitor.Visited());
        QCOMPARE(screen.server.LastPost().Value(u"UNION_ID"_s), u"12"_s);
        QCOMPARE(screen.server.Statements(), QStringList{UniUnionSql::Members(u"12"_s)});
    }

    void CancelledAdditionLoadsNothing()
    {
        Screen screen;
        screen.server.OnQuery(u"uni_org_type"_s)
            .Answer(Rows({u"ORG_TYPE_ID"_s, u"ORG_TYPE_NAME"_s}, {}));
        screen.Query();
        screen.server.ClearRecords();
        ModalVisitor visitor([](QWidget *dialog) { Click(dialog, u"BtnCancel"_s); });
        Trigger(&screen.form, u"OrgNew"_s);
        QVERIFY(visitor.Visited());
        QCOMPARE(screen.server.Queries().size(), 1); // the dialog's member types
    }

    void ModifyingAMemberHandsItsRowOver()
    {
        Screen screen;
        screen.server.OnQuery(u"uni_org_type"_s)
            .Answer(Rows({u"ORG_TYPE_ID"_s, u"ORG_TYPE_NAME"_s}, {{u"1"_s, u"采购成员"_s}}));
        screen.Query();
        ModalVisitor visitor([&](QWidget *dialog) {
            QCOMPARE(dialog->windowTitle(), u"成员维护"_s);
            QCOMPARE(screen.server.LastQuery().sql, Expected(u"unionorgedit.types"_s));
            QCOMPARE(Child<QLineEdit>(dialog, u"edOrgName"_s)->text(), u"市第一医院"_s);
            QCOMPARE(Child<QComboBox>(dialog, u"ed_orgtype"_s)->currentText(), u"采购成员"_s);
            QVERIFY(Child<QCheckBox>(dialog, u"ckBuy"_s)->isChecked());
            QVERIFY(!Child<QCheckBox>(dialog, u"ckSend"_s)->isChecked());
            Click(dialog, u"BtnClose"_s);
        });
        Trigger(&screen.form, u"OrgModify"_s);
        QVERIFY(visitor.Visited());
    }

    void StaleMemberGridShowsTheOldTypeUntilTheGroupIsFocusedAgain()
    {
        Screen screen;
        screen.server.OnQuery(u"uni_org_type"_s)
            .Answer(Rows({u"ORG_TYPE_ID"_s, u"ORG_TYPE_NAME"_s},
                         {{u"1"_s, u"采购成员"_s}, {u"3"_s, u"管理成员"_s}}));
        screen.server.OnPost(u"insert_update_UniUnionOrg"_s).Code(u"1"_s);
        screen.Query();
        screen.server.ClearRecords();
        ModalVisitor visitor([](QWidget *dialog) {
            Press(dialog, u"ed_orgtype"_s, Qt::Key_Down);
            Click(dialog, u"BtnSave"_s);
        });
        Trigger(&screen.form, u"OrgModify"_s);
        QCoreApplication::processEvents();
        QCOMPARE(screen.server.LastPost().Value(u"ORG_TYPE_ID"_s), u"3"_s);
        QCOMPARE(screen.server.Queries().size(), 1); // the dialog's types; no members
        QCOMPARE(screen.Grid().DataSet()->FieldText(u"ORG_TYPE_NAME"), u"采购成员"_s);
        QCOMPARE(screen.Grid().DataSet()->FieldText(u"ORG_TYPE_ID"), u"1"_s);
        screen.Focus(u"12"_s);
        screen.Focus(u"10"_s);
        QCOMPARE(screen.server.LastQuery().sql, UniUnionSql::Members(u"10"_s));
    }

    void BackClosesTheScreen()
    {
        Screen screen;
        Click(&screen.form, u"cxButton5"_s);
        QTRY_VERIFY(!screen.form.isVisible());
    }
};

QTEST_MAIN(UniUnionTest)
#include "UniUnionTest.moc"
