#include "screens/UniMemberType.h"

#include "controls/DataGrid.h"
#include "screens/ScreenFixture.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QStringList TypeColumns{
    u"ORG_TYPE_ID:20"_s, u"UNION_ID:10"_s,  u"ORG_TYPE_NAME:40"_s,
    u"BUYER_FLAG:1"_s,   u"SALER_FLAG:1"_s, u"SENDER_FLAG:1"_s,
    u"ADMIN_FLAG:1"_s,   u"REMARK:200"_s,   u"LAST_OPERATE:1"_s,
};

/// A hospital that buys, and a dealer whose LAST_OPERATE and remark came empty.
RowSet TwoTypes()
{
    return Rows(
        TypeColumns,
        {{u"T1"_s, u"10"_s, u"采购医院"_s, u"1"_s, u"0"_s, u"0"_s, u"0"_s, u"只采购"_s, u"1"_s},
         {u"T2"_s, u"10"_s, u"配送企业"_s, u"0"_s, u"1"_s, u"1"_s, u"0"_s, Null(), u""_s}});
}

/// The dialog for group 10, shown modally while a visit lasts.
class Dialog : public ScreenFixture
{
public:
    explicit Dialog(const RowSet &types = TwoTypes())
    {
        server.OnQuery(u"uni_Org_type"_s).Answer(types).Times(1);
    }

    /// Runs `visit` in the open dialog; cancels it if it is still open then.
    TModalResult Show(const std::function<void()> &visit)
    {
        TfrmUniMemberType form(nullptr, u"10"_s);
        form_ = &form;
        return ShowModally(form, [&visit](QWidget *) { visit(); });
    }

    QWidget &Form() { return *form_; }
    DataGrid &Grid() { return *Child<DataGrid>(form_, u"GridOrg"_s); }
    ClientDataSet &Types() { return *Grid().DataSet(); }
    void Press(const QString &button) { Click(form_, button); }
    bool Enabled(const QString &button) { return Child<QPushButton>(form_, button)->isEnabled(); }
    /// The open cell's editor; one that was closed still lives until the event loop turns.
    QLineEdit *Editor()
    {
        const auto editors = Grid().findChildren<QLineEdit *>(u"cellEditor"_s);
        const auto open = std::ranges::find_if(editors, &QWidget::isVisible);
        return open == editors.end() ? nullptr : *open;
    }

    void ClickTick(int row, QStringView field)
    {
        const QModelIndex cell = Grid().model()->index(row, Grid().ColumnIndex(field));
        QTest::mouseClick(Grid().viewport(), Qt::LeftButton, {}, Grid().visualRect(cell).center());
    }
    /// Adds a type and types its name into the cell, without leaving it.
    void Add(const QString &name)
    {
        Press(u"btnAdd"_s);
        Type(Editor(), name);
    }
    QStringList PostedRows() { return RowTexts(server.LastPost().rows); }
    ScriptedServer::Script &OnSave()
    {
        return server.OnPost(u"com.business.admin.UniUnion"_s, u"insert_update_UniOrgType"_s);
    }

private:
    QPointer<QWidget> form_;
};

const QString Saved = u"Information|提示|保存成功！|Ok"_s;
const QString NotSaved = u"Warning|警告|保存失败！|Ok"_s;

} // namespace

class UniMemberTypeTest : public QObject
{
    Q_OBJECT

private slots:
    void StatementIsExact() { QCOMPARE(UniMemberTypeSql(u"1'0"_s), Expected(u"types"_s)); }

    void CaptionsAndColumnsAreExact()
    {
        Dialog dialog;
        dialog.Show([&] {
            QCOMPARE(dialog.Form().windowTitle(), u"成员类型维护"_s);
            const QList<std::pair<QString, QString>> buttons{{u"btnAdd"_s, u"新增"_s},
                                                             {u"btnModify"_s, u"修改"_s},
                                                             {u"btnDelete"_s, u"删除"_s},
                                                             {u"BtnOk"_s, u"保存"_s},
                                                             {u"BtnClose"_s, u"取消"_s}};
            for (const auto &[name, text] : buttons)
                QCOMPARE(Child<QPushButton>(&dialog.Form(), name)->text(), text);
            QStringList columns;
            for (const GridColumn &column : dialog.Grid().Model()->Columns())
                columns << column.field + u' ' + column.caption + u' ' +
                               QString::number(int(column.editor));
            const auto editor = [](GridEditor kind) { return QString::number(int(kind)); };
            QCOMPARE(columns,
                     QStringList({u"ORG_TYPE_NAME 成员类型名称 "_s + editor(GridEditor::Text),
                                  u"BUYER_FLAG 买方 "_s + editor(GridEditor::Check),
                                  u"SALER_FLAG 卖方 "_s + editor(GridEditor::Check),
                                  u"ADMIN_FLAG 管理 "_s + editor(GridEditor::Check),
                                  u"SENDER_FLAG 配送 "_s + editor(GridEditor::Check),
                                  u"REMARK 备注 "_s + editor(GridEditor::Text)}));
        });
    }

