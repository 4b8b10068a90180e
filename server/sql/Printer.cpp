#include "sql/Printer.h"

#include "sql/Grams.h"
#include "sql/TotalOrder.h"

#include <QScopedValueRollback>
#include <QString>

#include <algorithm>
#include <initializer_list>

using namespace Qt::StringLiterals;

namespace Qel::Sql {

namespace {

/// Values that are used twice (DECODE) are written twice; nested ones would double at each level.
constexpr size_t maxPrintedBytes = 16 << 20;

/// A list of AND or OR longer than this is written as a tree of brackets: databases limit how deep
/// an expression is, and a chain is as deep as it is long.
constexpr size_t maxChain = 100;

std::string Quoted(const std::string &text, char quote)
{
    std::string quoted(1, quote);
    for (const char c : text) {
        quoted += c;
        if (c == quote)
            quoted += c;
    }
    quoted += quote;
    return quoted;
}

/// The type of a value that shows none of its own; what stays open PostgreSQL takes for text.
std::string_view PostgresCast(Type type)
{
    switch (type) {
    case Type::Text:
    case Type::Date:
        return "::text";
    case Type::Integer:
        return "::int8";
    case Type::Real:
        return "::float8";
    case Type::Null:
        break;
    }
    return {};
}

bool HasSubSelect(const Node &value)
{
    return !ForEachNode(value, [](const Node &node) { return !node.query; });
}

bool IsTextColumn(const Node &node)
{
    return node.op == Op::Column && node.relation->table;
}

/// The gram table of the relation that the node names, and the rows of it.
std::string GramMatch(const Node &hasGrams)
{
    const std::string table = GramTableOf(hasGrams.arguments[0]->relation->table->name);
    return table + " WHERE " + table + " MATCH " + Quoted(hasGrams.text, '\'');
}

class Printer
{
public:
    explicit Printer(Dialect dialect)
        : dialect_(dialect)
        , postgres_(dialect == Dialect::PostgreSql)
    {
    }

    std::string TakeText() { return std::move(out_); }

    enum class Labels { Given, Numbered };
    enum class Ordering { None, Stated, Total };

    void Print(const Query &query, Labels labels, Ordering ordering)
    {
        const QScopedValueRollback<const Query *> current(query_, &query);
        Put(query.distinct ? "SELECT DISTINCT " : "SELECT ");
        for (size_t i = 0; i < query.outputs.size(); ++i) {
            Put(i > 0 ? ", " : "");
            Print(*query.outputs[i].value);
            Put(" AS ");
            Put(labels == Labels::Given ? Quoted(query.outputs[i].label, '"')
                                        : "c" + std::to_string(i));
        }
        for (size_t i = 0; i < query.hidden.size(); ++i) {
            Put(", ");
            Print(*query.hidden[i]);
            Put(" AS c" + std::to_string(query.outputs.size() + i));
        }
        PrintFrom(query.joinOrder);
        PrintWhere(query);
        if (!query.groupBy.empty()) {
            const char *separator = " GROUP BY ";
            for (const NodePtr &value : query.groupBy) {
                Put(separator);
                separator = ", ";
                if (IsConstant(*value))
                    Put("COALESCE('',NULL)"); // one group of any constant
                else if (IsGroupedByPlace(*value))
                    Put(std::to_string(PlaceOf(*value)));
                else
                    Print(*value);
            }
        }
        if (query.having) {
            Put(" HAVING ");
            Print(*query.having);
        }
        if (ordering == Ordering::Total || query.rowLimit) // which rows are cut is no accident
            PrintOrder({&query.orderBy, &query.tieBreak});
        else if (ordering == Ordering::Stated)
            PrintOrder({&query.orderBy});
        if (query.rowLimit)
            Put(" LIMIT " + std::to_string(*query.rowLimit));
    }

    /// The rows that it names. The aliases inside hide those around.
    void PrintLead(const Node &lead)
    {
        const std::vector<NodePtr> row = RowName(*lead.relation);
        for (size_t side = 0; side < lead.arguments.size(); side += 3) {
            const Node &key = *lead.arguments[side + 1];
            Put(side > 0 ? " UNION ALL SELECT " : "SELECT ");
            PrintList(row, ", ");
            Put(" FROM ");
            PrintWithAlias(*lead.relation);
            Put(" WHERE ");
            Print(*lead.arguments[side]);
            Put(" IN (SELECT ");
            Print(key);
            Put(" FROM ");
            PrintWithAlias(*key.relation);
            Put(" WHERE ");
            Print(*lead.arguments[side + 2]);
            Put(")");
        }
    }

