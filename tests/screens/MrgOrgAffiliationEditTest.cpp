#include "screens/MrgOrgAffiliationEdit.h"

#include "controls/ButtonEdit.h"
#include "screens/ScreenFixture.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QString Save = u"insertUpdateOrgAffiliation"_s;

/// A place at the top, or the next one below 501, which stands at 0001.
const TAffiliation Top;
const TAffiliation Below{
    .parentOrgId = u"501"_s, .parentCode = u"0001"_s, .parentName = u"省中心"_s};

TAffiliation Existing()
{
    TAffiliation place = Below;
    place.mode = TAffiliation::Mode::Modify;
    place.id = u"91"_s;
    place.orgId = u"503"_s;
    place.orgName = u"市第三医院"_s;
    place.orgAbbr = u"三院"_s;
    place.code = u"09"_s;
    return place;
}

/// What the picker finds.
RowSet Organisation()
{
    return Rows(
        {u"ORG_ID"_s, u"ORG_CODE"_s, u"ORG_NAME"_s, u"ORG_ABBR"_s, u"ORG_NAME_PY"_s,
         u"ORG_NAME_WB"_s, u"ORG_TYPE"_s},
        {{u"502"_s, u"H502"_s, u"市第二医院"_s, u"二院"_s, u"SDEYY"_s, u"YTFAB"_s, u"4"_s}});
}

/// The editor over a list of one row, with a server that knows the next code and one organisation.
class Editor : public ScreenFixture
{
public:
    explicit Editor(const QString &nextCode = u"13"_s)
    {
        list.Open(
            Rows({u"ID"_s, u"ORG_ID"_s, u"PARENT_ORGID"_s, u"TREE_CODE"_s, u"TREE_LEVEL"_s,
                  u"ENABLE_FLAG"_s, u"ORG_ABBR"_s, u"ORG_NAME"_s},
                 {{u"90"_s, u"501"_s, Null(), u"0001"_s, u"1"_s, u"1"_s, u"中心"_s, u"省中心"_s}}));
        server.OnQuery(u"AS CODE"_s).Answer(Rows({u"CODE"_s}, {{nextCode}}));
        server.OnQuery(u"BAS_ORG WHERE LAST_OPERATE<>'D'"_s).Answer(Organisation());
    }

    /// Shows the editor modally and runs `visit` in it.
    TModalResult Show(const TAffiliation &place, const std::function<void(QWidget *)> &visit)
    {
        TFrmMrgOrgAffiliationEdit form(nullptr, list, place);
        const TModalResult result = ShowModally(form, visit);
        left = form.Place();
        return result;
    }

    static QString Text(QWidget *dialog, const QString &name)
    {
        return Child<QLineEdit>(dialog, name)->text();
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

    static void Paste(QWidget *dialog, const QString &text)
    {
        auto *code = Child<QLineEdit>(dialog, u"edTREE_CODE"_s);
        code->setFocus();
        code->selectAll();
        QGuiApplication::clipboard()->setText(text);
        code->paste();
        QCOMPARE(code->text(), text);
    }

    ClientDataSet list;
    TAffiliation left; ///< what Place() said after the last Show
};

} // namespace

class MrgOrgAffiliationEditTest : public QObject
{
    Q_OBJECT

private slots:
    void StatementsAreExact()
    {
        QCOMPARE(AffiliationCode::Query(true, {}), Expected(u"place.code.top"_s));
        QCOMPARE(AffiliationCode::Query(false, u"5'01"_s), Expected(u"place.code.sub"_s));
    }

    void LevelFollowsFromTheLengthOfTheCode()
    {
        const QStringList levels{u"0"_s, u"0"_s, u"0"_s, u"0"_s, u"1"_s, u"0"_s, u"2"_s, u"0"_s,
                                 u"3"_s, u"0"_s, u"4"_s, u"0"_s, u"5"_s, u"0"_s, u"0"_s};
        for (int length = 0; length < levels.size(); ++length)
            QCOMPARE(AffiliationCode::Level(QString(length, u'1')), levels[length]);
    }