    void ShowingLoadsTheTypesOfTheGroup()
    {
        Dialog dialog;
        dialog.Show([&] {
            QCOMPARE(dialog.server.Statements(), QStringList{UniMemberTypeSql(u"10"_s)});
            QCOMPARE(dialog.server.LastQuery().queryType, 1);
            QCOMPARE(dialog.server.LastQuery().page, 0);
            QCOMPARE(dialog.server.LastQuery().pageSize, 0);
            QCOMPARE(dialog.Grid().Model()->rowCount(), 2);
            QVERIFY(dialog.Enabled(u"btnModify"_s) && dialog.Enabled(u"btnDelete"_s));
            QCOMPARE(FocusName(dialog.Form()), u"GridOrg"_s);
        });
    }

    void RowsMarkedDeletedAreNotShown()
    {
        Dialog dialog(
            Rows(TypeColumns,
                 {{u"T1"_s, u"10"_s, u"甲"_s, u"1"_s, u"0"_s, u"0"_s, u"0"_s, u""_s, u"D"_s},
                  {u"T2"_s, u"10"_s, u"乙"_s, u"1"_s, u"0"_s, u"0"_s, u"0"_s, u""_s, Null()}}));
        dialog.Show([&] {
            QCOMPARE(dialog.Grid().Model()->rowCount(), 1);
            QCOMPARE(dialog.Types().FieldText(u"ORG_TYPE_ID"), u"T2"_s);
        });
    }

    void GroupWithoutTypesHasAnEmptyGridToAddTo()
    {
        Dialog dialog(Rows(TypeColumns, {}));
        dialog.Show([&] {
            QCOMPARE(dialog.Grid().Model()->rowCount(), 0);
            QVERIFY(!dialog.Enabled(u"btnModify"_s) && !dialog.Enabled(u"btnDelete"_s));
            QCOMPARE(FocusName(dialog.Form()), u"btnAdd"_s);
            dialog.Press(u"btnAdd"_s);
            QCOMPARE(dialog.Grid().Model()->rowCount(), 1);
            QVERIFY(dialog.Enabled(u"btnModify"_s) && dialog.Enabled(u"btnDelete"_s));
        });
    }

    void WithoutALoadedTableAddCreatesTheDeclaredFields_data()
    {
        QTest::addColumn<bool>("failure");
        QTest::newRow("the load failed") << true;
        QTest::newRow("the answer has no columns") << false;
    }
    void WithoutALoadedTableAddCreatesTheDeclaredFields()
    {
        QFETCH(bool, failure);
        Dialog dialog(Rows({}, {}));
        if (failure) {
            dialog.server.ClearScripts();
            dialog.server.OnQuery(u"uni_Org_type"_s).DatabaseDown();
        }
        dialog.OnSave().Code(u"1"_s);
        dialog.Show([&] {
            QCOMPARE(dialog.hook.Boxes().size(), failure ? 1 : 0); // the host's error handling
            QVERIFY(!dialog.Types().IsActive());
            QVERIFY(!dialog.Enabled(u"btnModify"_s) && !dialog.Enabled(u"btnDelete"_s));
            dialog.Add(u"监管机构"_s);
            QStringList fields;
            for (const FieldDef &field : dialog.Types().Fields()) {
                QCOMPARE(field.type, FieldType::Text);
                fields << field.name + u' ' + QString::number(field.size);
            }
            QCOMPARE(fields,
                     QStringList({u"ORG_TYPE_ID 20"_s, u"ORG_TYPE_NAME 40"_s, u"BUYER_FLAG 1"_s,
                                  u"SALER_FLAG 1"_s, u"SENDER_FLAG 1"_s, u"ADMIN_FLAG 1"_s,
                                  u"REMARK 200"_s, u"LAST_OPERATE 1"_s}));
            dialog.Press(u"BtnOk"_s);
            QCOMPARE(dialog.PostedRows(), QStringList{Expected(u"type.new"_s)});
        });
    }

