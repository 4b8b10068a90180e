#pragma once

#include <string_view>

namespace Qel::Http {

/// Tells the service manager, where one started this process and wants to know ("READY=1",
/// "STOPPING=1"). Nothing happens elsewhere.
void NotifyServiceManager(std::string_view state);

} // namespace Qel::Http
