#include "reference/StatementMaker.h"

#include "reference/Evaluator.h"

#include <QScopedValueRollback>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Reference {

namespace {

/// Combinations of rows that one FROM may have: what nested loops can do in a moment.
constexpr int MostCombinations = 1'000;
constexpr int MostInnerCombinations = 25; ///< of a sub-select that is run for every row

/// Few, so that rows meet.
const QStringList Texts{u"1"_s, u"2"_s, u"药"_s};
const QStringList OtherTexts{u"1"_s, u"2"_s, u"3"_s, u"a"_s, u"A"_s, u"药"_s, u"a%"_s, u"o'x"_s};
const QStringList Digits{u"1"_s, u"2"_s, u"3"_s, u"4"_s};
const QStringList Patterns{u"%"_s, u"_"_s, u"a%"_s, u"%药%"_s, u"1"_s, u"__"_s, u"%'%"_s};
const QStringList Comparisons{u"="_s, u"="_s, u"="_s, u"<>"_s, u"<"_s, u"<="_s, u">"_s, u">="_s};

TermPtr Made(Term term)
{
    return std::make_shared<const Term>(std::move(term));
}

TermPtr Literal(const Cell &cell, Type type)
{
    return Made({.kind = Kind::Literal, .type = type, .literal = cell});
}

TermPtr Composed(Kind kind, const QList<TermPtr> &arguments, Type type = Type::Text,
                 const QString &text = {}, bool negated = false)
{
    return Made(
        {.kind = kind, .type = type, .text = text, .negated = negated, .arguments = arguments});
}

/// What a term may name: the relations of a query, and those of the queries around it.
struct Scope
{
    const QList<Source> *sources = nullptr;
    const Scope *outer = nullptr;
};

class Maker
{
public:
    Maker(Dice &dice, const QList<Rows> &tables)
        : dice_(dice)
        , tables_(tables)
    {
    }

    SelectPtr Statement()
    {
        Select select;
        MakeSources(select, 2 + dice_.Below(5), MostCombinations, 2);
        const Scope scope{&select.sources, nullptr};
        Join(select);
        if (dice_.OneIn(3))
            select.where << Conjunct{Weak(Condition(scope, 2), scope)};
        Arrange(select);
        if (dice_.OneIn(5))
            Group(select, scope);
        else
            MakeItems(select, scope, 2);
        Order(select, scope);
        return std::make_shared<const Select>(std::move(select));
    }

private:
    // --- FROM

    int RowCount(const Source &source) const
    {
        return int(source.select ? Evaluate(*source.select, tables_).rows.size()
                                 : tables_[source.table].size());
    }

    /// The same aliases inside as outside: a name means the nearest one.
    void MakeSources(Select &select, int count, int most, int depth)
    {
        qint64 combinations = 1;
        for (int i = 0; i < count; ++i) {
            Source source = depth > 0 && dice_.OneIn(6) ? SubSelect(depth - 1) : Table();
            source.alias = u"R%1"_s.arg(i);
            const int rows = std::max(1, RowCount(source));
            if (i > 0 && combinations * rows > most)
                continue;
            combinations *= rows;
            if (!source.select && dice_.OneIn(4)) {
                const QString name = u"T%1"_s.arg(source.table);
                const bool taken = std::ranges::any_of(
                    select.sources, [&](const Source &other) { return other.alias == name; });
                if (!taken) {
                    source.alias = name;
                    source.aliasWritten = false;
                }
            }
            select.sources << source;
        }
    }

    Source Table()
    {
        Source source;
        source.table = dice_.Below(TableCount);
        source.columns = ColumnNames();
        source.types = ColumnTypes();
        return source;
    }

    Source SubSelect(int depth)
    {
        Select select;
        Source source;
        do {
            select = {};
            MakeSources(select, 1 + dice_.Below(3), MostInnerCombinations, depth);
            const Scope scope{&select.sources, nullptr};
            Join(select);
            if (dice_.OneIn(3))
                select.where << Conjunct{Weak(Condition(scope, 1), scope)};
            Arrange(select);
            if (dice_.OneIn(4))
                Group(select, scope);
            else
                MakeItems(select, scope, 1);
            if (dice_.OneIn(4))
                Order(select, scope);
        } while (IsCircle(select));
        source.columns = LabelsOf(select);
        source.types = TypesOf(select);
        source.select = std::make_shared<const Select>(std::move(select));
        return source;
    }

    bool IsCircle(const Select &select) const
    {
        try {
            Evaluate(select, tables_);
            return false;
        } catch (const ECircle &) {
            return true;
        }
    }

