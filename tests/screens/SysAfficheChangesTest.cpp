#include "screens/AfficheScreen.h"

#include "controls/MemoEdit.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QString AskDelete = u"Question|提示|是否真的要删除此公告？|Yes"_s;
const QString AskCheck = u"Question|提示|是否真的要发布此公告？|Yes"_s;

QString Today()
{
    return QDate::currentDate().toString(u"yyyy-MM-dd"_s) + u" 00:00:00"_s;
}

void SayNo(ScreenFixture &fixture)
{
    fixture.hook.SetAnswer([](const TMessageBox &) { return TBoxButton::No; });
}

/// Writes and saves `count` announcements in the open editor.
void SaveInEditor(QWidget *editor, int count)
{
    for (int number = 1; number <= count; ++number) {
        FillEditor(editor, u"2024-03-05"_s, {}, u"公告 %1"_s.arg(number), u"内容"_s, 0);
        Click(editor, u"BtnSave"_s);
    }
}

} // namespace

class SysAfficheChangesTest : public QObject
{
    Q_OBJECT

private slots:
    // --- New -----------------------------------------------------------------------------------

    void ThreeAnnouncementsInOneOpeningRaiseTheTotalByThree()
    {
        AfficheScreen screen;
        screen.AnswerPost(u"insertUpdateNotic"_s, u"1"_s, {{u"ID"_s, u"9100"_s}});
        screen.Query();
        screen.InDialog([&] { Click(screen.form, u"btnNew"_s); },
                        [&](QWidget *editor) { SaveInEditor(editor, 3); });
        QCOMPARE(screen.Pages().RecordCount(), 123);
        QCOMPARE(screen.Listed().RecordCount(), 6);
        QCOMPARE(CellTexts(screen.Listed(), u"AFFICHE_TITLE").mid(3),
                 QStringList({u"公告 1"_s, u"公告 2"_s, u"公告 3"_s}));
        // One query for the list and one for the groups: none after saving.
        QCOMPARE(screen.server.Queries().size(), 2);
        QCOMPARE(screen.Enabled(), u"New Modify Delete Check Log"_s);
    }

    void NewAnnouncementIsShownInAListThatWasNeverQueried()
    {
        AfficheScreen screen;
        screen.AnswerPost(u"insertUpdateNotic"_s, u"1"_s, {{u"ID"_s, u"9100"_s}});
        screen.InDialog([&] { Click(screen.form, u"btnNew"_s); },
                        [&](QWidget *editor) { SaveInEditor(editor, 1); });
        QCOMPARE(screen.Pages().RecordCount(), 1);
        QCOMPARE(screen.CurrentRow({u"ID"_s, u"AFFICHE_TITLE"_s, u"ENABLE_FLAG"_s}),
                 QStringList({u"9100"_s, u"公告 1"_s, u"0"_s}));
        QCOMPARE(screen.Enabled(), u"New Modify Delete Check Log"_s);
    }

    void LeavingTheEditorAddsNothing()
    {
        AfficheScreen screen;
        screen.Query();
        screen.InDialog([&] { Click(screen.form, u"btnNew"_s); },
                        [](QWidget *editor) { Click(editor, u"btnCancel"_s); });
        QCOMPARE(screen.Pages().RecordCount(), 120);
        QCOMPARE(screen.Listed().RecordCount(), 3);
    }

    // --- Modify --------------------------------------------------------------------------------

    void EditorIsFilledFromTheRow()
    {
        AfficheScreen screen;
        screen.Query();
        screen.InDialog(
            [&] { Click(screen.form, u"btnModify"_s); },
            [&](QWidget *editor) {
                QCOMPARE(Child<DateEdit>(editor, u"edStart"_s)->DateText(), u"2024-03-05"_s);
                QCOMPARE(Child<DateEdit>(editor, u"edEnd"_s)->DateText(), u"2024-04-05"_s);
                QCOMPARE(Child<QLineEdit>(editor, u"edTitle"_s)->text(), u"系统升级公告"_s);
                QCOMPARE(Child<MemoEdit>(editor, u"edAff"_s)->toPlainText(), u"三月六日升级。"_s);
                QVERIFY(Child<QCheckBox>(editor, u"edPublic"_s)->isChecked());
                QVERIFY(Child<QCheckBox>(editor, u"edBuyer"_s)->isChecked());
                QVERIFY(!Child<QCheckBox>(editor, u"edSaler"_s)->isChecked());
                const auto *unions = Child<ImageComboBox>(editor, u"edUnion"_s);
                QCOMPARE(unions->EditValue(), u"11"_s);
                QCOMPARE(unions->ShownText(), u"浙江省采购集团"_s);
                QCOMPARE(FocusName(*editor), u"edStart"_s);
                QCOMPARE(Child<DateEdit>(editor, u"edStart"_s)->selectedText(), u"2024-03-05"_s);
            });
        QCOMPARE(screen.server.Queries().size(), 1);
    }

