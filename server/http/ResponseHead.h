#pragma once

#include "http/Message.h"

#include <QByteArray>

namespace Qel::Http {

/// Status line and headers of an answer, up to the empty line. `secure`: it goes over TLS.
QByteArray HeadOf(const Response &response, bool keepAlive, bool secure);

} // namespace Qel::Http