    void PrintCount(const Query &query)
    {
        Put("SELECT COUNT(*)");
        if (query.IsFlat() && !query.rowLimit) {
            PrintFrom(RelationsThatCount(query));
            PrintWhere(query);
            return;
        }
        Put(" FROM (");
        Print(query, Labels::Numbered, Ordering::None);
        Put(") AS counted");
    }

private:
    void Put(std::string_view text) { out_ += text; }

    void PrintFrom(const std::vector<const Relation *> &relations)
    {
        Put(" FROM ");
        for (size_t i = 0; i < relations.size(); ++i) {
            const Relation &relation = *relations[i];
            if (i > 0 && relation.outer)
                Put(" LEFT JOIN ");
            else if (i > 0) // SQLite reads CROSS JOIN as an order to keep the sequence
                Put(dialect_ == Dialect::Sqlite ? " JOIN " : " CROSS JOIN ");
            if (relation.query) {
                Put("(");
                Print(*relation.query, Labels::Numbered, Ordering::Stated);
                Put(")");
            } else {
                PrintTable(relation);
            }
            Put(" AS t" + std::to_string(relation.id));
            if (relation.outer) {
                Put(" ON ");
                PrintConditions(relation.on, Op::And);
            }
        }
    }

    /// Of the schema, which is made of names without quotes: PostgreSQL keeps them in lower case.
    std::string Name(const std::string &name) const
    {
        if (!postgres_)
            return Quoted(name, '"');
        return QString::fromStdString(name).toLower().toStdString();
    }

    void PrintTable(const Relation &relation)
    {
        const std::string name = Name(relation.table->name);
        if (relation.condition.empty()) {
            Put(name);
            return;
        }
        // With the row numbers that a total order may ask for.
        Put(dialect_ == Dialect::Sqlite ? "(SELECT rowid, * FROM " : "(SELECT * FROM ");
        Put(name + " WHERE " + relation.condition + ")");
    }

    void PrintWhere(const Query &query)
    {
        if (query.where.empty())
            return;
        Put(" WHERE ");
        PrintConditions(query.where, Op::And);
    }

    /// The terms that order something, one list after the other.
    void PrintOrder(std::initializer_list<const std::vector<OrderTerm> *> lists)
    {
        const char *separator = " ORDER BY ";
        const auto print = [&](const OrderTerm &term) {
            if (IsConstant(*term.value))
                return;
            Put(separator);
            separator = ", ";
            PrintOrderValue(*term.value);
            if (term.descending)
                Put(" DESC");
            // SQLite puts NULL below everything, PostgreSQL and Oracle above.
            const bool usual = dialect_ == Dialect::Sqlite ? !term.descending : term.descending;
            // Said only where it matters, as it may cost the use of an index.
            if (term.nullsFirst != usual && CanBeNull(*term.value))
                Put(term.nullsFirst ? " NULLS FIRST" : " NULLS LAST");
        };
        for (const std::vector<OrderTerm> *terms : lists)
            std::for_each(terms->begin(), terms->end(), print);
    }

    /// Which output shows this value, from 1; 0: none.
    size_t PlaceOf(const Node &value) const
    {
        const auto shown =
            std::find_if(query_->outputs.begin(), query_->outputs.end(),
                         [&](const Output &output) { return Equal(*output.value, value); });
        return shown == query_->outputs.end()
                   ? 0
                   : static_cast<size_t>(shown - query_->outputs.begin()) + 1;
    }

    /// PostgreSQL does not see that two sub-selects are the same: what rows are grouped by is then
    /// named by its place.
    bool IsGroupedByPlace(const Node &value) const
    {
        return postgres_ && query_->grouped && PlaceOf(value) > 0 && HasSubSelect(value);
    }

    /// PostgreSQL orders distinct rows by what they show, as it stands there.
    void PrintOrderValue(const Node &value)
    {
        if (const size_t place = PlaceOf(value);
            place > 0 && ((postgres_ && query_->distinct) || IsGroupedByPlace(value)))
            return Put(std::to_string(place));
        Print(value);
        PrintCollation(value);
    }

    /// The tables' own texts have this collation; that of others depends on the database.
    void PrintCollation(const Node &value)
    {
        if (postgres_ && value.type == Type::Text && !IsTextColumn(value))
            Put(" COLLATE \"C\"");
    }

    void PrintList(const std::vector<NodePtr> &nodes, std::string_view separator, size_t from = 0)
    {
        for (size_t i = from; i < nodes.size(); ++i) {
            if (i > from)
                Put(separator);
            Print(*nodes[i]);
        }
    }

    void PrintConditions(const std::vector<NodePtr> &conditions, Op op)
    {
        PrintConditions(conditions, op, 0, conditions.size());
    }

