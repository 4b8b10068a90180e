#pragma once

#include "frame/BaseForm.h"

namespace Qel {

/// Stands where a screen or dialog will come: its caption and the line "尚未提供".
class TFrmNotProvided : public TFrmBaseForm
{
    Q_OBJECT

public:
    TFrmNotProvided(QWidget *owner, const QString &caption);
};

/// Shows that as a dialog, for an action whose dialog is still to come.
void ShowNotProvided(QWidget *owner, const QString &caption);

} // namespace Qel
