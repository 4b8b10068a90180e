#include "e2e/Hands.h"
#include "e2e/Site.h"

#include <QTest>
#include <QTreeView>

#include <memory>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QString TheGroup = u"(SELECT UNION_ID FROM UNI_UNION WHERE UNION_CODE='000101')"_s;
const QString Manager = u"com.business.admin.UniUser"_s;

QString IdOf(const QString &userCode)
{
    return u"(SELECT USER_ID FROM USR_USER WHERE USER_CODE='"_s + userCode + u"')"_s;
}

/// The group users' screen, over the group 000101.
class Story
{
public:
    Story()
        : screen(site.OpenScreen(u"ADMIN03"_s))
        , name(
              site.Select(u"SELECT UNION_NAME FROM UNI_UNION WHERE UNION_CODE='000101'"_s).value(0))
    {
    }

    /// Focuses the group, as the operator finds it.
    void FindGroup()
    {
        Type(screen, u"edInfo"_s, u"000101"_s);
        Press(screen, u"edInfo"_s, Qt::Key_Return);
        const auto *tree = Child<QTreeView>(screen, u"TreeGrid"_s);
        QCOMPARE(tree->currentIndex().siblingAtColumn(1).data().toString(), name);
    }

    QTableView &Listed() { return Grid(screen, u"GridUserView"_s); }
    QStringList ListedCodes() { return Texts(Listed(), u"登录名"_s); }
    /// The list shows those whom the database holds to be in the group.
    bool ListIsWhatIsStored(const QString &group = TheGroup)
    {
        QStringList listed = ListedCodes();
        QStringList stored = site.Select(u"SELECT U.USER_CODE FROM UNI_USER_UNION A, USR_USER U"
                                         " WHERE A.USER_ID=U.USER_ID AND A.LAST_OPERATE<>'D' AND "
                                         "A.UNION_ID="_s +
                                         group);
        listed.sort();
        stored.sort();
        return listed == stored;
    }
    /// "name/kind" of the user's changes in the group that this test made, oldest first.
    QStringList Log(const QString &userCode)
    {
        return site.Select(u"SELECT USER_NAME||'/'||OPTION_TYPE FROM SYS_UPDATE_LOG WHERE"
                           " TABLE_NAME='UNI_USER_UNION' AND OPTION_DATE > "_s +
                           BeforeTheStory() + u" AND KEY_ID1="_s + IdOf(userCode) +
                           u" AND KEY_ID2="_s + TheGroup + u" ORDER BY CAST(LOG_ID AS INTEGER)"_s);
    }
    /// What the other operator does to the user and this group meanwhile.
    QString Colleague(const QString &method, const QString &userCode)
    {
        return site.PostAsColleague(
            Manager, method,
            {{u"USER_ID"_s, site.Select(u"SELECT "_s + IdOf(userCode)).value(0)},
             {u"UNION_ID"_s, site.Select(u"SELECT "_s + TheGroup).value(0)}});
    }
    /// Opens the picker with candidates of hospitals on screen.
    void InPicker(const std::function<void(QWidget *, QTableView &)> &visit)
    {
        InDialog(screen, u"ActionNew"_s, [&](QWidget *picker) {
            Type(picker, u"edOrg"_s, u"医院"_s);
            Press(picker, u"edOrg"_s, Qt::Key_Return);
            visit(picker, Grid(picker, u"GridQueryView"_s));
        });
    }
    QString MoveOut(const QString &userCode)
    {
        const auto row = int(ListedCodes().indexOf(userCode));
        Listed().setCurrentIndex(Cell(Listed(), row, u"登录名"_s));
        return Answer(u"Yes"_s, [&] { Trigger(screen, u"ActionDelete"_s); });
    }

    Site site;
    QWidget *screen;
    QString name; ///< of the group
};

void Tick(QTableView &candidates, const QList<int> &rows)
{
    for (const int row : rows)
        ClickCell(candidates, row, u"选择"_s);
}

} // namespace

