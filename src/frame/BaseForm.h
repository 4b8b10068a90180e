#pragma once

#include "frame/Handlers.h"

#include <QPointer>
#include <QWidget>

#include <functional>

class QAbstractButton;
class QEventLoop;

namespace Qel {

class FormTitle;

enum class TModalResult { None, Ok, Cancel };

/// The base of every screen and dialog: white ground, a title bar with the caption (the window
/// title) on top, one door through which handlers run, and one way to be shown as a dialog.
///
/// A form lays its controls out on itself (`ui.setupUi(this)` in its constructor); the title bar
/// stands in the contents margin above them. It belongs to its owner; a top-level screen frees
/// itself when it is closed, a dialog is freed by its opener.
class TFrmBaseForm : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(bool handlerRunning READ IsHandlerRunning)

public:
    explicit TFrmBaseForm(QWidget *owner = nullptr);
    ~TFrmBaseForm() override;

    const QString &FormParam() const { return formParam_; }

    /// Makes the form a screen in the host's window: borderless, at 0/0, growing with its parent
    /// on all four sides, invisible until the host shows it, freed when it is closed.
    void MakeEmbedded();

    /// Shows the form as a dialog in front of everything and returns when it is closed: Ok or
    /// Cancel. FormShow has run before the user can do anything. In a dialog Enter goes to the
    /// next control (on a button it presses it; memos, grids and lists keep it) and Esc presses
    /// the cancel button.
    TModalResult ShowModal();
    bool IsModal() const { return loop_ != nullptr; }

    /// Closes a dialog with `result`, at once or as soon as the running handler ends. What is set
    /// while FormShow runs does not count.
    void SetModalResult(TModalResult result);
    TModalResult ModalResult() const { return modalResult_; }

    /// Runs `action` as a handler: nothing escapes, errors go to the host's error handling.
    /// False if there was one. While it runs, closing waits for its end.
    bool Guarded(const std::function<void()> &action);
    bool IsHandlerRunning() const { return running_ > 0; }

protected:
    /// Run once, when the form is first shown, through the door: initial filters, first query.
    virtual void FormShow() {}

    void SetFormParam(const QString &value) { formParam_ = value; }
    /// The button that Esc presses in a dialog; without one Esc does nothing.
    void SetCancelButton(QAbstractButton *button);
    /// Lets the user fill the screen with the dialog: by a button of the title bar, by a double
    /// click on the bar, by the window system. Called once, in the constructor.
    void AllowMaximize();

    /// Connects a signal to a handler through the door. The handler is a method of the form or a
    /// callable; it takes as many of the signal's arguments as it likes.
    template <typename Sender, typename Signal, typename Handler>
    QMetaObject::Connection Handle(const Sender *sender, Signal signal, Handler handler);

    /// Runs `handler` through the door when `key` is pressed in `widget`, which then does not see
    /// the key (Qt::Key_Return stands for both Enter keys). A handler that returns false leaves
    /// the key to the widget.
    template <typename Handler>
    void HandleKey(QWidget *widget, int key, Handler handler);

    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void FormCreate();
    void FormTitleClick();
    void AddKeyHandler(QWidget *widget, int key, std::function<bool()> handler);
    void RunFormShow();
    void WatchParent();
    void FollowParent(const QSize &before, const QSize &now);
    bool MoveOnByEnter();

    template <typename Handler>
    auto Bound(Handler handler);

    struct KeyHandler
    {
        QPointer<QWidget> widget;
        int key;
        std::function<bool()> handler;
    };

    FormTitle *formTitle_;
    QString formParam_;
    QPointer<QAbstractButton> cancelButton_;
    QList<KeyHandler> keyHandlers_;
    QPointer<QWidget> followed_; ///< the parent whose size an embedded screen follows
    QEventLoop *loop_ = nullptr;
    TModalResult modalResult_ = TModalResult::None;
    int running_ = 0;
    bool embedded_ = false;
    bool canBeMaximized_ = false;
    bool wasShown_ = false;
    bool inFormShow_ = false;
    bool closeWaits_ = false;
};

template <typename Handler>
auto TFrmBaseForm::Bound(Handler handler)
{
    if constexpr (std::is_member_function_pointer_v<Handler>) {
        using Form = typename Handlers::ClassOf<Handler>::Type;
        return Handlers::BoundMember<Form, Handler>{static_cast<Form *>(this), handler};
    } else {
        return handler;
    }
}

template <typename Sender, typename Signal, typename Handler>
QMetaObject::Connection TFrmBaseForm::Handle(const Sender *sender, Signal signal, Handler handler)
{
    return connect(sender, signal, this,
                   [this, bound = Bound(handler)](auto &&...arguments) mutable -> void {
                       Guarded([&] { Handlers::Call(bound, arguments...); });
                   });
}

template <typename Handler>
void TFrmBaseForm::HandleKey(QWidget *widget, int key, Handler handler)
{
    AddKeyHandler(widget, key, [bound = Bound(handler)]() mutable -> bool {
        if constexpr (std::is_same_v<std::invoke_result_t<decltype(bound) &>, bool>) {
            return bound();
        } else {
            bound();
            return true;
        }
    });
}

} // namespace Qel
