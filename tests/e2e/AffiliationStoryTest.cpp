#include "e2e/Hands.h"
#include "e2e/Site.h"

#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QTreeView>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QString Manager = u"com.business.basedata.OrgAffiliationManager"_s;

QString EditText(const QWidget *dialog, const QString &name)
{
    return Child<QLineEdit>(dialog, name)->text();
}

/// The tree of superiors, found, and what the database holds of it.
class Story
{
public:
    Story()
        : screen(site.OpenScreen(u"ADMIN07"_s))
        , tree(*Child<QTreeView>(screen, u"TreeGrid"_s))
    {
        Find({});
    }

    void Find(const QString &text)
    {
        Type(screen, u"edInfo"_s, text);
        Press(screen, u"edInfo"_s, Qt::Key_Return);
    }
    /// The row with this code becomes the focused one, opened like those above it.
    void Focus(const QString &code)
    {
        tree.expandAll();
        const auto found = tree.model()->match(tree.model()->index(0, 0), Qt::DisplayRole, code, 1,
                                               Qt::MatchExactly | Qt::MatchRecursive);
        if (found.isEmpty())
            FailTest(u"no row with the code "_s + code);
        tree.setCurrentIndex(found.first());
    }
    QString FocusedName() const { return tree.currentIndex().siblingAtColumn(3).data().toString(); }
    QString Count() const { return Child<QLabel>(screen, u"LabelCout"_s)->text(); }

    /// Takes the first organisation with `text` in its name that stands nowhere; its name.
    QString Choose(QWidget *dialog, const QString &text) const
    {
        const QString name =
            site.Select(u"SELECT ORG_NAME FROM BAS_ORG WHERE LAST_OPERATE<>'D' AND ORG_NAME LIKE "
                        "'%%1%' AND ORG_ID NOT IN (SELECT ORG_ID FROM BAS_ORG_AFFILIATION WHERE "
                        "ENABLE_FLAG<>'D') ORDER BY ORG_ID"_s.arg(text))
                .value(0);
        ModalVisitor picker([&](QWidget *organisations) {
            Type(organisations, u"edOrg"_s, name);
            Press(organisations, u"edOrg"_s, Qt::Key_Return);
            Click(organisations, u"BtnSelect"_s);
        });
        PressInside(dialog, u"edOrgName"_s);
        return name;
    }
    /// "code name superior's name" of the live rows whose codes begin so.
    QStringList Stored(const QString &code) const
    {
        return site.Select(
            u"SELECT A.TREE_CODE||' '||B.ORG_NAME||' '||COALESCE(C.ORG_NAME,'-') FROM "
            "BAS_ORG_AFFILIATION A JOIN BAS_ORG B ON B.ORG_ID=A.ORG_ID LEFT JOIN BAS_ORG C ON "
            "C.ORG_ID=A.PARENT_ORGID WHERE A.ENABLE_FLAG<>'D' AND A.TREE_CODE LIKE '%1%' "
            "ORDER BY 1"_s.arg(code));
    }
    /// "name/kind" of what was logged since the story began, oldest first.
    QStringList Log() const
    {
        return site.Select(u"SELECT USER_NAME||'/'||OPTION_TYPE FROM SYS_UPDATE_LOG WHERE "
                           "TABLE_NAME='BAS_ORG_AFFILIATION' ORDER BY CAST(LOG_ID AS INTEGER)"_s);
    }
    QString IdOf(const QString &orgName) const
    {
        return site.Select(u"SELECT ORG_ID FROM BAS_ORG WHERE ORG_NAME='%1'"_s.arg(orgName))
            .value(0);
    }

    Site site;
    QWidget *screen;
    QTreeView &tree;
};

} // namespace

