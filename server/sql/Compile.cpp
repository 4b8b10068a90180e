#include "sql/Compile.h"

#include "sql/Binder.h"
#include "sql/LikeIndex.h"
#include "sql/Parser.h"
#include "sql/Printer.h"
#include "sql/TotalOrder.h"

#include <utility>

namespace Qel::Sql {

namespace {

FieldType FieldTypeOf(Type type)
{
    switch (type) {
    case Type::Integer:
        return FieldType::Integer;
    case Type::Real:
        return FieldType::Real;
    case Type::Date:
        return FieldType::DateTime;
    case Type::Null:
    case Type::Text:
        break;
    }
    return FieldType::Text;
}

} // namespace

std::string CompiledQuery::Page(qint64 limit, qint64 offset, bool readsThrough) const
{
    return (readsThrough ? readThrough : ordered) + " LIMIT " + std::to_string(limit) + " OFFSET " +
           std::to_string(offset);
}

const std::string &CompiledQuery::Total(bool readsThrough) const
{
    return readsThrough && !readThroughCount.empty() ? readThroughCount : count;
}

CompiledQuery Compile(QByteArrayView oracleText, const Catalog &catalog, Dialect dialect,
                      const Limits &limits, const RowScope *scope)
{
    const auto select = Parse(oracleText, limits);
    const BoundStatement statement = Bind(*select, oracleText, catalog, limits, scope);
    Query &query = *statement.query;

    CompiledQuery compiled;
    CompleteOrder(query, dialect);
    const std::string unnarrowed = PrintOrdered(query, dialect);
    const std::vector<NodePtr> added = NarrowByGrams(query, dialect);
    // PostgreSQL's planner knows from the table's statistics how frequent a gram is.
    if (dialect == Dialect::Sqlite && added.size() == 1 && added.front()->op == Op::HasGrams &&
        IsOrderedByIndex(query)) {
        compiled.candidates = PrintCandidates(*added.front(), dialect, ManyCandidates);
        compiled.readThrough = unnarrowed;
    }
    compiled.ordered = PrintOrdered(query, dialect);
    // Rows that tie shall stand the same way, paged or not; who states no order pays for none.
    compiled.all = query.orderBy.empty() ? PrintUnordered(query, dialect) : compiled.ordered;
    compiled.count = PrintCount(query, dialect);
    if (compiled.candidates.empty()) {
        if (const NodePtr lead = LeadByGrams(query, dialect)) {
            compiled.candidates = PrintCandidates(*lead, dialect, ManyCandidates);
            compiled.readThrough = std::exchange(compiled.ordered, PrintOrdered(query, dialect));
            compiled.readThroughCount = std::exchange(compiled.count, PrintCount(query, dialect));
        }
    }
    for (const Output &output : query.outputs) {
        compiled.fields.push_back({QString::fromStdString(output.label),
                                   FieldTypeOf(output.value->type), output.value->size});
    }
    compiled.tables = statement.tables;
    return compiled;
}

} // namespace Qel::Sql
