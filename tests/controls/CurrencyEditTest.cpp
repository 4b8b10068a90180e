#include "controls/CurrencyEdit.h"

#include "controls/DataGrid.h"
#include "dataset/RowSet.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>

using namespace Qt::StringLiterals;
using namespace Qel;

namespace {

constexpr int Price = 1; // column

const QString WhatIsPossible = u"请输入 0 至 99999999 的金额，最多 8 个字符、两位小数"_s;

/// Three rows with the prices 12.5, none and 7.
RowSet PriceRows(FieldType type)
{
    RowSetBuilder builder({{u"NAME"_s, FieldType::Text, 0},
                           {u"PRICE"_s, type, 0},
                           {u"COST"_s, type, 0},
                           {u"SELECTED"_s, FieldType::Text, 0}});
    for (const char *price : {"12.5", "", "7"}) {
        builder.AddCell("x");
        if (*price)
            builder.AddCell(price);
        else
            builder.AddNull();
        builder.AddCell("1");
        builder.AddCell("0");
        builder.EndRow();
    }
    return RowSet::Load(builder.Finish());
}

} // namespace

class CurrencyEditTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<ClientDataSet> dataSet_;
    std::unique_ptr<DataGrid> grid_;

    QString Stored(int row, QStringView field = u"PRICE") const
    {
        return dataSet_->TextAt(row, field);
    }
    QString Shown(int row, int column = Price) const
    {
        return grid_->model()->index(row, column).data().toString();
    }
    /// The editor of the price in that row, opened by F2.
    CurrencyEdit *OpenEditor(int row = 0)
    {
        grid_->setCurrentIndex(grid_->model()->index(row, Price));
        QTest::keyClick(grid_.get(), Qt::Key_F2);
        return grid_->findChild<CurrencyEdit *>(u"cellEditor"_s);
    }
    /// Gives the row a price that the server might deliver.
    void Deliver(const QString &price)
    {
        RowSetBuilder builder({{u"NAME"_s, FieldType::Text, 0}, {u"PRICE"_s, FieldType::Text, 0}});
        builder.AddCell("x");
        builder.AddCell(price.toUtf8());
        builder.EndRow();
        dataSet_->Open(RowSet::Load(builder.Finish()));
    }
    void Leave(CurrencyEdit *editor)
    {
        QTest::keyClick(editor, Qt::Key_Return);
        QTRY_VERIFY(!grid_->findChild<CurrencyEdit *>(u"cellEditor"_s));
    }
    static void Paste(CurrencyEdit *editor, const QString &text)
    {
        QGuiApplication::clipboard()->setText(text);
        QTest::keyClick(editor, Qt::Key_V, Qt::ControlModifier);
    }

