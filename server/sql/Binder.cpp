#include "sql/Binder.h"

#include "sql/Joins.h"
#include "sql/Lexer.h"
#include "sql/TotalOrder.h"
#include "sql/Typing.h"

#include <QString>

#include <algorithm>
#include <set>
#include <utility>

using namespace Qt::StringLiterals;

namespace Qel::Sql {

namespace {

QString Shown(const std::string &name)
{
    return QString::fromStdString(name).left(60);
}

Type TypeOf(ColumnType type)
{
    switch (type) {
    case ColumnType::Integer:
        return Type::Integer;
    case ColumnType::Real:
        return Type::Real;
    case ColumnType::DateTime:
        return Type::Date;
    case ColumnType::Text:
        break;
    }
    return Type::Text;
}

/// Where an expression stands decides what may be in it.
enum class Clause { Select, Where, GroupBy, Having, OrderBy };

struct Scope
{
    Query *query = nullptr;
    Scope *outer = nullptr; ///< of the query that this one may look into
    Clause clause = Clause::Select;
    bool marksAllowed = false;
    bool insideAggregate = false;
};

class Binder
{
public:
    Binder(QByteArrayView text, const Catalog &catalog, const Limits &limits, const RowScope *scope)
        : text_(text.data(), static_cast<size_t>(text.size()))
        , catalog_(catalog)
        , limits_(limits)
        , scope_(scope)
    {
    }

    std::shared_ptr<Query> BindSelect(const Syntax::Select &select, Scope *outer)
    {
        auto query = std::make_shared<Query>();
        Scope scope{query.get(), outer};
        query->distinct = select.distinct;
        for (const Syntax::Source &source : select.from)
            query->relations.push_back(BindSource(source));
        BindWhere(select, scope);
        scope.clause = Clause::GroupBy;
        for (const auto &value : select.groupBy) {
            query->groupBy.push_back(Value(*value, scope));
            CheckLength(query->groupBy, value->begin);
        }
        query->grouped = !query->groupBy.empty();
        scope.clause = Clause::Select;
        for (const Syntax::Item &item : select.items) {
            BindItem(item, scope);
            CheckLength(query->outputs, item.begin);
        }
        if (select.having) {
            query->grouped = true;
            scope.clause = Clause::Having;
            query->having = Condition(*select.having, scope);
        }
        scope.clause = Clause::OrderBy;
        for (const Syntax::Order &order : select.orderBy) {
            query->orderBy.push_back(BindOrder(order, scope));
            CheckLength(query->orderBy, order.value->begin);
        }
        if (query->grouped)
            CheckGrouping(*query, select);
        return query->rowLimit ? Limited(std::move(query), select.begin) : query;
    }

    std::vector<std::string> TakeTables() { return std::move(tables_); }

private:
    template <typename List>
    void CheckLength(const List &list, qsizetype position) const
    {
        if (list.size() > static_cast<size_t>(limits_.maxColumns))
            throw ESqlError("sql.limit", position, u"列超过 %1 个"_s.arg(limits_.maxColumns));
    }

    // --- FROM

    std::unique_ptr<Relation> BindSource(const Syntax::Source &source)
    {
        auto relation = std::make_unique<Relation>();
        relation->id = ++relationCount_;
        relation->alias = source.alias.empty() ? source.table : source.alias;
        if (relationCount_ > limits_.maxTables) {
            throw ESqlError("sql.limit", source.begin, u"表超过 %1 个"_s.arg(limits_.maxTables));
        }
        if (source.query)
            ShowColumns(*relation, BindSelect(*source.query, nullptr));
        else
            ShowColumns(*relation, source);
        return relation;
    }

    void ShowColumns(Relation &relation, const Syntax::Source &source)
    {
        const Table *table = catalog_.Find(source.table);
        if (!table || std::none_of(table->columns.begin(), table->columns.end(),
                                   [](const Column &column) { return column.readable; })) {
            throw ESqlError("sql.unknown_table", source.begin,
                            u"没有表“%1”，或不允许读取"_s.arg(Shown(source.table)));
        }
        if (std::find(tables_.begin(), tables_.end(), table->name) == tables_.end())
            tables_.push_back(table->name);
        relation.table = table;
        if (scope_)
            relation.condition = ConditionFor(*table, source.begin);
        for (const Column &column : table->columns) {
            relation.columns.push_back(
                {column.name, TypeOf(column.type), column.size, column.notNull, column.readable});
        }
        relation.uniqueKeys = table->uniqueIndexes;
        if (!table->primaryKey.empty())
            relation.uniqueKeys.insert(relation.uniqueKeys.begin(), table->primaryKey);
    }

