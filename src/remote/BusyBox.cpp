#include "remote/BusyBox.h"

#include "remote/InputShield.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWindow>

#include <functional>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

/// Closes by its owner only: Esc and the window's close button do no more than ask.
class BoxWindow : public QDialog
{
public:
    explicit BoxWindow(std::function<void()> ask)
        : QDialog(nullptr, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
        , ask_(std::move(ask))
    {
    }
    void reject() override { ask_(); }

private:
    std::function<void()> ask_;
};

/// In front of what the user sees: the dialog on top, otherwise the active window.
QWindow *WindowInFront()
{
    QWidget *front = QApplication::activeModalWidget();
    if (!front)
        front = QApplication::activeWindow();
    return front ? front->window()->windowHandle() : nullptr;
}

} // namespace

BusyBox::BusyBox(const QString &text, bool cancellable, std::chrono::milliseconds delay,
                 InputShield &shield)
    : text_(text)
    , cancellable_(cancellable)
    , shield_(shield)
{
    elapsed_.start();
    delay_.setSingleShot(true);
    delay_.setTimerType(Qt::PreciseTimer); // a coarse one may be early
    connect(&delay_, &QTimer::timeout, this, &BusyBox::Appear);
    connect(&second_, &QTimer::timeout, this, &BusyBox::ShowSeconds);
    delay_.start(delay);
}

BusyBox::~BusyBox()
{
    shield_.SetExempt(nullptr);
}

void BusyBox::Appear()
{
    box_ = std::make_unique<BoxWindow>([this] {
        if (cancellable_)
            emit Cancelled();
    });
    box_->setObjectName("BusyBox"_L1);
    box_->setWindowTitle(u"请稍候"_s);
    box_->setWindowModality(Qt::ApplicationModal);
    box_->setMinimumWidth(260);

    auto *label = new QLabel(text_);
    label->setObjectName("LabelBusy"_L1);
    seconds_ = new QLabel;
    seconds_->setObjectName("LabelSeconds"_L1);
    auto *layout = new QVBoxLayout(box_.get());
    layout->addWidget(label);
    layout->addWidget(seconds_);
    if (cancellable_) {
        auto *cancel = new QPushButton(u"取消"_s);
        cancel->setObjectName("BtnCancel"_L1);
        cancel->setAutoDefault(false); // a stray Enter cancels nothing
        layout->addWidget(cancel, 0, Qt::AlignRight);
        connect(cancel, &QPushButton::clicked, box_.get(), &QDialog::reject);
    }
    ShowSeconds();
    second_.start(std::chrono::seconds(1));

    box_->winId();
    box_->windowHandle()->setTransientParent(WindowInFront());
    shield_.SetExempt(box_.get());
    box_->show();
}

void BusyBox::ShowSeconds()
{
    seconds_->setText(u"已用 %1 秒"_s.arg(elapsed_.elapsed() / 1000));
}

} // namespace Qel
