#include "e2e/Hands.h"
#include "e2e/Site.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QTabWidget>
#include <QTest>

#include <memory>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QString KeepGoing = u"保存成功，是否继续维护库存设置？"_s;
const QString Viewer = u"允许查看机构"_s;

QString IdOf(const Site &site, const QString &orgName)
{
    return site.Select(u"SELECT ORG_ID FROM BAS_ORG WHERE ORG_NAME='%1'"_s.arg(orgName)).value(0);
}

/// "name/kind" of what was logged about the organisation since the story began, oldest first.
QStringList Log(const Site &site, const QString &table, const QString &orgId)
{
    return site.Select(u"SELECT USER_NAME||'/'||OPTION_TYPE FROM SYS_UPDATE_LOG WHERE TABLE_NAME="
                       "'%1' AND KEY_ID1='%2' AND OPTION_DATE > %3"
                       " ORDER BY CAST(LOG_ID AS INTEGER)"_s.arg(table, orgId, BeforeTheStory()));
}

/// The permissions' screen, and one owner of the sample database whose stock is opened.
class StockStory
{
public:
    explicit StockStory(Site &all)
        : site(all)
        , screen(site.OpenScreen(u"ADMIN05"_s))
        , ownerId(IdOf(site, owner))
    {
    }

    void Find(const QString &text)
    {
        Type(screen, u"edInfo"_s, text);
        Press(screen, u"edInfo"_s, Qt::Key_Return);
    }
    QTableView &Listed() { return Grid(screen, u"GridOrgSetView"_s); }
    /// The owner's viewers on screen; the search finds it as a viewer, too.
    QStringList ListedViewers()
    {
        QStringList viewers;
        for (int row = 0; row < Listed().model()->rowCount(); ++row) {
            if (Text(Listed(), row, u"本机构"_s) == owner)
                viewers << Text(Listed(), row, Viewer);
        }
        return viewers;
    }
    int RowOf(const QString &viewer)
    {
        for (int row = 0; row < Listed().model()->rowCount(); ++row) {
            if (Text(Listed(), row, u"本机构"_s) == owner && Text(Listed(), row, Viewer) == viewer)
                return row;
        }
        FailTest(u"not in the list: "_s + viewer);
    }
    /// "viewer/flag" of the owner's live permissions.
    QStringList Stored() const
    {
        return site.Select(u"SELECT B.ORG_NAME||'/'||S.SHOW_QTY FROM STK_ORG_SET S, BAS_ORG B WHERE"
                           " S.ORG_ID=B.ORG_ID AND S.LAST_OPERATE<>'D' AND S.OWNER_ORGID='%1'"
                           " ORDER BY 1"_s.arg(ownerId));
    }
    QString Colleague(const QString &viewer, const QString &operation)
    {
        return site.PostAsColleague(u"com.business.stock.StockManager"_s, u"stockOrgManager"_s,
                                    {{u"OWNER_ORGID"_s, ownerId},
                                     {u"ORG_ID"_s, IdOf(site, viewer)},
                                     {u"SHOW_QTY"_s, u"0"_s},
                                     {u"LAST_OPERATE"_s, operation}});
    }
    /// In the addition dialog: the owner is picked and its candidates are on screen.
    void FindCandidates(QWidget *dialog, const QString &name) const
    {
        ModalVisitor picker([&](QWidget *organisations) {
            Type(organisations, u"edOrg"_s, name);
            Press(organisations, u"edOrg"_s, Qt::Key_Return);
            Click(organisations, u"BtnSelect"_s);
        });
        PressInside(dialog, u"edOwnerOrg"_s);
        Click(dialog, u"btnQuery"_s);
    }

    Site &site;
    QWidget *screen;
    const QString owner = u"资阳昶宁医药有限公司"_s;
    QString ownerId;
};

void Tick(QTableView &grid, const QList<int> &rows)
{
    for (const int row : rows)
        ClickCell(grid, row, u"选择"_s);
}

/// The rules' screen, and what the database holds.
class RuleStory
{
public:
    explicit RuleStory(Site &all)
        : site(all)
        , screen(site.OpenScreen(u"ADMIN06"_s))
    {
    }

