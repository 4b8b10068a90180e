#include "e2e/Hands.h"
#include "e2e/Site.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTest>

#include <memory>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QString Manager = u"com.notic.NoticManager"_s;
const QString Operator = u"系统管理员"_s;

/// The announcement screen, and an announcement by its title.
class Story
{
public:
    Story()
        : screen(site.OpenScreen(u"ADMIN09"_s))
        , group(site.Select(u"SELECT UNION_ID FROM UNI_UNION WHERE UNION_CODE='000101'"_s).value(0))
        , groupName(
              site.Select(u"SELECT UNION_NAME FROM UNI_UNION WHERE UNION_CODE='000101'"_s).value(0))
    {
        // The colleague may act for the group, too.
        site.Change(
            u"INSERT INTO UNI_USER_UNION (USER_ID, UNION_ID, LAST_OPERATE) SELECT USER_ID, "
            "'%1', '1' FROM USR_USER WHERE USER_NAME='%2' ON CONFLICT (USER_ID, UNION_ID) DO UPDATE SET "
            "LAST_OPERATE='1'"_s.arg(group, site.Colleague()));
    }

    void Query(const QString &title = {})
    {
        Type(screen, u"edTitle"_s, title);
        Press(screen, u"edTitle"_s, Qt::Key_Return);
    }
    QTableView &List() { return Grid(screen, u"gridMasterView"_s); }
    int Total() { return Child<QLabel>(screen, u"labTotal"_s)->text().section(u' ', 1, 1).toInt(); }
    void GoTo(const QString &title)
    {
        const auto row = int(Texts(List(), u"公告标题"_s).indexOf(title));
        if (row < 0)
            FailTest(u"no "_s + title);
        List().setCurrentIndex(Cell(List(), row, u"公告标题"_s));
    }
    QString Shown(const QString &caption)
    {
        return Text(List(), List().currentIndex().row(), caption);
    }
    /// Fills the editor's boxes and saves.
    void Write(QWidget *editor, const QString &title, const QString &end = {})
    {
        for (const auto &[box, date] :
             {std::pair{u"edStart"_s, u"2026-12-01"_s}, {u"edEnd"_s, end}})
            Child<QLineEdit>(editor, box)
                ->setProperty("value", QDate::fromString(date, Qt::ISODate).startOfDay());
        Type(editor, u"edTitle"_s, title);
        Type(editor, u"edAff"_s, u"自下月起执行。"_s);
        Child<QCheckBox>(editor, u"edBuyer"_s)->setChecked(true);
        auto *groups = Child<QComboBox>(editor, u"edUnion"_s);
        groups->showPopup();
        groups->hidePopup();
        groups->setCurrentIndex(groups->findText(groupName));
        Click(editor, u"BtnSave"_s);
    }
    /// Presses an action, says yes and takes note of what is told then; empty for nothing.
    QString Yes(const QString &action, bool told = false)
    {
        QStringList buttons{u"Yes"_s};
        if (told)
            buttons << u"Ok"_s;
        return Answers(buttons, [&] { Trigger(screen, action); }).value(1);
    }

    QString Id(const QString &title)
    {
        return site.Select(u"SELECT ID FROM SYS_AFFICHE WHERE AFFICHE_TITLE='"_s + title + u'\'')
            .value(0);
    }
    /// "published/creator/publisher", "-" for NULL.
    QString Stored(const QString &title)
    {
        return site
            .Select(u"SELECT ENABLE_FLAG||'/'||CREATE_USER||'/'||COALESCE(CHECK_USER,'-') FROM "
                    "SYS_AFFICHE WHERE AFFICHE_TITLE='"_s +
                    title + u'\'')
            .value(0, u"gone"_s);
    }
    /// "name/kind", oldest first.
    QStringList Log(const QString &id)
    {
        return site.Select(u"SELECT USER_NAME||'/'||OPTION_TYPE FROM SYS_UPDATE_LOG WHERE "
                           "TABLE_NAME='SYS_AFFICHE' AND KEY_ID1='"_s +
                           id + u"' ORDER BY CAST(LOG_ID AS INTEGER)"_s);
    }

    Site site;
    QWidget *screen;
    QString group;
    QString groupName;
};

} // namespace

