#include "controls/DateEdit.h"

#include <QCalendarWidget>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;
using namespace Qel;

class DateEditTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<QWidget> window_;
    DateEdit *edit_ = nullptr;
    QLineEdit *other_ = nullptr;

    void Type(const QString &digits)
    {
        edit_->setFocus();
        edit_->selectAll();
        QTest::keyClick(edit_, Qt::Key_Delete);
        edit_->home(false);
        QTest::keyClicks(edit_, digits);
    }

private slots:
    void init()
    {
        window_ = std::make_unique<QWidget>();
        auto *layout = new QVBoxLayout(window_.get());
        edit_ = new DateEdit(window_.get());
        other_ = new QLineEdit(window_.get());
        layout->addWidget(edit_);
        layout->addWidget(other_);
        window_->show();
        QVERIFY(QTest::qWaitForWindowActive(window_.get()));
    }

    void IsEmptyAtFirst()
    {
        QVERIFY(edit_->IsEmpty());
        QVERIFY(!edit_->Value().isValid());
        QCOMPARE(edit_->DayNumber(), -700000.0);
    }

    void DayNumbersCountFromTheEndOf1899()
    {
        edit_->SetValue(QDate(1899, 12, 31).startOfDay());
        QCOMPARE(edit_->DayNumber(), 1.0);
        edit_->SetValue(QDateTime(QDate(2000, 1, 1), QTime(12, 0)));
        QCOMPARE(edit_->DayNumber(), 36526.5);
    }

    void TakesTheDateOfAFieldsText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("shown");
        QTest::newRow("date and time") << u"2024-03-05 13:07:00"_s << u"2024-03-05"_s;
        QTest::newRow("date") << u"2024-03-05"_s << u"2024-03-05"_s;
        QTest::newRow("nothing") << u""_s << u""_s;
        QTest::newRow("no date") << u"2024-02-30"_s << u""_s;
        QTest::newRow("cut off") << u"2024-03"_s << u""_s;
    }
    void TakesTheDateOfAFieldsText()
    {
        QFETCH(QString, text);
        QFETCH(QString, shown);
        edit_->SetValue(QDate(2020, 1, 1).startOfDay());
        edit_->SetDateText(text);
        QCOMPARE(edit_->DateText(), shown);
        QCOMPARE(edit_->IsEmpty(), shown.isEmpty());
    }

    void TheEmptyDateClears()
    {
        edit_->SetValue(QDate(2024, 3, 5).startOfDay());
        edit_->SetValue(DateEdit::EmptyDate());
        QVERIFY(edit_->IsEmpty());
        QCOMPARE(DateEdit::EmptyDate().date().daysTo(QDate(1899, 12, 30)), 700000);
    }

    void ATypedDateCountsWhenTheEditIsLeft()
    {
        QSignalSpy changed(edit_, &DateEdit::ValueChanged);
        Type(u"20240305"_s);
        QCOMPARE(edit_->text(), u"2024-03-05"_s);
        QCOMPARE(changed.size(), 0);
        other_->setFocus();
        QCOMPARE(edit_->Value(), QDate(2024, 3, 5).startOfDay());
        QCOMPARE(changed.size(), 1);
    }

    void EnterCountsToo()
    {
        Type(u"20240305"_s);
        QTest::keyClick(edit_, Qt::Key_Return);
        QCOMPARE(edit_->Value().date(), QDate(2024, 3, 5));
    }

    void WhatIsNoDateGivesWayToTheLastValue_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::newRow("no such day") << u"20240230"_s;
        QTest::newRow("no such month") << u"20241301"_s;
        QTest::newRow("unfinished") << u"2024"_s;
    }

    void WhatIsNoDateGivesWayToTheLastValue()
    {
        QFETCH(QString, typed);
        edit_->SetValue(QDate(2023, 12, 31).startOfDay());
        QSignalSpy changed(edit_, &DateEdit::ValueChanged);
        Type(typed);
        other_->setFocus();
        QCOMPARE(edit_->Value().date(), QDate(2023, 12, 31));
        QCOMPARE(edit_->text(), u"2023-12-31"_s);
        QCOMPARE(changed.size(), 0);
    }

    void WhatIsNoDateInAnEmptyEditEmptiesIt()
    {
        Type(u"20249999"_s);
        other_->setFocus();
        QVERIFY(edit_->IsEmpty());
        QCOMPARE(edit_->text(), u"--"_s); // the mask
    }

    void NothingTypedIsTheEmptyDate()
    {
        edit_->SetValue(QDate(2023, 12, 31).startOfDay());
        edit_->setFocus();
        edit_->selectAll();
        QTest::keyClick(edit_, Qt::Key_Delete);
        other_->setFocus();
        QVERIFY(edit_->IsEmpty());
    }

    void TheTimeOfDayStaysUntilTheDateIsEdited()
    {
        const QDateTime noon(QDate(2024, 3, 5), QTime(12, 0));
        edit_->SetValue(noon);
        edit_->setFocus();
        other_->setFocus();
        QCOMPARE(edit_->Value(), noon);
        Type(u"20240306"_s);
        other_->setFocus();
        QCOMPARE(edit_->Value(), QDate(2024, 3, 6).startOfDay());
    }

    void ClearTellsOnce()
    {
        edit_->SetValue(QDate(2024, 3, 5).startOfDay());
        QSignalSpy changed(edit_, &DateEdit::ValueChanged);
        edit_->Clear();
        edit_->Clear();
        QCOMPARE(changed.size(), 1);
    }

    void TheCalendarSpeaksChineseAndPicks()
    {
        edit_->SetValue(QDate(2024, 3, 5).startOfDay());
        QTest::keyClick(edit_, Qt::Key_Down, Qt::AltModifier);
        QCalendarWidget *calendar = edit_->Calendar();
        QVERIFY(calendar);
        QCOMPARE(calendar->locale().language(), QLocale::Chinese);
        QCOMPARE(calendar->locale().standaloneMonthName(3), u"三月"_s);
        QCOMPARE(calendar->selectedDate(), QDate(2024, 3, 5));
        emit calendar->activated(QDate(2024, 3, 8));
        QCOMPARE(edit_->Value(), QDate(2024, 3, 8).startOfDay());
        QVERIFY(!edit_->Calendar());
    }

    void AReadOnlyEditDropsNothingDown()
    {
        edit_->setReadOnly(true);
        QTest::keyClick(edit_, Qt::Key_F4);
        QVERIFY(!edit_->Calendar());
    }
};

QTEST_MAIN(DateEditTest)
#include "DateEditTest.moc"
