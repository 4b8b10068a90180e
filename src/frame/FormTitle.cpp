#include "frame/FormTitle.h"

#include <QAbstractButton>
#include <QEvent>
#include <QLinearGradient>
#include <QMouseEvent>
#include <QPainter>
#include <QWindow>

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

constexpr int TextLeft = 10;
constexpr int TextRight = 75;
constexpr int FontPixels = 13;
constexpr int CloseSize = 17;
constexpr int CloseRight = 6;

constexpr QRgb BarTop = 0xff5b8be0;
constexpr QRgb BarBottom = 0xff316ac5;
constexpr QRgb BarEdge = 0xff1f4c97;
constexpr QRgb CloseUnderMouse = 0xffe2574c;
constexpr QRgb ClosePressed = 0xffb5382e;
constexpr QRgb Navy = 0xff000080;

/// A cross on the bar; red under the mouse, darker while pressed.
class CloseButton : public QAbstractButton
{
public:
    explicit CloseButton(QWidget *parent)
        : QAbstractButton(parent)
    {
        setObjectName(u"BtnFormTitleClose"_s);
        setToolTip(u"关闭"_s);
        setAccessibleName(u"关闭"_s);
        setFocusPolicy(Qt::NoFocus);
        setCursor(Qt::ArrowCursor);
        setFixedSize(CloseSize, CloseSize);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const bool hot = underMouse() || isDown();
        if (hot) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(QColor::fromRgba(isDown() ? ClosePressed : CloseUnderMouse));
            painter.drawRoundedRect(rect(), 3, 3);
        }
        painter.setPen(QPen(Qt::white, 1.8, Qt::SolidLine, Qt::RoundCap));
        const QRectF cross = QRectF(rect()).adjusted(5, 5, -5, -5);
        painter.drawLine(cross.topLeft(), cross.bottomRight());
        painter.drawLine(cross.topRight(), cross.bottomLeft());
    }

    void enterEvent(QEnterEvent *) override { update(); }
    void leaveEvent(QEvent *) override { update(); }
};

} // namespace

FormTitle::FormTitle(QWidget *parent)
    : QWidget(parent)
    , close_(new CloseButton(this))
{
    setObjectName(u"FormTitle"_s);
    setFixedHeight(Height);
    connect(close_, &QAbstractButton::clicked, this, &FormTitle::Clicked);
}

void FormTitle::SetText(const QString &text)
{
    text_ = text;
    update();
}

QSize FormTitle::sizeHint() const
{
    return {TextLeft + TextRight, Height};
}

void FormTitle::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QLinearGradient ground(0, 0, 0, height());
    ground.setColorAt(0, QColor::fromRgba(BarTop));
    ground.setColorAt(1, QColor::fromRgba(BarBottom));
    painter.fillRect(rect(), ground);
    painter.fillRect(0, height() - 1, width(), 1, QColor::fromRgba(BarEdge));

    QFont bold = font();
    bold.setPixelSize(FontPixels);
    bold.setBold(true);
    painter.setFont(bold);
    const QRect room = rect().adjusted(TextLeft, 0, -TextRight, 0);
    const QString shown = painter.fontMetrics().elidedText(text_, Qt::ElideRight, room.width());
    const int alignment = Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine;
    painter.setPen(QColor::fromRgba(Navy));
    painter.drawText(room.translated(1, 1), alignment, shown);
    painter.setPen(Qt::white);
    painter.drawText(room, alignment, shown);
}

void FormTitle::resizeEvent(QResizeEvent *)
{
    close_->move(width() - CloseSize - CloseRight, (Height - CloseSize) / 2);
}

void FormTitle::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !parentWidget()->isWindow())
        return;
    // The window manager moves the window; where there is none, mouseMoveEvent does.
    QWindow *window = parentWidget()->windowHandle();
    if (!window || !window->startSystemMove())
        grip_ = event->globalPosition().toPoint() - parentWidget()->pos();
}

void FormTitle::mouseMoveEvent(QMouseEvent *event)
{
    if (event->buttons().testFlag(Qt::LeftButton) && parentWidget()->isWindow() && !grip_.isNull())
        parentWidget()->move(event->globalPosition().toPoint() - grip_);
}

} // namespace Qel
