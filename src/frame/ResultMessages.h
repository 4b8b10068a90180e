#pragma once

#include "frame/MisCommon.h"

#include <QStringView>

#include <span>

namespace Qel {

/// What a screen says to a result code of one method. A method's messages are a table; a code
/// that is not in it is passed over in silence.
struct ResultMessage
{
    QStringView code;
    TBoxIcon icon; ///< Information, Warning or Error
    QStringView text;
    QStringView caption;
};

/// Shows the table's message for `code`, if it has one.
void ShowResultMessage(QStringView code, std::span<const ResultMessage> messages);

} // namespace Qel
