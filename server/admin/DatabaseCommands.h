#pragma once

#include "admin/Command.h"

namespace Qel::Admin {

/// What keeps a database in order: check, migrate, reindex, backup.
QList<Command> DatabaseCommands();

} // namespace Qel::Admin
