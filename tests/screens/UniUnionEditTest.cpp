#include "screens/UniUnionEdit.h"

#include "controls/ButtonEdit.h"
#include "controls/ImageComboBox.h"
#include "controls/MemoEdit.h"
#include "frame/DataModule.h"
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

/// The editor over a table of 0013 and its sub-group 001309 (current row).
class Editor : public ScreenFixture
{
public:
    Editor()
    {
        unions.Open(Rows(UnionColumns(),
                         {{u"10"_s, Null(), u"0013"_s, u"华北联合体"_s, u"3"_s, u""_s, u"500"_s,
                           u""_s, u""_s, u"省卫生厅"_s},
                          {u"11"_s, u"10"_s, u"001309"_s, u"石家庄小组"_s, u"2"_s, u"1301"_s,
                           u"501"_s, u"旧备注"_s, u"石家庄市"_s, u"市第一医院"_s}}));
        unions.SetRecNo(1);
        server.OnQuery(u"AS CODE"_s).Answer(Rows({u"CODE"_s}, {{u"13"_s}}));
        server.OnQuery(u"from BAS_REGION"_s)
            .Answer(
                Rows({u"REGION_ID"_s, u"PARENT_ID"_s, u"REGION_CODE"_s, u"REGION_NAME"_s,
                      u"FULL_NAME"_s, u"CHINA_FLAG"_s},
                     {{u"13"_s, u"-1"_s, u"13"_s, u"河北省"_s, u"河北省"_s, u"1"_s},
                      {u"1302"_s, u"13"_s, u"1302"_s, u"唐山市"_s, u"河北省唐山市"_s, u"1"_s}}));
        server.OnQuery(u"FROM BAS_ORG"_s)
            .Answer(Rows({u"ORG_ID"_s, u"ORG_CODE"_s, u"ORG_NAME"_s, u"ORG_ABBR"_s,
                          u"ORG_NAME_PY"_s, u"ORG_NAME_WB"_s, u"ORG_TYPE"_s},
                         {{u"502"_s, u"H502"_s, u"市第二医院"_s, u"二院"_s, u"SDEYY"_s, u"YTFAB"_s,
                           u"4"_s}}));
    }

    /// Shows the editor modally and runs `visit` in it.
    TModalResult Show(const TUnionHandOver &handOver, const std::function<void(QWidget *)> &visit)
    {
        TFrmUniUnionEdit form(nullptr, unions, handOver);
        return ShowModally(form, visit);
    }

    static QString Text(QWidget *dialog, const QString &name)
    {
        return Child<QLineEdit>(dialog, name)->text();
    }

    /// Fills in a complete new top-level group and presses save.
    void FillInAndSave(QWidget *dialog)
    {
        Type(dialog, u"edUnion_NAME"_s, u" 华北采购联合体 "_s);
        Child<ImageComboBox>(dialog, u"cbUnion_TYPE"_s)->SetEditValue(u"3"_s);
        Child<MemoEdit>(dialog, u"cxREMARK"_s)->setPlainText(u"季度集中采购"_s);
        ChooseMaster(dialog);
        Click(dialog, u"BtnSave"_s);
    }

    static void ChooseMaster(QWidget *dialog)
    {
        ModalVisitor picker([](QWidget *orgSelect) {
            Click(orgSelect, u"BtnQuery"_s);
            Click(orgSelect, u"BtnSelect"_s);
        });
        Child<ButtonEdit>(dialog, u"edMasterOrgName"_s)->PressButton(0);
    }

    ClientDataSet unions;
};

/// For a new group below 0013.
TUnionHandOver SubGroup(ClientDataSet &unions)
{
    unions.SetRecNo(0);
    return ChildOfCurrentRow(unions);
}

} // namespace

class UniUnionEditTest : public QObject
{
    Q_OBJECT

private slots:
    void CodeQueriesAreExactAndLookAtEnableFlag()
    {
        QCOMPARE(UniUnionCode::Query(true, {}), Expected(u"code.top"_s));
        QCOMPARE(UniUnionCode::Query(false, u"1'0"_s), Expected(u"code.sub"_s));
    }

