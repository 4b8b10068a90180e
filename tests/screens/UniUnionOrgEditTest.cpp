#include "screens/UniUnionOrgEdit.h"

#include "controls/ButtonEdit.h"
#include "controls/CheckBox.h"
#include "controls/ImageComboBox.h"
#include "controls/MemoEdit.h"
#include "screens/ScreenFixture.h"

#include <QAbstractItemView>
#include <QLabel>
#include <QPushButton>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QStringList RoleBoxes{u"ckBuy"_s, u"ckSale"_s, u"ckSend"_s, u"ckAdmin"_s};

/// Three types of group 10; all columns that matter, in another order than they are shown.
RowSet Types()
{
    return Rows({u"ORG_TYPE_ID"_s, u"UNION_ID"_s, u"ORG_TYPE_NAME"_s, u"BUYER_FLAG"_s,
                 u"SALER_FLAG"_s, u"ADMIN_FLAG"_s, u"SENDER_FLAG"_s, u"REMARK"_s},
                {{u"1"_s, u"10"_s, u"供货成员"_s, u"0"_s, u"1"_s, u"0"_s, u"0"_s, u"只供货"_s},
                 {u"2"_s, u"10"_s, u"采购配送"_s, u"1"_s, u"0"_s, u"0"_s, u"1"_s, u"采购并配送"_s},
                 {u"3"_s, u"10"_s, u"管理成员"_s, u"0"_s, u"0"_s, u"1"_s, u"0"_s, u""_s}});
}

/// 市第一医院, a supplying member of group 10.
TMemberHandOver Member()
{
    return {.unionId = u"10"_s,
            .orgId = u"501"_s,
            .orgCode = u"H501"_s,
            .orgName = u"市第一医院"_s,
            .orgTypeId = u"1"_s,
            .orgTypeName = u"供货成员"_s,
            .roles = {u"0"_s, u"1"_s, u"0"_s, u"0"_s},
            .remark = u"只供货"_s};
}

class Editor : public ScreenFixture
{
public:
    explicit Editor(const RowSet &types = Types())
    {
        server.OnQuery(u"uni_org_type"_s).Answer(types);
    }

    /// Shows the editor modally and runs `visit` in it.
    TModalResult Show(const std::function<void(QWidget *)> &visit,
                      const TMemberHandOver &handOver = Member())
    {
        TFrmUniUnionOrgEdit form(nullptr, handOver);
        return ShowModally(form, visit);
    }

    static ImageComboBox *Type(QWidget *dialog)
    {
        return Child<ImageComboBox>(dialog, u"ed_orgtype"_s);
    }

    /// Chooses an entry of the drop-down as a user does.
    static void Choose(QWidget *dialog, int entry)
    {
        ImageComboBox *combo = Type(dialog);
        combo->showPopup();
        combo->view()->setCurrentIndex(combo->model()->index(entry, 0));
        Press(combo->view(), Qt::Key_Return);
    }

    static QStringList Checked(QWidget *dialog)
    {
        QStringList names;
        for (const QString &name : RoleBoxes) {
            if (Child<QCheckBox>(dialog, name)->isChecked())
                names << name;
        }
        return names;
    }

    static QString Remark(QWidget *dialog)
    {
        return Child<MemoEdit>(dialog, u"memoRemark"_s)->toPlainText();
    }
};

} // namespace

class UniUnionOrgEditTest : public QObject
{
    Q_OBJECT

private slots:
    void LabelsAreExact()
    {
        Editor editor;
        editor.Show([](QWidget *dialog) {
            QCOMPARE(dialog->windowTitle(), u"成员维护"_s);
            QCOMPARE(Caption(*dialog, u"lbOrgName"_s), u"机构名称："_s);
            QCOMPARE(Caption(*dialog, u"lbOrgType"_s), u"成员类型："_s);
            QCOMPARE(Caption(*dialog, u"lbRoles"_s), u"成员角色："_s);
            QCOMPARE(Caption(*dialog, u"lbRemark"_s), u"备    注："_s);
            QStringList roles;
            for (const QString &name : RoleBoxes)
                roles << Child<QCheckBox>(dialog, name)->text();
            QCOMPARE(roles, QStringList({u"买方"_s, u"卖方"_s, u"配送"_s, u"管理"_s}));
            QCOMPARE(Child<QPushButton>(dialog, u"BtnSave"_s)->text(), u"保存"_s);
            QCOMPARE(Child<QPushButton>(dialog, u"BtnClose"_s)->text(), u"返回"_s);
            QCOMPARE(Child<ButtonEdit>(dialog, u"edOrgName"_s)->Buttons(), QStringList{u"选择"_s});
        });
    }

