#include "frame/ResultMessages.h"

#include <algorithm>

namespace Qel {

void ShowResultMessage(QStringView code, std::span<const ResultMessage> messages)
{
    const auto message = std::ranges::find(messages, code, &ResultMessage::code);
    if (message == messages.end())
        return;
    const QString text = message->text.toString();
    const QString caption = message->caption.toString();
    switch (message->icon) {
    case TBoxIcon::Warning:
        return WarningBox(text, caption);
    case TBoxIcon::Error:
        return ErrorBox(text, caption);
    default:
        return InfoBox(text, caption);
    }
}

} // namespace Qel
