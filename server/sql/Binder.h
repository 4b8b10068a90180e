#pragma once

#include "sql/Syntax.h"
#include "sql/Tree.h"

namespace Qel::Sql {

struct BoundStatement
{
    std::shared_ptr<Query> query;
    std::vector<std::string> tables; ///< read anywhere in it, each once
};

/// Looks up every name in the catalogue, gives every value its type and the conversions that
/// Oracle would make, checks the functions, and turns (+) into outer joins. `text` is what was
/// parsed; labels of unnamed columns are cut from it. `scope`: null for every row. Throws
/// ESqlError.
BoundStatement Bind(const Syntax::Select &select, QByteArrayView text, const Catalog &catalog,
                    const Limits &limits, const RowScope *scope = nullptr);

} // namespace Qel::Sql
