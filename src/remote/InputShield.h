#pragma once

#include <QEvent>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <memory>

class QMouseEvent;
class QWidget;

namespace Qel {

/// Throws the user's input away while a call runs, for every window of the application but one:
/// keys, shortcuts, mouse, wheel, touch, drops and closing. Painting, timers and the network go
/// on. What is thrown away never arrives later.
///
/// Two ends of a gesture reach over the call. The release of a button that was pressed before the
/// call is delivered after it, so that no widget stays pressed. And after a post the second half
/// of the double click that started it is thrown away too, however fast the answer was: a double
/// click on a save button stores once.
class InputShield : public QObject
{
    Q_OBJECT

public:
    explicit InputShield(QObject *parent = nullptr);

    void Raise(bool forPost);
    void Lower();
    void SetExempt(QWidget *window); ///< the window that gets its input; nullptr: none

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool IsExempt(const QObject *receiver) const;
    void KeepRelease(QObject *receiver, const QMouseEvent &release);

    bool raised_ = false;
    bool buttonDown_ = false; ///< a button was down when the shield went up
    QPointer<QWidget> exempt_;
    QPointer<QObject> releaseReceiver_;
    std::unique_ptr<QEvent> release_;
    QTimer doubleClick_; ///< runs while a second click may still belong to the click of a post
};

/// Holds the shield up for a scope.
class InputShieldGuard
{
public:
    InputShieldGuard(InputShield &shield, bool forPost)
        : shield_(shield)
    {
        shield_.Raise(forPost);
    }
    ~InputShieldGuard() { shield_.Lower(); }
    Q_DISABLE_COPY_MOVE(InputShieldGuard)

private:
    InputShield &shield_;
};

} // namespace Qel