private slots:
    void init()
    {
        dataSet_ = std::make_unique<ClientDataSet>();
        grid_ = std::make_unique<DataGrid>();
        grid_->SetColumns({u"NAME|通用名|100"_s, u"PRICE|批发价|90|currency"_s,
                           u"COST|零售价|90|currency"_s, u"LEVEL|质量层次|90"_s});
        grid_->SetDataSet(dataSet_.get());
        dataSet_->Open(PriceRows(FieldType::Real));
        grid_->resize(420, 200);
        grid_->show();
        grid_->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(grid_.get()));
        grid_->setFocus();
    }

    void cleanup()
    {
        grid_.reset();
        dataSet_.reset();
    }

    void CellsShowTwoDecimalsAtTheRightAndNothingForNoPrice()
    {
        QCOMPARE(Shown(0), u"12.50"_s);
        QCOMPARE(Shown(1), QString());
        QCOMPARE(Shown(2), u"7.00"_s);
        const auto alignment = grid_->model()->index(0, Price).data(Qt::TextAlignmentRole);
        QCOMPARE(alignment.toInt(), int(Qt::AlignRight | Qt::AlignVCenter));
    }

    void TheEditorBeginsAsTheCellLooksWithAllSelected()
    {
        CurrencyEdit *editor = OpenEditor();
        QVERIFY(editor);
        QCOMPARE(editor->text(), u"12.50"_s);
        QCOMPARE(editor->selectedText(), u"12.50"_s);
        QCOMPARE(editor->alignment(), Qt::AlignRight | Qt::AlignVCenter);
        QCOMPARE(editor->accessibleName(), u"批发价"_s);
    }

    void ADigitOpensTheEditorAndReplacesThePrice()
    {
        grid_->setCurrentIndex(grid_->model()->index(0, Price));
        QTest::keyClick(grid_.get(), Qt::Key_8);
        auto *editor = grid_->findChild<CurrencyEdit *>(u"cellEditor"_s);
        QVERIFY(editor);
        QCOMPARE(editor->text(), u"8"_s);
    }

    void OnlyAnAmountCanBeTyped_data()
    {
        QTest::addColumn<QString>("keys");
        QTest::addColumn<QString>("text");
        QTest::newRow("digits and a point") << u"123.45"_s << u"123.45"_s;
        QTest::newRow("letters") << u"1a2bE"_s << u"12"_s;
        QTest::newRow("negative") << u"-5"_s << u"5"_s;
        QTest::newRow("second point") << u"1.2.3"_s << u"1.23"_s;
        QTest::newRow("third decimal") << u"12.345"_s << u"12.34"_s;
        QTest::newRow("ninth digit") << u"123456789"_s << u"12345678"_s;
        QTest::newRow("ninth character") << u"123456.78"_s << u"123456.7"_s;
        QTest::newRow("blanks") << u" 1 2"_s << u"12"_s;
        QTest::newRow("point first") << u".5"_s << u"0.5"_s;
        QTest::newRow("comma") << u"1,5"_s << u"15"_s;
    }
    void OnlyAnAmountCanBeTyped()
    {
        QFETCH(QString, keys);
        CurrencyEdit *editor = OpenEditor();
        QTest::keyClicks(editor, keys);
        QTEST(editor->text(), "text");
    }

    void FullWidthCharactersOfAnInputMethodBecomePlain()
    {
        CurrencyEdit *editor = OpenEditor();
        for (const QString &text : {u"１"_s, u"２"_s, u"。"_s, u"五"_s, u"５"_s}) {
            QInputMethodEvent event;
            event.setCommitString(text);
            QCoreApplication::sendEvent(editor, &event);
        }
        QCOMPARE(editor->text(), u"12.5"_s);
    }

    void WhatIsPastedIsTakenWholeOrNotAtAll_data()
    {
        QTest::addColumn<QString>("pasted");
        QTest::addColumn<QString>("text");
        QTest::newRow("letters") << u"abc"_s << u"12.50"_s;
        QTest::newRow("text and number") << u"12元"_s << u"12.50"_s;
        QTest::newRow("nine digits") << u"123456789"_s << u"12.50"_s;
        QTest::newRow("negative") << u"-5"_s << u"12.50"_s;
        QTest::newRow("third decimal") << u"1.234"_s << u"12.50"_s;
        QTest::newRow("two cells") << u"1\t2"_s << u"12.50"_s;
        QTest::newRow("groups") << u"1,234.50"_s << u"1234.50"_s;
        QTest::newRow("blanks") << u" 12.5 "_s << u"12.5"_s;
        QTest::newRow("a cell with its end") << u"8.25\r\n"_s << u"8.25"_s;
        QTest::newRow("full-width") << u"１２３．４"_s << u"123.4"_s;
    }
    void WhatIsPastedIsTakenWholeOrNotAtAll()
    {
        QFETCH(QString, pasted);
        CurrencyEdit *editor = OpenEditor();
        Paste(editor, pasted);
        QTEST(editor->text(), "text");
    }

    void ARefusalSaysWhatIsPossible()
    {
        CurrencyEdit *editor = OpenEditor();
        QTest::keyClicks(editor, u"8"_s);
        QVERIFY(QToolTip::text() != WhatIsPossible);
        Paste(editor, u"abc"_s);
        QCOMPARE(QToolTip::text(), WhatIsPossible);
        QVERIFY(QToolTip::isVisible());
    }

    void APasteIntoTheMiddleCountsTheWholeText()
    {
        CurrencyEdit *editor = OpenEditor();
        editor->setCursorPosition(2); // 12|.50
        Paste(editor, u" 345"_s);
        QCOMPARE(editor->text(), u"12.50"_s); // a blank inside
        Paste(editor, u"345"_s);
        QCOMPARE(editor->text(), u"12345.50"_s);
        QCOMPARE(editor->cursorPosition(), 5);
        Paste(editor, u"6"_s);
        QCOMPARE(editor->text(), u"12345.50"_s); // would be the ninth
    }

    void WhatIsStoredIsWhatIsShown_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("real"); // stored in a number field
        QTest::addColumn<QString>("text"); // in a text field, and shown
        QTest::newRow("whole") << u"9"_s << u"9"_s << u"9.00"_s;
        QTest::newRow("point last") << u"9."_s << u"9"_s << u"9.00"_s;
        QTest::newRow("one decimal") << u"9.5"_s << u"9.5"_s << u"9.50"_s;
        QTest::newRow("two") << u"9.55"_s << u"9.55"_s << u"9.55"_s;
        QTest::newRow("leading zeros") << u"0009.5"_s << u"9.5"_s << u"9.50"_s;
        QTest::newRow("zero") << u"0"_s << u"0"_s << u"0.00"_s;
        QTest::newRow("a lone point") << u"."_s << u"0"_s << u"0.00"_s;
        QTest::newRow("highest") << u"99999999"_s << u"99999999"_s << u"99999999.00"_s;
    }
    void WhatIsStoredIsWhatIsShown()
    {
        QFETCH(QString, typed);
        QFETCH(QString, text);
        CurrencyEdit *editor = OpenEditor();
        QTest::keyClicks(editor, typed);
        Leave(editor);
        QTEST(Stored(0), "real");
        QCOMPARE(Shown(0), text);
        QVERIFY(!dataSet_->IsEditing());

        dataSet_->Open(PriceRows(FieldType::Text));
        editor = OpenEditor();
        QTest::keyClicks(editor, typed);
        Leave(editor);
        QCOMPARE(Stored(0), text);
        QCOMPARE(Shown(0), text);
    }

    void AnEmptiedCellHasNoPrice()
    {
        CurrencyEdit *editor = OpenEditor();
        QTest::keyClick(editor, Qt::Key_Delete);
        Leave(editor);
        QCOMPARE(Stored(0), QString());
        QVERIFY(dataSet_->IsNullAt(0, dataSet_->FieldIndex(u"PRICE")));
        QCOMPARE(Shown(0), QString());
    }

    void ACellLeftAsItWasIsNotWritten_data()
    {
        QTest::addColumn<QString>("delivered");
        QTest::addColumn<QString>("text");
        QTest::newRow("one decimal") << u"12.5"_s << u"12.50"_s;
        QTest::newRow("a third decimal") << u"12.345"_s << u"12.35"_s;
        QTest::newRow("zeros that do not fit") << u"123456.00"_s << u"123456"_s;
        QTest::newRow("longer than can be typed") << u"123456.78"_s << u"123456.78"_s;
        QTest::newRow("negative") << u"-5"_s << u""_s;
        QTest::newRow("no amount") << u"面议"_s << u""_s;
        QTest::newRow("over the highest") << u"100000000"_s << u""_s;
    }
    void ACellLeftAsItWasIsNotWritten()
    {
        QFETCH(QString, delivered);
        Deliver(delivered);
        QSignalSpy validating(grid_.get(), &DataGrid::CellValidating);
        CurrencyEdit *editor = OpenEditor();
        QVERIFY(editor);
        QTEST(editor->text(), "text");
        Leave(editor);
        QCOMPARE(Stored(0), delivered);
        QCOMPARE(validating.size(), 0);
    }

    void TheSameAmountTypedAnewIsNotWritten()
    {
        QSignalSpy validating(grid_.get(), &DataGrid::CellValidating);
        CurrencyEdit *editor = OpenEditor();
        QTest::keyClicks(editor, u"12.5"_s);
        Leave(editor);
        QCOMPARE(validating.size(), 0);
        Deliver(u"12.345"_s); // shown as 12.35
        editor = OpenEditor();
        QTest::keyClicks(editor, u"12.4"_s);
        QTest::keyClick(editor, Qt::Key_Backspace);
        QTest::keyClicks(editor, u"36"_s);
        Leave(editor);
        QCOMPARE(Stored(0), u"12.36"_s);
    }

    void AnAmountThatCameLongerCanBeOverwrittenButDoesNotGrow()
    {
        Deliver(u"123456.78"_s);
        CurrencyEdit *editor = OpenEditor();
        editor->setSelection(0, 1);
        QTest::keyClick(editor, Qt::Key_9);
        QCOMPARE(editor->text(), u"923456.78"_s);
        QTest::keyClick(editor, Qt::Key_9);
        QCOMPARE(editor->text(), u"923456.78"_s);
        QTest::keyClick(editor, Qt::Key_Backspace);
        QCOMPARE(editor->text(), u"23456.78"_s);
        QTest::keyClick(editor, Qt::Key_1);
        QCOMPARE(editor->text(), u"23456.78"_s); // eight, like any other
    }

    void EscLeavesThePriceAsItWas()
    {
        CurrencyEdit *editor = OpenEditor();
        QTest::keyClicks(editor, u"99"_s);
        QTest::keyClick(editor, Qt::Key_Escape);
        QCOMPARE(Stored(0), u"12.5"_s);
    }

    void ArrowsLeaveTheCellForTheRowAboveOrBelowAndKeepThePrice()
    {
        CurrencyEdit *editor = OpenEditor();
        QTest::keyClicks(editor, u"99"_s);
        QTest::keyClick(editor, Qt::Key_Down);
        QCOMPARE(Stored(0), u"99"_s);
        QCOMPARE(grid_->currentIndex(), grid_->model()->index(1, Price));
        QCOMPARE(dataSet_->RecNo(), 1);
        QTest::keyClicks(grid_.get(), u"5"_s);
        editor = grid_->findChild<CurrencyEdit *>(u"cellEditor"_s);
        QVERIFY(editor);
        QTest::keyClick(editor, Qt::Key_Up);
        QCOMPARE(Stored(1), u"5"_s);
        QCOMPARE(dataSet_->RecNo(), 0);
    }

    // --- The moment of validation ---
    void AChangeHandlerAttachedWhenTheCellIsValidatedHearsOfThatVeryChange()
    {
        QStringList fields;
        connect(grid_.get(), &DataGrid::CellValidating, this, [&](const QString &field) {
            fields.append(field + u'=' + dataSet_->FieldText(field));
            dataSet_->SetFieldChangeHandler(
                field, [this] { dataSet_->SetFieldText(u"SELECTED", u"1"_s); });
        });
        CurrencyEdit *editor = OpenEditor();
        QTest::keyClicks(editor, u"99"_s);
        QCOMPARE(fields, QStringList());
        Leave(editor);
        QCOMPARE(fields, QStringList{u"PRICE=12.5"_s}); // the field has its old value
        QCOMPARE(Stored(0, u"SELECTED"), u"1"_s);
        QCOMPARE(Stored(1, u"SELECTED"), u"0"_s);
    }

    void TheAttachedHandlerMarksRowsOfTheNextQueryToo()
    {
        connect(grid_.get(), &DataGrid::CellValidating, this, [this](const QString &field) {
            dataSet_->SetFieldChangeHandler(
                field, [this] { dataSet_->SetFieldText(u"SELECTED", u"1"_s); });
        });
        CurrencyEdit *editor = OpenEditor();
        QTest::keyClicks(editor, u"99"_s);
        Leave(editor);
        grid_->disconnect(this);
        dataSet_->Close();
        dataSet_->Open(PriceRows(FieldType::Real));
        editor = OpenEditor(2);
        QTest::keyClicks(editor, u"8"_s);
        Leave(editor);
        QCOMPARE(Stored(2, u"SELECTED"), u"1"_s);
        QCOMPARE(Stored(0, u"SELECTED"), u"0"_s);
    }
};

QTEST_MAIN(CurrencyEditTest)
#include "CurrencyEditTest.moc"
