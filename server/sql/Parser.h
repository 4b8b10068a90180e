#pragma once

#include "sql/Compile.h"
#include "sql/Syntax.h"

namespace Qel::Sql {

/// Exactly one SELECT, with at most a semicolon behind it. Throws ESqlError.
std::unique_ptr<Syntax::Select> Parse(QByteArrayView text, const Limits &limits);

} // namespace Qel::Sql
