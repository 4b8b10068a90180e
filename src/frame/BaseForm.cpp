#include "frame/BaseForm.h"

#include "frame/FormTitle.h"
#include "frame/Guards.h"
#include "frame/LibrarySide.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QEventLoop>
#include <QKeyEvent>
#include <QPainter>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QScreen>
#include <QTextEdit>
#include <QWindow>

namespace Qel {

namespace {

constexpr int FontPixels = 12;
constexpr int BorderGrip = 5; ///< how near to its edge a dialog can be taken to be resized
constexpr QRgb DialogBorder = 0xff1f4c97;

/// Controls of several lines or rows have their own use for Enter.
bool KeepsEnter(const QWidget *widget)
{
    return qobject_cast<const QAbstractItemView *>(widget) ||
           qobject_cast<const QTextEdit *>(widget) || qobject_cast<const QPlainTextEdit *>(widget);
}

bool IsPressedByEnter(const QAbstractButton *button)
{
    return !qobject_cast<const QCheckBox *>(button) && !qobject_cast<const QRadioButton *>(button);
}

Qt::Edges EdgesAt(const QPoint &point, const QSize &size)
{
    Qt::Edges edges;
    edges.setFlag(Qt::LeftEdge, point.x() < BorderGrip);
    edges.setFlag(Qt::RightEdge, point.x() >= size.width() - BorderGrip);
    edges.setFlag(Qt::TopEdge, point.y() < BorderGrip);
    edges.setFlag(Qt::BottomEdge, point.y() >= size.height() - BorderGrip);
    return edges;
}

} // namespace

TFrmBaseForm::TFrmBaseForm(QWidget *owner)
    : QWidget(owner)
    , formTitle_(new FormTitle(this))
{
    FormCreate();
}

TFrmBaseForm::~TFrmBaseForm()
{
    if (loop_)
        loop_->quit();
}

void TFrmBaseForm::FormCreate()
{
    QPalette ground = palette();
    ground.setColor(QPalette::Window, Qt::white);
    setPalette(ground);
    setAutoFillBackground(true);
    QFont text = font();
    text.setPixelSize(FontPixels);
    setFont(text);
    setContentsMargins(0, FormTitle::Height, 0, 0);
    hide();
    formTitle_->SetText(windowTitle());
    Handle(formTitle_, &FormTitle::Clicked, &TFrmBaseForm::FormTitleClick);
}

void TFrmBaseForm::FormTitleClick()
{
    close();
}

void TFrmBaseForm::SetCancelButton(QAbstractButton *button)
{
    cancelButton_ = button;
}

void TFrmBaseForm::AllowMaximize()
{
    canBeMaximized_ = true;
    formTitle_->AllowMaximize();
}

void TFrmBaseForm::MakeEmbedded()
{
    embedded_ = true;
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowFlags(Qt::Widget);
    move(0, 0);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    hide();
    WatchParent();
}

// --- Dialogs -----------------------------------------------------------------------------------

TModalResult TFrmBaseForm::ShowModal()
{
    Q_ASSERT(!loop_);
    QWidget *owner = parentWidget();
    setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint |
                   (canBeMaximized_ ? Qt::WindowMaximizeButtonHint : Qt::WindowFlags()));
    setWindowModality(Qt::ApplicationModal);
    setContentsMargins(1, FormTitle::Height, 1, 1);
    formTitle_->setGeometry(0, 0, width(), FormTitle::Height);
    if (const QWidget *behind = owner ? owner->window() : nullptr; behind && behind->isVisible()) {
        const QRect room = behind->screen()->availableGeometry();
        const QRect centred(behind->frameGeometry().center() - rect().center(), size());
        move(qBound(room.left(), centred.left(), qMax(room.left(), room.right() - width())),
             qBound(room.top(), centred.top(), qMax(room.top(), room.bottom() - height())));
    }

    QEventLoop loop;
    loop_ = &loop;
    modalResult_ = TModalResult::None;
    const QPointer<TFrmBaseForm> self(this);
    show();
    activateWindow();
    RunFormShow();
    if (self && !focusWidget())
        focusNextChild();
    if (self)
        loop.exec(QEventLoop::DialogExec);
    if (!self)
        return TModalResult::Cancel; // its owner was destroyed behind it
    loop_ = nullptr;
    return modalResult_ == TModalResult::None ? TModalResult::Cancel : modalResult_;
}

