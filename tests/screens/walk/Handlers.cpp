#include "screens/walk/FormRules.h"

#include "controls/ButtonEdit.h"
#include "remote/PageGuide.h"

#include <QAction>
#include <QCheckBox>
#include <QGroupBox>
#include <QHash>
#include <QKeySequence>
#include <QLabel>
#include <QMetaMethod>
#include <QPushButton>
#include <QTabBar>
#include <QToolButton>

namespace Qel::Test {

using namespace Qt::StringLiterals;

namespace {

/// Whether anybody listens; Qt shows that only to the sender's own class.
struct Sender : QObject
{
    template <typename Signal>
    static bool IsHeard(const QObject &sender, Signal signal)
    {
        return (sender.*(&Sender::isSignalConnected))(QMetaMethod::fromSignal(signal));
    }
};

bool IsHeard(const QAbstractButton &button)
{
    return Sender::IsHeard(button, &QAbstractButton::clicked) ||
           Sender::IsHeard(button, &QAbstractButton::toggled) ||
           Sender::IsHeard(button, &QAbstractButton::pressed);
}

bool IsHeard(const QAction &action)
{
    return Sender::IsHeard(action, &QAction::triggered) ||
           Sender::IsHeard(action, &QAction::toggled);
}

QStringList FaultsOf(const QAbstractButton &button, const QWidget &form)
{
    const QString bound = button.property("action").toString();
    if (bound.isEmpty())
        return IsHeard(button) ? QStringList() : QStringList{NameOf(button) + u" does nothing"_s};
    const auto *action = form.findChild<QAction *>(bound);
    if (action && IsHeard(*action) && IsHeard(button))
        return {};
    return {u"%1 does nothing: its action %2 is not handled"_s.arg(NameOf(button), bound)};
}

class Keys
{
public:
    void Claim(const QKeySequence &keys, const QString &by)
    {
        if (keys.isEmpty())
            return;
        const QString first = claims_.value(keys);
        if (first.isEmpty())
            claims_.insert(keys, by);
        else
            faults_ << u"%1 is claimed by %2 and %3"_s.arg(keys.toString(), first, by);
    }
    void ClaimMnemonic(const QString &text, const QString &by)
    {
        Claim(QKeySequence::mnemonic(text), by);
    }
    const QStringList &Faults() const { return faults_; }

private:
    QHash<QKeySequence, QString> claims_;
    QStringList faults_;
};

} // namespace

QStringList KeysUsedTwice(const QWidget &form)
{
    Keys keys;
    for (const QWidget *control : ShownControls(form)) {
        if (const auto *label = qobject_cast<const QLabel *>(control); label && label->buddy())
            keys.ClaimMnemonic(label->text(), NameOf(*label));
        if (const auto *button = qobject_cast<const QAbstractButton *>(control))
            keys.Claim(button->shortcut(), NameOf(*button));
        if (const auto *box = qobject_cast<const QGroupBox *>(control))
            keys.ClaimMnemonic(box->title(), NameOf(*box));
        if (const auto *tabs = qobject_cast<const QTabBar *>(control)) {
            for (int tab = 0; tab < tabs->count(); ++tab)
                keys.ClaimMnemonic(tabs->tabText(tab), tabs->tabText(tab));
        }
    }
    for (const QAction *action : form.findChildren<QAction *>(Qt::FindDirectChildrenOnly))
        keys.Claim(action->shortcut(), action->objectName());
    return keys.Faults();
}

QStringList UnhandledButtons(const QWidget &form)
{
    QStringList faults;
    for (const QWidget *control : ShownControls(form)) {
        const bool isButton = qobject_cast<const QPushButton *>(control) ||
                              qobject_cast<const QToolButton *>(control);
        // The buttons in an edit speak through the edit.
        if (isButton && !qobject_cast<const QLineEdit *>(control->parentWidget()))
            faults << FaultsOf(*qobject_cast<const QAbstractButton *>(control), form);
        if (const auto *edit = qobject_cast<const ButtonEdit *>(control);
            edit && OffersButtons(*edit) && !Sender::IsHeard(*edit, &ButtonEdit::ButtonClicked))
            faults << u"the buttons of %1 do nothing"_s.arg(NameOf(*edit));
        if (const auto *pages = qobject_cast<const TPageGuide *>(control)) {
            if (!Sender::IsHeard(*pages, &TPageGuide::ChangePage))
                faults << u"%1 changes no page"_s.arg(NameOf(*pages));
            if (pages->ShowSelectAll() && !Sender::IsHeard(*pages, &TPageGuide::SelectAll))
                faults << u"%1 selects nothing"_s.arg(NameOf(*pages));
        }
    }
    for (const QAction *action : form.findChildren<QAction *>(Qt::FindDirectChildrenOnly)) {
        if (action->isEnabled() && !action->isSeparator() && !IsHeard(*action))
            faults << u"action %1 is enabled and does nothing"_s.arg(action->objectName());
    }
    return faults;
}

} // namespace Qel::Test
