#include "screens/walk/FormRules.h"

#include "controls/CheckBox.h"
#include "frame/FormTitle.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTabBar>

#include <algorithm>
#include <memory>
#include <vector>

namespace Qel::Test {

using namespace Qt::StringLiterals;

namespace {

bool HasTabFocus(const QWidget &widget)
{
    return (widget.focusPolicy() & Qt::TabFocus) == Qt::TabFocus;
}

bool TakesTab(const QWidget &widget)
{
    return HasTabFocus(widget) && !widget.focusProxy();
}

/// Tab would end nowhere: a tab widget without its bar does that.
bool GivesFocusToTheHidden(const QWidget &widget)
{
    return HasTabFocus(widget) && widget.focusProxy() && !widget.focusProxy()->isVisible();
}

/// A control that Tab stops at, or a group of them: a container or a layout.
struct Block
{
    QRect place; ///< in the form's coordinates
    const QWidget *control = nullptr;
    QString name;
    std::vector<Block> parts;
};

/// The blocks of one form, as its layouts and containers nest.
class BlockTree
{
public:
    explicit BlockTree(const QWidget &form)
        : form_(form)
    {
    }

    Block Of(const QWidget &widget) const
    {
        Block block{PlaceOf(widget, widget.rect()), nullptr, NameOf(widget), {}};
        if (TakesTab(widget))
            block.control = &widget;
        QWidgetList placed;
        if (const QLayout *layout = widget.layout())
            AddItems(*layout, widget, block, placed);
        for (QObject *child : widget.children()) {
            const auto *part = qobject_cast<const QWidget *>(child);
            if (part && part->isVisible() && !part->isWindow() &&
                !placed.contains(const_cast<QWidget *>(part)))
                Add(Of(*part), block);
        }
        return block;
    }

private:
    QRect PlaceOf(const QWidget &widget, const QRect &rect) const
    {
        return {widget.mapTo(&form_, rect.topLeft()), rect.size()};
    }

    void AddItems(const QLayout &layout, const QWidget &parent, Block &block,
                  QWidgetList &placed) const
    {
        for (int at = 0; at < layout.count(); ++at) {
            QLayoutItem *item = layout.itemAt(at);
            if (QWidget *widget = item->widget()) {
                placed << widget;
                if (widget->isVisible())
                    Add(Of(*widget), block);
            } else if (const QLayout *inner = item->layout()) {
                Block part{PlaceOf(parent, inner->geometry()), nullptr, inner->objectName(), {}};
                AddItems(*inner, parent, part, placed);
                Add(std::move(part), block);
            }
        }
    }

    static void Add(Block part, Block &block)
    {
        if (part.control || !part.parts.empty())
            block.parts.push_back(std::move(part));
    }

