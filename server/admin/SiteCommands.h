#pragma once

#include "admin/Command.h"

namespace Qel::Admin {

/// A whole site as CSV files: export, import.
QList<Command> SiteCommands();

} // namespace Qel::Admin