    void ModifiedAnnouncementIsShownWithTheModifierAsCreator()
    {
        AfficheScreen screen;
        screen.AnswerPost(u"insertUpdateNotic"_s, u"1"_s);
        screen.Query(1);
        screen.InDialog([&] { Click(screen.form, u"btnModify"_s); },
                        [&](QWidget *editor) {
                            FillEditor(editor, u"2024-03-06"_s, u"2024-05-01"_s, u" 新标题 "_s,
                                       u"新内容"_s, 0);
                            Click(editor, u"edBuyer"_s);
                            Click(editor, u"BtnSave"_s);
                        });
        QCOMPARE(screen.CurrentRow({u"ID"_s, u"START_DATE"_s, u"END_DATE"_s, u"AFFICHE_TITLE"_s,
                                    u"AFFICHE_CONTENT"_s, u"UNION_ID"_s, u"UNION_NAME"_s,
                                    u"PUBLIC_FLAG"_s, u"BUYER_FLAG"_s, u"SALER_FLAG"_s,
                                    u"CREATE_USER"_s, u"CREATE_DATE"_s}),
                 QStringList({u"9002"_s, u"2024-03-06 00:00:00"_s, u"2024-05-01 00:00:00"_s,
                              u"新标题"_s, u"新内容"_s, u"11"_s, u"浙江省采购集团"_s, u"0"_s,
                              u"0"_s, u"1"_s, u"王敏"_s, u"2024-03-04 09:10:11"_s}));
        QCOMPARE(screen.Pages().RecordCount(), 120);
    }

    void EmptiedEndDateLeavesTheOldValueInTheGrid()
    {
        AfficheScreen screen;
        screen.AnswerPost(u"insertUpdateNotic"_s, u"1"_s);
        screen.Query(1);
        screen.InDialog([&] { Click(screen.form, u"btnModify"_s); },
                        [&](QWidget *editor) {
                            FillEditor(editor, u"2024-03-06"_s, {}, u"新标题"_s, u"新内容"_s, 0);
                            Click(editor, u"edBuyer"_s);
                            Click(editor, u"BtnSave"_s);
                        });
        QCOMPARE(RowText(screen.server.LastPost().rows.first()), Expected(u"affiche.update"_s));
        QCOMPARE(screen.Listed().FieldText(u"END_DATE"), u"2024-04-05 00:00:00"_s);
    }

    void ModifiedPublishedAnnouncementGoesOnAsPublishedUntilTheNextQuery()
    {
        AfficheScreen screen;
        screen.AnswerPost(u"insertUpdateNotic"_s, u"1"_s);
        screen.Query();
        screen.InDialog([&] { Click(screen.form, u"btnModify"_s); },
                        [&](QWidget *editor) { Click(editor, u"BtnSave"_s); });
        QCOMPARE(screen.server.LastPost().Value(u"ENABLE_FLAG"_s), u"0"_s);
        const QModelIndex state =
            screen.Grid().model()->index(0, screen.Grid().ColumnIndex(u"ENABLE_FLAG"));
        QCOMPARE(state.data().toString(), u"已发布"_s);
        QCOMPARE(screen.CurrentRow({u"CHECK_USER"_s, u"CHECK_DATE"_s}),
                 QStringList({u"李娜"_s, u"2024-03-04 15:00:00"_s}));
        QCOMPARE(screen.Enabled(), u"New Modify Delete Log"_s);
    }

