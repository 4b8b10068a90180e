#pragma once

#include <QCheckBox>

namespace Qel {

/// A check box that can be made read-only: it looks as usual, so that it stays readable, but
/// neither mouse nor keyboard change it and it takes no focus. Code still sets it.
/// Layout property (stdset="0"): readOnly.
class CheckBox : public QCheckBox
{
    Q_OBJECT
    Q_PROPERTY(bool readOnly READ IsReadOnly WRITE SetReadOnly)

public:
    using QCheckBox::QCheckBox;

    bool IsReadOnly() const { return readOnly_; }
    void SetReadOnly(bool readOnly);

protected:
    bool hitButton(const QPoint &position) const override;
    void nextCheckState() override;

private:
    bool readOnly_ = false;
};

} // namespace Qel
