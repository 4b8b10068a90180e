#include "controls/CheckBox.h"

namespace Qel {

void CheckBox::SetReadOnly(bool readOnly)
{
    readOnly_ = readOnly;
    setFocusPolicy(readOnly ? Qt::NoFocus : Qt::StrongFocus);
}

bool CheckBox::hitButton(const QPoint &position) const
{
    return !readOnly_ && QCheckBox::hitButton(position);
}

/// What the blank key and click() of assistive tools come down to.
void CheckBox::nextCheckState()
{
    if (!readOnly_)
        QCheckBox::nextCheckState();
}

} // namespace Qel
