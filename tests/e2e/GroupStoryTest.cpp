#include "e2e/Hands.h"
#include "e2e/Site.h"

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QTabWidget>
#include <QTest>
#include <QTreeView>

using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QString TheGroup =
    u"(SELECT UNION_ID FROM UNI_UNION WHERE UNION_NAME='西北地区采购联合体')"_s;

/// The first organisation that an organisation picker finds with a text in its name.
void PickOrganisation(QWidget *dialog, const QString &edit, const QString &text)
{
    ModalVisitor picker([&](QWidget *organisations) {
        Type(organisations, u"edOrg"_s, text);
        Press(organisations, u"edOrg"_s, Qt::Key_Return);
        Click(organisations, u"BtnSelect"_s);
    });
    PressInside(dialog, edit);
}

void FoundGroup(QWidget *screen)
{
    InDialog(screen, u"UniNew"_s, [](QWidget *dialog) {
        Type(dialog, u"edUnion_NAME"_s, u"西北地区采购联合体"_s);
        PickOrganisation(dialog, u"edMasterOrgName"_s, u"卫生院"_s);
        Click(dialog, u"BtnSave"_s);
    });
}

void DefineMemberTypes(QWidget *screen)
{
    InDialog(screen, u"ActMemberType"_s, [](QWidget *dialog) {
        QTableView &grid = Grid(dialog, u"GridOrg"_s);
        const auto add = [&](const QString &name, const QString &role) {
            Click(dialog, u"btnAdd"_s);
            const int row = grid.currentIndex().row();
            Type(QApplication::focusWidget(), name);
            Press(QApplication::focusWidget(), Qt::Key_Return);
            LetEditorGo();
            ClickCell(grid, row, role);
        };
        add(u"采购医院"_s, u"买方"_s);
        add(u"配送企业"_s, u"配送"_s);
        QCOMPARE(grid.model()->rowCount(), 2);
        QCOMPARE(Answer(u"Ok"_s, [&] { Click(dialog, u"BtnOk"_s); }), u"保存成功！"_s);
    });
}

void AddFiftyHospitals(QWidget *screen)
{
    InDialog(screen, u"OrgNew"_s, [](QWidget *dialog) {
        QCOMPARE(dialog->windowTitle(), u"新增成员"_s);
        Type(dialog, u"edOrg"_s, u"医院"_s);
        Press(dialog, u"edOrg"_s, Qt::Key_Return);
        QTableView &grid = Grid(dialog, u"GridQuery"_s);
        QCOMPARE(grid.model()->rowCount(), 50);
        // Choosing a type ticks the row.
        for (int row = 0; row < 50; ++row)
            ChooseInCell(grid, row, u"成员类型"_s);
        QCOMPARE(Cell(grid, 49, u"选择"_s).data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
        QCOMPARE(Answer(u"Yes"_s, [&] { Click(dialog, u"BtnSave"_s); }), u"是否要新增[50]个成员"_s);
    });
}

void SetAuditRule(QWidget *screen)
{
    InDialog(screen, u"ActRuleConfigure"_s, [](QWidget *dialog) {
        Click(dialog, u"JTCGDSH_FLAG"_s);
        PickOrganisation(dialog, u"UNI_JTCGDSH_Org"_s, u"医院"_s);
        Click(dialog, u"BtnOk"_s);
    });
}

/// Moves three products in, one of them out and in again, and reads that one's history.
QStringList MoveProducts(QWidget *screen)
{
    QStringList history;
    InDialog(screen, u"ActUniProduct"_s, [&](QWidget *dialog) {
        auto &tabs = *dialog->findChild<QTabWidget *>();
        QTableView &in = Grid(dialog, u"GridOrgIn"_s);
        QTableView &out = Grid(dialog, u"GridOut"_s);
        const auto moveIn = [&](const QString &filter, int count) {
            tabs.setCurrentIndex(1);
            Type(dialog, u"cxInformation1"_s, filter);
            Press(dialog, u"cxInformation1"_s, Qt::Key_Return);
            for (int row = 0; row < count; ++row)
                ClickCell(out, row, u"选择"_s);
            const int before = out.model()->rowCount();
            QCOMPARE(Answer(u"Yes"_s, [&] { Trigger(dialog, u"ActionNew"_s); }),
                     u"是否真的要移入 %1 条产品！"_s.arg(count));
            QCOMPARE(out.model()->rowCount(), before - count);
            tabs.setCurrentIndex(0);
            Trigger(dialog, u"ActionQueryIn"_s);
        };
        moveIn(u"阿莫西林"_s, 3);
        QCOMPARE(in.model()->rowCount(), 3);
        const QString serial = Text(in, 0, u"编码"_s);
        ClickCell(in, 0, u"选择"_s);
        QCOMPARE(Answer(u"Yes"_s, [&] { Trigger(dialog, u"ActionDelete"_s); }),
                 u"是否真的要移出 1 条记录！"_s);
        QCOMPARE(in.model()->rowCount(), 2);
        moveIn(serial, 1);
        QCOMPARE(in.model()->rowCount(), 3);
        for (int row = 0; row < 3; ++row) {
            if (Text(in, row, u"编码"_s) == serial)
                in.setCurrentIndex(Cell(in, row, u"编码"_s));
        }
        InDialog(dialog, u"ActionLog"_s, [&](QWidget *viewer) {
            const QTableView &log = *viewer->findChild<QTableView *>();
            for (int row = 0; row < log.model()->rowCount(); ++row)
                history << Text(log, row, u"操作人姓名"_s) + u'/' + Text(log, row, u"操作类型"_s);
            Click(viewer, u"BtnClose"_s);
        });
        Trigger(dialog, u"ActionCloseIn"_s);
    });
    return history;
}

} // namespace

