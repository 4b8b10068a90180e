#include "controls/ImageComboBox.h"

#include <QAbstractItemView>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>
#include <QWheelEvent>

using namespace Qt::StringLiterals;
using namespace Qel;

class ImageComboBoxTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<ImageComboBox> combo_;

    void Wheel()
    {
        QWheelEvent event(QPointF(5, 5), combo_->mapToGlobal(QPointF(5, 5)), {}, QPoint(0, -120),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(combo_.get(), &event);
    }

private slots:
    void init()
    {
        combo_ = std::make_unique<ImageComboBox>();
        QVERIFY(combo_->setProperty("items", QStringList{u"0|全部"_s, u"4|医院 "_s, u"5|药房"_s}));
    }

    void NothingIsSelectedAtFirst()
    {
        QCOMPARE(combo_->currentIndex(), -1);
        QCOMPARE(combo_->EditValue(), QString());
        combo_->ClearItems();
        combo_->AddItem(u"1"_s, u"甲"_s);
        QCOMPARE(combo_->currentIndex(), -1);
    }

    void ValuesAreSelectedAndRead()
    {
        combo_->SetEditValue(u"4"_s);
        QCOMPARE(combo_->currentIndex(), 1);
        QCOMPARE(combo_->EditValue(), u"4"_s);
        combo_->SetEditValue(u"nonsense"_s);
        QCOMPARE(combo_->currentIndex(), -1);
        QCOMPARE(combo_->EditValue(), QString());
    }

    void TextsKeepTheirBlanks()
    {
        combo_->SetEditValue(u"4"_s);
        QCOMPARE(combo_->currentText(), u"医院 "_s);
        QCOMPARE(combo_->Items().at(1), u"4|医院 "_s);
    }

    void ValuesAreComparedExactly()
    {
        combo_->SetItems(QStringList{u"ab|一"_s, u"A|二"_s, u"a|三"_s});
        combo_->SetEditValue(u"a"_s);
        QCOMPARE(combo_->currentText(), u"三"_s);
    }

    void AnItemMayStandForTheEmptyValue()
    {
        combo_->SetItems(QStringList{u"|不限"_s, u"1|甲"_s});
        QCOMPARE(combo_->currentIndex(), -1);
        combo_->SetEditValue({});
        QCOMPARE(combo_->currentIndex(), 0);
    }

    void TellsOfEveryChangeOfTheValueOnce()
    {
        QSignalSpy changed(combo_.get(), &ImageComboBox::EditValueChanged);
        combo_->SetEditValue(u"4"_s);
        combo_->SetEditValue(u"4"_s);
        QCOMPARE(changed.size(), 1);
        combo_->setCurrentIndex(2);
        QCOMPARE(changed.size(), 2);
        combo_->ClearItems();
        QCOMPARE(changed.size(), 3);
        combo_->ClearItems();
        combo_->AddItem(u"1"_s, u"甲"_s);
        QCOMPARE(changed.size(), 3);
    }

    void AnotherItemListKeepsTheValueThatIsStillThere()
    {
        combo_->SetEditValue(u"5"_s);
        QSignalSpy changed(combo_.get(), &ImageComboBox::EditValueChanged);
        combo_->SetItems(QStringList{u"5|药房"_s, u"6|营运"_s});
        QCOMPARE(combo_->EditValue(), u"5"_s);
        QCOMPARE(changed.size(), 0);
        combo_->SetItems(QStringList{u"6|营运"_s});
        QCOMPARE(combo_->EditValue(), QString());
        QCOMPARE(changed.size(), 1);
    }

    void AChoiceIsShownBeforeItsItemIsThere()
    {
        combo_->ClearItems();
        QSignalSpy changed(combo_.get(), &ImageComboBox::EditValueChanged);
        combo_->SetChoice(u"7"_s, u"集团"_s);
        QCOMPARE(combo_->count(), 0);
        QCOMPARE(combo_->EditValue(), u"7"_s);
        QCOMPARE(combo_->ShownText(), u"集团"_s);
        QCOMPARE(changed.size(), 1);
        combo_->SetItems(QStringList{u"6|甲"_s, u"7|乙"_s});
        QCOMPARE(combo_->currentIndex(), 1);
        QCOMPARE(combo_->ShownText(), u"乙"_s);
        QCOMPARE(changed.size(), 1);
    }

    void AChoiceThatIsNotAmongTheItemsStaysUntilAnotherIsMade()
    {
        combo_->SetChoice(u"7"_s, u"集团"_s);
        combo_->SetItems(QStringList{u"6|甲"_s});
        QCOMPARE(combo_->EditValue(), u"7"_s);
        combo_->setCurrentIndex(0);
        QCOMPARE(combo_->EditValue(), u"6"_s);
        combo_->setCurrentIndex(-1);
        QCOMPARE(combo_->EditValue(), QString());
        QCOMPARE(combo_->ShownText(), QString());
    }

    void AChoiceAmongTheItemsSelectsOne()
    {
        combo_->SetChoice(u"5"_s, u"别的"_s);
        QCOMPARE(combo_->currentIndex(), 2);
        QCOMPARE(combo_->ShownText(), u"药房"_s);
    }

    void ClearingTheSelectionDropsAChoiceToo()
    {
        combo_->SetChoice(u"7"_s, u"集团"_s);
        QSignalSpy changed(combo_.get(), &ImageComboBox::EditValueChanged);
        combo_->ClearSelection();
        QCOMPARE(combo_->EditValue(), QString());
        QCOMPARE(changed.size(), 1);
        QCOMPARE(combo_->count(), 3);
        combo_->SetEditValue(u"4"_s);
        combo_->ClearSelection();
        QCOMPARE(combo_->currentIndex(), -1);
    }

    void AChoiceIsPainted()
    {
        combo_->resize(160, 30);
        const QImage empty = combo_->grab().toImage();
        combo_->SetChoice(u"7"_s, u"集团"_s);
        const QImage shown = combo_->grab().toImage();
        QVERIFY(shown != empty);
        combo_->SetItems(QStringList{u"7|集团"_s});
        QCOMPARE(combo_->grab().toImage(), shown);
    }

    void AListCanBeFilledWhenItDropsDown()
    {
        combo_->ClearItems();
        combo_->show();
        connect(combo_.get(), &ImageComboBox::DroppingDown, this,
                [this] { combo_->AddItem(u"1"_s, u"甲"_s); });
        combo_->showPopup();
        QVERIFY(combo_->view()->isVisible());
        QCOMPARE(combo_->count(), 1);
        QCOMPARE(combo_->EditValue(), QString());
    }

    void TheWheelChangesItOnlyWithTheFocus()
    {
        QWidget window;
        QVBoxLayout layout(&window);
        auto *other = new QWidget(&window);
        other->setFocusPolicy(Qt::StrongFocus);
        layout.addWidget(other);
        layout.addWidget(combo_.get());
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        combo_->SetEditValue(u"0"_s);
        other->setFocus();
        Wheel();
        QCOMPARE(combo_->EditValue(), u"0"_s);
        combo_->setFocus();
        Wheel();
        QCOMPARE(combo_->EditValue(), u"4"_s);
        combo_->setParent(nullptr);
    }

    void AListWithoutSelectionStartsAtItsFirstItem()
    {
        combo_->show();
        combo_->SetItems(ParseValueList({u"4|医院"_s, u"5|药房"_s}));
        combo_->SetEditValue(u"9"_s);
        combo_->showPopup();
        QVERIFY(combo_->view()->selectionModel()->isSelected(combo_->model()->index(0, 0)));
        combo_->hidePopup();
        QCOMPARE(combo_->EditValue(), QString()); // opening it chose nothing
        combo_->SetEditValue(u"5"_s);
        combo_->showPopup();
        QCOMPARE(combo_->view()->currentIndex().row(), 1);
    }

    void LinesAreAtLeastAsHighAsAsked()
    {
        QCOMPARE(combo_->ItemHeight(), 18);
        QVERIFY(combo_->setProperty("itemHeight", 44));
        QCOMPARE(combo_->view()->sizeHintForRow(0), 44);
    }
};

QTEST_MAIN(ImageComboBoxTest)
#include "ImageComboBoxTest.moc"
