#pragma once

#include "sql/Tree.h"

/// Makes typed nodes by Oracle's rules: what a function or operator makes of its arguments, and
/// which conversions it does on the way. Literals are converted at once. `position` is the byte
/// that an error names. All throw ESqlError.
namespace Qel::Sql {

NodePtr NullNode(Type type = Type::Null, int size = 0);
NodePtr TextNode(std::string text, Type type = Type::Text); ///< '' is NULL
NodePtr NumberNode(std::string text);
NodePtr FunctionNode(Fn fn, Type type, std::vector<NodePtr> arguments, int size = 0);

/// The value as that type: texts become numbers or dates, numbers and dates become texts.
NodePtr Convert(const NodePtr &node, Type type, qsizetype position);

/// Converts values that are compared with each other: to dates if one is a date, to numbers if one
/// is a number.
void MakeComparable(std::vector<NodePtr> &nodes, qsizetype position);

/// Converts the results of the branches of a CASE to the type of the first that has one.
void MakeAlike(std::vector<NodePtr *> results, qsizetype position);

NodePtr Cast(const NodePtr &node, const std::string &typeName, int size, qsizetype position);
NodePtr Arithmetic(const std::string &symbol, const NodePtr &left, const NodePtr &right,
                   qsizetype position);
NodePtr Call(const ClientFunction &function, std::vector<NodePtr> arguments, bool distinct,
             qsizetype position);

} // namespace Qel::Sql
