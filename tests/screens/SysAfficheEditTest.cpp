#include "screens/SysAfficheEdit.h"

#include "controls/MemoEdit.h"
#include "screens/AfficheScreen.h"

#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const TAffiche Affiche{.id = u"9002"_s,
                       .start = u"2024-03-05 00:00:00"_s,
                       .end = u"2024-04-05 00:00:00"_s,
                       .title = u"停业通知"_s,
                       .content = u"春节停业。"_s,
                       .publicFlag = u"0"_s,
                       .salerFlag = u"1"_s,
                       .buyerFlag = u"1"_s,
                       .unionId = u"12"_s,
                       .unionName = u"杭州市采购集团"_s};

/// The editor over a server that knows two groups and answers each announcement with a new id.
template <typename Subject>
class EditorFor : public ScreenFixture
{
public:
    explicit EditorFor(const Subject &subject)
        : form(nullptr, subject)
    {
        server.OnQuery(u"SELECT B.UNION_ID, B.UNION_NAME "_s).Answer(AfficheUnions());
        for (const QString &id : {u"9101"_s, u"9102"_s})
            server.OnPost(u"insertUpdateNotic"_s).Code(u"1"_s, {{u"ID"_s, id}}).Times(1);
        server.OnPost(u"insertUpdateNotic"_s).Code(u"1"_s, {{u"ID"_s, u"9103"_s}});
    }

    TModalResult Show(const std::function<void()> &visit)
    {
        return ShowModally(form, [&visit](QWidget *) { visit(); });
    }
    void Fill(const QString &end = u"2024-03-12"_s)
    {
        FillEditor(&form, u"2024-03-05"_s, end, u" 停业通知 "_s, u" 春节停业。 "_s, 0);
        Box<QCheckBox>(u"edPublic"_s)->setChecked(true);
        Box<QCheckBox>(u"edBuyer"_s)->setChecked(true);
    }
    void Save() { Click(&form, u"BtnSave"_s); }
    void AnswerSave(const QString &code)
    {
        server.ClearScripts();
        server.OnQuery(u"SELECT B.UNION_ID, B.UNION_NAME "_s).Answer(AfficheUnions());
        server.OnPost(u"insertUpdateNotic"_s).Code(code);
    }
    void DropDownUnions()
    {
        Unions()->showPopup();
        Unions()->hidePopup();
    }

    template <typename T>
    T *Box(const QString &name)
    {
        return Child<T>(&form, name);
    }
    ImageComboBox *Unions() { return Box<ImageComboBox>(u"edUnion"_s); }

    /// What every box holds, in the order of the dialog.
    QStringList Boxed()
    {
        QStringList texts{
            Box<DateEdit>(u"edStart"_s)->DateText(), Box<DateEdit>(u"edEnd"_s)->DateText(),
            Box<QLineEdit>(u"edTitle"_s)->text(), Box<MemoEdit>(u"edAff"_s)->toPlainText()};
        for (const QString &mark : {u"edPublic"_s, u"edBuyer"_s, u"edSaler"_s})
            texts << (Box<QCheckBox>(mark)->isChecked() ? u"1"_s : u"0"_s);
        return texts << Unions()->EditValue() << Unions()->ShownText();
    }

    TFrmSysAfficheEdit form;
};

/// For new announcements, with the opener's list.
class NewAffiche : public EditorFor<ClientDataSet *>
{
public:
    explicit NewAffiche(bool open = true)
        : EditorFor(&list)
    {
        if (open)
            list.Open(Affiches());
    }
    QStringList LastRow(const QStringList &fields) const
    {
        QStringList texts;
        for (const QString &field : fields)
            texts << list.TextAt(list.RecordCount() - 1, field);
        return texts;
    }

    ClientDataSet list;
};

class OldAffiche : public EditorFor<TAffiche>
{
public:
    OldAffiche()
        : EditorFor(Affiche)
    {
    }
};

const QStringList EmptyBoxes{u""_s, u""_s, u""_s, u""_s, u"0"_s, u"0"_s, u"0"_s, u""_s, u""_s};

QString Warning(const QString &text)
{
    return u"Warning|警告|"_s + text + u"|Ok"_s;
}

} // namespace

class SysAfficheEditTest : public QObject
{
    Q_OBJECT

private slots:
    void StatementsAreExact()
    {
        QCOMPARE(AfficheUnionsSql(u"700001"_s), Expected(u"afficheunions.own"_s));
        QCOMPARE(AfficheUnionsSql(u"70'1"_s), Expected(u"afficheunions.quoteduser"_s));
    }

