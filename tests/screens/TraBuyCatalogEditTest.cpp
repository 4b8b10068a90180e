#include "screens/TraBuyCatalogEdit.h"

#include "screens/ScreenFixture.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

/// The editor for organisation 502, new unless told otherwise.
class Editor : public ScreenFixture
{
public:
    Editor() { form.SetBuyOrgId(u"502"_s); }

    void AppendsTo(ClientDataSet &rows) { form.SetDataSet(&rows); }
    void Renames(const QString &id, const QString &name)
    {
        form.SetEditMode(true);
        form.SetCatalogId(id);
        form.SetBuyOrgId(u"501"_s);
        form.SetName(name);
    }
    ScriptedServer::Script &OnSave(const QString &code, const QString &id = {})
    {
        return server.OnPost(u"com.business.admin.TraBuyCatalog"_s, u"insertUpdateBuyCatalog"_s)
            .Code(code,
                  id.isEmpty() ? Wire::NamedValues() : Wire::NamedValues{{u"CATALOG_ID"_s, id}});
    }
    void Save(const QString &name)
    {
        Type(&form, u"edName"_s, name);
        Click(&form, u"btnSave"_s);
    }
    QLineEdit &Name() { return *Child<QLineEdit>(&form, u"edName"_s); }
    TModalResult Run(const std::function<void()> &visit)
    {
        return ShowModally(form, [&](QWidget *) { visit(); });
    }

    TFrmTraBuyCatalogEdit form;
};

const QString NameMissing = u"Warning|警告|药库名称不能为空！|Ok"_s;

} // namespace

class TraBuyCatalogEditTest : public QObject
{
    Q_OBJECT

private slots:
    void CaptionsAreExact()
    {
        Editor editor;
        QCOMPARE(editor.form.windowTitle(), u"机构药库设置"_s);
        QCOMPARE(Caption(editor.form, u"lbName"_s), u"药库名称："_s);
        QCOMPARE(Caption(editor.form, u"btnSave"_s), u"保存"_s);
        QCOMPARE(Caption(editor.form, u"btnCancel"_s), u"取消"_s);
    }

    void ANewOneStartsEmptyAndARenamedOneWithItsNameSelected()
    {
        Editor fresh;
        fresh.form.SetName(u"从前的"_s);
        fresh.Run([&] {
            QCOMPARE(fresh.Name().text(), QString());
            QCOMPARE(FocusName(fresh.form), u"edName"_s);
        });
        Editor renaming;
        renaming.Renames(u"71"_s, u"西药库"_s);
        renaming.Run([&] {
            QCOMPARE(renaming.Name().selectedText(), u"西药库"_s);
            QCOMPARE(FocusName(renaming.form), u"edName"_s);
        });
    }

