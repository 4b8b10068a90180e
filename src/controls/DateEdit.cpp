#include "controls/DateEdit.h"

#include <QCalendarWidget>
#include <QFocusEvent>
#include <QFrame>
#include <QKeyEvent>
#include <QLocale>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

constexpr QStringView DateFormat = u"yyyy-MM-dd";
constexpr QDate DayZero = QDate::fromJulianDay(2'415'019); // 1899-12-30
constexpr double MillisecondsADay = 86'400'000.0;

} // namespace

QDateTime DateEdit::EmptyDate()
{
    return DayZero.addDays(qint64(EmptyDayNumber)).startOfDay();
}

DateEdit::DateEdit(QWidget *parent)
    : ButtonEdit(parent)
{
    setInputMask(u"9999-99-99;_"_s);
    SetButtons({u"▾"_s});
    setPlaceholderText({});
    connect(this, &ButtonEdit::ButtonClicked, this, &DateEdit::DropDown);
}

bool DateEdit::IsEmpty() const
{
    return !value_.isValid();
}

void DateEdit::Clear()
{
    SetValue({});
}

QDateTime DateEdit::Value() const
{
    return value_;
}

void DateEdit::SetValue(const QDateTime &value)
{
    const QDateTime wanted = value.date() == EmptyDate().date() ? QDateTime() : value;
    const bool changed = wanted != value_;
    value_ = wanted;
    ShowValue();
    if (changed)
        emit ValueChanged();
}

double DateEdit::DayNumber() const
{
    if (IsEmpty())
        return EmptyDayNumber;
    return double(DayZero.daysTo(value_.date())) +
           double(value_.time().msecsSinceStartOfDay()) / MillisecondsADay;
}

QString DateEdit::DateText() const
{
    return IsEmpty() ? QString() : value_.toString(DateFormat);
}

void DateEdit::SetDateText(QStringView text)
{
    SetValue(QDate::fromString(text.first(qMin(text.size(), DateFormat.size())), DateFormat)
                 .startOfDay());
}

void DateEdit::ShowValue()
{
    setText(DateText());
}

void DateEdit::TakeTyped()
{
    if (isReadOnly())
        return;
    QString digits = text();
    digits.remove(u'-');
    if (digits.trimmed().isEmpty()) {
        Clear();
        return;
    }
    const QDate typed = QDate::fromString(text(), DateFormat);
    if (typed.isValid() && typed != value_.date())
        SetValue(typed.startOfDay());
    else
        ShowValue();
}

void DateEdit::focusInEvent(QFocusEvent *event)
{
    ButtonEdit::focusInEvent(event);
    if (event->reason() == Qt::MouseFocusReason && IsEmpty())
        QTimer::singleShot(0, this, [this] { setCursorPosition(0); }); // after the click's own
}

void DateEdit::focusOutEvent(QFocusEvent *event)
{
    ButtonEdit::focusOutEvent(event);
    if (event->reason() != Qt::PopupFocusReason)
        TakeTyped();
}

void DateEdit::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        TakeTyped();
    ButtonEdit::keyPressEvent(event);
}

// --- Calendar ------------------------------------------------------------------------------------

QCalendarWidget *DateEdit::Calendar() const
{
    return popup_ ? popup_->findChild<QCalendarWidget *>() : nullptr;
}

void DateEdit::DropDown()
{
    if (isReadOnly() || popup_)
        return;
    TakeTyped();
    popup_ = new QFrame(this, Qt::Popup);
    popup_->setAttribute(Qt::WA_DeleteOnClose);
    popup_->setFrameShape(QFrame::StyledPanel);
    auto *calendar = new QCalendarWidget(popup_);
    calendar->setLocale(QLocale(QLocale::Chinese, QLocale::China));
    calendar->setFirstDayOfWeek(Qt::Monday);
    calendar->setVerticalHeaderFormat(QCalendarWidget::NoVerticalHeader);
    calendar->setAccessibleName(u"日历"_s);
    calendar->setSelectedDate(IsEmpty() ? QDate::currentDate() : value_.date());
    connect(calendar, &QCalendarWidget::clicked, this, &DateEdit::Pick);
    connect(calendar, &QCalendarWidget::activated, this, &DateEdit::Pick);
    auto *layout = new QVBoxLayout(popup_);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(calendar);
    popup_->adjustSize();

    const QRect screen = this->screen()->availableGeometry();
    QPoint place = mapToGlobal(QPoint(0, height()));
    if (place.y() + popup_->height() > screen.bottom())
        place.setY(mapToGlobal(QPoint(0, 0)).y() - popup_->height());
    place.setX(
        qBound(screen.left(), place.x(), qMax(screen.left(), screen.right() - popup_->width())));
    popup_->move(place);
    popup_->show();
    calendar->setFocus(Qt::PopupFocusReason);
}

void DateEdit::Pick(const QDate &date)
{
    if (!popup_)
        return; // a double click is a click and an activation
    SetValue(date.startOfDay());
    popup_->close();
    popup_.clear();
    setFocus(Qt::PopupFocusReason);
}

} // namespace Qel