    // --- Layout, show --------------------------------------------------------------------------

    void CaptionsAndLimitsAreExact()
    {
        NewAffiche editor;
        QCOMPARE(editor.form.windowTitle(), u"公告维护"_s);
        const QList<std::pair<QString, QString>> labels{{u"lbStart"_s, u"开始时间"_s},
                                                        {u"lbEnd"_s, u"结束时间"_s},
                                                        {u"lbTitle"_s, u"公告标题"_s},
                                                        {u"lbAff"_s, u"公告内容"_s},
                                                        {u"lbUnion"_s, u"接收集团"_s}};
        for (const auto &[name, caption] : labels)
            QCOMPARE(Caption(editor.form, name), caption);
        const QList<std::pair<QString, QString>> buttons{{u"edPublic"_s, u"公开标示"_s},
                                                         {u"edBuyer"_s, u"买方标示"_s},
                                                         {u"edSaler"_s, u"卖方标示"_s},
                                                         {u"BtnSave"_s, u"保存"_s},
                                                         {u"btnCancel"_s, u"返回"_s}};
        for (const auto &[name, caption] : buttons)
            QCOMPARE(Caption(editor.form, name), caption);
        QCOMPARE(editor.Box<QLineEdit>(u"edTitle"_s)->maxLength(), 50);
        QCOMPARE(editor.Box<MemoEdit>(u"edAff"_s)->MaxLength(), 500);
    }

    void CharacterFiveHundredAndOneOfAPastedTextIsCutOff()
    {
        NewAffiche editor;
        editor.Show([&] {
            QGuiApplication::clipboard()->setText(QString(500, u'药') + u"末"_s);
            editor.Box<MemoEdit>(u"edAff"_s)->paste();
            QCOMPARE(editor.Box<MemoEdit>(u"edAff"_s)->toPlainText(), QString(500, u'药'));
        });
    }

    void NewAnnouncementStartsWithEmptyBoxes()
    {
        NewAffiche editor;
        editor.Fill();
        editor.Show([&] {
            QCOMPARE(editor.Boxed(), EmptyBoxes);
            QCOMPARE(FocusName(editor.form), u"edStart"_s);
        });
    }

    void OldAnnouncementIsShownInTheBoxesWithTheStartSelected()
    {
        OldAffiche editor;
        editor.Show([&] {
            QCOMPARE(editor.Boxed(),
                     QStringList({u"2024-03-05"_s, u"2024-04-05"_s, u"停业通知"_s, u"春节停业。"_s,
                                  u"0"_s, u"1"_s, u"1"_s, u"12"_s, u"杭州市采购集团"_s}));
            QCOMPARE(FocusName(editor.form), u"edStart"_s);
            QCOMPARE(editor.Box<DateEdit>(u"edStart"_s)->selectedText(), u"2024-03-05"_s);
        });
        QVERIFY(editor.server.Queries().isEmpty());
    }

    // --- Keys ----------------------------------------------------------------------------------

    void EnterGoesToTheNextBoxAndEscCancels()
    {
        NewAffiche editor;
        const TModalResult result = editor.Show([&] {
            QStringList way;
            for (const QString &box : {u"edStart"_s, u"edEnd"_s, u"edTitle"_s}) {
                Press(&editor.form, box, Qt::Key_Return);
                way << FocusName(editor.form);
            }
            QCOMPARE(way, QStringList({u"edEnd"_s, u"edTitle"_s, u"edAff"_s}));
            Press(&editor.form, u"edUnion"_s, Qt::Key_Escape);
            QVERIFY(!editor.form.isVisible());
        });
        QCOMPARE(result, TModalResult::Cancel);
    }

    void BackCancels()
    {
        OldAffiche editor;
        const TModalResult result = editor.Show([&] { Click(&editor.form, u"btnCancel"_s); });
        QCOMPARE(result, TModalResult::Cancel);
        QVERIFY(editor.server.Posts().isEmpty());
    }

    // --- The groups ----------------------------------------------------------------------------