    // --- joins

    void Join(Select &select)
    {
        const int count = int(select.sources.size());
        QList<int>
            order; // which relation hangs on which has nothing to do with their place in FROM
        for (int i = 0; i < count; ++i)
            order << i;
        dice_.Shuffle(order);
        const int shape = dice_.Below(3);
        for (int i = 1; i < count; ++i) {
            const int to = shape == 0 ? i - 1 : shape == 1 ? 0 : dice_.Below(i);
            if (!dice_.OneIn(12))
                JoinOne(select, order, i, to);
        }
        if (count > 2 && dice_.OneIn(10)) { // any two, perhaps back to where it came from
            const int from = dice_.Below(count);
            const int to = (from + 1 + dice_.Below(count - 1)) % count;
            select.where << JoinCondition(select, order[from], order[to], order[to],
                                          dice_.OneIn(2));
        }
    }

    void JoinOne(Select &select, const QList<int> &order, int at, int to)
    {
        const int self = order[at];
        const bool outer = !dice_.OneIn(4);
        const int conditions = 1 + dice_.Below(4) / 3 + dice_.Below(8) / 7;
        for (int i = 0; i < conditions; ++i) {
            const int third = order[dice_.Below(at)];
            select.where << JoinCondition(select, self, order[to], third, outer);
        }
        if (dice_.OneIn(5)) // a mark on a relation that is no outer one means nothing
            select.where << Conjunct{Filter(Column(select.sources, self, AnyType())),
                                     outer || dice_.OneIn(3) ? self : -1};
        if (dice_.OneIn(12))
            select.where << Conjunct{Filter(Column(select.sources, self, AnyType()))};
    }

    /// Between two relations, or three.
    Conjunct JoinCondition(const Select &select, int self, int other, int third, bool marked)
    {
        const Type type = AnyType();
        const auto column = [&](int relation, Type of) {
            return Column(select.sources, relation, of);
        };
        Conjunct conjunct;
        conjunct.marked = marked ? self : -1;
        TermPtr mine = column(self, type);
        TermPtr others = column(other, type);
        if (dice_.OneIn(8)) {
            conjunct.condition = Composed(Kind::Between, {mine, others, column(third, type)},
                                          Type::Text, {}, dice_.OneIn(4));
        } else if (dice_.OneIn(12)) {
            conjunct.condition =
                Composed(Kind::Like, {mine, others}, Type::Text, {}, dice_.OneIn(4));
        } else {
            if (dice_.OneIn(8) && third != self)
                others = Both(others, column(third, type));
            if (dice_.OneIn(8))
                mine = Composed(Kind::Call, {mine, AnyLiteral(type, false)}, type, u"NVL"_s);
            if (dice_.OneIn(2))
                std::swap(mine, others);
            const QString comparison = dice_.OneIn(4) ? dice_.Any(Comparisons) : u"="_s;
            conjunct.condition = Composed(Kind::Compare, {mine, others}, Type::Text, comparison);
        }
        return conjunct;
    }

    TermPtr Both(const TermPtr &a, const TermPtr &b)
    {
        if (dice_.OneIn(2))
            return Composed(Kind::Call, {a, b}, a->type, u"NVL"_s);
        return Composed(a->type == Type::Text ? Kind::Concat : Kind::Add, {a, b}, a->type);
    }

    /// Puts (+) behind every column of the relation that the condition is to be marked with. Where
    /// literals stand in for columns there may be none.
    static void Mark(Conjunct &conjunct)
    {
        bool any = false;
        if (conjunct.marked >= 0)
            conjunct.condition = Marked(conjunct.condition, conjunct.marked, any);
        if (!any)
            conjunct.marked = -1;
    }

    static TermPtr Marked(const TermPtr &term, int relation, bool &any)
    {
        Term copy = *term;
        if (copy.kind == Kind::Column && copy.up == 0 && copy.relation == relation) {
            copy.marked = true;
            any = true;
        }
        for (TermPtr &argument : copy.arguments)
            argument = Marked(argument, relation, any);
        return Made(std::move(copy));
    }

    /// A condition of one column against constants, such as may be marked.
    TermPtr Filter(const TermPtr &column)
    {
        const Type type = column->type;
        switch (dice_.Below(4)) {
        case 0:
            return Composed(Kind::IsNull, {column}, Type::Text, {}, dice_.OneIn(2));
        case 1:
            return Composed(Kind::Between,
                            {column, AnyLiteral(type, false), AnyLiteral(type, false)}, Type::Text,
                            {}, dice_.OneIn(3));
        default:
            return Composed(Kind::Compare, {column, AnyLiteral(type, dice_.OneIn(10))}, Type::Text,
                            dice_.Any(Comparisons));
        }
    }