    void LabelsAndListsAreExact()
    {
        Editor editor;
        editor.Show({}, [&](QWidget *dialog) {
            QCOMPARE(dialog->windowTitle(), u"集团维护"_s);
            QStringList labels;
            for (const QLabel *label : dialog->findChildren<QLabel *>()) {
                if (!label->text().isEmpty())
                    labels << label->text();
            }
            for (const auto &label :
                 {u"集团编码："_s, u"集团名称："_s, u"集团类型："_s, u"所属地区："_s,
                  u"主管机构："_s, u"备    注："_s, u"父级编码："_s, u"父级名称："_s})
                QVERIFY2(labels.contains(label), qPrintable(label));
            QCOMPARE(Child<QPushButton>(dialog, u"BtnSave"_s)->text(), u"保存"_s);
            QCOMPARE(Child<QPushButton>(dialog, u"BtnClose"_s)->text(), u"返回"_s);
            QCOMPARE(Child<ButtonEdit>(dialog, u"edRegionName"_s)->Buttons(),
                     QStringList{u"选择"_s});
            QCOMPARE(Child<ButtonEdit>(dialog, u"edMasterOrgName"_s)->Buttons(),
                     QStringList{u"选择"_s});
            QVERIFY(Child<QLineEdit>(dialog, u"edParentCode"_s)->isReadOnly());
            QVERIFY(Child<QLineEdit>(dialog, u"edParentName"_s)->isReadOnly());
        });
    }

    void FirstGroupTypeEndsInABlank()
    {
        Editor editor;
        editor.Show({}, [](QWidget *dialog) {
            QCOMPARE(Child<ImageComboBox>(dialog, u"cbUnion_TYPE"_s)->Items(),
                     QStringList({u"1|卫生局 "_s, u"2|采购小组"_s, u"3|采购联合体"_s}));
        });
    }

    void NewTopLevelGroupAsksForTheNextCode()
    {
        Editor editor;
        editor.Show({}, [&](QWidget *dialog) {
            QCOMPARE(editor.server.LastQuery().sql, Expected(u"code.top"_s));
            QCOMPARE(editor.server.LastQuery().page, 0);
            QCOMPARE(editor.server.LastQuery().pageSize, 0);
            QCOMPARE(editor.server.LastQuery().queryType, 1);
            QCOMPARE(Editor::Text(dialog, u"edUnion_CODE"_s), u"0013"_s);
            Type(dialog, u"edUnion_CODE"_s, u"123456"_s);
            QCOMPARE(Editor::Text(dialog, u"edUnion_CODE"_s), u"1234"_s);
        });
    }

    void NewSubGroupHasATwoDigitCode()
    {
        Editor editor;
        editor.Show(SubGroup(editor.unions), [&](QWidget *dialog) {
            QCOMPARE(Editor::Text(dialog, u"edUnion_CODE"_s), u"13"_s);
            QCOMPARE(Editor::Text(dialog, u"edParentCode"_s), u"0013"_s);
            Type(dialog, u"edUnion_CODE"_s, u"123"_s);
            QCOMPARE(Editor::Text(dialog, u"edUnion_CODE"_s), u"12"_s);
        });
    }

    void ModifyingAsksForNoCode()
    {
        Editor editor;
        editor.Show(UnionOfCurrentRow(editor.unions), [&](QWidget *dialog) {
            QVERIFY(editor.server.Queries().isEmpty());
            QCOMPARE(Editor::Text(dialog, u"edUnion_CODE"_s), u"09"_s);
            QCOMPARE(Child<ImageComboBox>(dialog, u"cbUnion_TYPE"_s)->EditValue(), u"2"_s);
            QCOMPARE(Child<MemoEdit>(dialog, u"cxREMARK"_s)->toPlainText(), u"旧备注"_s);
        });
    }

    void TypedLettersHaveNoEffect()
    {
        Editor editor;
        editor.Show({}, [&](QWidget *dialog) {
            Type(dialog, u"edUnion_CODE"_s, u"12"_s);
            auto *code = Child<QLineEdit>(dialog, u"edUnion_CODE"_s);
            QTest::keyClicks(code, QStringLiteral("aZ-. "));
            QCOMPARE(code->text(), u"12"_s);
            Press(code, Qt::Key_Backspace);
            QCOMPARE(code->text(), u"1"_s);
        });
    }