    void GroupListQueriesTheServerOnlyTheFirstTimeItIsOpened()
    {
        NewAffiche editor;
        editor.Show([&] {
            QVERIFY(editor.server.Queries().isEmpty());
            editor.DropDownUnions();
            editor.DropDownUnions();
            editor.Fill();
            editor.Save(); // which empties the boxes
            editor.DropDownUnions();
        });
        QCOMPARE(editor.server.Statements(), QStringList{Expected(u"afficheunions.own"_s)});
        QCOMPARE(editor.server.LastQuery().page, 0);
        QCOMPARE(editor.server.LastQuery().pageSize, 0);
        QCOMPARE(editor.server.LastQuery().queryType, 2);
        QCOMPARE(editor.Unions()->Items(),
                 QStringList({u"11|浙江省采购集团"_s, u"12|杭州市采购集团"_s}));
    }

    void GroupListWithoutItemsIsQueriedAgain()
    {
        NewAffiche editor;
        editor.server.ClearScripts();
        editor.server.OnAnyQuery().Answer(Rows({u"UNION_ID"_s, u"UNION_NAME"_s}, {}));
        editor.Show([&] {
            editor.DropDownUnions();
            editor.DropDownUnions();
        });
        QCOMPARE(editor.server.Queries().size(), 2);
    }

    void OpeningTheListKeepsTheGroupOfAnOldAnnouncement()
    {
        OldAffiche editor;
        editor.Show([&] {
            editor.DropDownUnions();
            QCOMPARE(editor.Unions()->currentIndex(), 1);
            QCOMPARE(editor.Unions()->EditValue(), u"12"_s);
        });
    }

    void GroupThatTheOperatorLostMeanwhileStaysChosenForTheServerToRefuse()
    {
        OldAffiche editor;
        editor.server.ClearScripts();
        editor.server.OnAnyQuery().Answer(
            Rows({u"UNION_ID"_s, u"UNION_NAME"_s}, {{u"11"_s, u"浙江省采购集团"_s}}));
        editor.server.OnPost(u"insertUpdateNotic"_s).Code(u"0"_s);
        editor.Show([&] {
            editor.DropDownUnions();
            QCOMPARE(editor.Unions()->ShownText(), u"杭州市采购集团"_s);
            editor.Save();
            QCOMPARE(editor.server.LastPost().Value(u"UNION_ID"_s), u"12"_s);
            QCOMPARE(editor.Boxes(), QStringList{Warning(u"保存数据失败！"_s)});
            QVERIFY(editor.form.isVisible());
        });
    }

    // --- What is missing -----------------------------------------------------------------------

    void WhatIsMissingIsToldInTheOrderOfTheChecks()
    {
        NewAffiche editor;
        editor.Show([&] {
            editor.Save();
            editor.Box<DateEdit>(u"edStart"_s)->SetDateText(u"2024-03-05");
            editor.Save();
            Type(&editor.form, u"edTitle"_s, u"停业通知"_s);
            editor.Save();
            Type(&editor.form, u"edAff"_s, u"春节停业。"_s);
            editor.Save();
            QVERIFY(editor.form.isVisible());
        });
        QCOMPARE(
            editor.Boxes(),
            QStringList({Warning(u"起始时间不能为空！"_s), Warning(u"请输入公告标题！"_s),
                         Warning(u"请输入公告内容！"_s), Warning(u"请选择接收公告的集团！"_s)}));
        QVERIFY(editor.server.Posts().isEmpty());
    }

    void TitleOrContentOfBlanksIsRefusedAsEmpty_data()
    {
        QTest::addColumn<QString>("box");
        QTest::addColumn<QString>("blanks");
        QTest::addColumn<QString>("message");
        QTest::newRow("title") << u"edTitle"_s << u"   "_s << u"请输入公告标题！"_s;
        QTest::newRow("title, wide") << u"edTitle"_s << u"　　"_s << u"请输入公告标题！"_s;
        QTest::newRow("content") << u"edAff"_s << u"  \n "_s << u"请输入公告内容！"_s;
    }
    void TitleOrContentOfBlanksIsRefusedAsEmpty()
    {
        QFETCH(QString, box);
        QFETCH(QString, blanks);
        QFETCH(QString, message);
        NewAffiche editor;
        editor.Show([&] {
            editor.Fill();
            Type(&editor.form, box, blanks);
            const QStringList before = editor.Boxed();
            editor.Save();
            QCOMPARE(editor.Boxes(), QStringList{Warning(message)});
            QCOMPARE(editor.Boxed(), before);
            QVERIFY(editor.form.isVisible());
        });
        QVERIFY(editor.server.Posts().isEmpty());
    }