    void HandOverIsTakenFromTheMembersRow()
    {
        ClientDataSet members;
        members.Open(Rows({u"ORG_TYPE_ID"_s, u"ORG_TYPE_NAME"_s, u"BUYER_FLAG"_s, u"SALER_FLAG"_s,
                           u"SENDER_FLAG"_s, u"ADMIN_FLAG"_s, u"REMARK"_s, u"ORG_ID"_s,
                           u"ORG_CODE"_s, u"ORG_NAME"_s},
                          {{u"1"_s, u"供货成员"_s, u"0"_s, u"1"_s, u"0"_s, u"0"_s, u"只供货"_s,
                            u"501"_s, u"H501"_s, u"市第一医院"_s}}));
        const TMemberHandOver taken = MemberOfCurrentRow(u"10"_s, members);
        const TMemberHandOver wanted = Member();
        QCOMPARE(QStringList({taken.unionId, taken.orgId, taken.orgCode, taken.orgName,
                              taken.orgTypeId, taken.orgTypeName, taken.remark}),
                 QStringList({wanted.unionId, wanted.orgId, wanted.orgCode, wanted.orgName,
                              wanted.orgTypeId, wanted.orgTypeName, wanted.remark}));
        QCOMPARE(taken.roles, wanted.roles);
    }

    void ShowLoadsTheGroupsTypes()
    {
        Editor editor;
        editor.Show([&](QWidget *dialog) {
            QCOMPARE(editor.server.Queries().size(), 1);
            QCOMPARE(editor.server.LastQuery().sql, Expected(u"unionorgedit.types"_s));
            QCOMPARE(editor.server.LastQuery().page, 0);
            QCOMPARE(editor.server.LastQuery().pageSize, 0);
            QCOMPARE(editor.server.LastQuery().queryType, 2);
            QCOMPARE(Editor::Type(dialog)->Items(),
                     QStringList({u"1|供货成员"_s, u"2|采购配送"_s, u"3|管理成员"_s}));
        });
    }

    void ShowsTheMemberAsItIs()
    {
        Editor editor;
        editor.Show([](QWidget *dialog) {
            QCOMPARE(Child<ButtonEdit>(dialog, u"edOrgName"_s)->text(), u"市第一医院"_s);
            QCOMPARE(Editor::Type(dialog)->EditValue(), u"1"_s);
            QCOMPARE(Editor::Checked(dialog), QStringList{u"ckSale"_s});
            QCOMPARE(Editor::Remark(dialog), u"只供货"_s);
            QCOMPARE(dialog->focusWidget()->objectName(), u"ed_orgtype"_s);
        });
    }

    void OrganisationCannotBeChanged()
    {
        Editor editor;
        editor.Show([](QWidget *dialog) {
            auto *name = Child<ButtonEdit>(dialog, u"edOrgName"_s);
            QVERIFY(name->isReadOnly());
            QVERIFY(name->isEnabled());
            QVERIFY(!name->IsButtonEnabled(0));
            QCOMPARE(name->maxLength(), 250);
            QTest::keyClicks(name, u"abc"_s);
            QCOMPARE(name->text(), u"市第一医院"_s);
        });
    }

