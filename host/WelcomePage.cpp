#include "host/WelcomePage.h"

#include <QAction>
#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

namespace Qel::Host {

using namespace Qt::StringLiterals;

namespace {

constexpr int Columns = 3;
constexpr QSize ButtonSize(220, 84);
constexpr int Gap = 18;
constexpr QRgb Ground = 0xfff4f7fb;
constexpr QRgb Accent = 0xff316ac5;

QFont Scaled(QFont font, double factor, bool bold)
{
    font.setPointSizeF(font.pointSizeF() * factor);
    font.setBold(bold);
    return font;
}

/// Code small above, title large below, an accent at the left edge.
class EntryButton : public QPushButton
{
public:
    explicit EntryButton(QAction *action, QWidget *parent)
        : QPushButton(action->text(), parent)
        , code_(action->objectName())
    {
        setObjectName(u"Btn"_s + code_);
        setMinimumSize(ButtonSize);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        setCursor(Qt::PointingHandCursor);
        setFont(Scaled(font(), 1.25, true));
        connect(this, &QPushButton::clicked, action, &QAction::trigger);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const bool hot = underMouse() || hasFocus();
        painter.setPen(QColor::fromRgba(hot ? Accent : 0xffd3dce8));
        painter.setBrush(QColor::fromRgba(isDown() ? 0xffe3ecfa : 0xffffffff));
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
        painter.fillRect(QRect(0, 10, 4, height() - 20), QColor::fromRgba(Accent));

        const QRect room = rect().adjusted(22, 14, -14, -14);
        painter.setFont(Scaled(font(), 0.68, false));
        painter.setPen(QColor(0x6b, 0x7a, 0x90));
        painter.drawText(room, Qt::AlignLeft | Qt::AlignTop, code_);
        painter.setFont(font());
        painter.setPen(QColor(0x1c, 0x2b, 0x45));
        painter.drawText(room, Qt::AlignLeft | Qt::AlignBottom, text());
    }

    void enterEvent(QEnterEvent *) override { update(); }
    void leaveEvent(QEvent *) override { update(); }

private:
    QString code_;
};

} // namespace

WelcomePage::WelcomePage(const QList<QAction *> &actions, QWidget *parent)
    : QWidget(parent)
{
    setObjectName(u"WelcomePage"_s);
    auto *title = new QLabel(u"药品交易平台 · 营运管理"_s);
    title->setFont(Scaled(font(), 1.9, true));
    auto *hint = new QLabel(u"请选择要办理的业务"_s);
    hint->setFont(Scaled(font(), 1.1, false));

    auto *grid = new QGridLayout;
    grid->setSpacing(Gap);
    for (int i = 0; i < actions.size(); ++i)
        grid->addWidget(new EntryButton(actions.at(i), this), i / Columns, i % Columns);

    auto *column = new QVBoxLayout;
    column->addStretch(2);
    column->addWidget(title);
    column->addSpacing(4);
    column->addWidget(hint);
    column->addSpacing(Gap);
    column->addLayout(grid);
    column->addStretch(3);
    auto *layout = new QHBoxLayout(this);
    layout->addStretch(1);
    layout->addLayout(column, 8);
    layout->addStretch(1);
}

void WelcomePage::paintEvent(QPaintEvent *)
{
    QPainter(this).fillRect(rect(), QColor::fromRgba(Ground));
}

} // namespace Qel::Host
