#pragma once

#include "remote/SoapCtrl.h"

#include <QString>

namespace Qel::Test {

/// Sends what the service asks and posts to the servlets at `address`, as the library does.
inline void UseServer(TSoapCtrl &soap, const QString &address)
{
    const QString post = QStringLiteral("NorvaneServlet");
    soap.SetServletURL(address, QStringLiteral("NorvaneSelectServlet"), post, post);
}

} // namespace Qel::Test