    /// The only place where a table enters a statement, so the only one that limits its rows.
    const std::string &ConditionFor(const Table &table, qsizetype position) const
    {
        const auto found = scope_->find(table.name);
        if (found == scope_->end()) {
            throw ESqlError("sql.scope", position,
                            u"当前令牌只限于部分集团，不能读取表“%1”"_s.arg(Shown(table.name)));
        }
        return found->second;
    }

    static void ShowColumns(Relation &relation, std::shared_ptr<Query> query)
    {
        for (const Output &output : query->outputs) {
            const Node &value = *output.value;
            relation.columns.push_back(
                {output.label, value.type, value.size, !CanBeNull(value), true});
        }
        relation.uniqueKeys = UniqueKeysOf(*query);
        relation.query = std::move(query);
    }

    // --- WHERE

    void BindWhere(const Syntax::Select &select, Scope &scope)
    {
        std::vector<Conjunct> conjuncts;
        scope.clause = Clause::Where;
        if (select.where)
            BindConjuncts(*select.where, scope, conjuncts);
        PlaceConditions(*scope.query, std::move(conjuncts));
    }

    void BindConjuncts(const Syntax::Expression &condition, Scope &scope,
                       std::vector<Conjunct> &conjuncts)
    {
        if (condition.kind == Syntax::Kind::And) {
            for (const auto &part : condition.arguments)
                BindConjuncts(*part, scope, conjuncts);
            return;
        }
        if (BindRowLimit(condition, scope))
            return;
        Conjunct conjunct;
        conjunct.position = condition.begin;
        scope.marksAllowed =
            condition.kind == Syntax::Kind::Compare || condition.kind == Syntax::Kind::IsNull ||
            condition.kind == Syntax::Kind::Like || condition.kind == Syntax::Kind::Between;
        marked_ = nullptr;
        std::set<const Relation *> around = std::exchange(named_, {});
        conjunct.condition = Condition(condition, scope);
        conjunct.marked = marked_;
        conjunct.named = named_;
        named_.merge(around); // a condition around this one names the same
        marked_ = nullptr;
        scope.marksAllowed = false;
        conjuncts.push_back(std::move(conjunct));
    }

    /// ROWNUM <= n. Rows are numbered before they are sorted, so this cuts the unsorted rows: the
    /// first in the order in which they were stored, or in that of an ordered sub-select.
    bool BindRowLimit(const Syntax::Expression &condition, Scope &scope)
    {
        if (condition.kind != Syntax::Kind::Compare)
            return false;
        const auto isRowNumber = [&](const Syntax::Expression &value) {
            return value.kind == Syntax::Kind::Name && value.text == "ROWNUM" &&
                   value.qualifier.empty() && !value.marked;
        };
        const Syntax::Expression &left = *condition.arguments[0];
        const Syntax::Expression &right = *condition.arguments[1];
        if (!isRowNumber(left) && !isRowNumber(right))
            return false;
        std::string comparison = condition.text;
        if (!isRowNumber(left) && comparison != "=")
            comparison.front() = comparison.front() == '<' ? '>' : '<';
        const Syntax::Expression &bound = isRowNumber(left) ? right : left;
        const bool readable = bound.kind == Syntax::Kind::Number && bound.text.size() < 10 &&
                              bound.text.find_first_not_of("0123456789") == std::string::npos;
        const int value = readable ? std::stoi(bound.text) : 0;
        if (!readable ||
            !(comparison == "<=" || comparison == "<" || (comparison == "=" && value == 1))) {
            throw ESqlError("sql.syntax", condition.begin, u"ROWNUM 只能写成 ROWNUM <= 整数"_s);
        }
        const qint64 limit = comparison == "<" ? std::max(0, value - 1) : value;
        scope.query->rowLimit = std::min(limit, scope.query->rowLimit.value_or(limit));
        return true;
    }

