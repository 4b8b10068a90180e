#pragma once

#include <QAction>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <functional>

namespace Qel::Test {

/// Ends the running test with a message; what the finders below do when a name is not there.
[[noreturn]] void FailTest(const QString &message);

/// The descendant of `root` with that object name and type; ends the test with the name if there
/// is none.
template <class T>
T *Child(const QObject *root, const QString &name)
{
    if (T *found = root->findChild<T *>(name))
        return found;
    FailTest(
        QStringLiteral("no %1 named \"%2\" below \"%3\"")
            .arg(QString::fromLatin1(T::staticMetaObject.className()), name, root->objectName()));
}

void Click(QWidget *widget); ///< left button, in the middle; the widget has to be enabled
void Click(const QObject *root, const QString &name);
void DoubleClick(QWidget *widget);
/// Presses the button inside a button edit; returns when the dialog that it opens is closed.
void PressInside(const QObject *root, const QString &edit);

/// Triggers an action; one that is disabled ends the test, as nobody could do that.
void Trigger(const QObject *root, const QString &action);
bool ActionEnabled(const QObject *root, const QString &action);

/// Replaces the text of an edit as a user would: focus, select all, type. Takes any characters.
void Type(QWidget *edit, const QString &text);
void Type(const QObject *root, const QString &name, const QString &text);

void Press(QWidget *widget, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
void Press(const QObject *root, const QString &name, Qt::Key key);

/// Waits for the next modal window that is shown (the busy box of a query does not count) and, when
/// no handler of it runs any more (its FormShow is one), calls `visit` with it from its event loop.
/// `visit` has to close the window, or its opener never comes back. Each visitor serves one window:
/// make the one for a dialog that a dialog opens inside the first `visit`, since of two that wait
/// at once both would take the first window. If no window has come when the object dies, the test
/// is marked failed.
class ModalVisitor : public QObject
{
    Q_OBJECT

public:
    explicit ModalVisitor(std::function<void(QWidget *)> visit);
    ~ModalVisitor() override;

    bool Visited() const { return visited_; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void VisitWhenReady(QPointer<QWidget> window);

    std::function<void(QWidget *)> visit_;
    bool visited_ = false;
    bool pending_ = false;
};

} // namespace Qel::Test