    void RolesAndRemarkAreReadableButReadOnly()
    {
        Editor editor;
        editor.Show([](QWidget *dialog) {
            for (const QString &name : RoleBoxes) {
                auto *box = Child<CheckBox>(dialog, name);
                QVERIFY(box->isEnabled());
                QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(5, box->height() / 2));
                Press(box, Qt::Key_Space);
            }
            QCOMPARE(Editor::Checked(dialog), QStringList{u"ckSale"_s});
            auto *remark = Child<MemoEdit>(dialog, u"memoRemark"_s);
            QVERIFY(remark->isReadOnly() && remark->isEnabled());
            QCOMPARE(remark->MaxLength(), 500);
        });
    }

    void ChoosingATypeShowsItsRolesAndRemark()
    {
        Editor editor;
        editor.Show([](QWidget *dialog) {
            Editor::Choose(dialog, 1);
            QCOMPARE(Editor::Type(dialog)->EditValue(), u"2"_s);
            QCOMPARE(Editor::Checked(dialog), QStringList({u"ckBuy"_s, u"ckSend"_s}));
            QCOMPARE(Editor::Remark(dialog), u"采购并配送"_s);
            Editor::Choose(dialog, 2);
            QCOMPARE(Editor::Checked(dialog), QStringList{u"ckAdmin"_s});
            QCOMPARE(Editor::Remark(dialog), QString());
        });
    }

    void ArrowKeysChooseToo()
    {
        Editor editor;
        editor.Show([](QWidget *dialog) {
            Press(Editor::Type(dialog), Qt::Key_Down);
            QCOMPARE(Editor::Checked(dialog), QStringList({u"ckBuy"_s, u"ckSend"_s}));
        });
    }

    void SavePostsTheChosenTypeAndCloses()
    {
        Editor editor;
        editor.server.OnPost(u"com.business.admin.UniUnionOrg"_s, u"insert_update_UniUnionOrg"_s)
            .Code(u"1"_s);
        const auto result = editor.Show([](QWidget *dialog) {
            Editor::Choose(dialog, 1);
            Click(dialog, u"BtnSave"_s);
        });
        QCOMPARE(result, TModalResult::Ok);
        QCOMPARE(editor.server.Posts().size(), 1);
        QCOMPARE(editor.server.LastPost().rows.size(), 1);
        QCOMPARE(RowText(editor.server.LastPost().rows.value(0)), Expected(u"unionorgedit.save"_s));
        QVERIFY(editor.Boxes().isEmpty());
    }

    void GroupWithoutTypesPostsAnEmptyTypeAndTheServerDecides()
    {
        Editor editor(Rows({u"ORG_TYPE_ID"_s, u"ORG_TYPE_NAME"_s}, {}));
        editor.server.OnPost(u"insert_update_UniUnionOrg"_s).Code(u"0"_s);
        const auto result = editor.Show([&](QWidget *dialog) {
            QCOMPARE(Editor::Type(dialog)->count(), 0);
            Click(dialog, u"BtnSave"_s);
            QCOMPARE(RowText(editor.server.LastPost().rows.value(0)),
                     Expected(u"unionorgedit.notype"_s));
            QVERIFY(dialog->isVisible());
        });
        QCOMPARE(result, TModalResult::Cancel);
        QCOMPARE(editor.Boxes(), QStringList{u"Information|提示|保存失败！|Ok"_s});
    }

    void TypeThatIsNoLongerOfferedIsNamedButNotChosen()
    {
        Editor editor;
        TMemberHandOver member = Member();
        member.orgTypeId = u"9"_s;
        member.orgTypeName = u"旧类型"_s;
        editor.Show(
            [](QWidget *dialog) {
                QCOMPARE(Editor::Type(dialog)->EditValue(), QString());
                QCOMPARE(Editor::Type(dialog)->placeholderText(), u"旧类型"_s);
                QCOMPARE(Editor::Checked(dialog), QStringList{u"ckSale"_s});
            },
            member);
    }

    void AnyOtherResultSaysSoAndStaysOpen_data()
    {
        QTest::addColumn<QString>("code");
        for (const char *code : {"0", "-1", "-2", "", "7"})
            QTest::newRow(qPrintable(u"code \"%1\""_s.arg(QLatin1StringView(code))))
                << QString::fromLatin1(code);
    }
    void AnyOtherResultSaysSoAndStaysOpen()
    {
        QFETCH(QString, code);
        Editor editor;
        editor.server.OnPost(u"insert_update_UniUnionOrg"_s).Code(code);
        const auto result = editor.Show([](QWidget *dialog) {
            Editor::Choose(dialog, 1);
            Click(dialog, u"BtnSave"_s);
            QVERIFY(dialog->isVisible());
            QVERIFY(Child<QPushButton>(dialog, u"BtnSave"_s)->isEnabled());
            QCOMPARE(Editor::Type(dialog)->EditValue(), u"2"_s);
        });
        QCOMPARE(result, TModalResult::Cancel);
        QCOMPARE(editor.Boxes(), QStringList{u"Information|提示|保存失败！|Ok"_s});
    }

    void ServerFailureLeavesTheChoiceAndTheButton()
    {
        Editor editor;
        editor.server.OnPost(u"insert_update_UniUnionOrg"_s).DatabaseDown();
        const auto result = editor.Show([&](QWidget *dialog) {
            Editor::Choose(dialog, 1);
            Click(dialog, u"BtnSave"_s);
            QVERIFY(dialog->isVisible());
            QVERIFY(Child<QPushButton>(dialog, u"BtnSave"_s)->isEnabled());
            QCOMPARE(Editor::Type(dialog)->EditValue(), u"2"_s);
            QCOMPARE(editor.hook.Boxes().size(), 1);
            QCOMPARE(editor.hook.Boxes().first().icon, TBoxIcon::Error);
        });
        QCOMPARE(result, TModalResult::Cancel);
    }

    void DoubleClickOnSaveStoresOnce()
    {
        Editor editor;
        editor.server.OnPost(u"insert_update_UniUnionOrg"_s).Code(u"0"_s).HoldUntilReleased();
        editor.Show([&](QWidget *dialog) {
            auto *save = Child<QPushButton>(dialog, u"BtnSave"_s);
            QObject::connect(&editor.server, &ScriptedServer::RequestArrived, dialog, [&] {
                // The second click of a double click, while the post is on its way.
                QTest::mouseClick(save, Qt::LeftButton);
                QMetaObject::invokeMethod(
                    dialog, [&] { editor.server.Release(); }, Qt::QueuedConnection);
            });
            Click(save);
            QCoreApplication::processEvents();
        });
        QCOMPARE(editor.server.Posts().size(), 1);
    }

    void EscPressesBack()
    {
        Editor editor;
        TFrmUniUnionOrgEdit form(nullptr, Member());
        ModalVisitor visitor([](QWidget *dialog) { Press(Editor::Type(dialog), Qt::Key_Escape); });
        QCOMPARE(form.ShowModal(), TModalResult::Cancel);
    }

    void EnterGoesFromTheTypeToSave()
    {
        Editor editor;
        editor.Show([](QWidget *dialog) {
            Press(Editor::Type(dialog), Qt::Key_Return);
            QCOMPARE(dialog->focusWidget()->objectName(), u"BtnSave"_s);
        });
    }
};

QTEST_MAIN(UniUnionOrgEditTest)
#include "UniUnionOrgEditTest.moc"