/// Announcements: three written in one opening, one published and changed, some deleted, with a
/// colleague at work on the same ones.
class AnnouncementStoryTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { story_ = std::make_unique<Story>(); }
    void cleanupTestCase() { story_.reset(); }

    void ListComesUpWithTheLastFifteenDays()
    {
        QCOMPARE(story_->List().model()->rowCount(), 0);
        story_->Query();
        QCOMPARE(QString::number(story_->Total()),
                 story_->site
                     .Select(u"SELECT count(*) FROM SYS_AFFICHE WHERE CREATE_DATE BETWEEN '%1' AND "
                             "'%2 23:59:59'"_s.arg(
                                 QDate::currentDate().addDays(-15).toString(Qt::ISODate),
                                 QDate::currentDate().toString(Qt::ISODate)))
                     .value(0));
        QVERIFY(story_->Total() > 20);
    }

    void ThreeAreWrittenInOneOpening()
    {
        const int before = story_->Total();
        const int stored =
            story_->site.Select(u"SELECT count(*) FROM SYS_AFFICHE"_s).value(0).toInt();
        InDialog(story_->screen, u"ActionNew"_s, [&](QWidget *editor) {
            for (const QString &title : {u"故事一"_s, u"故事二"_s, u"故事三"_s}) {
                story_->Write(editor, title);
                QVERIFY(editor->isVisible());
                QCOMPARE(Child<QLineEdit>(editor, u"edTitle"_s)->text(), QString());
                QCOMPARE(Child<QPlainTextEdit>(editor, u"edAff"_s)->toPlainText(), QString());
            }
            Click(editor, u"btnCancel"_s);
        });
        QCOMPARE(story_->Total(), before + 3);
        QCOMPARE(story_->site.Select(u"SELECT count(*) FROM SYS_AFFICHE"_s).value(0).toInt(),
                 stored + 3);
        for (const QString &title : {u"故事一"_s, u"故事二"_s, u"故事三"_s}) {
            story_->GoTo(title);
            QCOMPARE(story_->Stored(title), u"0/"_s + Operator + u"/-"_s);
            QCOMPARE(story_->Log(story_->Id(title)), QStringList{Operator + u"/1"_s});
            QCOMPARE(story_->Shown(u"状态"_s), u"未发布"_s);
            QCOMPARE(story_->Shown(u"接收公告集团"_s), story_->groupName);
        }
        // The next query shows what the list showed.
        story_->Query(u"故事"_s);
        QCOMPARE(story_->Total(), 3);
        QCOMPARE(Texts(story_->List(), u"创建人"_s), QStringList(3, Operator));
    }

    void EndBeforeTheStartIsRefusedByTheServer()
    {
        InDialog(story_->screen, u"ActionNew"_s, [&](QWidget *editor) {
            QCOMPARE(Answer(u"Ok"_s, [&] { story_->Write(editor, u"无期"_s, u"2026-11-30"_s); }),
                     u"保存数据失败！"_s);
            QCOMPARE(Child<QLineEdit>(editor, u"edTitle"_s)->text(), u"无期"_s);
            Click(editor, u"btnCancel"_s);
        });
        QCOMPARE(story_->Stored(u"无期"_s), u"gone"_s);
    }

    void OneIsPublished()
    {
        story_->GoTo(u"故事一"_s);
        QCOMPARE(story_->Yes(u"ActionCheck"_s), QString());
        QCOMPARE(story_->Stored(u"故事一"_s), u"1/"_s + Operator + u'/' + Operator);
        QCOMPARE(story_->Shown(u"状态"_s), u"已发布"_s);
        QVERIFY(!ActionEnabled(story_->screen, u"ActionCheck"_s));
        QCOMPARE(story_->Log(story_->Id(u"故事一"_s)),
                 QStringList({Operator + u"/1"_s, Operator + u"/3"_s}));
    }

    void ModifyingItUnpublishesItThoughTheListShowsOtherwise()
    {
        story_->GoTo(u"故事一"_s);
        InDialog(story_->screen, u"ActionModify"_s, [&](QWidget *editor) {
            Type(editor, u"edTitle"_s, u"故事四"_s);
            Click(editor, u"BtnSave"_s);
            QVERIFY(!editor->isVisible());
        });
        QCOMPARE(story_->Stored(u"故事四"_s), u"0/"_s + Operator + u"/-"_s);
        QCOMPARE(story_->Shown(u"公告标题"_s), u"故事四"_s);
        QCOMPARE(story_->Shown(u"状态"_s), u"已发布"_s);
        QVERIFY(!ActionEnabled(story_->screen, u"ActionCheck"_s));

        story_->Query(u"故事"_s);
        story_->GoTo(u"故事四"_s);
        QCOMPARE(story_->Shown(u"状态"_s), u"未发布"_s);
        QVERIFY(ActionEnabled(story_->screen, u"ActionCheck"_s));
    }

    void OneThatAColleaguePublishedMeanwhileIsNotPublishedTwice()
    {
        story_->GoTo(u"故事二"_s);
        QCOMPARE(story_->site.PostAsColleague(
                     Manager, u"confirmNotic"_s,
                     {{u"ID"_s, story_->Id(u"故事二"_s)}, {u"ENABLE_FLAG"_s, u"1"_s}}),
                 u"1"_s);
        QCOMPARE(story_->Yes(u"ActionCheck"_s, true), u"发布公告失败！"_s);
        QCOMPARE(story_->Stored(u"故事二"_s), u"1/"_s + Operator + u'/' + story_->site.Colleague());
        QCOMPARE(story_->Log(story_->Id(u"故事二"_s)),
                 QStringList({Operator + u"/1"_s, story_->site.Colleague() + u"/3"_s}));
    }

    void OneIsDeletedAndItsHistoryStays()
    {
        const int before = story_->Total();
        const QString id = story_->Id(u"故事四"_s);
        story_->GoTo(u"故事四"_s);
        QCOMPARE(story_->Yes(u"ActionDelete"_s), QString());
        QCOMPARE(story_->Stored(u"故事四"_s), u"gone"_s);
        QCOMPARE(story_->Total(), before - 1);
        QVERIFY(!Texts(story_->List(), u"公告标题"_s).contains(u"故事四"_s));
        QCOMPARE(story_->Log(id), QStringList({Operator + u"/1"_s, Operator + u"/3"_s,
                                               Operator + u"/2"_s, Operator + u"/6"_s}));
        story_->Query(u"故事"_s);
        QCOMPARE(story_->Total(), 2);
    }

    void OneThatAColleagueDeletedMeanwhileIsTracedByItsLog()
    {
        story_->GoTo(u"故事三"_s);
        QCOMPARE(story_->site.PostAsColleague(Manager, u"deleteNotic"_s,
                                              {{u"ID"_s, story_->Id(u"故事三"_s)}}),
                 u"1"_s);
        QCOMPARE(story_->Yes(u"ActionDelete"_s, true), u"数据删除失败！"_s);
        InDialog(story_->screen, u"ActionLog"_s, [&](QWidget *viewer) {
            const QTableView &log = Grid(viewer, u"GridLog"_s);
            QStringList entries = Texts(log, u"操作类型"_s);
            entries.sort(); // both may be of one second
            QCOMPARE(entries, QStringList({u"新增"_s, u"物理删除"_s}));
            QVERIFY(Texts(log, u"操作人姓名"_s).contains(story_->site.Colleague()));
            Click(viewer, u"BtnClose"_s);
        });
        story_->Query(u"故事"_s);
        QCOMPARE(Texts(story_->List(), u"公告标题"_s), QStringList{u"故事二"_s});
    }

    void GroupWhoseAssignmentWasRemovedMeanwhileIsRefused()
    {
        story_->GoTo(u"故事二"_s);
        story_->site.Change(
            u"UPDATE UNI_USER_UNION SET LAST_OPERATE='D' WHERE UNION_ID='%1' AND "
            "USER_ID=(SELECT USER_ID FROM USR_USER WHERE USER_CODE='admin')"_s.arg(story_->group));
        InDialog(story_->screen, u"ActionModify"_s, [&](QWidget *editor) {
            QCOMPARE(Answer(u"Ok"_s, [&] { Click(editor, u"BtnSave"_s); }), u"保存数据失败！"_s);
            Click(editor, u"btnCancel"_s);
        });
        QCOMPARE(story_->Yes(u"ActionDelete"_s, true), u"数据删除失败！"_s);
        QCOMPARE(story_->Stored(u"故事二"_s), u"1/"_s + Operator + u'/' + story_->site.Colleague());
        story_->Query(u"故事"_s);
        QCOMPARE(story_->Total(), 0);
    }

private:
    std::unique_ptr<Story> story_;
};

QTEST_MAIN(AnnouncementStoryTest)
#include "AnnouncementStoryTest.moc"
