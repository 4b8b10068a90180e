#pragma once

#include "managers/Method.h"

namespace Qel::Managers {

/// For an operator whose token is limited to groups: every row must be about one of them, by what
/// it says and by the record that it names. Groups are neither made nor moved in their tree by
/// such an operator, and methods of records that belong to no group are refused as a whole. Part
/// of the post's transaction. Throws EPostError "post.scope".
void CheckScope(Store::Connection &connection, const Method &method,
                const QList<Wire::NamedValues> &rows, const Store::Operator &user);

} // namespace Qel::Managers
