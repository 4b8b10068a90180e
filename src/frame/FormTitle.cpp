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
constexpr int ButtonSize = 17;
constexpr int ButtonRight = 6;
constexpr int ButtonGap = 4;

constexpr QRgb BarTop = 0xff5b8be0;
constexpr QRgb BarBottom = 0xff316ac5;
constexpr QRgb BarEdge = 0xff1f4c97;
constexpr QRgb Navy = 0xff000080;

/// What a button of the bar is: its name, its ground under the mouse and pressed, its sign.
struct ButtonKind
{
    QStringView name;
    QRgb underMouse;
    QRgb pressed;
    void (*paintSign)(QPainter &painter, const QRectF &room, bool maximized);
};

constexpr ButtonKind Close{u"BtnFormTitleClose", 0xffe2574c, 0xffb5382e,
                           [](QPainter &painter, const QRectF &room, bool) {
                               painter.drawLine(room.topLeft(), room.bottomRight());
                               painter.drawLine(room.topRight(), room.bottomLeft());
                           }};

constexpr ButtonKind Maximize{u"BtnFormTitleMaximize", 0xff7fa6ec, 0xff1f4c97,
                              [](QPainter &painter, const QRectF &room, bool maximized) {
                                  if (!maximized)
                                      return painter.drawRect(room);
                                  painter.drawRect(room.adjusted(0, 2, -2, 0));
                                  painter.drawPolyline(
                                      QPolygonF{room.topLeft() + QPointF(2, 0), room.topRight(),
                                                room.bottomRight() - QPointF(0, 2)});
                              }};

} // namespace

/// A white sign on the bar, on a ground of its own while it is under the mouse or pressed.
class TitleButton : public QAbstractButton
{
public:
    TitleButton(QWidget *parent, const ButtonKind &kind, const QString &hint)
        : QAbstractButton(parent)
        , kind_(kind)
    {
        setObjectName(kind.name.toString());
        SetHint(hint);
        setFocusPolicy(Qt::NoFocus);
        setCursor(Qt::ArrowCursor);
        setFixedSize(ButtonSize, ButtonSize);
    }

    void SetHint(const QString &hint)
    {
        setToolTip(hint);
        setAccessibleName(hint);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        if (underMouse() || isDown()) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(QColor::fromRgba(isDown() ? kind_.pressed : kind_.underMouse));
            painter.drawRoundedRect(rect(), 3, 3);
        }
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(Qt::white, 1.8, Qt::SolidLine, Qt::RoundCap));
        kind_.paintSign(painter, QRectF(rect()).adjusted(5, 5, -5, -5), window()->isMaximized());
    }

    void enterEvent(QEnterEvent *) override { update(); }
    void leaveEvent(QEvent *) override { update(); }

private:
    const ButtonKind &kind_;
};

FormTitle::FormTitle(QWidget *parent)
    : QWidget(parent)
    , close_(new TitleButton(this, Close, u"关闭"_s))
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

void FormTitle::AllowMaximize()
{
    maximize_ = new TitleButton(this, Maximize, u"最大化"_s);
    connect(maximize_, &QAbstractButton::clicked, this, &FormTitle::ToggleMaximized);
    parentWidget()->installEventFilter(this);
}

void FormTitle::ToggleMaximized()
{
    parentWidget()->setWindowState(parentWidget()->windowState() ^ Qt::WindowMaximized);
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
    int right = width() - ButtonRight;
    for (TitleButton *button : {close_, maximize_}) {
        if (button)
            button->move(right - ButtonSize, (Height - ButtonSize) / 2);
        right -= ButtonSize + ButtonGap;
    }
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
    if (event->buttons().testFlag(Qt::LeftButton) && parentWidget()->isWindow() &&
        !parentWidget()->isMaximized() && !grip_.isNull())
        parentWidget()->move(event->globalPosition().toPoint() - grip_);
}

void FormTitle::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (maximize_ && event->button() == Qt::LeftButton)
        ToggleMaximized();
}

bool FormTitle::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == parentWidget() && event->type() == QEvent::WindowStateChange)
        maximize_->SetHint(parentWidget()->isMaximized() ? u"还原"_s : u"最大化"_s);
    return QWidget::eventFilter(watched, event);
}

} // namespace Qel