/// The tree of superiors from the screen to the database: places given, exchanged and taken back,
/// with a colleague at work on the same ones.
class AffiliationStoryTest : public QObject
{
    Q_OBJECT

private slots:
    void BranchIsPlantedExchangedAndTakenDown()
    {
        Story story;
        QCOMPARE(story.Count(), u"共有：400条记录。"_s);
        QVERIFY(story.Log().isEmpty());

        // A new root: the code that a removed row has left free.
        QString root;
        InDialog(story.screen, u"ActionNew"_s, [&](QWidget *dialog) {
            QCOMPARE(EditText(dialog, u"edTREE_CODE"_s), u"0013"_s);
            root = story.Choose(dialog, u"医院"_s);
            Click(dialog, u"BtnSave"_s);
            QCOMPARE(EditText(dialog, u"edTREE_CODE"_s), u"0014"_s);
            Click(dialog, u"BtnClose"_s);
        });
        QCOMPARE(story.Stored(u"0013"_s), QStringList{u"0013 "_s + root + u" -"_s});
        QCOMPARE(story.FocusedName(), root);
        QCOMPARE(story.Count(), u"共有：401条记录。"_s);

        // Two children out of one dialog.
        QStringList children;
        InDialog(story.screen, u"ActionChildNew"_s, [&](QWidget *dialog) {
            QCOMPARE(EditText(dialog, u"edParentName"_s), root);
            for (const QString &code : {u"01"_s, u"02"_s}) {
                QCOMPARE(EditText(dialog, u"edTREE_CODE"_s), code);
                children << story.Choose(dialog, u"医院"_s);
                Click(dialog, u"BtnSave"_s);
            }
            Click(dialog, u"BtnClose"_s);
        });
        QCOMPARE(story.Stored(u"0013"_s),
                 QStringList({u"0013 "_s + root + u" -"_s, u"001301 "_s + children[0] + u' ' + root,
                              u"001302 "_s + children[1] + u' ' + root}));

        // Another organisation takes the root, a minute after it was inserted: they follow.
        story.Focus(u"0013"_s);
        QVERIFY(!ActionEnabled(story.screen, u"ActionDelete"_s));
        QString other;
        InDialog(story.screen, u"ActionModify"_s, [&](QWidget *dialog) {
            QVERIFY(Child<QLineEdit>(dialog, u"edTREE_CODE"_s)->isReadOnly());
            other = story.Choose(dialog, u"药房"_s);
            Click(dialog, u"BtnSave"_s);
        });
        QCOMPARE(story.Stored(u"0013"_s), QStringList({u"0013 "_s + other + u" -"_s,
                                                       u"001301 "_s + children[0] + u' ' + other,
                                                       u"001302 "_s + children[1] + u' ' + other}));
        QCOMPARE(story.tree.model()->rowCount(story.tree.currentIndex().siblingAtColumn(0)), 2);

        // Its children go first.
        for (const QString &code : {u"001301"_s, u"001302"_s, u"0013"_s}) {
            story.Focus(code);
            QCOMPARE(Answer(u"Yes"_s, [&] { Trigger(story.screen, u"ActionDelete"_s); }),
                     u"是否真的要删除该数据？"_s);
        }
        QVERIFY(story.Stored(u"0013"_s).isEmpty());
        QCOMPARE(story.Count(), u"共有：400条记录。"_s);
        const QString who = u"系统管理员/"_s;
        QCOMPARE(story.Log(),
                 QStringList({who + u'1', who + u'1', who + u'1', who + u'2', who + u'2',
                              who + u'2', who + u'5', who + u'5', who + u'5'}));
    }