    void EndBeforeTheStartIsPostedWithoutACheck()
    {
        NewAffiche editor;
        editor.Show([&] {
            editor.Fill(u"2024-03-04"_s);
            editor.Save();
        });
        QVERIFY(editor.Boxes().isEmpty());
        QCOMPARE(editor.server.LastPost().Value(u"END_DATE"_s), u"2024-03-04"_s);
    }

    // --- Saving new ones -----------------------------------------------------------------------

    void NewAnnouncementIsPostedAndAppended()
    {
        NewAffiche editor;
        editor.Show([&] {
            editor.Fill();
            editor.Save();
        });
        const auto post = editor.server.LastPost();
        QCOMPARE(post.manager, u"com.notic.NoticManager"_s);
        QCOMPARE(post.method, u"insertUpdateNotic"_s);
        QCOMPARE(RowTexts(post.rows), QStringList{Expected(u"affiche.insert"_s)});
        QCOMPARE(
            editor.LastRow({u"ID"_s, u"START_DATE"_s, u"END_DATE"_s, u"AFFICHE_TYPE"_s,
                            u"AFFICHE_TITLE"_s, u"AFFICHE_CONTENT"_s, u"UNION_ID"_s,
                            u"UNION_NAME"_s, u"PUBLIC_FLAG"_s, u"BUYER_FLAG"_s, u"SALER_FLAG"_s,
                            u"ENABLE_FLAG"_s, u"CREATE_USER"_s, u"CREATE_DATE"_s}),
            QStringList({u"9101"_s, u"2024-03-05 00:00:00"_s, u"2024-03-12 00:00:00"_s, u"1"_s,
                         u"停业通知"_s, u" 春节停业。 "_s, u"11"_s, u"浙江省采购集团"_s, u"1"_s,
                         u"1"_s, u"0"_s, u"0"_s, u"王敏"_s,
                         QDate::currentDate().toString(u"yyyy-MM-dd"_s) + u" 00:00:00"_s}));
    }

    void ThreeSavedAnnouncementsAreCountedAndLeaveTheDialogOpenAndEmpty()
    {
        NewAffiche editor;
        const TModalResult result = editor.Show([&] {
            for (int number = 0; number < 3; ++number) {
                editor.Fill();
                editor.Save();
                QVERIFY(editor.form.isVisible());
                QCOMPARE(editor.Boxed(), EmptyBoxes);
                QCOMPARE(FocusName(editor.form), u"edStart"_s);
            }
        });
        QCOMPARE(result, TModalResult::Cancel);
        QCOMPARE(editor.form.AddedCount(), 3);
        QCOMPARE(CellTexts(editor.list, u"ID").mid(3),
                 QStringList({u"9101"_s, u"9102"_s, u"9103"_s}));
    }

    void EmptyEndDateIsPostedEmptyAndStaysEmptyInTheRow()
    {
        NewAffiche editor;
        editor.Show([&] {
            editor.Fill({});
            editor.Save();
        });
        QVERIFY(editor.server.LastPost().Names().contains(u"END_DATE"_s));
        QCOMPARE(editor.server.LastPost().Value(u"END_DATE"_s), QString());
        QCOMPARE(editor.LastRow({u"END_DATE"_s}), QStringList{QString()});
    }

    void ListThatIsNotOpenIsCreatedWithItsOwnSpellingOfTheKind()
    {
        NewAffiche editor(false);
        editor.Show([&] {
            editor.Fill();
            editor.Save();
        });
        QStringList fields;
        for (const FieldDef &field : editor.list.Fields())
            fields << u"%1 %2 %3"_s
                          .arg(field.name,
                               QString::fromLatin1(FieldTypeName(field.type).toByteArray()))
                          .arg(field.size);
        QString wide = QString::fromLatin1(FieldTypeName(FieldType::WideText).toByteArray());
        QString date = QString::fromLatin1(FieldTypeName(FieldType::DateTime).toByteArray());
        QCOMPARE(fields,
                 QStringList({u"ID %1 10"_s.arg(wide), u"START_DATE %1 0"_s.arg(date),
                              u"END_DATE %1 0"_s.arg(date), u"AFFICH_TYPE %1 1"_s.arg(wide),
                              u"AFFICHE_TITLE %1 50"_s.arg(wide),
                              u"AFFICHE_CONTENT %1 500"_s.arg(wide), u"UNION_ID %1 10"_s.arg(wide),
                              u"UNION_NAME %1 50"_s.arg(wide), u"PUBLIC_FLAG %1 1"_s.arg(wide),
                              u"SALER_FLAG %1 1"_s.arg(wide), u"BUYER_FLAG %1 1"_s.arg(wide),
                              u"ENABLE_FLAG %1 1"_s.arg(wide), u"CREATE_DATE %1 0"_s.arg(date),
                              u"CHECK_DATE %1 0"_s.arg(date), u"CHECK_USER %1 20"_s.arg(wide)}));
        QCOMPARE(editor.LastRow({u"ID"_s, u"AFFICH_TYPE"_s, u"AFFICHE_TITLE"_s}),
                 QStringList({u"9101"_s, u""_s, u"停业通知"_s}));
        QCOMPARE(editor.form.AddedCount(), 1);
    }

