#include "PaintWatch.h"

#include <QApplication>
#include <QEvent>
#include <QWidget>

namespace Qel::Bench {

namespace {

class PaintWatch : public QObject
{
public:
    bool painted = false;

    bool eventFilter(QObject *, QEvent *event) override
    {
        painted = painted || event->type() == QEvent::Paint;
        return false;
    }
};

} // namespace

void WaitForPaint(QWidget *widget)
{
    PaintWatch watch;
    widget->installEventFilter(&watch);
    while (!watch.painted)
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

} // namespace Qel::Bench