    void ColleaguesAreHeeded()
    {
        Story story;
        story.Focus(u"000201070101"_s);
        QCOMPARE(Answer(u"Ok"_s, [&] { Trigger(story.screen, u"ActionChildNew"_s); }),
                 u"不能添加下级！"_s);

        // A colleague places an organisation below one that this list shows without children.
        story.Focus(u"0011"_s);
        const QString top = story.FocusedName();
        QVERIFY(ActionEnabled(story.screen, u"ActionDelete"_s));
        const QString child = story.site
                                  .Select(u"SELECT ORG_ID FROM BAS_ORG WHERE LAST_OPERATE<>"
                                          "'D' AND ORG_ID NOT IN (SELECT ORG_ID FROM "
                                          "BAS_ORG_AFFILIATION) ORDER BY ORG_ID DESC"_s)
                                  .value(0);
        QCOMPARE(story.site.PostAsColleague(Manager, u"insertUpdateOrgAffiliation"_s,
                                            {{u"ID"_s, {}},
                                             {u"ORG_ID"_s, child},
                                             {u"PARENT_ORGID"_s, story.IdOf(top)},
                                             {u"TREE_CODE"_s, u"001101"_s},
                                             {u"TREE_LEVEL"_s, u"2"_s}}),
                 u"1"_s);
        QCOMPARE(Answers({u"Yes"_s, u"Ok"_s}, [&] { Trigger(story.screen, u"ActionDelete"_s); }),
                 QStringList({u"是否真的要删除该数据？"_s, u"存在下级不能删除数据！"_s}));
        QCOMPARE(story.FocusedName(), top);
        QCOMPARE(story.Stored(u"0011"_s).size(), 2);

        // Its code is taken, the organisation stands already, and one is deleted meanwhile.
        InDialog(story.screen, u"ActionChildNew"_s, [&](QWidget *dialog) {
            QCOMPARE(EditText(dialog, u"edTREE_CODE"_s), u"02"_s);
            Type(dialog, u"edTREE_CODE"_s, u"01"_s);
            const QString name = story.Choose(dialog, u"医院"_s);
            const auto save = [&] { return Answer(u"Ok"_s, [&] { Click(dialog, u"BtnSave"_s); }); };
            QCOMPARE(save(), u"编码重复！"_s);
            Type(dialog, u"edTREE_CODE"_s, u"03"_s);
            QCOMPARE(story.site.PostAsColleague(Manager, u"insertUpdateOrgAffiliation"_s,
                                                {{u"ID"_s, {}},
                                                 {u"ORG_ID"_s, story.IdOf(name)},
                                                 {u"PARENT_ORGID"_s, story.IdOf(top)},
                                                 {u"TREE_CODE"_s, u"001102"_s},
                                                 {u"TREE_LEVEL"_s, u"2"_s}}),
                     u"1"_s);
            QCOMPARE(save(), u"已存在该机构，不能保存！"_s);
            const QString gone = story.Choose(dialog, u"医院"_s);
            story.site.Change(
                u"UPDATE BAS_ORG SET LAST_OPERATE='D' WHERE ORG_NAME='%1'"_s.arg(gone));
            QCOMPARE(save(), u"保存失败！"_s);
            QCOMPARE(EditText(dialog, u"edOrgName"_s), gone); // as it was edited
            Click(dialog, u"BtnClose"_s);
        });
        QCOMPARE(story.Stored(u"0011"_s).size(), 3);

        // What the colleague deleted goes from this list, too.
        story.Focus(u"0012"_s);
        QCOMPARE(story.site.PostAsColleague(
                     Manager, u"deleteOrgAffiliation"_s,
                     {{u"ORG_ID"_s, story.IdOf(story.FocusedName())}, {u"ENABLE_FLAG"_s, u"D"_s}}),
                 u"1"_s);
        Answer(u"Yes"_s, [&] { Trigger(story.screen, u"ActionDelete"_s); });
        QCOMPARE(story.Count(), u"共有：399条记录。"_s);
        QCOMPARE(story.Log(),
                 QStringList({story.site.Colleague() + u"/1"_s, story.site.Colleague() + u"/1"_s,
                              story.site.Colleague() + u"/5"_s}));
    }

    void FullBranchIsProposedADoubleZero()
    {
        Story story;
        story.Focus(u"0001"_s);
        InDialog(story.screen, u"ActionChildNew"_s, [&](QWidget *dialog) {
            QCOMPARE(EditText(dialog, u"edTREE_CODE"_s), u"00"_s);
            Click(dialog, u"BtnClose"_s);
        });
        story.Find(u"药采中心"_s);
        QCOMPARE(story.Count(), u"共有：11条记录。"_s);
    }
};

QTEST_MAIN(AffiliationStoryTest)
#include "AffiliationStoryTest.moc"