    void LeavingACodeWithPastedLettersWarns()
    {
        Editor editor;
        editor.Show({}, [&](QWidget *dialog) {
            auto *code = Child<QLineEdit>(dialog, u"edUnion_CODE"_s);
            code->setFocus();
            code->selectAll();
            QGuiApplication::clipboard()->setText(u"00a1"_s);
            code->paste();
            QCOMPARE(code->text(), u"00a1"_s);
            Press(code, Qt::Key_Tab);
            QTRY_COMPARE(editor.Boxes(), QStringList{u"Warning|警告|编码中含有非法字符！|Ok"_s});
        });
    }

    void LimitsHoldForTypedAndPastedTexts()
    {
        Editor editor;
        editor.Show({}, [&](QWidget *dialog) {
            auto *name = Child<QLineEdit>(dialog, u"edUnion_NAME"_s);
            name->clear();
            name->insert(QString(200, u'名'));
            QCOMPARE(name->text().size(), 24);
            auto *remark = Child<MemoEdit>(dialog, u"cxREMARK"_s);
            remark->setPlainText(QString(90, u'甲'));
            remark->moveCursor(QTextCursor::End);
            QGuiApplication::clipboard()->setText(QString(50, u'乙'));
            remark->paste();
            QCOMPARE(remark->toPlainText(), QString(90, u'甲') + QString(10, u'乙'));
            QTest::keyClicks(remark, QStringLiteral("x"));
            QCOMPARE(remark->toPlainText().size(), 100);
        });
    }

    void SaveChecksInOrderAndPostsNothing()
    {
        Editor editor;
        const auto result = editor.Show({}, [&](QWidget *dialog) {
            const auto save = [&] {
                Click(dialog, u"BtnSave"_s);
                return editor.Boxes().last();
            };
            Type(dialog, u"edUnion_CODE"_s, u""_s);
            QCOMPARE(save(), u"Information|提示|请输入集团编码！|Ok"_s);
            Type(dialog, u"edUnion_CODE"_s, u"001"_s);
            QCOMPARE(save(), u"Warning|警告|请输入 4 位集团编码！|Ok"_s);
            Type(dialog, u"edUnion_CODE"_s, u"0013"_s);
            Type(dialog, u"edUnion_NAME"_s, u"  "_s);
            QCOMPARE(save(), u"Information|提示|请输入集团名称！|Ok"_s);
            Type(dialog, u"edUnion_NAME"_s, u"华北采购联合体"_s);
            QCOMPARE(save(), u"Warning|警告|请选择主管机构！|Ok"_s);
            QCOMPARE(editor.hook.Boxes().size(), 4);
        });
        QVERIFY(editor.server.Posts().isEmpty());
        QCOMPARE(result, TModalResult::Cancel);
    }

    void SubGroupCodeHasTwoDigits()
    {
        Editor editor;
        editor.Show(SubGroup(editor.unions), [&](QWidget *dialog) {
            Type(dialog, u"edUnion_CODE"_s, u"1"_s);
            Click(dialog, u"BtnSave"_s);
            QCOMPARE(editor.Boxes(), QStringList{u"Warning|警告|请输入 2 位集团编码！|Ok"_s});
        });
    }

    void StoredTopLevelGroupIsAppendedToTheTree()
    {
        Editor editor;
        editor.server.OnPost(u"com.business.admin.UniUnion"_s, u"insert_update_UniUnion"_s)
            .Code(u"1"_s, {{u"UNION_ID"_s, u"99"_s}});
        const auto result = editor.Show({}, [&](QWidget *dialog) { editor.FillInAndSave(dialog); });
        QCOMPARE(result, TModalResult::Ok);
        QCOMPARE(editor.server.Posts().size(), 1);
        QCOMPARE(RowText(editor.server.LastPost().rows.value(0)), Expected(u"union.insert"_s));
        QCOMPARE(editor.unions.RecordCount(), 3);
        QVERIFY(editor.unions.Locate(u"UNION_ID", {u"99"_s}));
        QCOMPARE(editor.unions.FieldText(u"UNION_CODE"), u"0013"_s);
        QCOMPARE(editor.unions.FieldText(u"MASTER_ORGID"), u"502"_s);
        QCOMPARE(editor.unions.FieldText(u"MASTER_ORGNAME"), u"市第二医院"_s);
        QVERIFY(editor.Boxes().isEmpty());
    }