    void WithoutAListTheDialogClosesWithOkAfterOne()
    {
        EditorFor<ClientDataSet *> editor(nullptr);
        const TModalResult result = editor.Show([&] {
            editor.Fill();
            editor.Save();
        });
        QCOMPARE(result, TModalResult::Ok);
        QCOMPARE(editor.form.AddedCount(), 0);
    }

    // --- Saving old ones -----------------------------------------------------------------------

    void OldAnnouncementIsPostedAndClosesWithOk()
    {
        OldAffiche editor;
        const TModalResult result = editor.Show([&] {
            FillEditor(&editor.form, u"2024-03-06"_s, {}, u"新标题"_s, u"新内容"_s, 0);
            Click(&editor.form, u"edBuyer"_s);
            editor.Save();
        });
        QCOMPARE(result, TModalResult::Ok);
        QCOMPARE(RowTexts(editor.server.LastPost().rows),
                 QStringList{Expected(u"affiche.update"_s)});
        QCOMPARE(editor.form.AddedCount(), 0);
    }

    // --- Answers -------------------------------------------------------------------------------

    void RefusalIsToldAndKeepsWhatWasEntered()
    {
        NewAffiche editor;
        editor.AnswerSave(u"0"_s);
        editor.Show([&] {
            editor.Fill();
            const QStringList before = editor.Boxed();
            editor.Save();
            QCOMPARE(editor.Boxes(), QStringList{Warning(u"保存数据失败！"_s)});
            QCOMPARE(editor.Boxed(), before);
            QVERIFY(editor.form.isVisible());
            QVERIFY(ActionEnabled(&editor.form, u"ActionSave"_s));
        });
        QCOMPARE(editor.list.RecordCount(), 3);
        QCOMPARE(editor.form.AddedCount(), 0);
    }

    void AnswersOutsideTheTableSayAndChangeNothing_data()
    {
        QTest::addColumn<QString>("code");
        for (const QString &code : {u"-1"_s, u"-2"_s, u"2"_s, u"01"_s, u""_s})
            QTest::newRow(qPrintable(u'"' + code + u'"')) << code;
    }
    void AnswersOutsideTheTableSayAndChangeNothing()
    {
        QFETCH(QString, code);
        NewAffiche editor;
        editor.AnswerSave(code);
        editor.Show([&] {
            editor.Fill();
            const QStringList before = editor.Boxed();
            editor.Save();
            QVERIFY(editor.Boxes().isEmpty());
            QCOMPARE(editor.Boxed(), before);
            QVERIFY(editor.form.isVisible());
        });
        QCOMPARE(editor.list.RecordCount(), 3);
    }

    void SaveIsDisabledWhileItRuns()
    {
        NewAffiche editor;
        editor.Show([&] {
            editor.Fill();
            QCOMPARE(editor.DisabledAtRequests(editor.form, {u"ActionSave"_s, u"BtnSave"_s},
                                               [&] { editor.Save(); }),
                     QStringList({u"ActionSave"_s, u"BtnSave"_s}));
        });
    }

    void DateThatIsStillBeingTypedCounts()
    {
        NewAffiche editor;
        editor.Show([&] {
            editor.Fill();
            auto *start = editor.Box<DateEdit>(u"edStart"_s);
            start->Clear();
            start->setFocus();
            start->home(false);
            QTest::keyClicks(start, u"20240306"_s);
            Trigger(&editor.form, u"ActionSave"_s);
        });
        QCOMPARE(editor.server.LastPost().Value(u"START_DATE"_s), u"2024-03-06"_s);
    }
};

QTEST_MAIN(SysAfficheEditTest)
#include "SysAfficheEditTest.moc"