    void Arrange(Select &select)
    {
        for (Conjunct &conjunct : select.where)
            Mark(conjunct);
        dice_.Shuffle(select.where);
        select.bracketed = dice_.OneIn(4);
    }

    // --- values

    Type AnyType() { return dice_.OneIn(3) ? Type::Number : Type::Text; }

    TermPtr AnyLiteral(Type type, bool null)
    {
        if (null) {
            Term term{.kind = Kind::Literal, .type = type};
            term.text = type == Type::Text && dice_.OneIn(2) ? u"''"_s : QString();
            return Made(std::move(term));
        }
        return type == Type::Text ? Literal(dice_.Any(dice_.OneIn(3) ? OtherTexts : Texts), type)
                                  : Literal(qint64(dice_.Below(4)), type);
    }

    /// A column of this relation and type; a literal if it has none.
    TermPtr Column(const QList<Source> &sources, int relation, Type type, int up = 0)
    {
        const Source &source = sources[relation];
        QList<int> columns;
        for (int i = 0; i < source.types.size(); ++i)
            if (source.types[i] == type)
                columns << i;
        if (columns.isEmpty())
            return AnyLiteral(type, false);
        const int column = dice_.Any(columns);
        const bool alone = sources.size() == 1 && up == 0 && !labelsSeen_ && dice_.OneIn(3);
        Term term{.kind = Kind::Column, .type = type};
        term.text = (alone ? QString() : source.alias + u'.') + source.columns[column];
        term.up = up;
        term.relation = relation;
        term.column = column;
        return Made(std::move(term));
    }

    /// A column of the query, or of one around it whose name is not hidden by a nearer one.
    TermPtr AnyColumn(const Scope &scope, Type type)
    {
        const Scope *at = &scope;
        int up = 0;
        while (at->outer && dice_.OneIn(3)) {
            at = at->outer;
            ++up;
        }
        const int relation = dice_.Below(int(at->sources->size()));
        const QString alias = (*at->sources)[relation].alias;
        const Scope *nearer = &scope;
        for (int i = 0; i < up; ++i, nearer = nearer->outer)
            if (std::ranges::any_of(*nearer->sources,
                                    [&](const Source &source) { return source.alias == alias; }))
                return Column(*scope.sources, dice_.Below(int(scope.sources->size())), type);
        return Column(*at->sources, relation, type, up);
    }

    TermPtr Value(const Scope &scope, Type type, int depth)
    {
        if (depth <= 0 || dice_.OneIn(2))
            return dice_.OneIn(6) ? AnyLiteral(type, dice_.OneIn(6)) : AnyColumn(scope, type);
        const auto part = [&] { return Value(scope, type, depth - 1); };
        switch (dice_.Below(5)) {
        case 0:
            return Composed(Kind::Call, {part(), part()}, type, u"NVL"_s);
        case 1:
            return Composed(Kind::Call, {part(), part(), part(), part()}, type, u"DECODE"_s);
        case 2:
            return Composed(Kind::Case, {Condition(scope, depth - 1), part(), part()}, type);
        case 3:
            return Composed(type == Type::Text ? Kind::Concat : Kind::Add, {part(), part()}, type);
        default:
            return ScalarSelect(scope, type, depth - 1);
        }
    }

    // --- conditions

    TermPtr Condition(const Scope &scope, int depth)
    {
        const Type type = AnyType();
        const auto value = [&] { return Value(scope, type, depth - 1); };
        const auto condition = [&] { return Condition(scope, depth - 1); };
        const bool negated = dice_.OneIn(3);
        if (depth > 0) {
            switch (dice_.Below(6)) {
            case 0:
                return Composed(Kind::Or, {condition(), condition()});
            case 1:
                return Composed(Kind::And, {condition(), condition()});
            case 2:
                return Composed(Kind::Not, {condition()});
            case 3:
                return ListedSelect(scope, type, depth - 1, negated);
            case 4:
                return ExistsSelect(scope, depth - 1);
            default:
                break;
            }
        }
        switch (dice_.Below(7)) {
        case 0:
            return Composed(Kind::IsNull, {value()}, Type::Text, {}, negated);
        case 1:
            return Composed(
                Kind::Like,
                {Value(scope, Type::Text, depth - 1), Literal(dice_.Any(Patterns), Type::Text)},
                Type::Text, {}, negated);
        case 2:
            return Composed(Kind::Between, {value(), value(), value()}, Type::Text, {}, negated);
        case 3: {
            QList<TermPtr> list{value()};
            for (int i = 1 + dice_.Below(3); i > 0; --i)
                list << AnyLiteral(type, dice_.OneIn(8));
            return Composed(Kind::InList, list, Type::Text, {}, negated);
        }
        case 4: // a text beside a number
            return Composed(
                Kind::Compare,
                {Literal(dice_.Any(Digits), Type::Text), AnyColumn(scope, Type::Number)},
                Type::Text, dice_.Any(Comparisons));
        default:
            return Composed(Kind::Compare, {value(), value()}, Type::Text, dice_.Any(Comparisons));
        }
    }