    void StoredSubGroupCarriesItsParent()
    {
        Editor editor;
        editor.server.OnPost(u"insert_update_UniUnion"_s).Code(u"1"_s, {{u"UNION_ID"_s, u"98"_s}});
        editor.Show(SubGroup(editor.unions), [&](QWidget *dialog) {
            Type(dialog, u"edUnion_CODE"_s, u"10"_s);
            Type(dialog, u"edUnion_NAME"_s, u"石家庄采购小组"_s);
            Editor::ChooseMaster(dialog);
            Click(dialog, u"BtnSave"_s);
        });
        QCOMPARE(RowText(editor.server.LastPost().rows.value(0)), Expected(u"union.insertsub"_s));
        QVERIFY(editor.unions.Locate(u"UNION_ID", {u"98"_s}));
        QCOMPARE(editor.unions.FieldText(u"PARENT_ID"), u"10"_s);
    }

    void ModifiedGroupChangesItsRow()
    {
        Editor editor;
        editor.server.OnPost(u"insert_update_UniUnion"_s).Code(u"1"_s, {{u"UNION_ID"_s, u"11"_s}});
        editor.Show(UnionOfCurrentRow(editor.unions), [&](QWidget *dialog) {
            Type(dialog, u"edUnion_NAME"_s, u"新名称"_s);
            Click(dialog, u"BtnSave"_s);
        });
        QCOMPARE(RowText(editor.server.LastPost().rows.value(0)), Expected(u"union.modify"_s));
        QCOMPARE(editor.unions.RecordCount(), 2);
        QCOMPARE(editor.unions.RecNo(), 1);
        QCOMPARE(editor.unions.FieldText(u"UNION_NAME"), u"新名称"_s);
        QCOMPARE(editor.unions.FieldText(u"REGION_NAME"), u"石家庄市"_s);
        QCOMPARE(editor.unions.CurrentState(), ClientDataSet::State::Browse);
    }

    void NewGroupOpensAClosedTable()
    {
        Editor editor;
        editor.unions.Close();
        editor.unions.SetFieldDefs({});
        editor.server.OnPost(u"insert_update_UniUnion"_s).Code(u"1"_s, {{u"UNION_ID"_s, u"99"_s}});
        editor.Show({}, [&](QWidget *dialog) { editor.FillInAndSave(dialog); });
        QCOMPARE(editor.unions.RecordCount(), 1);
        QCOMPARE(editor.unions.FieldText(u"UNION_ID"), u"99"_s);
    }