    void PrintConditions(const std::vector<NodePtr> &conditions, Op op, size_t from, size_t to)
    {
        if (to - from > maxChain) {
            const size_t middle = from + (to - from) / 2;
            Put("(");
            PrintConditions(conditions, op, from, middle);
            Put(op == Op::And ? ") AND (" : ") OR (");
            PrintConditions(conditions, op, middle, to);
            Put(")");
            return;
        }
        for (size_t i = from; i < to; ++i) {
            if (i > from)
                Put(op == Op::And ? " AND " : " OR ");
            const bool bracket = conditions[i]->op == Op::And || conditions[i]->op == Op::Or;
            Put(bracket ? "(" : "");
            Print(*conditions[i]);
            Put(bracket ? ")" : "");
        }
    }

    void Print(const Node &node)
    {
        if (out_.size() > maxPrintedBytes)
            throw ESqlError("sql.limit", u"展开后过长"_s);
        const auto &arguments = node.arguments;
        switch (node.op) {
        case Op::Null:
            Put("NULL");
            Put(postgres_ ? PostgresCast(node.type) : "");
            break;
        case Op::Text:
            Put(Quoted(node.text, '\''));
            break;
        case Op::Number:
            Put(node.text);
            if (postgres_ && node.type == Type::Real)
                Put(PostgresCast(node.type)); // else it is exact, which comparisons would show
            break;
        case Op::Column:
            PrintColumn(node);
            break;
        case Op::Function:
            PrintFunction(node);
            break;
        case Op::Case:
        case Op::SimpleCase:
            PrintCase(node);
            break;
        case Op::Query:
            PrintSubSelect(node);
            break;
        case Op::And:
        case Op::Or:
            PrintConditions(arguments, node.op);
            break;
        case Op::Not:
            Put("NOT (");
            Print(*arguments[0]);
            Put(")");
            break;
        case Op::Compare:
            PrintInfix(node, " " + node.text + " ", node.text != "=" && node.text != "<>");
            break;
        case Op::Same:
            PrintInfix(node, dialect_ == Dialect::Sqlite ? " IS " : " IS NOT DISTINCT FROM ");
            break;
        case Op::IsNull:
            Print(*arguments[0]);
            Put(node.negated ? " IS NOT NULL" : " IS NULL");
            break;
        case Op::Like:
            PrintInfix(node, node.negated ? " NOT LIKE " : " LIKE ");
            if (arguments.size() > 2) {
                Put(" ESCAPE ");
                Print(*arguments[2]);
            } else if (postgres_) {
                Put(" ESCAPE ''"); // a backslash is just a character
            }
            break;
        case Op::Between:
            PrintInfix(node, node.negated ? " NOT BETWEEN " : " BETWEEN ", true);
            Put(" AND ");
            Print(*arguments[2]);
            break;
        case Op::In:
        case Op::InQuery:
            Print(*arguments[0]);
            Put(node.negated ? " NOT IN " : " IN ");
            if (node.op == Op::InQuery) {
                PrintSubSelect(node);
            } else {
                Put("(");
                PrintList(arguments, ", ", 1);
                Put(")");
            }
            break;
        case Op::Exists:
            Put("EXISTS ");
            PrintSubSelect(node);
            break;
        case Op::LeadsToGrams:
            Put("(");
            PrintList(RowName(*node.relation), ", ");
            Put(") IN (");
            PrintLead(node);
            Put(")");
            break;
        case Op::HasGrams:
        case Op::KeepsGrams:
            if (postgres_) {
                PrintGramCondition(node);
                break;
            }
            Put(node.op == Op::KeepsGrams ? "+" : ""); // SQLite then looks up nothing by it
            Print(*arguments[0]);
            Put(" IN (SELECT rowid FROM " + GramMatch(node) + ")");
            break;
        }
    }

    /// As the index has it (store/SearchIndex.h).
    void PrintGramCondition(const Node &hasGrams)
    {
        const Relation &relation = *hasGrams.arguments[0]->relation;
        const char *separator = "QEL_GRAMS(";
        for (const int column : relation.table->searched) {
            Put(separator);
            separator = ", ";
            Print(*ColumnNode(relation, column));
        }
        separator = ") @> (QEL_PART_GRAMS(";
        for (size_t part = 1; part < hasGrams.arguments.size(); ++part) {
            Put(separator);
            separator = ") || QEL_PART_GRAMS(";
            Print(*hasGrams.arguments[part]);
        }
        Put("))");
    }

    /// What names a row of the table.
    std::vector<NodePtr> RowName(const Relation &relation) const
    {
        if (!postgres_)
            return {ColumnNode(relation, RowIdColumn)};
        std::vector<NodePtr> key;
        for (const int column : relation.table->primaryKey)
            key.push_back(ColumnNode(relation, column));
        return key;
    }