    /// Most conditions hold for few rows, and together for none.
    TermPtr Weak(const TermPtr &condition, const Scope &scope)
    {
        if (dice_.OneIn(3))
            return condition;
        return Composed(Kind::Or, {condition, Condition(scope, 0)});
    }

    // --- sub-selects of values and conditions

    /// Without its items: a small join graph that looks at the queries around.
    Select InnerSelect(const Scope &scope, int depth)
    {
        Select select;
        do {
            select = {};
            MakeSources(select, 1 + dice_.Below(3), MostInnerCombinations, std::min(depth, 1));
            const Scope inner{&select.sources, &scope};
            Join(select);
            for (int i = 1 + dice_.Below(2); i > 0; --i)
                select.where << Conjunct{Weak(Condition(inner, depth), inner)};
            Arrange(select);
        } while (HasCircle(select));
        return select;
    }

    /// Run where nothing is around, so only with the joins.
    bool HasCircle(const Select &select) const
    {
        Select joins = select;
        joins.where.removeIf([](const Conjunct &conjunct) { return conjunct.marked < 0; });
        joins.items = {Item{}};
        return IsCircle(joins);
    }

    TermPtr ScalarSelect(const Scope &scope, Type type, int depth)
    {
        Select select = InnerSelect(scope, depth);
        const Scope own{&select.sources, nullptr};
        const QString function = type == Type::Text ? (dice_.OneIn(2) ? u"MAX"_s : u"MIN"_s)
                                 : dice_.OneIn(2)   ? u"SUM"_s
                                                    : u"COUNT"_s;
        select.grouped = true;
        select.items = {Item{Aggregate(own, function, type)}};
        return WithSelect(Kind::Scalar, type, {}, std::move(select));
    }

    TermPtr ListedSelect(const Scope &scope, Type type, int depth, bool negated)
    {
        Select select = InnerSelect(scope, depth);
        const Scope inner{&select.sources, &scope};
        select.items = {Item{Value(inner, type, std::min(depth, 1))}};
        select.distinct = dice_.OneIn(5);
        Term term{.kind = Kind::InSelect, .negated = negated};
        term.arguments = {Value(scope, type, depth)};
        term.select = std::make_shared<const Select>(std::move(select));
        return Made(std::move(term));
    }

    TermPtr ExistsSelect(const Scope &scope, int depth)
    {
        Select select = InnerSelect(scope, depth);
        select.items = {dice_.OneIn(2) ? Item{} : Item{Literal(qint64(1), Type::Number)}};
        return WithSelect(Kind::Exists, Type::Text, {}, std::move(select));
    }

    static TermPtr WithSelect(Kind kind, Type type, const QList<TermPtr> &arguments, Select select)
    {
        Term term{.kind = kind, .type = type};
        term.arguments = arguments;
        term.select = std::make_shared<const Select>(std::move(select));
        return Made(std::move(term));
    }

    // --- what is shown

    /// In a sub-select each label stands once, and there is a column of each type.
    void MakeItems(Select &select, const Scope &scope, int depth)
    {
        const bool top = depth > 1;
        if ((top && dice_.OneIn(2)) || (select.sources.size() == 1 && dice_.OneIn(2))) {
            select.items = {Item{}};
        } else if (top && dice_.OneIn(4)) {
            select.items = {Item{{}, dice_.Below(int(select.sources.size())), {}},
                            Item{Value(scope, AnyType(), depth), -1, u"C0"_s}};
        } else {
            const int count = top ? 1 + dice_.Below(4) : 2 + dice_.Below(2);
            for (int i = 0; i < count; ++i) {
                const Type type = i == 0 ? Type::Text : i == 1 ? Type::Number : AnyType();
                select.items << Item{Value(scope, type, depth - 1), -1, u"C%1"_s.arg(i)};
            }
        }
        select.distinct = dice_.OneIn(5);
    }