    void LabelsAndLimitsAreExact()
    {
        Editor editor;
        editor.Show(Top, [&](QWidget *dialog) {
            QCOMPARE(dialog->windowTitle(), u"机构从属维护"_s);
            QStringList labels;
            for (const QLabel *label : dialog->findChildren<QLabel *>()) {
                if (!label->text().isEmpty())
                    labels << label->text();
            }
            for (const QString &label :
                 {u"父级编码："_s, u"父级名称："_s, u"编    码："_s, u"机    构："_s})
                QVERIFY2(labels.contains(label), qPrintable(label));
            QCOMPARE(Child<QPushButton>(dialog, u"BtnSave"_s)->text(), u"保存"_s);
            QCOMPARE(Child<QPushButton>(dialog, u"BtnClose"_s)->text(), u"返回"_s);
            QCOMPARE(Child<ButtonEdit>(dialog, u"edOrgName"_s)->Buttons(), QStringList{u"选择"_s});
            QCOMPARE(Child<QLineEdit>(dialog, u"edTREE_CODE"_s)->maxLength(), 12);
            for (const auto &name : {u"edParentCode"_s, u"edParentName"_s})
                QVERIFY(Child<QLineEdit>(dialog, name)->isReadOnly());
        });
    }

    void FirstTopLevelRowIsProposed0001()
    {
        Editor editor(u"1"_s);
        editor.Show(Top, [&](QWidget *dialog) {
            QCOMPARE(editor.server.Statements(), QStringList{Expected(u"place.code.top"_s)});
            QCOMPARE(editor.server.LastQuery().page, 0);
            QCOMPARE(editor.server.LastQuery().pageSize, 0);
            QCOMPARE(Editor::Text(dialog, u"edTREE_CODE"_s), u"0001"_s);
            QCOMPARE(Editor::Text(dialog, u"edParentCode"_s), QString());
            QCOMPARE(FocusName(*dialog), u"edOrgName"_s);
        });
    }

    void FirstChildIsProposed01()
    {
        Editor editor(u"1"_s);
        editor.Show(Below, [&](QWidget *dialog) {
            QCOMPARE(editor.server.Statements(),
                     QStringList{AffiliationCode::Query(false, u"501"_s)});
            QCOMPARE(Editor::Text(dialog, u"edTREE_CODE"_s), u"01"_s);
            QCOMPARE(Editor::Text(dialog, u"edParentCode"_s), u"0001"_s);
            QCOMPARE(Editor::Text(dialog, u"edParentName"_s), u"省中心"_s);
        });
    }

    void NextChildIsProposedAlthoughTheAnswerLostItsZeros()
    {
        Editor editor(u"110"_s); // 000109 + 1
        editor.Show(Below, [](QWidget *dialog) {
            QCOMPARE(Editor::Text(dialog, u"edTREE_CODE"_s), u"10"_s);
        });
    }

    void ParentWithAChildEndingIn99IsProposed00()
    {
        Editor editor(u"200"_s); // 000199 + 1
        editor.Show(Below, [](QWidget *dialog) {
            QCOMPARE(Editor::Text(dialog, u"edTREE_CODE"_s), u"00"_s);
        });
    }

    void TypingLettersIsImpossible()
    {
        Editor editor;
        editor.Show(Below, [](QWidget *dialog) {
            Type(dialog, u"edTREE_CODE"_s, u"7"_s);
            auto *code = Child<QLineEdit>(dialog, u"edTREE_CODE"_s);
            QTest::keyClicks(code, QStringLiteral("aZ-. "));
            QCOMPARE(code->text(), u"7"_s);
            Press(code, Qt::Key_Backspace);
            QCOMPARE(code->text(), QString());
            QTest::keyClicks(code, QStringLiteral("08"));
            Press(code, Qt::Key_Return);
            QCOMPARE(code->text(), u"08"_s);
            QCOMPARE(FocusName(*dialog), u"edOrgName"_s);
        });
        QVERIFY(editor.Boxes().isEmpty());
    }

    void PastedLettersAreCaughtWhenLeavingTheField()
    {
        Editor editor;
        editor.Show(Below, [&](QWidget *dialog) {
            Editor::Paste(dialog, u"0a"_s);
            Press(dialog, u"edTREE_CODE"_s, Qt::Key_Tab);
            QTRY_COMPARE(editor.Boxes(), QStringList{u"Warning|警告|编码中含有非法字符！|Ok"_s});
            QCOMPARE(Editor::Text(dialog, u"edTREE_CODE"_s), u"13"_s); // what was proposed
            QCOMPARE(FocusName(*dialog), u"edTREE_CODE"_s);
        });
    }