/// A group from nothing to whole: founded, its member types defined, fifty organisations added at
/// once, its audit rule set, products moved in and out, and who changed what.
class GroupStoryTest : public QObject
{
    Q_OBJECT

private slots:
    void GroupIsFoundedFilledRuledAndItsHistoryRead()
    {
        Site site;
        QWidget *screen = site.OpenScreen(u"ADMIN01"_s);
        FoundGroup(screen);
        QCOMPARE(site.Select(u"SELECT count(*) FROM UNI_UNION WHERE UNION_ID="_s + TheGroup),
                 QStringList{u"1"_s});

        Type(screen, u"edInfo"_s, u"西北地区采购联合体"_s);
        Press(screen, u"edInfo"_s, Qt::Key_Return);
        DefineMemberTypes(screen);
        QCOMPARE(site.Select(u"SELECT ORG_TYPE_NAME || BUYER_FLAG || SALER_FLAG || SENDER_FLAG || "
                             "ADMIN_FLAG, LAST_OPERATE <> 'D' FROM UNI_ORG_TYPE WHERE UNION_ID="_s +
                             TheGroup + u" ORDER BY ORG_TYPE_NAME"_s),
                 (QStringList{u"配送企业0010/1"_s, u"采购医院1000/1"_s}));

        AddFiftyHospitals(screen);
        // The opener has loaded them.
        QCOMPARE(Grid(screen, u"GridOrg"_s).model()->rowCount(), 50);
        QCOMPARE(site.Select(u"SELECT count(DISTINCT ORG_ID) || '/' || count(DISTINCT ORG_TYPE_ID) "
                             "FROM UNI_ORG WHERE LAST_OPERATE <> 'D' AND UNION_ID="_s +
                             TheGroup),
                 QStringList{u"50/1"_s});

        SetAuditRule(screen);
        QCOMPARE(site.Select(u"SELECT RULE_CODE, RULE_VALUE = '1' OR RULE_VALUE IN (SELECT "
                             "ORG_ID FROM UNI_ORG WHERE UNION_ID=R.UNION_ID) FROM UNI_UNION_RULE R "
                             "WHERE UNION_ID="_s +
                             TheGroup + u" ORDER BY RULE_CODE"_s),
                 (QStringList{u"UNI_JTCGDSH/1"_s, u"UNI_JTCGDSH_ORGID/1"_s}));

        QStringList history = MoveProducts(screen);
        history.sort();
        // In, out and in again.
        QCOMPARE(history, (QStringList{u"系统管理员/新增"_s, u"系统管理员/新增"_s,
                                       u"系统管理员/逻辑删除"_s}));
        QCOMPARE(site.Select(u"SELECT count(*) FROM UNI_PRODUCT WHERE LAST_OPERATE <> 'D' AND "
                             "UNION_ID="_s +
                             TheGroup),
                 QStringList{u"3"_s});
        // Everything that was done stands in the log, under the operator's name.
        QCOMPARE(site.Select(u"SELECT count(*) FROM SYS_UPDATE_LOG WHERE TABLE_NAME='UNI_PRODUCT' "
                             "AND USER_NAME='系统管理员' AND KEY_ID1="_s +
                             TheGroup),
                 QStringList{u"5"_s});
    }
};

QTEST_MAIN(GroupStoryTest)
#include "GroupStoryTest.moc"
