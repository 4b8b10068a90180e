#pragma once

#include "admin/Command.h"

namespace Qel::Admin {

/// Tokens of users: add, revoke, list. What they change holds from the next request on, on every
/// server of the database.
QList<Command> UserCommands();

} // namespace Qel::Admin
