#include "support/ScreenDriver.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEvent>
#include <QInputMethodEvent>
#include <QKeySequence>
#include <QLineEdit>
#include <QPointer>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace Qel::Test {

void FailTest(const QString &message)
{
    qFatal("%s", qUtf8Printable(message));
}

void Click(QWidget *widget)
{
    if (!widget->isEnabled())
        FailTest(u"\"%1\" is disabled and cannot be clicked"_s.arg(widget->objectName()));
    QTest::mouseClick(widget, Qt::LeftButton);
}

void Click(const QObject *root, const QString &name)
{
    Click(Child<QWidget>(root, name));
}

void DoubleClick(QWidget *widget)
{
    QTest::mouseClick(widget, Qt::LeftButton);
    QTest::mouseDClick(widget, Qt::LeftButton);
}

void PressInside(const QObject *root, const QString &edit)
{
    Child<QAbstractButton>(Child<QLineEdit>(root, edit), QString())->click();
}

void Trigger(const QObject *root, const QString &action)
{
    auto *found = Child<QAction>(root, action);
    if (!found->isEnabled())
        FailTest(u"action \"%1\" is disabled"_s.arg(action));
    found->trigger();
}

bool ActionEnabled(const QObject *root, const QString &action)
{
    return Child<QAction>(root, action)->isEnabled();
}

void Type(QWidget *edit, const QString &text)
{
    edit->setFocus();
    QTest::keySequence(edit, QKeySequence::SelectAll);
    if (text.isEmpty()) {
        QTest::keyClick(edit, Qt::Key_Delete);
        return;
    }
    QInputMethodEvent event; // as an input method does: keys cannot spell Chinese
    event.setCommitString(text);
    QCoreApplication::sendEvent(edit, &event);
}

void Type(const QObject *root, const QString &name, const QString &text)
{
    Type(Child<QWidget>(root, name), text);
}

void Press(QWidget *widget, Qt::Key key, Qt::KeyboardModifiers modifiers)
{
    QTest::keyClick(widget, key, modifiers);
}

void Press(const QObject *root, const QString &name, Qt::Key key)
{
    Press(Child<QWidget>(root, name), key);
}

ModalVisitor::ModalVisitor(std::function<void(QWidget *)> visit)
    : visit_(std::move(visit))
{
    qApp->installEventFilter(this);
}

ModalVisitor::~ModalVisitor()
{
    if (!visited_)
        QTest::qFail("the expected modal window never appeared", __FILE__, __LINE__);
}

bool ModalVisitor::eventFilter(QObject *watched, QEvent *event)
{
    if (pending_ || event->type() != QEvent::Show || !watched->isWidgetType())
        return false;
    auto *window = static_cast<QWidget *>(watched);
    if (!window->isWindow() || !window->isModal() || window->objectName() == "BusyBox"_L1)
        return false;
    pending_ = true;
    qApp->removeEventFilter(this);
    VisitWhenReady(window);
    return false;
}

void ModalVisitor::VisitWhenReady(QPointer<QWidget> window)
{
    // From the window's own event loop, which starts after it is shown; not inside the queries
    // of its FormShow, when nobody could press anything yet.
    QTimer::singleShot(1, this, [this, window] {
        // By name: the form may be one of a module's.
        if (window && window->property("handlerRunning").toBool())
            return VisitWhenReady(window);
        visited_ = true;
        if (window)
            visit_(window);
        // A check that failed has left the visit early: do not wait for the time-out.
        if (window && QTest::currentTestFailed())
            window->close();
    });
}

} // namespace Qel::Test