    void ANameOfBlanksCountsAsEmpty_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("nothing") << QString();
        QTest::newRow("blanks") << u"   "_s;
        QTest::newRow("wide blanks") << u"　　"_s;
    }
    void ANameOfBlanksCountsAsEmpty()
    {
        QFETCH(QString, name);
        Editor editor;
        const TModalResult result = editor.Run([&] {
            editor.Save(name);
            QCOMPARE(FocusName(editor.form), u"edName"_s);
        });
        QCOMPARE(editor.Boxes(), QStringList{NameMissing});
        QVERIFY(editor.server.Posts().isEmpty());
        QCOMPARE(result, TModalResult::Cancel);
    }

    void AnEleventhCharacterCannotBeTyped()
    {
        Editor editor;
        editor.Run([&] {
            QTest::keyClicks(&editor.Name(), u"12345678901"_s);
            QCOMPARE(editor.Name().text(), u"1234567890"_s);
            editor.Name().clear();
            QGuiApplication::clipboard()->setText(u"一二三四五六七八九十甲乙"_s);
            editor.Name().paste();
            QCOMPARE(editor.Name().text(), u"一二三四五六七八九十"_s);
        });
    }

    void TwoSavesAppendTwoRowsAndLeaveTheDialogOpenAndEmpty()
    {
        ClientDataSet rows;
        rows.Open(Rows(
            {u"CATALOG_ID"_s, u"CATALOG_NAME"_s, u"BUY_ORGID"_s, u"LAST_USER"_s, u"LAST_UPDATE"_s},
            {{u"71"_s, u"总库"_s, u"501"_s, u"李娜"_s, Null()}}));
        Editor editor;
        editor.AppendsTo(rows);
        editor.OnSave(u"1"_s, u"91"_s).Times(1);
        editor.OnSave(u"1"_s, u"92"_s);
        const TModalResult result = editor.Run([&] {
            editor.Save(u" 西药库 "_s);
            QVERIFY(editor.form.isVisible());
            QCOMPARE(editor.Name().text(), QString());
            QCOMPARE(FocusName(editor.form), u"edName"_s);
            editor.Save(u"中药库"_s);
            QCOMPARE(editor.Name().text(), QString());
            Click(&editor.form, u"btnCancel"_s);
        });
        QCOMPARE(result, TModalResult::Cancel);
        QCOMPARE(CellTexts(rows, u"CATALOG_ID"), QStringList({u"71"_s, u"91"_s, u"92"_s}));
        QCOMPARE(CellTexts(rows, u"CATALOG_NAME"),
                 QStringList({u"总库"_s, u"西药库"_s, u"中药库"_s}));
        QCOMPARE(rows.FieldText(u"BUY_ORGID"), u"502"_s);
        QCOMPARE(rows.FieldText(u"LAST_USER"), u"王敏"_s);
        QCOMPARE(RowText(editor.server.Posts()[0].rows.first()), Expected(u"buycatalog.new"_s));
        QCOMPARE(RowText(editor.server.Posts()[1].rows.first()), Expected(u"buycatalog.second"_s));
        QVERIFY(editor.Boxes().isEmpty());
    }

    void ATableThatIsNotOpenIsCreatedWithItsFields()
    {
        ClientDataSet rows;
        Editor editor;
        editor.AppendsTo(rows);
        editor.OnSave(u"1"_s, u"91"_s);
        editor.Run([&] { editor.Save(u"西药库"_s); });
        const FieldDefs wanted{{u"CATALOG_ID"_s, FieldType::WideText, 10},
                               {u"CATALOG_NAME"_s, FieldType::WideText, 20},
                               {u"BUY_ORGID"_s, FieldType::WideText, 10},
                               {u"LAST_UPDATE"_s, FieldType::DateTime},
                               {u"LAST_USER"_s, FieldType::WideText, 20}};
        QCOMPARE(rows.Fields(), wanted);
        QCOMPARE(rows.RecordCount(), 1);
        QCOMPARE(rows.FieldText(u"CATALOG_ID"), u"91"_s);
        QVERIFY(QDateTime::fromString(rows.FieldText(u"LAST_UPDATE"), u"yyyy-MM-dd HH:mm:ss"_s)
                    .isValid());
    }

    void WithoutATableTheFirstSaveClosesWithOk()
    {
        Editor editor;
        editor.OnSave(u"1"_s, u"91"_s);
        QCOMPARE(editor.Run([&] { editor.Save(u"西药库"_s); }), TModalResult::Ok);
    }

    void ARenamedOneClosesWithOkAndAppendsNothing()
    {
        ClientDataSet rows;
        Editor editor;
        editor.AppendsTo(rows);
        editor.Renames(u"71"_s, u"西药库"_s);
        editor.OnSave(u"1"_s);
        QCOMPARE(editor.Run([&] { editor.Save(u" 急诊药库 "_s); }), TModalResult::Ok);
        QCOMPARE(RowText(editor.server.LastPost().rows.first()), Expected(u"buycatalog.renamed"_s));
        QCOMPARE(editor.form.Name(), u"急诊药库"_s);
        QVERIFY(!rows.IsActive());
    }

    void RefusalsAreSaidAndTheNameStays_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QStringList>("boxes");
        QTest::newRow("failed") << u"0"_s << QStringList{u"Warning|警告|保存数据失败！|Ok"_s};
        QTest::newRow("duplicate")
            << u"-1"_s << QStringList{u"Warning|警告|名称重复，保存失败！|Ok"_s};
        QTest::newRow("any other") << u"-2"_s << QStringList();
    }
    void RefusalsAreSaidAndTheNameStays()
    {
        QFETCH(QString, code);
        QFETCH(QStringList, boxes);
        ClientDataSet rows;
        Editor editor;
        editor.AppendsTo(rows);
        editor.OnSave(code);
        const TModalResult result = editor.Run([&] {
            editor.Save(u"西药库"_s);
            QVERIFY(editor.form.isVisible());
            QCOMPARE(editor.Name().text(), u"西药库"_s);
            QVERIFY(ActionEnabled(&editor.form, u"ActionSave"_s));
        });
        QCOMPARE(result, TModalResult::Cancel);
        QCOMPARE(editor.Boxes(), boxes);
        QVERIFY(!rows.IsActive());
    }

    void ADrugStoreDeletedBySomebodyElseMeanwhileIsAFailedSave()
    {
        Editor editor;
        editor.Renames(u"71"_s, u"西药库"_s);
        editor.OnSave(u"0"_s); // what the server says to an id that is not live
        QCOMPARE(editor.Run([&] { editor.Save(u"急诊药库"_s); }), TModalResult::Cancel);
        QCOMPARE(editor.Boxes(), QStringList{u"Warning|警告|保存数据失败！|Ok"_s});
    }

    void SaveRestsWhileItsPostRuns()
    {
        Editor editor;
        editor.OnSave(u"0"_s);
        editor.Run([&] {
            QCOMPARE(editor.DisabledAtRequests(editor.form, {u"ActionSave"_s},
                                               [&] { editor.Save(u"西药库"_s); }),
                     QStringList{u"ActionSave"_s});
        });
    }

    void EnterGoesOnToTheButtonAndEscPressesCancel()
    {
        Editor editor;
        const TModalResult result = editor.Run([&] {
            Press(&editor.form, u"edName"_s, Qt::Key_Return);
            QCOMPARE(FocusName(editor.form), u"btnSave"_s);
            Press(&editor.form, u"btnSave"_s, Qt::Key_Escape);
            QVERIFY(!editor.form.isVisible());
        });
        QCOMPARE(result, TModalResult::Cancel);
        QVERIFY(editor.server.Posts().isEmpty());
    }
};

QTEST_MAIN(TraBuyCatalogEditTest)
#include "TraBuyCatalogEditTest.moc"