void TFrmBaseForm::SetModalResult(TModalResult result)
{
    if (inFormShow_)
        return;
    modalResult_ = result;
    if (result == TModalResult::None)
        closeWaits_ = false;
    else
        close();
}

// --- The door ----------------------------------------------------------------------------------

bool TFrmBaseForm::Guarded(const std::function<void()> &action)
{
    const QPointer<TFrmBaseForm> self(this);
    bool good = false;
    ++running_;
    try {
        action();
        good = true;
    } catch (...) {
        HandleCurrentException();
    }
    if (!self)
        return good;
    --running_;
    if (running_ == 0 && std::exchange(closeWaits_, false))
        close();
    return good;
}

void TFrmBaseForm::RunFormShow()
{
    if (std::exchange(wasShown_, true))
        return;
    Guarded([this] {
        const AssignWhile showing(inFormShow_, true);
        FormShow();
    });
}

void TFrmBaseForm::AddKeyHandler(QWidget *widget, int key, std::function<bool()> handler)
{
    keyHandlers_.append({widget, key, std::move(handler)});
    widget->installEventFilter(this);
}

// --- Events ------------------------------------------------------------------------------------

void TFrmBaseForm::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::WindowTitleChange)
        formTitle_->SetText(windowTitle());
    if (event->type() == QEvent::ParentChange && embedded_)
        WatchParent();
    QWidget::changeEvent(event);
}

void TFrmBaseForm::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // Not here: a query inside a show event would run before the form can be seen.
    if (!wasShown_ && !loop_)
        QMetaObject::invokeMethod(this, &TFrmBaseForm::RunFormShow, Qt::QueuedConnection);
}

void TFrmBaseForm::closeEvent(QCloseEvent *event)
{
    if (running_ > 0) {
        closeWaits_ = true;
        event->ignore();
        return;
    }
    event->accept();
    if (loop_)
        loop_->quit();
}

void TFrmBaseForm::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    formTitle_->setGeometry(0, 0, width(), FormTitle::Height);
}

void TFrmBaseForm::paintEvent(QPaintEvent *event)
{
    QWidget::paintEvent(event);
    if (!isWindow())
        return;
    QPainter painter(this);
    painter.setPen(QColor::fromRgba(DialogBorder));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void TFrmBaseForm::keyPressEvent(QKeyEvent *event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (IsModal() && event->key() == Qt::Key_Escape) {
        if (cancelButton_)
            cancelButton_->click();
        event->accept();
    } else if (IsModal() && enter && MoveOnByEnter()) {
        event->accept();
    } else {
        QWidget::keyPressEvent(event);
    }
}

bool TFrmBaseForm::MoveOnByEnter()
{
    QWidget *focused = QApplication::focusWidget();
    if (KeepsEnter(focused))
        return false;
    auto *button = qobject_cast<QAbstractButton *>(focused);
    if (button && IsPressedByEnter(button))
        button->click();
    else
        focusNextChild();
    return true;
}

void TFrmBaseForm::mousePressEvent(QMouseEvent *event)
{
    const Qt::Edges edges = EdgesAt(event->position().toPoint(), size());
    if (isWindow() && !isMaximized() && edges && event->button() == Qt::LeftButton &&
        windowHandle())
        windowHandle()->startSystemResize(edges);
    QWidget::mousePressEvent(event);
}

bool TFrmBaseForm::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == followed_ && event->type() == QEvent::Resize) {
        const auto *resize = static_cast<QResizeEvent *>(event);
        FollowParent(resize->oldSize(), resize->size());
    }
    if (event->type() == QEvent::KeyPress) {
        const auto *press = static_cast<QKeyEvent *>(event);
        const int key = press->key() == Qt::Key_Enter ? int(Qt::Key_Return) : press->key();
        for (const KeyHandler &entry : std::as_const(keyHandlers_)) {
            if (entry.widget != watched || entry.key != key)
                continue;
            bool taken = true;
            const auto handler = entry.handler; // the list may change while it runs
            Guarded([&] { taken = handler(); });
            if (taken)
                return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void TFrmBaseForm::WatchParent()
{
    if (followed_)
        followed_->removeEventFilter(this);
    followed_ = parentWidget();
    if (followed_)
        followed_->installEventFilter(this);
}

void TFrmBaseForm::FollowParent(const QSize &before, const QSize &now)
{
    if (before.isValid() && !followed_->layout())
        resize(size() + now - before);
}

} // namespace Qel