    void LeavingTheEditorLeavesTheRowAsItIs()
    {
        AfficheScreen screen;
        screen.Query(1);
        screen.InDialog([&] { Click(screen.form, u"btnModify"_s); },
                        [&](QWidget *editor) {
                            Type(editor, u"edTitle"_s, u"别的"_s);
                            Press(editor, u"edTitle"_s, Qt::Key_Escape);
                            QVERIFY(!editor->isVisible());
                        });
        QCOMPARE(screen.CurrentRow({u"AFFICHE_TITLE"_s, u"CREATE_USER"_s}),
                 QStringList({u"停业通知"_s, u"张伟"_s}));
        QVERIFY(screen.server.Posts().isEmpty());
    }

    // --- Delete --------------------------------------------------------------------------------

    void DeletedRowLeavesTheListAndTheTotalWithoutAQuery()
    {
        AfficheScreen screen;
        screen.AnswerPost(u"deleteNotic"_s, u"1"_s);
        screen.Query(1);
        Click(screen.form, u"btnDelete"_s);
        QCOMPARE(screen.Boxes(), QStringList{AskDelete});
        QCOMPARE(RowTexts(screen.server.LastPost().rows),
                 QStringList{Expected(u"affiche.delete"_s)});
        QCOMPARE(CellTexts(screen.Listed(), u"ID"), QStringList({u"9001"_s, u"9003"_s}));
        QCOMPARE(screen.Pages().RecordCount(), 119);
        QCOMPARE(screen.server.Queries().size(), 1);
    }

    void DeletingTheLastRowOfAPageLeavesItEmptyAndLowersTheTotal()
    {
        AfficheScreen screen;
        screen.AnswerPost(u"deleteNotic"_s, u"1"_s);
        screen.Query();
        Click(&screen.Pages(), u"btnNext"_s);
        for (int row = 0; row < 3; ++row)
            Click(screen.form, u"btnDelete"_s);
        QVERIFY(screen.Listed().IsEmpty());
        QCOMPARE(screen.Pages().RecordCount(), 117);
        QCOMPARE(screen.server.Queries().size(), 2);
        QCOMPARE(screen.Enabled(), u"New"_s);
    }

    void RefusedDeletionIsToldAndTheRowStays()
    {
        AfficheScreen screen;
        screen.AnswerPost(u"deleteNotic"_s, u"0"_s);
        screen.Query();
        Click(screen.form, u"btnDelete"_s);
        QCOMPARE(screen.Boxes(), QStringList({AskDelete, u"Warning|警告|数据删除失败！|Ok"_s}));
        QCOMPARE(screen.Listed().RecordCount(), 3);
        QCOMPARE(screen.Pages().RecordCount(), 120);
        QCOMPARE(screen.Enabled(), u"New Modify Delete Log"_s);
    }

    // --- Publish -------------------------------------------------------------------------------

    void PublishedRowIsNotOfferedAgainAtOnceAndWithoutAQuery()
    {
        AfficheScreen screen;
        screen.AnswerPost(u"confirmNotic"_s, u"1"_s);
        screen.Query(1);
        Click(screen.form, u"btnCheck"_s);
        QCOMPARE(screen.Boxes(), QStringList{AskCheck});
        QCOMPARE(RowTexts(screen.server.LastPost().rows),
                 QStringList{Expected(u"affiche.check"_s)});
        QCOMPARE(screen.Enabled(), u"New Modify Delete Log"_s);
        QCOMPARE(screen.server.Queries().size(), 1);
    }

    void PublishedRowShowsThePublisherAndTheDateWithoutATime()
    {
        AfficheScreen screen;
        screen.AnswerPost(u"confirmNotic"_s, u"1"_s);
        screen.Query(1);
        Click(screen.form, u"btnCheck"_s);
        QCOMPARE(screen.CurrentRow(
                     {u"ENABLE_FLAG"_s, u"CHECK_USER"_s, u"CHECK_DATE"_s, u"CREATE_USER"_s}),
                 QStringList({u"1"_s, u"王敏"_s, Today(), u"张伟"_s}));
    }