    /// A query with ROWNUM <= n becomes a sub-select without order, the order goes outside.
    std::shared_ptr<Query> Limited(std::shared_ptr<Query> inner, qsizetype position)
    {
        if (!inner->IsFlat()) {
            throw ESqlError("sql.syntax", position, u"ROWNUM 条件不能与 DISTINCT、分组同用"_s);
        }
        auto query = std::make_shared<Query>();
        auto relation = std::make_unique<Relation>();
        relation->id = ++relationCount_;
        std::vector<OrderTerm> order = std::move(inner->orderBy);
        inner->orderBy.clear();
        ShowColumns(*relation, inner);
        for (size_t i = 0; i < inner->outputs.size(); ++i) {
            query->outputs.push_back(
                {inner->outputs[i].label, ColumnNode(*relation, static_cast<int>(i))});
        }
        for (OrderTerm &term : order) {
            const auto hidden = inner->outputs.size() + inner->hidden.size();
            inner->hidden.push_back(term.value);
            term.value = ColumnNode(*relation, static_cast<int>(hidden));
        }
        query->orderBy = std::move(order);
        query->joinOrder = {relation.get()};
        query->relations.push_back(std::move(relation));
        return query;
    }

    // --- the select list

    void BindItem(const Syntax::Item &item, Scope &scope)
    {
        if (item.star) {
            BindStar(item, scope);
            return;
        }
        const NodePtr value = Value(*item.value, scope);
        scope.query->outputs.push_back({LabelOf(item), value});
    }

    void BindStar(const Syntax::Item &item, Scope &scope)
    {
        bool found = false;
        for (const auto &relation : scope.query->relations) {
            if (!item.qualifier.empty() && relation->alias != item.qualifier)
                continue;
            if (found && !item.qualifier.empty())
                throw ESqlError("sql.ambiguous", item.begin,
                                u"表名“%1”不唯一"_s.arg(Shown(item.qualifier)));
            found = true;
            std::set<std::string> labels;
            for (size_t i = 0; i < relation->columns.size(); ++i) {
                const RelationColumn &column = relation->columns[i];
                if (!column.readable)
                    continue;
                if (!labels.insert(column.name).second) {
                    throw ESqlError("sql.ambiguous", item.begin,
                                    u"子查询中列“%1”不唯一"_s.arg(Shown(column.name)));
                }
                scope.query->outputs.push_back(
                    {column.name, ColumnNode(*relation, static_cast<int>(i))});
            }
        }
        if (!found) {
            throw ESqlError("sql.unknown_table", item.begin,
                            u"没有表“%1”"_s.arg(Shown(item.qualifier)));
        }
    }

    /// Oracle labels an unnamed value by its text, in upper case and without blanks.
    std::string LabelOf(const Syntax::Item &item) const
    {
        if (!item.label.empty())
            return item.label;
        if (item.value->kind == Syntax::Kind::Name)
            return item.value->text;
        const auto begin = static_cast<size_t>(item.value->begin);
        std::string label =
            UpperAscii(text_.substr(begin, static_cast<size_t>(item.value->end) - begin));
        std::erase_if(label,
                      [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; });
        return label;
    }

    // --- ORDER BY, GROUP BY

    OrderTerm BindOrder(const Syntax::Order &order, Scope &scope)
    {
        OrderTerm term{nullptr, order.descending, order.nullsFirst};
        const Syntax::Expression &value = *order.value;
        const auto &outputs = scope.query->outputs;
        if (value.kind == Syntax::Kind::Number) {
            const bool whole = value.text.size() < 6 &&
                               value.text.find_first_not_of("0123456789") == std::string::npos;
            const size_t position = whole ? std::stoul(value.text) : 0;
            if (position < 1 || position > outputs.size()) {
                throw ESqlError("sql.syntax", value.begin,
                                u"ORDER BY 的列序号“%1”不存在"_s.arg(Shown(value.text)));
            }
            term.value = outputs[position - 1].value;
        } else {
            term.value = Value(value, scope);
        }
        if (scope.query->distinct &&
            std::none_of(outputs.begin(), outputs.end(),
                         [&](const Output &output) { return Equal(*output.value, *term.value); })) {
            throw ESqlError("sql.syntax", value.begin, u"DISTINCT 查询只能按所选的列排序"_s);
        }
        return term;
    }

    /// A label of the select list, which ORDER BY sees before the columns. Null: there is none.
    NodePtr FindLabel(const Syntax::Expression &name, const Scope &scope) const
    {
        NodePtr found;
        if (!name.qualifier.empty())
            return found;
        for (const Output &output : scope.query->outputs) {
            if (output.label != name.text)
                continue;
            if (found && !Equal(*found, *output.value)) {
                throw ESqlError("sql.ambiguous", name.begin,
                                u"列名“%1”不唯一"_s.arg(Shown(name.text)));
            }
            found = output.value;
        }
        return found;
    }