    void RefusedSaveSaysWhyAndStaysOpen_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("box");
        QTest::newRow("organisation leads a group")
            << u"-2"_s << u"Information|提示|机构已存在！|Ok"_s;
        QTest::newRow("code is taken") << u"-1"_s << u"Information|提示|集团编码重复！|Ok"_s;
        QTest::newRow("failure") << u"0"_s << u"Information|提示|保存失败！|Ok"_s;
        QTest::newRow("unknown code") << u"5"_s << QString();
    }
    void RefusedSaveSaysWhyAndStaysOpen()
    {
        QFETCH(QString, code);
        QFETCH(QString, box);
        Editor editor;
        // A key beside a refusal must not be taken for a stored one.
        editor.server.OnPost(u"insert_update_UniUnion"_s).Code(code, {{u"UNION_ID"_s, u"77"_s}});
        const auto result = editor.Show({}, [&](QWidget *dialog) {
            editor.FillInAndSave(dialog);
            QVERIFY(dialog->isVisible());
            QVERIFY(Child<QPushButton>(dialog, u"BtnSave"_s)->isEnabled());
            QCOMPARE(Editor::Text(dialog, u"edUnion_NAME"_s), u" 华北采购联合体 "_s);
        });
        QCOMPARE(result, TModalResult::Cancel);
        QCOMPARE(editor.Boxes().value(0), box);
        QCOMPARE(editor.Boxes().size(), box.isEmpty() ? 0 : 1);
        QCOMPARE(editor.unions.RecordCount(), 2);
    }

    void DoubleClickOnSaveStoresOnce()
    {
        Editor editor;
        editor.server.OnPost(u"insert_update_UniUnion"_s).Code(u"0"_s).HoldUntilReleased();
        editor.Show({}, [&](QWidget *dialog) {
            auto *save = Child<QPushButton>(dialog, u"BtnSave"_s);
            QObject::connect(&editor.server, &ScriptedServer::RequestArrived, dialog, [&] {
                if (editor.server.Posts().isEmpty())
                    return;
                // The second click of a double click, while the post is on its way.
                QTest::mouseClick(save, Qt::LeftButton);
                QMetaObject::invokeMethod(
                    dialog, [&] { editor.server.Release(); }, Qt::QueuedConnection);
            });
            editor.FillInAndSave(dialog);
            QCoreApplication::processEvents();
            QCOMPARE(editor.server.Posts().size(), 1);
        });
        QCOMPARE(editor.server.Posts().size(), 1);
    }

    void ServerFailureLeavesTheInputAndTheButton()
    {
        Editor editor;
        editor.server.OnPost(u"insert_update_UniUnion"_s).DatabaseDown();
        editor.Show({}, [&](QWidget *dialog) {
            editor.FillInAndSave(dialog);
            QVERIFY(dialog->isVisible());
            QVERIFY(Child<QPushButton>(dialog, u"BtnSave"_s)->isEnabled());
            QCOMPARE(editor.hook.Boxes().size(), 1);
            QCOMPARE(editor.unions.RecordCount(), 2);
        });
    }

    void RegionComesFromThePicker()
    {
        Editor editor;
        editor.server.OnPost(u"insert_update_UniUnion"_s).Code(u"0"_s);
        editor.Show({}, [&](QWidget *dialog) {
            auto *region = Child<ButtonEdit>(dialog, u"edRegionName"_s);
            ModalVisitor picker([](QWidget *regionSelect) {
                Type(regionSelect, u"edInformation"_s, u"唐山"_s);
                Press(regionSelect, u"edInformation"_s, Qt::Key_Return);
                Trigger(regionSelect, u"ActionSelect"_s);
            });
            region->PressButton(0);
            QCOMPARE(region->text(), u"河北省唐山市"_s);
            editor.FillInAndSave(dialog);
            QCOMPARE(editor.server.LastPost().Value(u"REGION_ID"_s), u"1302"_s);
            // Delete takes the region away again.
            Press(region, Qt::Key_Delete);
            QCOMPARE(region->text(), QString());
            Click(dialog, u"BtnSave"_s);
            QCOMPARE(editor.server.LastPost().Value(u"REGION_ID"_s), QString());
        });
    }

    void CancelledPickersChangeNothing()
    {
        Editor editor;
        editor.Show(UnionOfCurrentRow(editor.unions), [&](QWidget *dialog) {
            for (const QString &name : {u"edRegionName"_s, u"edMasterOrgName"_s}) {
                auto *edit = Child<ButtonEdit>(dialog, name);
                const QString before = edit->text();
                ModalVisitor picker([](QWidget *select) { Click(select, u"BtnCancel"_s); });
                edit->PressButton(0);
                QCOMPARE(edit->text(), before);
            }
        });
    }

    void EscPressesBack()
    {
        Editor editor;
        TFrmUniUnionEdit form(nullptr, editor.unions, {});
        ModalVisitor visitor([](QWidget *dialog) {
            Press(Child<QLineEdit>(dialog, u"edUnion_NAME"_s), Qt::Key_Escape);
        });
        QCOMPARE(form.ShowModal(), TModalResult::Cancel);
    }

    void EnterMovesToTheNextControl()
    {
        Editor editor;
        editor.Show({}, [](QWidget *dialog) {
            auto *code = Child<QLineEdit>(dialog, u"edUnion_CODE"_s);
            code->setFocus();
            Press(code, Qt::Key_Return);
            QCOMPARE(dialog->focusWidget()->objectName(), u"edUnion_NAME"_s);
        });
    }
};

QTEST_MAIN(UniUnionEditTest)
#include "UniUnionEditTest.moc"
