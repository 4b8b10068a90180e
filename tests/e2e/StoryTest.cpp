#include "e2e/Site.h"
#include "support/ScreenDriver.h"

#include <QAbstractButton>
#include <QLineEdit>
#include <QTest>
#include <QTreeView>

using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QString EditedGroup = u"SELECT %1 FROM UNI_UNION WHERE UNION_CODE='000101'"_s;
/// What this test had logged; the sample data's own history ends long ago.
const QString LogOfEditedGroup =
    u"SELECT USER_NAME || '/' || OPTION_TYPE FROM SYS_UPDATE_LOG WHERE TABLE_NAME='UNI_UNION' AND "
    "KEY_ID1=(SELECT UNION_ID FROM UNI_UNION WHERE UNION_CODE='000101') AND "
    "OPTION_DATE > "_s +
    BeforeTheStory();

QAbstractItemModel &TreeModel(QWidget *screen)
{
    return *Child<QTreeView>(screen, u"TreeGrid"_s)->model();
}

} // namespace

/// Search a group, open it, pick a region in the real region tree, save: the row is in the
/// database, once, with its log entry.
class StoryTest : public QObject
{
    Q_OBJECT

private slots:
    void MenuHasTheNineScreens()
    {
        Site site;
        QStringList codes;
        for (const auto &form : site.Window().Forms())
            codes << form.code;
        QCOMPARE(codes.size(), 9);
        QCOMPARE(codes.first(), u"ADMIN01"_s);
        QCOMPARE(codes.last(), u"ADMIN09"_s);
    }

    void GroupIsFoundChangedAndStored()
    {
        Site site;
        QWidget *screen = site.OpenScreen(u"ADMIN01"_s);
        Type(screen, u"edInfo"_s, u"杭州市"_s);
        Press(screen, u"edInfo"_s, Qt::Key_Return);
        QVERIFY(TreeModel(screen).rowCount() >= 1);
        QCOMPARE(TreeModel(screen).index(0, 0).data().toString(), u"000101"_s);
        const QString before = site.Select(EditedGroup.arg(u"UNION_NAME"_s)).value(0);

        ModalVisitor editor([&](QWidget *dialog) {
            QCOMPARE(Child<QLineEdit>(dialog, u"edUnion_NAME"_s)->text(), before);
            Type(dialog, u"edUnion_NAME"_s, u"杭州市药品采购联合体"_s);
            ModalVisitor picker([](QWidget *regions) {
                Type(regions, u"edInformation"_s, u"浙江省宁波市"_s);
                Press(regions, u"edInformation"_s, Qt::Key_Return);
                Trigger(regions, u"ActionSelect"_s);
            });
            PressInside(dialog, u"edRegionName"_s);
            QCOMPARE(Child<QLineEdit>(dialog, u"edRegionName"_s)->text(), u"浙江省宁波市"_s);
            DoubleClick(Child<QWidget>(dialog, u"BtnSave"_s));
        });
        Trigger(screen, u"UniModify"_s);
        QVERIFY(editor.Visited());

        QCOMPARE(site.Select(EditedGroup.arg(u"UNION_NAME"_s)),
                 QStringList{u"杭州市药品采购联合体"_s});
        QCOMPARE(site.Select(u"SELECT FULL_NAME FROM BAS_REGION WHERE REGION_ID=("_s +
                             EditedGroup.arg(u"REGION_ID"_s) + u')'),
                 QStringList{u"浙江省宁波市"_s});
        QCOMPARE(site.Select(LogOfEditedGroup), QStringList{u"系统管理员/2"_s});
        const QAbstractItemModel &tree = TreeModel(screen);
        QCOMPARE(tree.index(0, 1).data().toString(), u"杭州市药品采购联合体"_s);
        QCOMPARE(tree.index(0, 2).data().toString(), u"浙江省宁波市"_s);
    }

    void NewTopLevelGroupTakesTheProposedCode()
    {
        Site site;
        QWidget *screen = site.OpenScreen(u"ADMIN01"_s);
        Trigger(screen, u"ActionQuery"_s);
        QString proposed;
        ModalVisitor editor([&](QWidget *dialog) {
            proposed = Child<QLineEdit>(dialog, u"edUnion_CODE"_s)->text();
            Type(dialog, u"edUnion_NAME"_s, u"西北地区采购联合体"_s);
            ModalVisitor picker([](QWidget *organisations) {
                // One that leads no group yet.
                Type(organisations, u"edOrg"_s, u"卫生院"_s);
                Press(organisations, u"edOrg"_s, Qt::Key_Return);
                Click(organisations, u"BtnSelect"_s);
            });
            PressInside(dialog, u"edMasterOrgName"_s);
            Click(dialog, u"BtnSave"_s);
        });
        Trigger(screen, u"UniNew"_s);
        QCOMPARE(proposed, u"0009"_s);
        QCOMPARE(site.Select(u"SELECT UNION_NAME || COALESCE(PARENT_ID,'-') FROM UNI_UNION WHERE "
                             "UNION_CODE='0009' AND LAST_OPERATE<>'D'"_s),
                 QStringList{u"西北地区采购联合体-"_s});
    }
};

QTEST_MAIN(StoryTest)
#include "StoryTest.moc"