    static void CheckGrouping(const Query &query, const Syntax::Select &select)
    {
        const auto check = [&](const Node &value) {
            if (!IsOfGroup(value, query)) {
                throw ESqlError("sql.syntax", select.begin, u"分组查询中有既未分组也未汇总的列"_s);
            }
        };
        for (const Output &output : query.outputs)
            check(*output.value);
        if (query.having)
            check(*query.having);
        for (const OrderTerm &term : query.orderBy)
            check(*term.value);
    }

    /// Whether the value is the same for every row of a group.
    static bool IsOfGroup(const Node &value, const Query &query)
    {
        if (std::any_of(query.groupBy.begin(), query.groupBy.end(),
                        [&](const NodePtr &group) { return Equal(*group, value); }))
            return true;
        if (value.op == Op::Column)
            return !IsOwn(value, query);
        if (value.op == Op::Function &&
            (value.fn == Fn::Count || value.fn == Fn::Max || value.fn == Fn::Min ||
             value.fn == Fn::Sum || value.fn == Fn::Avg))
            return true;
        if (value.query) {
            bool own = false;
            for (const Output &output : value.query->outputs)
                ForEachColumn(*output.value, [&](const Node &c) { own = own || IsOwn(c, query); });
            for (const NodePtr &condition : value.query->where)
                ForEachColumn(*condition, [&](const Node &c) { own = own || IsOwn(c, query); });
            if (own)
                return false;
        }
        return std::all_of(value.arguments.begin(), value.arguments.end(),
                           [&](const NodePtr &argument) { return IsOfGroup(*argument, query); });
    }

    static bool IsOwn(const Node &column, const Query &query)
    {
        return std::any_of(query.relations.begin(), query.relations.end(),
                           [&](const auto &relation) { return relation.get() == column.relation; });
    }

    // --- names

    NodePtr Name(const Syntax::Expression &name, Scope &scope)
    {
        if (scope.clause == Clause::OrderBy && !scope.insideAggregate) {
            if (NodePtr label = FindLabel(name, scope))
                return label;
        }
        for (Scope *level = &scope; level; level = level->outer) {
            if (NodePtr column = FindColumn(name, *level)) {
                named_.insert(column->relation);
                if (name.marked)
                    Mark(name, *column, scope);
                return column;
            }
        }
        if (name.qualifier.empty() && !name.marked) {
            if (name.text == "SYSDATE")
                return FunctionNode(Fn::SysDate, Type::Date, {});
            if (name.text == "ROWNUM" && scope.clause == Clause::Select && !scope.insideAggregate) {
                scope.query->numbersRows = true;
                return FunctionNode(Fn::RowNumber, Type::Integer, {});
            }
        }
        const std::string whole =
            name.qualifier.empty() ? name.text : name.qualifier + "." + name.text;
        throw ESqlError("sql.unknown_column", name.begin,
                        u"没有列“%1”，或不允许读取"_s.arg(Shown(whole)));
    }

    static NodePtr FindColumn(const Syntax::Expression &name, const Scope &scope)
    {
        const Relation *owner = nullptr;
        int index = 0;
        for (const auto &relation : scope.query->relations) {
            if (!name.qualifier.empty() && relation->alias != name.qualifier)
                continue;
            for (size_t i = 0; i < relation->columns.size(); ++i) {
                const RelationColumn &column = relation->columns[i];
                if (column.name != name.text || !column.readable)
                    continue;
                if (owner) {
                    throw ESqlError("sql.ambiguous", name.begin,
                                    u"列名“%1”不唯一"_s.arg(Shown(name.text)));
                }
                owner = relation.get();
                index = static_cast<int>(i);
            }
        }
        return owner ? ColumnNode(*owner, index) : nullptr;
    }

    void Mark(const Syntax::Expression &name, const Node &column, const Scope &scope)
    {
        if (!scope.marksAllowed || !IsOwn(column, *scope.query)) {
            throw ESqlError("sql.syntax", name.begin,
                            u"（+）只能用在 WHERE 中以 AND 相连的简单条件里"_s);
        }
        if (marked_ && marked_ != column.relation) {
            throw ESqlError("sql.syntax", name.begin, u"一个条件只能用（+）标记一个表"_s);
        }
        marked_ = column.relation;
    }

    // --- expressions

