#pragma once

#include <QLineEdit>
#include <QList>
#include <QStringList>

class QToolButton;

namespace Qel {

/// A text edit with text buttons inside at its right end, such as "选择" and "清空" or "...".
/// The buttons work while the text is read-only. Alt+Down and F4 press the first button. The
/// buttons take no place in the tab order.
///
/// An edit that a picker fills keeps the value (an id) for which its text stands. As a rule it is
/// read-only, and if it is clearable, Delete takes both away; in one that is not, typing takes the
/// value away. Layout properties (stdset="0"): buttons, clearable.
class ButtonEdit : public QLineEdit
{
    Q_OBJECT
    Q_PROPERTY(QStringList buttons READ Buttons WRITE SetButtons)
    Q_PROPERTY(bool clearable READ IsClearable WRITE SetClearable)

public:
    explicit ButtonEdit(QWidget *parent = nullptr);

    QStringList Buttons() const;
    void SetButtons(const QStringList &captions); ///< all enabled
    void SetButtonEnabled(int button, bool enabled);
    bool IsButtonEnabled(int button) const;
    void PressButton(int button); ///< as a click; nothing if it is disabled or there is none

    const QString &ChosenValue() const { return chosenValue_; } ///< empty: nothing is chosen
    void SetChoice(const QString &value, const QString &text);
    void ClearChoice() { SetChoice({}, {}); }
    bool IsClearable() const { return clearable_; }
    void SetClearable(bool clearable) { clearable_ = clearable; }

    QSize sizeHint() const override;

signals:
    void ButtonClicked(int button); ///< from 0, left to right
    void ChoiceChanged();           ///< another value is chosen, or none any more

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void NameButtons();
    void PlaceButtons();
    int ButtonWidth(const QToolButton *button) const;
    int ButtonsWidth() const;
    static bool IsPressKey(const QKeyEvent &event);

    QList<QToolButton *> buttons_;
    QString chosenValue_;
    bool clearable_ = false;
};

} // namespace Qel