    /// Finds the organisation and loads its rules with a click.
    void Load(const QString &orgName)
    {
        Type(screen, u"edInfo"_s, orgName);
        Press(screen, u"edInfo"_s, Qt::Key_Return);
        ClickCell(Grid(screen, u"GridRuleView"_s), 0, u"机构名称"_s);
        QCOMPARE(Child<QLabel>(screen, u"lbOrgName"_s)->text(), orgName);
    }
    bool Checked(const QString &box) const
    {
        return Child<QAbstractButton>(screen, box)->isChecked();
    }
    void Set(const QString &box, bool on) const
    {
        auto *button = Child<QAbstractButton>(screen, box);
        if (button->isChecked() != on)
            QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
    }
    QString Edit(const QString &name) const { return Child<QLineEdit>(screen, name)->text(); }
    QString State() const { return Child<QLabel>(screen, u"lbOrgRule"_s)->text(); }
    QString Save() const
    {
        return Answer(u"Ok"_s, [&] { Trigger(screen, u"ActSave"_s); });
    }
    /// "CODE=VALUE" of the organisation's rules.
    QStringList Stored(const QString &orgName) const
    {
        return site.Select(
            u"SELECT RULE_CODE||'='||COALESCE(RULE_VALUE,'') FROM UNI_ORG_RULE WHERE"
            " ORG_ID='%1' AND LAST_OPERATE<>'D' ORDER BY RULE_CODE"_s.arg(IdOf(site, orgName)));
    }

    Site &site;
    QWidget *screen;
};

} // namespace