    void AddOpensTheNameOfANewLastRow()
    {
        Dialog dialog;
        dialog.Show([&] {
            dialog.Grid().setCurrentIndex(
                dialog.Grid().model()->index(0, dialog.Grid().ColumnIndex(u"REMARK")));
            dialog.Press(u"btnAdd"_s);
            QCOMPARE(dialog.Types().RecordCount(), 3);
            QCOMPARE(dialog.Types().RecNo(), 2);
            QVERIFY(dialog.Editor());
            QCOMPARE(QApplication::focusWidget(), dialog.Editor());
            Type(dialog.Editor(), u"监管机构"_s);
            Test::Press(dialog.Editor(), Qt::Key_Return);
            QTRY_VERIFY(!dialog.Editor());
            QCOMPARE(dialog.Types().TextAt(2, u"ORG_TYPE_NAME"), u"监管机构"_s);
            QCOMPARE(FocusName(dialog.Form()), u"GridOrg"_s);
        });
    }

    void AddedRowShowsAlthoughItsLastOperateIsNull()
    {
        Dialog dialog;
        dialog.Show([&] {
            dialog.Add(u"甲"_s);
            dialog.Add(u"乙"_s); // the first is posted by that and must pass the filter
            QCOMPARE(dialog.Types().RecordCount(), 4);
            QVERIFY(dialog.Types().IsNullAt(2, dialog.Types().FieldIndex(u"LAST_OPERATE")));
            QCOMPARE(dialog.Types().TextAt(2, u"ORG_TYPE_NAME"), u"甲"_s);
        });
    }

    void TextsAreLimitedToTheirFields_data()
    {
        QTest::addColumn<bool>("loaded");
        QTest::addColumn<QString>("field");
        QTest::addColumn<int>("limit");
        QTest::newRow("name") << true << u"ORG_TYPE_NAME"_s << 40;
        QTest::newRow("remark") << true << u"REMARK"_s << 200;
        QTest::newRow("name in a created table") << false << u"ORG_TYPE_NAME"_s << 40;
        QTest::newRow("remark in a created table") << false << u"REMARK"_s << 200;
    }
    void TextsAreLimitedToTheirFields()
    {
        QFETCH(bool, loaded);
        QFETCH(QString, field);
        QFETCH(int, limit);
        Dialog dialog(loaded ? TwoTypes() : Rows({}, {}));
        dialog.OnSave().Code(u"0"_s);
        dialog.Show([&] {
            dialog.Press(u"btnAdd"_s);
            dialog.Grid().EditCell(field);
            QGuiApplication::clipboard()->setText(QString(limit + 160, u'药'));
            dialog.Editor()->paste();
            QCOMPARE(dialog.Editor()->text(), QString(limit, u'药'));
            dialog.Press(u"BtnOk"_s);
            QCOMPARE(dialog.server.LastPost().Value(field, loaded ? 2 : 0), QString(limit, u'药'));
            QCOMPARE(dialog.Boxes(), QStringList{NotSaved});
        });
    }

    void ModifyOpensTheCurrentRowsEditor()
    {
        Dialog dialog;
        dialog.Show([&] {
            dialog.Types().SetRecNo(1);
            dialog.Press(u"btnModify"_s);
            QVERIFY(dialog.Types().IsEditing());
            QVERIFY(dialog.Editor());
            QCOMPARE(dialog.Editor()->text(), u"配送企业"_s);
            Type(dialog.Editor(), u"物流企业"_s);
            dialog.ClickTick(0, u"BUYER_FLAG"); // leaving the row keeps what was typed
            QCOMPARE(dialog.Types().TextAt(1, u"ORG_TYPE_NAME"), u"物流企业"_s);
            QVERIFY(!dialog.Types().IsEditing());
            QCOMPARE(dialog.Types().RecNo(), 0);
        });
    }

    void EnterInTheGridModifiesTheCurrentRow()
    {
        Dialog dialog;
        dialog.Show([&] {
            Test::Press(&dialog.Grid(), Qt::Key_Return);
            QVERIFY(dialog.Editor());
            QCOMPARE(dialog.Editor()->text(), u"采购医院"_s);
        });
    }

