#pragma once

#include <QPointer>
#include <QtGlobal>

#include <utility>

class QAction;
class QWidget;

namespace Qel {

// State that a handler changes for its own duration, put back by objects on the stack: on every
// path, also when an error flies.

/// Enables or disables an action or a control by a screen's rule. While a DisableWhile holds it,
/// the rule's last word is kept and takes effect when the hold ends. Rules go through here, or a
/// rule that changes during a request would be overruled by the end of the request.
void SetEnabledByRule(QAction *action, bool enabled);
void SetEnabledByRule(QWidget *widget, bool enabled);

/// Holds an action or a control disabled for a scope: every action that writes or queries holds
/// itself while its request runs. Holds may nest. The keyboard focus that a disabled control
/// loses comes back at the end, unless the handler has put it elsewhere meanwhile.
class DisableWhile
{
public:
    explicit DisableWhile(QAction *action);
    explicit DisableWhile(QWidget *widget);
    ~DisableWhile();
    Q_DISABLE_COPY_MOVE(DisableWhile)

private:
    void Hold(QObject *object);

    QPointer<QObject> held_;
    QPointer<QWidget> focusBefore_; ///< null unless the hold took the focus away
    QPointer<QWidget> focusParked_; ///< where it waits
};

/// Shows the wait cursor for a scope.
class WaitCursor
{
public:
    WaitCursor();
    ~WaitCursor();
    Q_DISABLE_COPY_MOVE(WaitCursor)
};

/// Gives a variable another value for a scope; `AssignWhile loading(loading_, true)` keeps a
/// handler detached that looks at loading_.
template <typename T>
class AssignWhile
{
public:
    AssignWhile(T &variable, T value)
        : variable_(variable)
        , before_(std::exchange(variable, std::move(value)))
    {
    }
    ~AssignWhile() { variable_ = std::move(before_); }
    Q_DISABLE_COPY_MOVE(AssignWhile)

private:
    T &variable_;
    T before_;
};

} // namespace Qel
