#include "controls/ButtonEdit.h"

#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

using namespace Qt::StringLiterals;
using namespace Qel;

class ButtonEditTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<ButtonEdit> edit_;

    QToolButton *Button(int at) const
    {
        return edit_->findChild<QToolButton *>(u"button%1"_s.arg(at));
    }

private slots:
    void init()
    {
        edit_ = std::make_unique<ButtonEdit>();
        QVERIFY(edit_->setProperty("buttons", QStringList{u"选择"_s, u"清空"_s}));
        edit_->resize(240, 26);
        edit_->setAccessibleName(u"所在地区"_s);
        edit_->show();
        QVERIFY(QTest::qWaitForWindowExposed(edit_.get()));
    }

    void AClickTellsWhichButton()
    {
        QSignalSpy clicked(edit_.get(), &ButtonEdit::ButtonClicked);
        QTest::mouseClick(Button(1), Qt::LeftButton);
        QTest::mouseClick(Button(0), Qt::LeftButton);
        QCOMPARE(clicked.size(), 2);
        QCOMPARE(clicked[0][0].toInt(), 1);
        QCOMPARE(clicked[1][0].toInt(), 0);
    }

    void KeysPressTheFirstButton()
    {
        QSignalSpy clicked(edit_.get(), &ButtonEdit::ButtonClicked);
        QTest::keyClick(edit_.get(), Qt::Key_F4);
        QTest::keyClick(edit_.get(), Qt::Key_Down, Qt::AltModifier);
        QCOMPARE(clicked.size(), 2);
        QCOMPARE(clicked[1][0].toInt(), 0);
        QTest::keyClick(edit_.get(), Qt::Key_F4, Qt::ControlModifier);
        QCOMPARE(clicked.size(), 2);
    }

    void TypingTakesTheChosenValueAway()
    {
        edit_->SetChoice(u"501"_s, u"市第一医院"_s);
        const QSignalSpy changed(edit_.get(), &ButtonEdit::ChoiceChanged);
        QTest::keyClicks(edit_.get(), u"AB"_s);
        QCOMPARE(edit_->text(), u"市第一医院AB"_s);
        QVERIFY(edit_->ChosenValue().isEmpty());
        QCOMPARE(changed.size(), 1);
    }

    void OnlyAnotherValueIsAChangeOfTheChoice()
    {
        const QSignalSpy changed(edit_.get(), &ButtonEdit::ChoiceChanged);
        edit_->SetChoice(u"501"_s, u"市第一医院"_s);
        edit_->SetChoice(u"501"_s, u"市一院"_s);
        QCOMPARE(edit_->text(), u"市一院"_s);
        QCOMPARE(changed.size(), 1);
        edit_->ClearChoice();
        QCOMPARE(changed.size(), 2);
    }

    void KeepsTheValueForWhichItsTextStands()
    {
        QVERIFY(edit_->ChosenValue().isEmpty());
        edit_->SetChoice(u"1301"_s, u"河北省石家庄市"_s);
        QCOMPARE(edit_->ChosenValue(), u"1301"_s);
        QCOMPARE(edit_->text(), u"河北省石家庄市"_s);
        edit_->ClearChoice();
        QCOMPARE(edit_->ChosenValue() + edit_->text(), QString());
    }

    void DeleteTakesTheChoiceAwayWhereItMay_data()
    {
        QTest::addColumn<bool>("clearable");
        QTest::addColumn<bool>("readOnly");
        QTest::addColumn<bool>("cleared");
        QTest::newRow("filled by a picker") << true << true << true;
        QTest::newRow("typed into") << true << false << false;
        QTest::newRow("to stay") << false << true << false;
    }
    void DeleteTakesTheChoiceAwayWhereItMay()
    {
        QFETCH(bool, clearable);
        QFETCH(bool, readOnly);
        QFETCH(bool, cleared);
        QVERIFY(edit_->setProperty("clearable", clearable));
        edit_->setReadOnly(readOnly);
        edit_->SetChoice(u"1301"_s, u"河北省石家庄市"_s);
        QTest::keyClick(edit_.get(), Qt::Key_Delete);
        QCOMPARE(edit_->ChosenValue().isEmpty(), cleared);
        QCOMPARE(edit_->text().isEmpty(), cleared);
    }

    void ButtonsWorkWhileTheTextIsReadOnly()
    {
        edit_->setReadOnly(true);
        QSignalSpy clicked(edit_.get(), &ButtonEdit::ButtonClicked);
        QTest::keyClick(edit_.get(), Qt::Key_F4);
        QTest::mouseClick(Button(0), Qt::LeftButton);
        QCOMPARE(clicked.size(), 2);
        QTest::keyClicks(edit_.get(), u"x"_s);
        QCOMPARE(edit_->text(), QString());
    }

    void ADisabledButtonIsNotPressed()
    {
        edit_->SetButtonEnabled(0, false);
        QVERIFY(!edit_->IsButtonEnabled(0));
        QVERIFY(edit_->IsButtonEnabled(1));
        QSignalSpy clicked(edit_.get(), &ButtonEdit::ButtonClicked);
        QTest::mouseClick(Button(0), Qt::LeftButton);
        QTest::keyClick(edit_.get(), Qt::Key_F4);
        edit_->PressButton(0);
        edit_->PressButton(7);
        QCOMPARE(clicked.size(), 0);
        edit_->PressButton(1);
        QCOMPARE(clicked.size(), 1);
    }

    void TextAndButtonsDoNotOverlap()
    {
        QVERIFY(Button(0)->geometry().right() < Button(1)->geometry().left());
        QVERIFY(Button(1)->geometry().right() < edit_->width());
        QVERIFY(edit_->textMargins().right() >= edit_->width() - Button(0)->x() - 2);
        for (const int at : {0, 1}) {
            const QFontMetrics metrics(Button(at)->font());
            QVERIFY(Button(at)->width() >= metrics.horizontalAdvance(Button(at)->text()));
        }
    }

    void ALargerFontMakesRoom()
    {
        const int before = Button(0)->width();
        QFont font = edit_->font();
        font.setPixelSize(40);
        edit_->setFont(font);
        QVERIFY(Button(0)->width() > before);
    }

    void ButtonsAreOutsideTheTabOrderAndNamed()
    {
        QCOMPARE(Button(0)->focusPolicy(), Qt::NoFocus);
        QCOMPARE(Button(0)->accessibleName(), u"选择 所在地区"_s);
    }

    void WithoutButtonsItIsAPlainEdit()
    {
        edit_->SetButtons({});
        QSignalSpy clicked(edit_.get(), &ButtonEdit::ButtonClicked);
        QTest::keyClick(edit_.get(), Qt::Key_F4);
        QCOMPARE(clicked.size(), 0);
        QCOMPARE(edit_->textMargins().right(), 0);
        QCOMPARE(edit_->Buttons(), QStringList());
    }
};

QTEST_MAIN(ButtonEditTest)
#include "ButtonEditTest.moc"