    const QWidget &form_;
};

bool Holds(const Block &block, const QWidget *control)
{
    return block.control == control ||
           std::any_of(block.parts.begin(), block.parts.end(),
                       [control](const Block &part) { return Holds(part, control); });
}

bool GoesBackwards(const QRect &from, const QRect &to)
{
    const bool up = to.bottom() < from.top();
    const bool down = to.top() > from.bottom();
    const bool left = to.right() < from.left();
    const bool right = to.left() > from.right();
    return (up && !right) || (left && !down);
}

/// The control at the upper left, where a round of the Tab key starts.
const QWidget *FirstOf(const Block &block)
{
    if (block.control || block.parts.empty())
        return block.control;
    return FirstOf(*std::min_element(
        block.parts.begin(), block.parts.end(), [](const Block &one, const Block &other) {
            return one.place.top() != other.place.top() ? one.place.top() < other.place.top()
                                                        : one.place.left() < other.place.left();
        }));
}

QWidgetList Chain(const QWidget &form, const Block &all)
{
    QWidgetList chain;
    for (QWidget *at = form.nextInFocusChain(); at != &form; at = at->nextInFocusChain()) {
        if (Holds(all, at))
            chain << at;
    }
    const qsizetype first = chain.indexOf(const_cast<QWidget *>(FirstOf(all)));
    std::rotate(chain.begin(), chain.begin() + std::max<qsizetype>(first, 0), chain.end());
    return chain;
}

/// The steps between the parts of one block, then the steps inside each.
void FollowSteps(const Block &block, const QWidgetList &chain, QStringList &faults)
{
    QList<const Block *> left;
    const Block *current = nullptr;
    const QWidget *before = nullptr;
    for (const QWidget *control : chain) {
        const auto part = std::find_if(block.parts.begin(), block.parts.end(),
                                       [control](const Block &p) { return Holds(p, control); });
        if (part == block.parts.end())
            continue; // the block's own control, or another block's
        if (&*part != current) {
            if (current) {
                left << current;
                if (left.contains(&*part))
                    faults << u"Tab leaves %1 and comes back to it at %2"_s.arg(part->name,
                                                                                NameOf(*control));
                else if (GoesBackwards(current->place, part->place))
                    faults << u"Tab goes backwards from %1 to %2"_s.arg(NameOf(*before),
                                                                        NameOf(*control));
            }
            current = &*part;
        }
        before = control;
    }
    for (const Block &part : block.parts)
        FollowSteps(part, chain, faults);
}

bool IsForInput(const QWidget &widget)
{
    return qobject_cast<const QLineEdit *>(&widget) || qobject_cast<const QComboBox *>(&widget) ||
           qobject_cast<const QAbstractSpinBox *>(&widget) ||
           qobject_cast<const QPlainTextEdit *>(&widget) ||
           qobject_cast<const QAbstractItemView *>(&widget) ||
           qobject_cast<const QAbstractButton *>(&widget);
}

/// The buttons of the title bar, and those in an edit, which has keys for them.
bool IsForTheMouse(const QWidget &widget)
{
    return qobject_cast<const QAbstractButton *>(&widget) &&
           (qobject_cast<const FormTitle *>(widget.parentWidget()) ||
            qobject_cast<const QLineEdit *>(widget.parentWidget()));
}

/// Shows a text and offers no button beside it.
bool IsForReading(const QWidget &widget)
{
    const auto *edit = qobject_cast<const QLineEdit *>(&widget);
    return edit && edit->isReadOnly() && !OffersButtons(*edit);
}

/// May take Tab, so that the keyboard can scroll it, or leave it.
bool IsFreeToChoose(const QWidget &widget)
{
    const auto *memo = qobject_cast<const QPlainTextEdit *>(&widget);
    const auto *box = qobject_cast<const CheckBox *>(&widget);
    return (memo && memo->isReadOnly()) || (box && box->IsReadOnly());
}

} // namespace

QStringList TabOrderFaults(const QWidget &form)
{
    QStringList faults;
    for (const QWidget *control : ShownControls(form)) {
        if (GivesFocusToTheHidden(*control))
            faults << u"Tab gets lost at %1"_s.arg(NameOf(*control));
        if (IsForReading(*control) && TakesTab(*control))
            faults << u"Tab stops at the read-only %1"_s.arg(NameOf(*control));
        if (!IsForReading(*control) && !IsFreeToChoose(*control) && IsForInput(*control) &&
            !IsForTheMouse(*control) && !control->focusProxy() && !TakesTab(*control))
            faults << u"Tab does not reach %1"_s.arg(NameOf(*control));
    }
    const Block all = BlockTree(form).Of(form);
    FollowSteps(all, Chain(form, all), faults);
    return faults;
}

/// Qt walks the chain of the whole window, also when a form or dialog comes or goes: without an end
/// it hangs there.
QStringList FocusChainFaults(const QWidget &form)
{
    const QWidget *window = form.window();
    QWidgetList missed = window->findChildren<QWidget *>();
    const auto isElsewhere = [window](const QWidget *widget) { return widget->window() != window; };
    missed.erase(std::remove_if(missed.begin(), missed.end(), isElsewhere), missed.end());
    const QWidget *at = window;
    do {
        QWidget *next = at->nextInFocusChain();
        if (next->previousInFocusChain() != at)
            return {
                u"the focus chain is broken between %1 and %2"_s.arg(NameOf(*at), NameOf(*next))};
        missed.removeOne(next);
        at = next;
    } while (at != window); // a chain whose links go both ways comes back
    QStringList faults;
    for (const QWidget *widget : missed)
        faults << u"%1 is not in the focus chain"_s.arg(NameOf(*widget));
    return faults;
}

QStringList DefaultFocusFaults(const QWidget &form)
{
    const QWidget *focused = form.focusWidget();
    if (!focused)
        return {u"no control has the focus"_s};
    if (!focused->isVisible() || !focused->isEnabled())
        return {u"the focus is on %1, which cannot be used"_s.arg(NameOf(*focused))};
    if (qobject_cast<const QTabBar *>(focused))
        return {u"the focus is on the tabs %1"_s.arg(NameOf(*focused))};
    return {};
}

} // namespace Qel::Test