    void PrintWithAlias(const Relation &relation)
    {
        Put(Name(relation.table->name) + " AS t" + std::to_string(relation.id));
    }

    void PrintInfix(const Node &node, std::string_view symbol, bool byOrder = false)
    {
        Print(*node.arguments[0]);
        if (byOrder && !IsTextColumn(*node.arguments[1]))
            PrintCollation(*node.arguments[0]);
        Put(symbol);
        Print(*node.arguments[1]);
    }

    /// One whose order says nothing; SQLite finds no outer columns there either.
    void PrintSubSelect(const Node &node)
    {
        Put("(");
        Print(*node.query, Labels::Numbered, Ordering::None);
        Put(")");
    }

    void PrintColumn(const Node &node)
    {
        Put("t" + std::to_string(node.relation->id) + ".");
        if (node.column == RowIdColumn)
            Put("rowid");
        else if (node.relation->query)
            Put("c" + std::to_string(node.column));
        else
            Put(Name(node.relation->columns[static_cast<size_t>(node.column)].name));
    }

    void PrintFunction(const Node &node)
    {
        if (node.fn == Fn::Concat) {
            PrintConcatenation(node);
            return;
        }
        if (node.fn == Fn::RowNumber) {
            Put("ROW_NUMBER() OVER (");
            PrintOrder({&query_->rowOrder});
            Put(")");
            return;
        }
        const std::string_view text = FunctionTemplate(node.fn, dialect_);
        for (size_t i = 0; i < text.size(); ++i) {
            if (text[i] != '$') {
                out_ += text[i];
            } else if (text[++i] == '*') {
                if (node.distinct)
                    Put("DISTINCT ");
                if (node.fn == Fn::Count && node.arguments.empty())
                    Put("*");
                PrintList(node.arguments, ", ");
                if (node.fn == Fn::Min || node.fn == Fn::Max)
                    PrintCollation(*node.arguments[0]);
            } else {
                PrintArgument(node, static_cast<size_t>(text[i] - '1'));
            }
        }
        // Added up exactly, and then a number as any other.
        if (postgres_ && (node.fn == Fn::Sum || node.fn == Fn::Avg) && node.type == Type::Real)
            Put(PostgresCast(node.type));
    }

    void PrintArgument(const Node &node, size_t at)
    {
        const Node &argument = *node.arguments[at];
        Print(argument);
        // PostgreSQL counts with small literals in 32 bits.
        const bool counts = node.type == Type::Integer || node.type == Type::Real;
        if (postgres_ && counts && argument.op == Op::Number && argument.type == Type::Integer)
            Put(PostgresCast(Type::Integer));
    }

    /// NULL is left out; where nothing remains the whole is NULL.
    void PrintConcatenation(const Node &node)
    {
        const char *separator = "NULLIF(";
        for (const NodePtr &part : node.arguments) {
            Put(separator);
            separator = "||";
            Put("COALESCE(");
            Print(*part);
            Put(",'')");
        }
        Put(",'')");
    }

    void PrintCase(const Node &node)
    {
        const auto &arguments = node.arguments;
        size_t next = 0;
        Put("CASE");
        if (node.op == Op::SimpleCase) {
            Put(" ");
            Print(*arguments[next++]);
        }
        for (; next + 1 < arguments.size(); next += 2) {
            Put(" WHEN ");
            Print(*arguments[next]);
            Put(" THEN ");
            Print(*arguments[next + 1]);
        }
        if (next < arguments.size()) {
            Put(" ELSE ");
            Print(*arguments[next]);
        }
        Put(" END");
    }

    Dialect dialect_;
    bool postgres_;
    std::string out_;
    const Query *query_ = nullptr; ///< that is being written
};

} // namespace

std::string PrintUnordered(const Query &query, Dialect dialect)
{
    Printer printer(dialect);
    printer.Print(query, Printer::Labels::Given, Printer::Ordering::None);
    return printer.TakeText();
}

std::string PrintOrdered(const Query &query, Dialect dialect)
{
    Printer printer(dialect);
    printer.Print(query, Printer::Labels::Given, Printer::Ordering::Total);
    return printer.TakeText();
}

std::string PrintCount(const Query &query, Dialect dialect)
{
    Printer printer(dialect);
    printer.PrintCount(query);
    return printer.TakeText();
}

std::string PrintCandidates(const Node &condition, Dialect dialect, int most)
{
    std::string rows;
    if (condition.op == Op::LeadsToGrams) {
        Printer printer(dialect);
        printer.PrintLead(condition);
        rows = printer.TakeText();
    } else {
        rows = "SELECT 1 FROM " + GramMatch(condition);
    }
    return "SELECT COUNT(*) FROM (" + rows + " LIMIT " + std::to_string(most) + ") AS candidates";
}

} // namespace Qel::Sql