    void RowIsFilledInByTheKeyboardAlone()
    {
        Dialog dialog;
        dialog.Show([&] {
            dialog.Add(u"监管机构"_s);
            Test::Press(dialog.Editor(), Qt::Key_Tab);
            QVERIFY(!dialog.Editor());
            QCOMPARE(FocusName(dialog.Form()), u"GridOrg"_s);
            Test::Press(&dialog.Grid(), Qt::Key_Right);
            Test::Press(&dialog.Grid(), Qt::Key_Space);
            Test::Press(&dialog.Grid(), Qt::Key_Right);
            Test::Press(&dialog.Grid(), Qt::Key_Space);
            QCOMPARE(dialog.Types().RecNo(), 2);
            QCOMPARE(dialog.Types().FieldText(u"ORG_TYPE_NAME"), u"监管机构"_s);
            QVERIFY(dialog.Types().FieldIsNull(u"BUYER_FLAG"));
            QCOMPARE(dialog.Types().FieldText(u"SALER_FLAG"), u"1"_s);
            QCOMPARE(dialog.Types().FieldText(u"ADMIN_FLAG"), u"1"_s);
        });
    }

    void TicksStoreOneAndZero()
    {
        Dialog dialog;
        dialog.Show([&] {
            for (const QStringView flag :
                 {u"BUYER_FLAG", u"SALER_FLAG", u"SENDER_FLAG", u"ADMIN_FLAG"}) {
                const bool ticked = dialog.Types().TextAt(0, flag) == u"1";
                dialog.ClickTick(0, flag);
                QCOMPARE(dialog.Types().TextAt(0, flag), ticked ? u"0"_s : u"1"_s);
                dialog.ClickTick(0, flag);
                QCOMPARE(dialog.Types().TextAt(0, flag), ticked ? u"1"_s : u"0"_s);
            }
        });
    }

    void EveryRowIsPostedInTableOrderChangedOrNot()
    {
        Dialog dialog;
        dialog.OnSave().Code(u"1"_s);
        dialog.Show([&] {
            dialog.Types().SetRecNo(1);
            dialog.Press(u"btnModify"_s);
            Type(dialog.Editor(), u"物流企业"_s);
            dialog.ClickTick(1, u"SALER_FLAG");
            dialog.ClickTick(1, u"ADMIN_FLAG");
            dialog.Add(u"监管机构"_s);
            dialog.Press(u"BtnOk"_s);
        });
        QCOMPARE(dialog.PostedRows(),
                 QStringList({Expected(u"type.hospital"_s), Expected(u"type.dealer.changed"_s),
                              Expected(u"type.new"_s)}));
    }

    void SavingWithoutAChangePostsTheRowsAsTheyCame()
    {
        Dialog dialog;
        dialog.OnSave().Code(u"1"_s);
        dialog.Show([&] { dialog.Press(u"BtnOk"_s); });
        QCOMPARE(dialog.PostedRows(),
                 QStringList({Expected(u"type.hospital"_s), Expected(u"type.dealer"_s)}));
    }

    void UntouchedFlagOfANewRowIsSentAsZero()
    {
        Dialog dialog(Rows(TypeColumns, {}));
        dialog.OnSave().Code(u"1"_s);
        dialog.Show([&] {
            dialog.Add(u"监管机构"_s);
            QVERIFY(dialog.Types().FieldIsNull(u"BUYER_FLAG"));
            dialog.Press(u"BtnOk"_s);
        });
        QCOMPARE(dialog.PostedRows(), QStringList{Expected(u"type.new"_s)});
    }

    void DeletingALoadedRowHidesItAtOnceAndSendsItWithD()
    {
        Dialog dialog;
        dialog.OnSave().Code(u"1"_s);
        dialog.Show([&] {
            dialog.Press(u"btnDelete"_s);
            QCOMPARE(dialog.Grid().Model()->rowCount(), 1);
            QVERIFY(dialog.server.Posts().isEmpty());
            QVERIFY(dialog.Boxes().isEmpty());
            dialog.Press(u"BtnOk"_s);
        });
        QCOMPARE(dialog.PostedRows(),
                 QStringList({Expected(u"type.hospital.deleted"_s), Expected(u"type.dealer"_s)}));
    }

