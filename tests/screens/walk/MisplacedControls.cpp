#include "screens/walk/FormRules.h"

#include <QAbstractScrollArea>

namespace Qel::Test {

using namespace Qt::StringLiterals;

namespace {

QString Place(const QRect &rect)
{
    return u"%1,%2 %3 x %4"_s.arg(rect.x()).arg(rect.y()).arg(rect.width()).arg(rect.height());
}

/// What is scrolled is larger than its window on purpose.
bool Scrolls(const QWidget &parent)
{
    const auto *area = qobject_cast<const QAbstractScrollArea *>(parent.parentWidget());
    return area && area->viewport() == &parent;
}

} // namespace

QStringList MisplacedControls(const QWidget &form)
{
    QStringList faults;
    const QList<QWidget *> shown = ShownControls(form);
    for (const QWidget *control : shown) {
        const QWidget &parent = *control->parentWidget();
        const QRect place = control->geometry();
        if (place.isEmpty())
            faults << u"%1 has no size"_s.arg(NameOf(*control));
        else if (!Scrolls(parent) && !parent.rect().contains(place))
            faults << u"%1 (%2) reaches out of %3 (%4)"_s.arg(NameOf(*control), Place(place),
                                                              NameOf(parent), Place(parent.rect()));
    }
    for (int first = 0; first < shown.size(); ++first) {
        for (int second = first + 1; second < shown.size(); ++second) {
            const QWidget &one = *shown[first];
            const QWidget &other = *shown[second];
            if (one.parentWidget() == other.parentWidget() && !IsComposite(*one.parentWidget()) &&
                one.geometry().intersects(other.geometry()))
                faults << u"%1 (%2) lies over %3 (%4)"_s.arg(NameOf(other), Place(other.geometry()),
                                                             NameOf(one), Place(one.geometry()));
        }
    }
    return faults;
}

} // namespace Qel::Test