    void PastedLettersAreNotSavedEither()
    {
        Editor editor;
        editor.Show(Below, [&](QWidget *dialog) {
            Editor::Choose(dialog);
            Editor::Paste(dialog, u"0a"_s);
            Click(dialog, u"BtnSave"_s);
            QCoreApplication::processEvents();
            QCOMPARE(editor.Boxes(), QStringList{u"Warning|警告|编码中含有非法字符！|Ok"_s});
            QCOMPARE(Editor::Text(dialog, u"edTREE_CODE"_s), u"13"_s);
            QCOMPARE(FocusName(*dialog), u"edTREE_CODE"_s);
        });
        QVERIFY(editor.server.Posts().isEmpty());
    }

    void SaveChecksInOrderAndPostsNothing_data()
    {
        QTest::addColumn<bool>("top");
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("message");
        QTest::newRow("no code at the top") << true << u""_s << u"请输入机构编码！"_s;
        QTest::newRow("no code below") << false << u""_s << u"请输入机构编码！"_s;
        QTest::newRow("three digits at the top") << true << u"001"_s << u"请输入 4 位编码！"_s;
        QTest::newRow("five digits at the top") << true << u"00001"_s << u"请输入 4 位编码！"_s;
        QTest::newRow("one digit below") << false << u"1"_s << u"请输入 2 位编码！"_s;
        QTest::newRow("whole code below") << false << u"000101"_s << u"请输入 2 位编码！"_s;
        QTest::newRow("no organisation at the top") << true << u"0002"_s << u"请选择机构！"_s;
        QTest::newRow("no organisation below") << false << u"02"_s << u"请选择机构！"_s;
    }
    void SaveChecksInOrderAndPostsNothing()
    {
        QFETCH(bool, top);
        QFETCH(QString, code);
        QFETCH(QString, message);
        Editor editor;
        editor.Show(top ? Top : Below, [&](QWidget *dialog) {
            Type(dialog, u"edTREE_CODE"_s, code);
            Click(dialog, u"BtnSave"_s);
            QCOMPARE(editor.Boxes(), QStringList{u"Information|提示|"_s + message + u"|Ok"_s});
        });
        QVERIFY(editor.server.Posts().isEmpty());
        QCOMPARE(editor.list.RecordCount(), 1);
    }

    void OrganisationComesFromThePicker()
    {
        Editor editor;
        editor.Show(Top, [&](QWidget *dialog) {
            Editor::Choose(dialog);
            QCOMPARE(editor.server.LastQuery().sql, Expected(u"place.organisations"_s));
            auto *edit = Child<ButtonEdit>(dialog, u"edOrgName"_s);
            QCOMPARE(edit->text(), u"市第二医院"_s);
            QCOMPARE(edit->ChosenValue(), u"502"_s);
        });
    }

    void EnterInTheFieldOpensThePicker()
    {
        Editor editor;
        editor.Show(Existing(), [](QWidget *dialog) {
            ModalVisitor picker([](QWidget *orgSelect) {
                QCOMPARE(Editor::Text(orgSelect, u"edOrg"_s), u"市第三医院"_s);
                Click(orgSelect, u"BtnCancel"_s);
            });
            Press(dialog, u"edOrgName"_s, Qt::Key_Return);
            QVERIFY(picker.Visited());
            QCOMPARE(Editor::Text(dialog, u"edOrgName"_s), u"市第三医院"_s);
        });
    }

    void StoredTopLevelRowIsPostedAndAppended()
    {
        Editor editor;
        editor.server.OnPost(u"com.business.basedata.OrgAffiliationManager"_s, Save)
            .Code(u"1"_s, {{u"ID"_s, u"97"_s}});
        editor.Show(Top, [](QWidget *dialog) {
            Editor::Choose(dialog);
            Click(dialog, u"BtnSave"_s);
        });
        QCOMPARE(editor.server.Posts().size(), 1);
        QCOMPARE(RowTexts(editor.server.LastPost().rows), QStringList{Expected(u"place.insert"_s)});
        QCOMPARE(editor.list.RecordCount(), 2);
        QCOMPARE(editor.list.RecNo(), 1);
        for (const auto &[field, value] : {std::pair{u"ID"_s, u"97"_s},
                                           {u"ORG_ID"_s, u"502"_s},
                                           {u"PARENT_ORGID"_s, u""_s},
                                           {u"TREE_CODE"_s, u"0013"_s},
                                           {u"TREE_LEVEL"_s, u"1"_s},
                                           {u"ORG_NAME"_s, u"市第二医院"_s},
                                           {u"ORG_ABBR"_s, u"二院"_s}})
            QCOMPARE(editor.list.FieldText(field), value);
        QVERIFY(editor.Boxes().isEmpty());
    }