    void DeletingTheLastShownRowDisablesModifyAndDelete()
    {
        Dialog dialog;
        dialog.Show([&] {
            dialog.Press(u"btnDelete"_s);
            QVERIFY(dialog.Enabled(u"btnModify"_s) && dialog.Enabled(u"btnDelete"_s));
            dialog.Press(u"btnDelete"_s);
            QVERIFY(!dialog.Enabled(u"btnModify"_s) && !dialog.Enabled(u"btnDelete"_s));
        });
    }

    void RowAddedAndDeletedAgainIsNotSent()
    {
        Dialog dialog;
        dialog.OnSave().Code(u"1"_s);
        dialog.Show([&] {
            dialog.Add(u"监管机构"_s);
            dialog.Press(u"btnDelete"_s);
            dialog.Press(u"BtnOk"_s);
        });
        QCOMPARE(dialog.PostedRows(),
                 QStringList({Expected(u"type.hospital"_s), Expected(u"type.dealer"_s)}));
    }

    void TableOfSkippedRowsPostsTheEmptyListAndReportsTheAnswer_data()
    {
        QTest::addColumn<QStringList>("codes");
        QTest::addColumn<QString>("box");
        QTest::addColumn<bool>("closes");
        QTest::newRow("stored") << QStringList{u"1"_s} << Saved << true;
        QTest::newRow("refused") << QStringList{u"0"_s} << NotSaved << false;
        QTest::newRow("no result row") << QStringList() << NotSaved << false;
    }
    void TableOfSkippedRowsPostsTheEmptyListAndReportsTheAnswer()
    {
        QFETCH(QStringList, codes);
        QFETCH(QString, box);
        QFETCH(bool, closes);
        Dialog dialog(Rows(TypeColumns, {}));
        dialog.OnSave().Codes(codes);
        const TModalResult result = dialog.Show([&] {
            dialog.Add(u"监管机构"_s);
            dialog.Press(u"btnDelete"_s);
            dialog.Press(u"BtnOk"_s);
        });
        QCOMPARE(dialog.server.Posts().size(), 1);
        QVERIFY(dialog.PostedRows().isEmpty());
        QCOMPARE(dialog.Boxes(), QStringList{box});
        QCOMPARE(result, closes ? TModalResult::Ok : TModalResult::Cancel);
    }

    void EmptyTableSendsNothingAndShowsNoMessage_data()
    {
        QTest::addColumn<bool>("open");
        QTest::newRow("without rows") << true;
        QTest::newRow("not open") << false;
    }
    void EmptyTableSendsNothingAndShowsNoMessage()
    {
        QFETCH(bool, open);
        Dialog dialog(Rows(open ? TypeColumns : QStringList(), {}));
        dialog.Show([&] {
            dialog.Press(u"BtnOk"_s);
            QVERIFY(dialog.Form().isVisible());
        });
        QVERIFY(dialog.server.Posts().isEmpty());
        QVERIFY(dialog.Boxes().isEmpty());
    }

    void TextStillInTheCellEditorIsSaved()
    {
        Dialog dialog;
        dialog.OnSave().Code(u"1"_s);
        dialog.Show([&] {
            dialog.Add(u"监管机构"_s);
            // As a shortcut or a tool presses it: the editor keeps the focus.
            Child<QPushButton>(&dialog.Form(), u"BtnOk"_s)->click();
        });
        QCOMPARE(dialog.PostedRows().value(2), Expected(u"type.new"_s));
    }

    void SuccessSaysSoAndClosesWithOk()
    {
        Dialog dialog;
        dialog.OnSave().Code(u"1"_s);
        QCOMPARE(dialog.Show([&] { dialog.Press(u"BtnOk"_s); }), TModalResult::Ok);
        QCOMPARE(dialog.Boxes(), QStringList{Saved});
        QCOMPARE(dialog.server.Queries().size(), 1);
    }

    void AnyOtherAnswerSaysSoAndStaysOpen_data()
    {
        QTest::addColumn<QString>("code");
        for (const char *code : {"0", "-1", "-2", "7", ""})
            QTest::newRow(code) << QString::fromLatin1(code);
    }
    void AnyOtherAnswerSaysSoAndStaysOpen()
    {
        QFETCH(QString, code);
        Dialog dialog;
        dialog.OnSave().Code(code);
        dialog.Show([&] {
            dialog.Press(u"BtnOk"_s);
            QVERIFY(dialog.Form().isVisible());
            QVERIFY(!dialog.Types().ControlsDisabled());
            QVERIFY(dialog.Enabled(u"BtnOk"_s) && dialog.Enabled(u"btnModify"_s));
        });
        QCOMPARE(dialog.Boxes(), QStringList{NotSaved});
    }