    void RefusedPublishingIsToldAndOfferedAgain()
    {
        AfficheScreen screen;
        screen.AnswerPost(u"confirmNotic"_s, u"0"_s);
        screen.Query(1);
        Click(screen.form, u"btnCheck"_s);
        QCOMPARE(screen.Boxes(), QStringList({AskCheck, u"Information|提示|发布公告失败！|Ok"_s}));
        QCOMPARE(screen.CurrentRow({u"ENABLE_FLAG"_s, u"CHECK_USER"_s}),
                 QStringList({u"0"_s, u""_s}));
        QCOMPARE(screen.Enabled(), u"New Modify Delete Check Log"_s);
    }

    // --- Both ----------------------------------------------------------------------------------

    void AnswersOutsideTheTableSayAndChangeNothing_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("method");
        QTest::addColumn<QString>("code");
        for (const QString &code : {u"2"_s, u"-1"_s, u"-2"_s, u"01"_s, u""_s}) {
            QTest::newRow(qPrintable(u"delete \""_s + code + u'"'))
                << u"btnDelete"_s << u"deleteNotic"_s << code;
            QTest::newRow(qPrintable(u"publish \""_s + code + u'"'))
                << u"btnCheck"_s << u"confirmNotic"_s << code;
        }
    }
    void AnswersOutsideTheTableSayAndChangeNothing()
    {
        QFETCH(QString, button);
        QFETCH(QString, method);
        QFETCH(QString, code);
        AfficheScreen screen;
        screen.AnswerPost(method, code);
        screen.Query(1);
        Click(screen.form, button);
        QCOMPARE(screen.Boxes().size(), 1); // the question
        QCOMPARE(screen.Listed().RecordCount(), 3);
        QCOMPARE(screen.CurrentRow({u"ID"_s, u"ENABLE_FLAG"_s}), QStringList({u"9002"_s, u"0"_s}));
        QCOMPARE(screen.Pages().RecordCount(), 120);
        QCOMPARE(screen.Enabled(), u"New Modify Delete Check Log"_s);
    }

    void NoPostsNothing_data()
    {
        QTest::addColumn<QString>("button");
        QTest::newRow("delete") << u"btnDelete"_s;
        QTest::newRow("publish") << u"btnCheck"_s;
    }
    void NoPostsNothing()
    {
        QFETCH(QString, button);
        AfficheScreen screen;
        SayNo(screen);
        screen.Query(1);
        Click(screen.form, button);
        QCOMPARE(screen.Boxes().size(), 1);
        QVERIFY(screen.server.Posts().isEmpty());
        QCOMPARE(screen.Listed().RecordCount(), 3);
    }

    void EmptyListIsNeitherDeletedFromNorPublished_data() { NoPostsNothing_data(); }
    void EmptyListIsNeitherDeletedFromNorPublished()
    {
        QFETCH(QString, button);
        AfficheScreen screen;
        auto *action =
            Child<QAction>(screen.form, u"Action"_s + button.mid(3)); // as code could, by force
        action->setEnabled(true);
        action->trigger();
        QVERIFY(screen.Boxes().isEmpty());
        QVERIFY(screen.server.Posts().isEmpty());
    }

    void ActionIsDisabledWhileItRunsAndAfterAFailureOfferedAgain_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("method");
        QTest::newRow("delete") << u"btnDelete"_s << u"deleteNotic"_s;
        QTest::newRow("publish") << u"btnCheck"_s << u"confirmNotic"_s;
    }
    void ActionIsDisabledWhileItRunsAndAfterAFailureOfferedAgain()
    {
        QFETCH(QString, button);
        QFETCH(QString, method);
        AfficheScreen screen;
        screen.server.OnPost(method).DatabaseDown();
        screen.Query(1);
        const QStringList disabled = screen.DisabledAtRequests(
            *screen.form, {u"btnDelete"_s, u"btnCheck"_s}, [&] { Click(screen.form, button); });
        QCOMPARE(disabled, QStringList{button});
        QCOMPARE(screen.hook.Boxes().last().icon, TBoxIcon::Error);
        QCOMPARE(screen.Listed().RecordCount(), 3);
        QCOMPARE(screen.Enabled(), u"New Modify Delete Check Log"_s);
    }
};

QTEST_MAIN(SysAfficheChangesTest)
#include "SysAfficheChangesTest.moc"