    NodePtr Value(const Syntax::Expression &expression, Scope &scope)
    {
        using Syntax::Kind;
        const qsizetype position = expression.begin;
        switch (expression.kind) {
        case Kind::Number:
            return NumberNode(expression.text);
        case Kind::Text:
            return TextNode(expression.text);
        case Kind::Null:
            return NullNode();
        case Kind::Name:
            return Name(expression, scope);
        case Kind::Call:
            return BindCall(expression, scope);
        case Kind::Cast:
            return Cast(Value(*expression.arguments[0], scope), expression.text, expression.size,
                        position);
        case Kind::Case:
        case Kind::SimpleCase:
            return BindCase(expression, scope);
        case Kind::Minus: {
            const NodePtr value =
                Convert(Value(*expression.arguments[0], scope), Type::Real, position);
            return FunctionNode(Fn::Negate, value->type, {value});
        }
        case Kind::Arithmetic:
            return Arithmetic(expression.text, Value(*expression.arguments[0], scope),
                              Value(*expression.arguments[1], scope), position);
        case Kind::Query: {
            auto node = std::make_shared<Node>();
            node->op = Op::Query;
            node->query = SubSelect(expression, scope, true);
            node->type = node->query->outputs[0].value->type;
            node->size = node->query->outputs[0].value->size;
            return node;
        }
        default:
            throw ESqlError("sql.syntax", position, u"此处应是值"_s);
        }
    }

    std::shared_ptr<Query> SubSelect(const Syntax::Expression &expression, Scope &scope,
                                     bool oneColumn)
    {
        const Relation *marked = marked_; // a sub-select has marks of its own
        std::shared_ptr<Query> query = BindSelect(*expression.query, &scope);
        marked_ = marked;
        if (oneColumn && query->outputs.size() != 1) {
            throw ESqlError("sql.syntax", expression.query->begin, u"此处的子查询只能有一列"_s);
        }
        return query;
    }

    NodePtr BindCall(const Syntax::Expression &call, Scope &scope)
    {
        const ClientFunction *function = FindClientFunction(call.text);
        if (!function) {
            throw ESqlError("sql.function", call.begin,
                            u"不允许使用函数“%1”"_s.arg(Shown(call.text)));
        }
        const int count = static_cast<int>(call.arguments.size());
        const bool star = count == 1 && call.arguments[0]->kind == Syntax::Kind::Star;
        if (count < function->minArguments || count > function->maxArguments ||
            (star && (function->fn != Fn::Count || call.distinct)) ||
            (call.distinct && !function->aggregate)) {
            throw ESqlError("sql.function", call.begin,
                            u"函数“%1”的参数不对"_s.arg(Shown(call.text)));
        }
        const bool insideAggregate = scope.insideAggregate;
        if (function->aggregate) {
            if (scope.clause == Clause::Where || scope.clause == Clause::GroupBy ||
                insideAggregate) {
                throw ESqlError("sql.syntax", call.begin,
                                u"此处不能用汇总函数“%1”"_s.arg(Shown(call.text)));
            }
            scope.query->grouped = true;
            scope.insideAggregate = true;
        }
        std::vector<NodePtr> arguments;
        for (const auto &argument : call.arguments) {
            if (!star)
                arguments.push_back(Value(*argument, scope));
        }
        scope.insideAggregate = insideAggregate;
        if (function->aggregate)
            CheckAggregated(arguments, scope, call);
        return Call(*function, std::move(arguments), call.distinct, call.begin);
    }

    /// Databases take an aggregate of columns from further out for one of the query out there.
    static void CheckAggregated(const std::vector<NodePtr> &arguments, const Scope &scope,
                                const Syntax::Expression &call)
    {
        bool own = false;
        bool outer = false;
        for (const NodePtr &argument : arguments)
            ForEachColumn(*argument, [&](const Node &column) {
                own = own || IsOwn(column, *scope.query);
                for (const Scope *around = scope.outer; around; around = around->outer)
                    outer = outer || IsOwn(column, *around->query);
            });
        if (outer && !own) {
            throw ESqlError("sql.syntax", call.begin,
                            u"汇总函数“%1”中没有本查询的列"_s.arg(Shown(call.text)));
        }
    }