    void InsertDialogStaysOpenForTheNextOrganisation()
    {
        Editor editor;
        editor.server.ClearScripts();
        editor.server.OnQuery(u"AS CODE"_s).Answer(Rows({u"CODE"_s}, {{u"110"_s}})).Times(1);
        editor.server.OnQuery(u"AS CODE"_s).Answer(Rows({u"CODE"_s}, {{u"111"_s}}));
        editor.server.OnQuery(u"FROM BAS_ORG "_s).Answer(Organisation());
        editor.server.OnPost(Save).Code(u"1"_s, {{u"ID"_s, u"97"_s}});
        const auto result = editor.Show(Below, [&](QWidget *dialog) {
            Editor::Choose(dialog);
            Click(dialog, u"BtnSave"_s);
            QVERIFY(dialog->isVisible());
            QCOMPARE(RowTexts(editor.server.LastPost().rows),
                     QStringList{Expected(u"place.insertsub"_s)});
            QCOMPARE(Editor::Text(dialog, u"edTREE_CODE"_s), u"11"_s);
            QCOMPARE(Editor::Text(dialog, u"edOrgName"_s), QString());
            QCOMPARE(Child<ButtonEdit>(dialog, u"edOrgName"_s)->ChosenValue(), QString());
            QCOMPARE(FocusName(*dialog), u"edOrgName"_s);
            Click(dialog, u"BtnSave"_s);
            QCOMPARE(editor.Boxes(), QStringList{u"Information|提示|请选择机构！|Ok"_s});
            Editor::Choose(dialog);
            Click(dialog, u"BtnSave"_s);
            QCOMPARE(editor.server.LastPost().Value(u"TREE_CODE"_s), u"000111"_s);
            QCOMPARE(editor.server.LastPost().Value(u"ID"_s), QString());
        });
        QCOMPARE(result, TModalResult::Cancel); // closed by hand
        QCOMPARE(CellTexts(editor.list, u"TREE_CODE"),
                 QStringList({u"0001"_s, u"000110"_s, u"000111"_s}));
        QCOMPARE(CellTexts(editor.list, u"PARENT_ORGID"), QStringList({u""_s, u"501"_s, u"501"_s}));
    }

    void FirstRowOpensAClosedList()
    {
        Editor editor;
        editor.list.Close();
        editor.list.SetFieldDefs({});
        editor.server.OnPost(Save).Code(u"1"_s, {{u"ID"_s, u"97"_s}});
        editor.Show(Top, [](QWidget *dialog) {
            Editor::Choose(dialog);
            Click(dialog, u"BtnSave"_s);
        });
        QCOMPARE(editor.list.RecordCount(), 1);
        for (const auto &field : {u"ORG_ID"_s, u"PARENT_ORGID"_s, u"TREE_CODE"_s, u"TREE_LEVEL"_s,
                                  u"ORG_NAME"_s, u"ORG_ABBR"_s})
            QVERIFY2(editor.list.HasField(field), qPrintable(field));
        QCOMPARE(editor.list.FieldText(u"ORG_NAME"), u"市第二医院"_s);
    }

    void ModifyingPostsTheIdAndClosesWithOk()
    {
        Editor editor;
        editor.server.OnPost(Save).Code(u"1"_s, {{u"ID"_s, u"91"_s}});
        const auto result = editor.Show(Existing(), [&](QWidget *dialog) {
            QVERIFY(editor.server.Queries().isEmpty()); // proposes nothing
            QCOMPARE(Editor::Text(dialog, u"edTREE_CODE"_s), u"09"_s);
            QCOMPARE(Editor::Text(dialog, u"edOrgName"_s), u"市第三医院"_s);
            Type(dialog, u"edTREE_CODE"_s, u"77"_s);
            Editor::Choose(dialog);
            Click(dialog, u"BtnSave"_s);
        });
        QCOMPARE(result, TModalResult::Ok);
        QCOMPARE(RowTexts(editor.server.LastPost().rows), QStringList{Expected(u"place.modify"_s)});
        QCOMPARE(editor.list.RecordCount(), 1); // the opener writes its row
        QCOMPARE(editor.left.orgId, u"502"_s);
        QCOMPARE(editor.left.orgName, u"市第二医院"_s);
        QCOMPARE(editor.left.orgAbbr, u"二院"_s);
        QCOMPARE(editor.left.parentCode + editor.left.code, u"000177"_s);
    }