/// Stock opened to others and taken back, and rules set and found again, from the screens to the
/// database, with a colleague at work on the same records.
class StockRuleStoryTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { site_ = std::make_unique<Site>(); }
    void cleanupTestCase() { site_.reset(); }

    void StockIsOpenedSeenAndTakenBack()
    {
        StockStory story(*site_);
        QStringList stored = story.Stored();
        QCOMPARE(stored.size(), 17);

        // Two see whether there is stock, one how much; one of the two a colleague has let see it.
        QStringList opened;
        InDialog(story.screen, u"ActAdd"_s, [&](QWidget *dialog) {
            story.FindCandidates(dialog, story.owner);
            QTableView &candidates = Grid(dialog, u"GridOrgView"_s);
            QCOMPARE(candidates.model()->rowCount(), 20);
            QVERIFY(!Texts(candidates, u"机构名称"_s).contains(story.owner));
            opened = Texts(candidates, u"机构名称"_s).mid(0, 3);
            Tick(candidates, {0, 1});
            QCOMPARE(story.Colleague(opened[1], u"1"_s), u"1"_s);
            QCOMPARE(Answer(u"Yes"_s, [&] { Click(dialog, u"cxButton1"_s); }), KeepGoing);
            QCOMPARE(candidates.model()->rowCount(), 0);

            // On with it: the owner is still there, and so are the other candidates.
            Click(dialog, u"btnQuery"_s);
            QCOMPARE(Text(candidates, 0, u"机构名称"_s), opened[2]);
            Tick(candidates, {0});
            Click(dialog, u"cbType2"_s);
            QCOMPARE(Answer(u"No"_s, [&] { Click(dialog, u"cxButton1"_s); }), KeepGoing);
            QVERIFY(!dialog->isVisible());
        });
        stored << opened[0] + u"/0"_s << opened[1] + u"/0"_s << opened[2] + u"/1"_s;
        stored.sort();
        QStringList now = story.Stored();
        now.sort();
        QCOMPARE(now, stored);
        QCOMPARE(
            Log(story.site, u"STK_ORG_SET"_s, story.ownerId),
            QStringList({story.site.Colleague() + u"/1"_s, u"系统管理员/1"_s, u"系统管理员/1"_s}));
        QCOMPARE(story.Listed().model()->rowCount(), 50); // listed again from the first page

        // The list shows it; two are taken back, one of them by the colleague at the same time.
        story.Find(story.owner);
        QCOMPARE(story.ListedViewers().size(), 20);
        const int last = story.Listed().model()->rowCount() - 1;
        QCOMPARE(Text(story.Listed(), last, u"序号"_s), QString::number(last + 1));
        QCOMPARE(Text(story.Listed(), story.RowOf(opened[2]), u"库存开放标志"_s), u"数值"_s);
        for (const bool isFaster : {false, true}) {
            const QString &viewer = opened[isFaster ? 2 : 0];
            story.Listed().setCurrentIndex(Cell(story.Listed(), story.RowOf(viewer), Viewer));
            if (isFaster)
                QCOMPARE(story.Colleague(viewer, u"D"_s), u"1"_s);
            QCOMPARE(Answer(u"Yes"_s, [&] { Trigger(story.screen, u"ActDel"_s); }),
                     u"确定要删除该条记录吗？"_s);
        }
        QCOMPARE(story.Stored().size(), 18);
        QCOMPARE(story.ListedViewers().size(), 18);
        story.Find(story.owner);
        QCOMPARE(story.ListedViewers().size(), 18);
        QVERIFY(story.ListedViewers().contains(opened[1]));
        QCOMPARE(Log(story.site, u"STK_ORG_SET"_s, story.ownerId).mid(3),
                 QStringList({u"系统管理员/5"_s, story.site.Colleague() + u"/5"_s}));
    }

    void CandidateThatIsDeletedMeanwhileRefusesTheWholeSave()
    {
        StockStory story(*site_);
        const QStringList stored = story.Stored();
        InDialog(story.screen, u"ActAdd"_s, [&](QWidget *dialog) {
            story.FindCandidates(dialog, story.owner);
            QTableView &candidates = Grid(dialog, u"GridOrgView"_s);
            Tick(candidates, {0, 1});
            const QString gone = IdOf(story.site, Text(candidates, 1, u"机构名称"_s));
            story.site.Change(u"UPDATE BAS_ORG SET LAST_OPERATE='D' WHERE ORG_ID='%1'"_s.arg(gone));
            QCOMPARE(Answer(u"Ok"_s, [&] { Click(dialog, u"cxButton1"_s); }), u"保存失败！"_s);
            QCOMPARE(candidates.model()->rowCount(), 20);
            // Without it the other one is stored.
            Tick(candidates, {1});
            QCOMPARE(Answer(u"No"_s, [&] { Click(dialog, u"cxButton1"_s); }), KeepGoing);
        });
        QCOMPARE(story.Stored().size(), stored.size() + 1);
    }

    void OwnerWithoutCandidatesHasAnEmptyList()
    {
        StockStory story(*site_);
        InDialog(story.screen, u"ActAdd"_s, [&](QWidget *dialog) {
            story.FindCandidates(dialog, u"中卫淳元医药有限公司"_s);
            QCOMPARE(Grid(dialog, u"GridOrgView"_s).model()->rowCount(), 0);
            Click(dialog, u"cxButton1"_s); // says and sends nothing
            Click(dialog, u"cxButton2"_s);
        });
        QCOMPARE(Log(story.site, u"STK_ORG_SET"_s, IdOf(story.site, u"中卫淳元医药有限公司"_s)),
                 QStringList());
    }

    void RulesAreSetAndFoundAgainWithTheSuperiorOfTheAffiliation()
    {
        RuleStory story(*site_);
        // An organisation without rules, whose superior the affiliation knows.
        const QString org =
            story.site
                .Select(
                    u"SELECT B.ORG_NAME FROM BAS_ORG_AFFILIATION A, BAS_ORG B WHERE"
                    " A.ORG_ID=B.ORG_ID AND A.PARENT_ORGID IS NOT NULL AND A.TREE_LEVEL='4'"
                    " AND A.ORG_ID NOT IN (SELECT ORG_ID FROM UNI_ORG_RULE) ORDER BY B.ORG_ID"_s)
                .value(0);
        const QString superior =
            story.site
                .Select(u"SELECT P.ORG_NAME FROM BAS_ORG_AFFILIATION A, BAS_ORG P WHERE"
                        " P.ORG_ID=A.PARENT_ORGID AND A.ORG_ID='%1'"_s.arg(IdOf(story.site, org)))
                .value(0);
        story.Load(org);
        QCOMPARE(story.State(), u"未设置"_s);
        story.Set(u"ORG_SJJGSH"_s, true);
        PressInside(story.screen, u"ORG_SJJGSH_ID"_s);
        QCOMPARE(story.Edit(u"ORG_SJJGSH_ID"_s), superior);
        story.Set(u"ORG_DDYXQ"_s, true);
        Type(story.screen, u"ORG_DDYXQ_TS"_s, u"45"_s);
        story.Set(u"rbHPTXAdd"_s, true);
        QCOMPARE(story.Save(), u"设置成功！"_s);
        QCOMPARE(story.State(), u"已设置"_s);
        const QStringList expected{u"ORG_DDYXQ=1"_s, u"ORG_DDYXQ_TS=45"_s, u"ORG_HPTX=1"_s,
                                   u"ORG_SJJGSH=1"_s,
                                   u"ORG_SJJGSH_ORGID="_s + IdOf(story.site, superior)};
        QCOMPARE(story.Stored(org), expected);
        QCOMPARE(Log(story.site, u"UNI_ORG_RULE"_s, IdOf(story.site, org)),
                 QStringList(5, u"系统管理员/1"_s));

        // Another organisation in between, then tomorrow: everything is there again.
        story.Load(u"温州市第二人民医院"_s);
        QVERIFY(!story.Checked(u"ORG_SJJGSH"_s));
        QVERIFY(story.Edit(u"ORG_SJJGSH_ID"_s).isEmpty());
        story.screen->close();
        story.screen = story.site.OpenScreen(u"ADMIN06"_s);
        story.Load(org);
        QCOMPARE(story.State(), u"已设置"_s);
        QVERIFY(story.Checked(u"ORG_SJJGSH"_s));
        QCOMPARE(story.Edit(u"ORG_SJJGSH_ID"_s), superior);
        QVERIFY(story.Checked(u"ORG_DDYXQ"_s));
        QCOMPARE(story.Edit(u"ORG_DDYXQ_TS"_s), u"45"_s);
        QVERIFY(story.Checked(u"rbHPTXAdd"_s));

        // Saved as it is: nothing changes. Switched off: the superior stays on file.
        QCOMPARE(story.Save(), u"设置成功！"_s);
        QCOMPARE(Log(story.site, u"UNI_ORG_RULE"_s, IdOf(story.site, org)).size(), 5);
        story.Set(u"ORG_SJJGSH"_s, false);
        QCOMPARE(story.Save(), u"设置成功！"_s);
        QVERIFY(story.Stored(org).contains(u"ORG_SJJGSH=0"_s));
        QVERIFY(story.Stored(org).contains(expected.last()));
        QCOMPARE(Log(story.site, u"UNI_ORG_RULE"_s, IdOf(story.site, org)).mid(5),
                 QStringList{u"系统管理员/2"_s});
    }

    /// A place given in 机构从属关系 is what 机构规则设置 proposes.
    void SuperiorGivenInTheAffiliationIsProposedSavedAndFoundAgain()
    {
        RuleStory story(*site_);
        const QString org = u"温州市第二人民医院"_s;
        story.Load(org);
        story.Set(u"ORG_SJJGSH"_s, true);
        QCOMPARE(Answer(u"Ok"_s, [&] { PressInside(story.screen, u"ORG_SJJGSH_ID"_s); }),
                 u"不存在上级审核机构！"_s);

        QWidget *affiliation = story.site.OpenScreen(u"ADMIN07"_s);
        const QString superior = u"浙江省药品集中采购服务中心"_s;
        Type(affiliation, u"edInfo"_s, superior);
        Press(affiliation, u"edInfo"_s, Qt::Key_Return);
        InDialog(affiliation, u"ActionChildNew"_s, [&](QWidget *dialog) {
            QCOMPARE(Child<QLineEdit>(dialog, u"edParentName"_s)->text(), superior);
            ModalVisitor picker([&](QWidget *organisations) {
                Type(organisations, u"edOrg"_s, org);
                Press(organisations, u"edOrg"_s, Qt::Key_Return);
                Click(organisations, u"BtnSelect"_s);
            });
            PressInside(dialog, u"edOrgName"_s);
            Click(dialog, u"BtnSave"_s);
            Click(dialog, u"BtnClose"_s);
        });

        story.site.Window().Tabs()->setCurrentWidget(story.screen);
        PressInside(story.screen, u"ORG_SJJGSH_ID"_s);
        QCOMPARE(story.Edit(u"ORG_SJJGSH_ID"_s), superior);
        QCOMPARE(story.Save(), u"设置成功！"_s);
        QVERIFY(story.Stored(org).contains(u"ORG_SJJGSH_ORGID="_s + IdOf(story.site, superior)));
        story.Load(u"杭州市中医院"_s);
        story.Load(org);
        QVERIFY(story.Checked(u"ORG_SJJGSH"_s));
        QCOMPARE(story.Edit(u"ORG_SJJGSH_ID"_s), superior);
    }

    void OrganisationThatIsDeletedMeanwhileIsNotSaved()
    {
        RuleStory story(*site_);
        const QString org = u"杭州市中医院"_s;
        story.Load(org);
        const QStringList stored = story.Stored(org);
        story.site.Change(u"UPDATE BAS_ORG SET LAST_OPERATE='D' WHERE ORG_NAME='%1'"_s.arg(org));
        Type(story.screen, u"ORG_DDYXQ_TS"_s, u"9"_s);
        QCOMPARE(story.Save(), u"设置失败！"_s);
        QCOMPARE(story.Stored(org), stored);
        QCOMPARE(story.Edit(u"ORG_DDYXQ_TS"_s), u"9"_s);
    }

private:
    std::unique_ptr<Site> site_; // one for all: each test has records of its own
};

QTEST_MAIN(StockRuleStoryTest)
#include "StockRuleStoryTest.moc"