    NodePtr BindCase(const Syntax::Expression &expression, Scope &scope)
    {
        auto node = std::make_shared<Node>();
        const auto &parts = expression.arguments;
        std::vector<NodePtr> compared;
        size_t next = 0;
        node->op = Op::Case;
        if (expression.kind == Syntax::Kind::SimpleCase) {
            node->op = Op::SimpleCase;
            compared.push_back(Value(*parts[next++], scope));
        }
        std::vector<NodePtr> conditions;
        std::vector<NodePtr> results;
        for (; next + 1 < parts.size(); next += 2) {
            if (node->op == Op::Case)
                conditions.push_back(Condition(*parts[next], scope));
            else
                compared.push_back(Value(*parts[next], scope));
            results.push_back(Value(*parts[next + 1], scope));
        }
        if (next < parts.size())
            results.push_back(Value(*parts[next], scope));
        std::vector<NodePtr *> alike;
        for (NodePtr &result : results)
            alike.push_back(&result);
        MakeAlike(alike, expression.begin);
        for (const NodePtr &result : results) {
            if (node->type == Type::Null)
                node->type = result->type;
            node->size = std::max(node->size, result->size);
        }
        if (node->op == Op::SimpleCase) {
            MakeComparable(compared, expression.begin);
            node->arguments.push_back(compared.front());
            conditions.assign(compared.begin() + 1, compared.end());
        }
        for (size_t i = 0; i < results.size(); ++i) {
            if (i < conditions.size())
                node->arguments.push_back(conditions[i]);
            node->arguments.push_back(results[i]);
        }
        return node;
    }

    NodePtr Condition(const Syntax::Expression &expression, Scope &scope)
    {
        using Syntax::Kind;
        auto node = std::make_shared<Node>();
        node->negated = expression.negated;
        const auto &parts = expression.arguments;
        switch (expression.kind) {
        case Kind::And:
        case Kind::Or:
        case Kind::Not:
            node->op = expression.kind == Kind::And  ? Op::And
                       : expression.kind == Kind::Or ? Op::Or
                                                     : Op::Not;
            for (const auto &part : parts)
                node->arguments.push_back(Condition(*part, scope));
            return node;
        case Kind::Exists:
            node->op = Op::Exists;
            node->query = SubSelect(expression, scope, false);
            return node;
        default:
            break;
        }
        for (const auto &part : parts)
            node->arguments.push_back(Value(*part, scope));
        switch (expression.kind) {
        case Kind::Compare:
            node->op = Op::Compare;
            node->text = expression.text;
            MakeComparable(node->arguments, expression.begin);
            break;
        case Kind::IsNull:
            node->op = Op::IsNull;
            break;
        case Kind::Like:
            node->op = Op::Like;
            MakePattern(*node, expression.begin);
            break;
        case Kind::Between:
            node->op = Op::Between;
            MakeComparable(node->arguments, expression.begin);
            break;
        case Kind::In:
            node->op = Op::In;
            MakeComparable(node->arguments, expression.begin);
            break;
        case Kind::InQuery:
            node->op = Op::InQuery;
            node->query = SubSelect(expression, scope, true);
            MakeComparableWithQuery(*node, expression.begin);
            break;
        default:
            throw ESqlError("sql.syntax", expression.begin, u"此处应是条件"_s);
        }
        return node;
    }

    static void MakePattern(Node &like, qsizetype position)
    {
        for (NodePtr &argument : like.arguments)
            argument = Convert(argument, Type::Text, position);
        if (like.arguments.size() > 2 &&
            (like.arguments[2]->op != Op::Text || like.arguments[2]->size != 1))
            throw ESqlError("sql.syntax", position, u"ESCAPE 之后应是一个字符"_s);
    }

    static void MakeComparableWithQuery(Node &in, qsizetype position)
    {
        std::vector<NodePtr> both{in.arguments[0], in.query->outputs[0].value};
        MakeComparable(both, position);
        in.arguments[0] = both[0];
        in.query->outputs[0].value = both[1];
    }

    std::string_view text_;
    const Catalog &catalog_;
    const Limits &limits_;
    const RowScope *scope_;
    int relationCount_ = 0;
    std::vector<std::string> tables_;
    const Relation *marked_ = nullptr; ///< by the condition that is being bound
    std::set<const Relation *> named_; ///< in it
};

} // namespace

BoundStatement Bind(const Syntax::Select &select, QByteArrayView text, const Catalog &catalog,
                    const Limits &limits, const RowScope *scope)
{
    Binder binder(text, catalog, limits, scope);
    BoundStatement statement;
    statement.query = binder.BindSelect(select, nullptr);
    statement.tables = binder.TakeTables();
    return statement;
}

} // namespace Qel::Sql