    void CodeOfAPlaceWithOthersBelowIsReadOnly()
    {
        Editor editor;
        TAffiliation place = Existing();
        place.codeFixed = true;
        editor.Show(place, [](QWidget *dialog) {
            QVERIFY(Child<QLineEdit>(dialog, u"edTREE_CODE"_s)->isReadOnly());
            Press(dialog, u"edTREE_CODE"_s, Qt::Key_5);
            QCOMPARE(Editor::Text(dialog, u"edTREE_CODE"_s), u"09"_s);
        });
        editor.Show(Existing(), [](QWidget *dialog) {
            QVERIFY(!Child<QLineEdit>(dialog, u"edTREE_CODE"_s)->isReadOnly());
        });
    }

    void RefusedSaveSaysWhyAndStaysAsEdited_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("box");
        QTest::newRow("organisation has a place")
            << u"-2"_s << u"Information|提示|已存在该机构，不能保存！|Ok"_s;
        QTest::newRow("code is taken") << u"-1"_s << u"Information|提示|编码重复！|Ok"_s;
        QTest::newRow("failure") << u"0"_s << u"Information|提示|保存失败！|Ok"_s;
        QTest::newRow("unknown code") << u"5"_s << QString();
    }
    void RefusedSaveSaysWhyAndStaysAsEdited()
    {
        QFETCH(QString, code);
        QFETCH(QString, box);
        Editor editor;
        // A key beside a refusal must not be taken for a stored one.
        editor.server.OnPost(Save).Code(code, {{u"ID"_s, u"97"_s}});
        for (const TAffiliation &place : {Below, Existing()}) {
            editor.hook.Clear();
            const auto result = editor.Show(place, [&](QWidget *dialog) {
                Type(dialog, u"edTREE_CODE"_s, u"44"_s);
                Editor::Choose(dialog);
                Click(dialog, u"BtnSave"_s);
                QVERIFY(dialog->isVisible());
                QVERIFY(Child<QPushButton>(dialog, u"BtnSave"_s)->isEnabled());
                QCOMPARE(Editor::Text(dialog, u"edTREE_CODE"_s), u"44"_s);
                QCOMPARE(Editor::Text(dialog, u"edOrgName"_s), u"市第二医院"_s);
                QCOMPARE(editor.Boxes(), box.isEmpty() ? QStringList() : QStringList{box});
            });
            QCOMPARE(result, TModalResult::Cancel);
        }
        QCOMPARE(editor.list.RecordCount(), 1);
    }

    void SaveIsDisabledWhileItRuns()
    {
        Editor editor;
        editor.server.OnPost(Save).Code(u"0"_s).HoldUntilReleased();
        editor.Show(Top, [&](QWidget *dialog) {
            Editor::Choose(dialog);
            auto *save = Child<QPushButton>(dialog, u"BtnSave"_s);
            bool enabledMeanwhile = true;
            QObject::connect(&editor.server, &ScriptedServer::RequestArrived, dialog, [&] {
                enabledMeanwhile = save->isEnabled();
                QMetaObject::invokeMethod(
                    &editor.server, [&] { editor.server.Release(); }, Qt::QueuedConnection);
            });
            Click(save);
            QVERIFY(!enabledMeanwhile);
            QVERIFY(save->isEnabled());
        });
        QCOMPARE(editor.server.Posts().size(), 1);
    }

    void EscPressesBack()
    {
        Editor editor;
        TFrmMrgOrgAffiliationEdit form(nullptr, editor.list, Top);
        ModalVisitor visitor(
            [](QWidget *dialog) { Press(dialog, u"edTREE_CODE"_s, Qt::Key_Escape); });
        QCOMPARE(form.ShowModal(), TModalResult::Cancel);
    }
};

QTEST_MAIN(MrgOrgAffiliationEditTest)
#include "MrgOrgAffiliationEditTest.moc"
