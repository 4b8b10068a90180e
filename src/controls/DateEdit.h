#pragma once

#include "controls/ButtonEdit.h"

#include <QDateTime>
#include <QPointer>

class QCalendarWidget;
class QFrame;

namespace Qel {

/// A date that may be empty, typed into the mask yyyy-MM-dd or picked from a calendar (the button,
/// Alt+Down or F4). Nothing typed is the empty date; a text that is no date gives way to the last
/// value when the editor is left or Enter is pressed. Delete in an all-selected edit empties it.
class DateEdit : public ButtonEdit
{
    Q_OBJECT
    Q_PROPERTY(QDateTime value READ Value WRITE SetValue NOTIFY ValueChanged)

public:
    /// The empty date as a day number (days since 1899-12-30).
    static constexpr double EmptyDayNumber = -700000.0;
    static QDateTime EmptyDate(); ///< EmptyDayNumber as a date, for texts made of it

    explicit DateEdit(QWidget *parent = nullptr);

    bool IsEmpty() const;
    void Clear();
    /// Invalid when empty. The time of day is what SetValue gave, midnight after an edit.
    QDateTime Value() const;
    void SetValue(const QDateTime &value); ///< an invalid one, or EmptyDate(), clears
    double DayNumber() const;
    QString DateText() const; ///< as it is shown, yyyy-MM-dd; empty when empty
    /// Takes the date of a field's text, "2024-03-05 13:07:00"; anything but a date clears.
    void SetDateText(QStringView text);

    void TakeTyped(); ///< what was typed becomes the value now, or gives way to it
    void DropDown();
    QCalendarWidget *Calendar() const; ///< of the open drop-down, else nullptr

signals:
    void ValueChanged();

protected:
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void ShowValue();
    void Pick(const QDate &date);

    QDateTime value_;
    QPointer<QFrame> popup_;
};

} // namespace Qel