    void FilterIsDeliberatelyLeftOffAfterAFailedSave()
    {
        Dialog dialog;
        dialog.OnSave().Code(u"0"_s);
        dialog.Show([&] {
            dialog.Press(u"btnDelete"_s);
            dialog.Press(u"btnDelete"_s);
            QVERIFY(!dialog.Enabled(u"btnDelete"_s));
            dialog.Press(u"BtnOk"_s);
            QVERIFY(!dialog.Types().IsFiltered());
            QCOMPARE(dialog.Grid().Model()->rowCount(), 2); // the deleted ones show again
            QVERIFY(dialog.Enabled(u"btnModify"_s) && dialog.Enabled(u"btnDelete"_s));
            dialog.server.ClearScripts();
            dialog.OnSave().Code(u"1"_s);
            dialog.Press(u"BtnOk"_s);
            QCOMPARE(dialog.server.LastPost().Value(u"LAST_OPERATE"_s, 0), u"D"_s);
            QCOMPARE(dialog.server.LastPost().Value(u"LAST_OPERATE"_s, 1), u"D"_s);
        });
    }

    void ServerFailureLosesNothingAndLeavesTheGridAttached()
    {
        Dialog dialog;
        dialog.OnSave().DatabaseDown().Times(1);
        dialog.OnSave().Code(u"1"_s);
        const TModalResult result = dialog.Show([&] {
            dialog.Add(u"监管机构"_s);
            dialog.Press(u"BtnOk"_s);
            QCOMPARE(dialog.hook.Boxes().size(), 1);
            QVERIFY(dialog.hook.Boxes().first().text.contains(u"数据库不可用"_s));
            QVERIFY(dialog.Form().isVisible());
            QVERIFY(!dialog.Types().ControlsDisabled());
            QCOMPARE(dialog.Grid().Model()->rowCount(), 3);
            QVERIFY(dialog.Enabled(u"BtnOk"_s) && dialog.Enabled(u"btnDelete"_s));
            const QStringList first = dialog.PostedRows();
            QCOMPARE(first.value(2), Expected(u"type.new"_s));
            dialog.Press(u"BtnOk"_s);
            QCOMPARE(dialog.PostedRows(), first);
        });
        QCOMPARE(result, TModalResult::Ok);
    }

    void SaveIsDisabledWhileItRuns()
    {
        Dialog dialog;
        dialog.OnSave().Code(u"0"_s);
        dialog.Show([&] {
            bool enabled = true;
            connect(&dialog.server, &ScriptedServer::RequestArrived, &dialog.Form(),
                    [&] { enabled = dialog.Enabled(u"BtnOk"_s); });
            dialog.Press(u"BtnOk"_s);
            QVERIFY(!enabled);
            QVERIFY(dialog.Enabled(u"BtnOk"_s));
        });
    }

    void EscLeavesTheCellFirstAndThenTheDialog()
    {
        Dialog dialog;
        const TModalResult result = dialog.Show([&] {
            dialog.Press(u"btnModify"_s);
            Type(dialog.Editor(), u"别的"_s);
            Test::Press(dialog.Editor(), Qt::Key_Escape);
            QVERIFY(dialog.Form().isVisible());
            QCOMPARE(dialog.Types().FieldText(u"ORG_TYPE_NAME"), u"采购医院"_s);
            Test::Press(&dialog.Grid(), Qt::Key_Escape);
            QVERIFY(!dialog.Form().isVisible());
        });
        QCOMPARE(result, TModalResult::Cancel);
        QVERIFY(dialog.server.Posts().isEmpty());
    }

    void CancelSendsNothing()
    {
        Dialog dialog;
        const TModalResult result = dialog.Show([&] {
            dialog.Press(u"btnDelete"_s);
            dialog.Press(u"BtnClose"_s);
        });
        QCOMPARE(result, TModalResult::Cancel);
        QVERIFY(dialog.server.Posts().isEmpty());
        QVERIFY(dialog.Boxes().isEmpty());
    }
};

QTEST_MAIN(UniMemberTypeTest)
#include "UniMemberTypeTest.moc"