/// Who may act for a group: users moved in and out, with another operator and another program at
/// work on the same ones.
class UserStoryTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { story_ = std::make_unique<Story>(); }
    void cleanupTestCase() { story_.reset(); }
    void init() { story_->FindGroup(); }

    void GroupIsFoundInTheTreeAndItsUsersAreListed()
    {
        Type(story_->screen, u"edInfo"_s, {});
        Press(story_->screen, u"edInfo"_s, Qt::Key_Return);
        auto *tree = Child<QTreeView>(story_->screen, u"TreeGrid"_s);
        const QModelIndex third = tree->model()->index(2, 0);
        Type(story_->screen, u"edInfo"_s, third.siblingAtColumn(1).data().toString());
        Press(tree, Qt::Key_F3);
        QCOMPARE(tree->currentIndex().row(), 2);
        QTRY_VERIFY(story_->ListIsWhatIsStored(
            u"(SELECT UNION_ID FROM UNI_UNION WHERE UNION_CODE='%1')"_s.arg(
                third.data().toString())));
        QVERIFY(!story_->ListedCodes().isEmpty());
    }

    void UsersAreMovedInWhileAColleagueIsFaster()
    {
        QVERIFY(!story_->ListedCodes().isEmpty());
        QVERIFY(story_->ListIsWhatIsStored());
        const QStringList before = story_->ListedCodes();

        QStringList moved;
        story_->InPicker([&](QWidget *picker, QTableView &candidates) {
            QCOMPARE(candidates.model()->rowCount(), 50);
            moved = Texts(candidates, u"用户编码"_s).mid(0, 3);
            for (const QString &code : Texts(candidates, u"用户编码"_s))
                QVERIFY(!before.contains(code));
            Tick(candidates, {0, 1, 2});
            QCOMPARE(story_->Colleague(u"insertUniUser"_s, moved[1]), u"1"_s);
            QCOMPARE(Answers({u"Yes"_s}, [&] { Click(picker, u"btnSelect"_s); }),
                     QStringList{u"确定将用户移入到“%1”中吗？"_s.arg(story_->name)});
            QVERIFY(!picker->isVisible());
        });
        QCOMPARE(story_->ListedCodes(), before + moved);
        QVERIFY(story_->ListIsWhatIsStored());
        QCOMPARE(story_->Log(moved[0]), QStringList{u"系统管理员/1"_s});
        QCOMPARE(story_->Log(moved[1]), QStringList{story_->site.Colleague() + u"/1"_s});
        QCOMPARE(story_->Log(moved[2]), QStringList{u"系统管理员/1"_s});
    }

    void UserWhoWasDisabledMeanwhileEndsTheMoveOnScreenOnly()
    {
        const QStringList before = story_->ListedCodes();
        QStringList chosen;
        story_->InPicker([&](QWidget *picker, QTableView &candidates) {
            chosen = Texts(candidates, u"用户编码"_s).mid(0, 3);
            Tick(candidates, {0, 1, 2});
            story_->site.Change(u"UPDATE USR_USER SET ENABLE_FLAG='0' WHERE USER_CODE='"_s +
                                chosen[1] + u'\'');
            QCOMPARE(Answers({u"Yes"_s, u"Ok"_s}, [&] { Click(picker, u"btnSelect"_s); }),
                     QStringList({u"确定将用户移入到“%1”中吗？"_s.arg(story_->name),
                                  u"将用户移入“%1”失败！"_s.arg(story_->name)}));
            QVERIFY(picker->isVisible());
            QCOMPARE(Texts(candidates, u"用户编码"_s).mid(0, 2), chosen.mid(1));
            QCOMPARE(candidates.currentIndex().row(), 0);
            Click(picker, u"btnCancel"_s);
        });
        QCOMPARE(story_->ListedCodes(), before + chosen.mid(0, 1));
        // The third was stored, and the next query tells.
        Press(story_->screen, u"edInfo"_s, Qt::Key_Return);
        QVERIFY(story_->ListIsWhatIsStored());
        QVERIFY(story_->ListedCodes().contains(chosen[2]));
        QVERIFY(!story_->ListedCodes().contains(chosen[1]));
        QCOMPARE(story_->Log(chosen[1]), QStringList());
        QCOMPARE(story_->Log(chosen[2]), QStringList{u"系统管理员/1"_s});
    }

    void UsersAreMovedOutWhileAColleagueIsFaster()
    {
        const QStringList before = story_->ListedCodes();
        const QString groups = u"SELECT count(*) FROM UNI_USER_UNION WHERE LAST_OPERATE<>'D' AND "
                               "USER_ID="_s +
                               IdOf(before[0]);
        const int groupsBefore = story_->site.Select(groups).value(0).toInt();
        const QString user =
            story_->site
                .Select(u"SELECT USER_NAME FROM USR_USER WHERE USER_CODE='"_s + before[0] + u'\'')
                .value(0);
        QCOMPARE(story_->MoveOut(before[0]),
                 u"确定将用户“%1”移出“%2”吗？"_s.arg(user, story_->name));
        QCOMPARE(story_->ListedCodes(), before.mid(1));
        QVERIFY(story_->ListIsWhatIsStored());
        QCOMPARE(story_->Log(before[0]), QStringList{u"系统管理员/5"_s});
        // The user and the user's other groups stay.
        QCOMPARE(story_->site.Select(groups).value(0).toInt(), groupsBefore - 1);
        QCOMPARE(story_->site.Select(u"SELECT ENABLE_FLAG||LAST_OPERATE FROM USR_USER WHERE "
                                     "USER_CODE='"_s +
                                     before[0] + u'\''),
                 QStringList{u"11"_s});

        QCOMPARE(story_->Colleague(u"deleteUniUser"_s, before[1]), u"1"_s);
        story_->MoveOut(before[1]); // one box: the question
        QCOMPARE(story_->ListedCodes(), before.mid(2));
        QVERIFY(story_->ListIsWhatIsStored());
        QCOMPARE(story_->Log(before[1]), QStringList{story_->site.Colleague() + u"/5"_s});
    }

private:
    std::unique_ptr<Story> story_; // one for all: each test takes users of its own
};

QTEST_MAIN(UserStoryTest)
#include "UserStoryTest.moc"