    TermPtr Aggregate(const Scope &own, const QString &function, Type type)
    {
        Term term{.kind = Kind::Aggregate, .type = type, .text = function};
        const bool star = function == u"COUNT" && dice_.OneIn(3);
        // A group function of values from further out only is refused.
        const int relation = dice_.Below(int(own.sources->size()));
        const TermPtr column = Column(*own.sources, relation, type);
        if (!star)
            term.arguments = {column};
        term.distinct = !star && dice_.OneIn(4);
        return Made(std::move(term));
    }

    TermPtr AnyAggregate(const Scope &own, Type type)
    {
        static const QStringList ofTexts{u"MAX"_s, u"MIN"_s};
        static const QStringList ofNumbers{u"MAX"_s, u"MIN"_s, u"SUM"_s, u"COUNT"_s};
        return Aggregate(own, dice_.Any(type == Type::Text ? ofTexts : ofNumbers), type);
    }

    void Group(Select &select, const Scope &scope)
    {
        select.grouped = true;
        for (int i = dice_.Below(3); i > 0; --i) {
            const Type type = AnyType();
            TermPtr value = AnyColumn(scope, type);
            if (value->kind != Kind::Column)
                continue;
            if (dice_.OneIn(4))
                value = Composed(Kind::Call, {value, AnyLiteral(type, false)}, type, u"NVL"_s);
            select.groupBy << value;
        }
        for (int i = 0; i < select.groupBy.size(); ++i)
            select.items << Item{select.groupBy[i], -1, u"G%1"_s.arg(i)};
        select.items << Item{AnyAggregate(scope, Type::Number), -1, u"C0"_s};
        select.items << Item{AnyAggregate(scope, Type::Text), -1, u"C1"_s};
        if (dice_.OneIn(3))
            select.having = Composed(
                Kind::Compare,
                {AnyAggregate(scope, Type::Number), Literal(qint64(dice_.Below(4)), Type::Number)},
                Type::Text, dice_.Any(Comparisons));
    }

    void Order(Select &select, const Scope &scope)
    {
        for (int i = dice_.Below(4); i > 0; --i) {
            OrderTerm order;
            order.item = dice_.Below(int(select.items.size()));
            const Item &item = select.items[order.item];
            order.byLabel = !item.label.isEmpty() && dice_.OneIn(2);
            const bool anything = !select.distinct && !select.grouped;
            // The number of an item means the same only where no star stands before it.
            const bool star =
                std::ranges::any_of(select.items, [](const Item &one) { return !one.value; });
            if (star || (anything && dice_.OneIn(2))) {
                if (!anything)
                    return;
                order.item = -1;
                const QScopedValueRollback<bool> seen(labelsSeen_, true);
                order.value = Value(scope, AnyType(), 1);
                if (order.value->kind == Kind::Literal)
                    continue; // would be the number of a column
            }
            order.descending = dice_.OneIn(2);
            if (dice_.OneIn(3))
                order.nullsFirst = dice_.OneIn(2);
            select.orderBy << order;
        }
    }

    Dice &dice_;
    const QList<Rows> &tables_;
    bool labelsSeen_ = false; ///< an unqualified name may be a label
};

} // namespace

const QStringList &ColumnNames()
{
    static const QStringList names{u"ID"_s, u"X"_s, u"Y"_s, u"N"_s};
    return names;
}

const QList<Type> &ColumnTypes()
{
    static const QList<Type> types{Type::Text, Type::Text, Type::Text, Type::Number};
    return types;
}

QList<Rows> MakeTables(Dice &dice)
{
    QList<Rows> tables;
    for (int i = 0; i < TableCount; ++i) {
        Rows rows;
        const int count = dice.OneIn(25) ? 0 : 2 + dice.Below(4);
        for (int id = 1; id <= count; ++id) {
            const auto text = [&] {
                const bool other = dice.OneIn(6);
                return dice.OneIn(5) ? Cell() : Cell(dice.Any(other ? OtherTexts : Texts));
            };
            rows << Row{QString::number(id), text(), text(),
                        dice.OneIn(5) ? Cell() : Cell(qint64(dice.Below(3)))};
        }
        tables << rows;
    }
    return tables;
}

SelectPtr MakeStatement(Dice &dice, const QList<Rows> &tables)
{
    return Maker(dice, tables).Statement();
}

} // namespace Qel::Reference
