#pragma once

#include "frame/BaseForm.h"

namespace Qel {

/// Stands where a screen will come: its caption and the line "尚未提供".
class TFrmNotProvided : public TFrmBaseForm
{
    Q_OBJECT

public:
    TFrmNotProvided(QWidget *owner, const QString &caption);
};

} // namespace Qel
