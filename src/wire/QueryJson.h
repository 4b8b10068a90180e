#pragma once

#include "wire/Wire.h"

/// A query answer as JSON: the same table, for people and small scripts. Fields as objects, rows
/// as arrays of texts and nulls.
namespace Qel::Wire {

QByteArray WriteAnswerAsJson(const QueryAnswer &answer);
QueryAnswer ReadAnswerFromJson(const QByteArray &body);

} // namespace Qel::Wire
