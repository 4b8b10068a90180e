#include "reference/Evaluator.h"

#include <algorithm>
#include <numeric>
#include <set>

using namespace Qt::StringLiterals;

namespace Qel::Reference {

namespace {

enum class Truth { False, Unknown, True };

Truth Known(bool truth)
{
    return truth ? Truth::True : Truth::False;
}

Truth Opposite(Truth truth)
{
    return truth == Truth::Unknown ? truth : Known(truth == Truth::False);
}

Truth NegatedIf(bool negated, Truth truth)
{
    return negated ? Opposite(truth) : truth;
}

using Combination = QList<const Row *>; ///< one row a relation; null: a row of NULLs

/// What a term can see.
struct Place
{
    const Place *outer = nullptr;
    const Combination *rows = nullptr;
    const QList<Combination> *group = nullptr; ///< of a grouped query
};

qint64 NumberOf(const Cell &cell)
{
    const auto *text = std::get_if<QString>(&cell);
    return text ? text->toLongLong() : std::get<qint64>(cell);
}

/// Below 0, 0 or above; neither is NULL. A text beside a number counts as a number.
int Compared(const Cell &a, const Cell &b)
{
    const auto *x = std::get_if<QString>(&a);
    const auto *y = std::get_if<QString>(&b);
    if (x && y)
        return QString::compare(*x, *y);
    return NumberOf(a) < NumberOf(b) ? -1 : NumberOf(a) > NumberOf(b) ? 1 : 0;
}

bool Same(const Row &a, const Row &b)
{
    return std::ranges::equal(a, b, [](const Cell &x, const Cell &y) { return x == y; });
}

bool Matches(QStringView text, QStringView pattern)
{
    if (pattern.isEmpty())
        return text.isEmpty();
    if (pattern[0] == u'%')
        return Matches(text, pattern.sliced(1)) ||
               (!text.isEmpty() && Matches(text.sliced(1), pattern));
    return !text.isEmpty() && (pattern[0] == u'_' || pattern[0] == text[0]) &&
           Matches(text.sliced(1), pattern.sliced(1));
}

void FindRelations(const Term &term, std::set<int> &found)
{
    if (term.kind == Kind::Column && term.up == 0)
        found.insert(term.relation);
    for (const TermPtr &argument : term.arguments)
        FindRelations(*argument, found);
}

class Evaluation
{
public:
    explicit Evaluation(const QList<Rows> &tables)
        : tables_(tables)
    {
    }

    Answer Run(const Select &select, const Place *outer) const
    {
        Sources sources{select, outer, {}, {}};
        std::set<int> all;
        for (int i = 0; i < select.sources.size(); ++i) {
            const Source &source = select.sources[i];
            sources.rows << (source.select ? Run(*source.select, nullptr).rows
                                           : tables_[source.table]);
            sources.hangsOn << HangsOn(select, i);
            all.insert(i);
        }
        QList<Combination> combinations;
        for (const Combination &rows : Joined(sources, all))
            if (Holds(sources, -1, rows))
                combinations << rows;
        return Ordered(select, Shown(select, combinations, outer));
    }

private:
    /// The relations of one FROM.
    struct Sources
    {
        const Select &select;
        const Place *outer;
        QList<Rows> rows;
        QList<std::set<int>> hangsOn; ///< other relations; none: it is no outer one
    };

    struct Line
    {
        Row row;
        Row key; ///< of ORDER BY
    };

    // --- FROM and WHERE

    /// The other relations that the marked conditions of this one name.
    static std::set<int> HangsOn(const Select &select, int relation)
    {
        std::set<int> others;
        for (const Conjunct &conjunct : select.where)
            if (conjunct.marked == relation)
                FindRelations(*conjunct.condition, others);
        others.erase(relation);
        return others;
    }

    /// Whether the conditions hold that decide about this outer relation; -1: all other conditions.
    bool Holds(const Sources &sources, int relation, const Combination &rows) const
    {
        return std::ranges::all_of(sources.select.where, [&](const Conjunct &conjunct) {
            const bool outer = conjunct.marked >= 0 && !sources.hangsOn[conjunct.marked].empty();
            return (outer ? conjunct.marked : -1) != relation ||
                   TruthOf(*conjunct.condition, {sources.outer, &rows}) == Truth::True;
        });
    }

    /// An outer relation that nothing else hangs on comes last, behind the join of all others.
    QList<Combination> Joined(const Sources &sources, std::set<int> relations) const
    {
        if (relations.empty())
            return {Combination(sources.rows.size(), nullptr)};
        const auto isOuter = [&](int relation) { return !sources.hangsOn[relation].empty(); };
        const auto isLast = [&](int relation) {
            return isOuter(relation) && std::ranges::none_of(relations, [&](int other) {
                       return sources.hangsOn[other].contains(relation);
                   });
        };
        int last = *relations.rbegin();
        const bool outer = std::ranges::any_of(relations, isOuter);
        if (outer) {
            const auto found = std::ranges::find_if(relations, isLast);
            if (found == relations.end())
                throw ECircle();
            last = *found;
        }
        relations.erase(last);
        QList<Combination> result;
        for (const Combination &before : Joined(sources, relations)) {
            bool fits = false;
            for (const Row &row : sources.rows[last]) {
                Combination more = before;
                more[last] = &row;
                if (outer && !Holds(sources, last, more))
                    continue;
                fits = true;
                result << more;
            }
            if (outer && !fits)
                result << before;
        }
        return result;
    }

    // --- what is shown of the combinations

    QList<Line> Shown(const Select &select, const QList<Combination> &combinations,
                      const Place *outer) const
    {
        QList<Line> lines;
        if (!select.grouped) {
            for (const Combination &rows : combinations)
                lines << LineOf(select, {outer, &rows});
        } else {
            for (const QList<Combination> &group : Groups(select, combinations, outer)) {
                const Place place{outer, group.isEmpty() ? nullptr : &group[0], &group};
                if (!select.having || TruthOf(*select.having, place) == Truth::True)
                    lines << LineOf(select, place);
            }
        }
        if (!select.distinct)
            return lines;
        QList<Line> different;
        for (const Line &line : std::as_const(lines))
            if (std::ranges::none_of(different,
                                     [&](const Line &known) { return Same(known.row, line.row); }))
                different << line;
        return different;
    }

    /// Without GROUP BY there is one group, even of no rows.
    QList<QList<Combination>> Groups(const Select &select, const QList<Combination> &combinations,
                                     const Place *outer) const
    {
        QList<QList<Combination>> groups;
        QList<Row> keys;
        if (select.groupBy.isEmpty())
            return {combinations};
        for (const Combination &rows : combinations) {
            Row key;
            for (const TermPtr &term : select.groupBy)
                key << ValueOf(*term, {outer, &rows});
            const auto known =
                std::ranges::find_if(keys, [&](const Row &k) { return Same(k, key); });
            const auto at = known - keys.begin();
            if (known == keys.end()) {
                keys << key;
                groups << QList<Combination>();
            }
            groups[at] << rows;
        }
        return groups;
    }

    Line LineOf(const Select &select, const Place &place) const
    {
        Line line;
        for (const Item &item : select.items) {
            if (item.value) {
                line.row << ValueOf(*item.value, place);
                continue;
            }
            for (int i = 0; i < select.sources.size(); ++i) {
                if (item.starOf >= 0 && item.starOf != i)
                    continue;
                const Row *row = (*place.rows)[i];
                line.row << (row ? *row : Row(select.sources[i].columns.size()));
            }
        }
        for (const OrderTerm &order : select.orderBy)
            line.key << (order.item < 0 ? ValueOf(*order.value, place) : line.row[order.item]);
        return line;
    }

    static int ComparedKeys(const Select &select, const Row &a, const Row &b)
    {
        for (int i = 0; i < select.orderBy.size(); ++i) {
            const OrderTerm &order = select.orderBy[i];
            const bool nullsFirst = order.nullsFirst.value_or(order.descending);
            if (IsNull(a[i]) || IsNull(b[i])) {
                if (IsNull(a[i]) != IsNull(b[i]))
                    return IsNull(a[i]) == nullsFirst ? -1 : 1;
            } else if (const int compared = Compared(a[i], b[i])) {
                return order.descending ? -compared : compared;
            }
        }
        return 0;
    }

    static Answer Ordered(const Select &select, QList<Line> lines)
    {
        std::ranges::stable_sort(lines, [&](const Line &a, const Line &b) {
            return ComparedKeys(select, a.key, b.key) < 0;
        });
        Answer answer;
        for (int i = 0; i < lines.size(); ++i) {
            const bool tie = i > 0 && ComparedKeys(select, lines[i - 1].key, lines[i].key) == 0;
            answer.places << (tie ? answer.places.last() : i);
            answer.rows << lines[i].row;
        }
        return answer;
    }

    // --- values

    Cell ValueOf(const Term &term, const Place &place) const
    {
        const auto value = [&](int i) { return ValueOf(*term.arguments[i], place); };
        switch (term.kind) {
        case Kind::Column: {
            const Place *at = &place;
            for (int i = 0; i < term.up; ++i)
                at = at->outer;
            const Row *row = at->rows ? (*at->rows)[term.relation] : nullptr;
            return row ? row->at(term.column) : Cell();
        }
        case Kind::Literal:
            return term.literal;
        case Kind::Call: {
            const Cell first = value(0);
            if (term.text == u"NVL")
                return IsNull(first) ? value(1) : first;
            const Cell search = value(1); // DECODE
            const bool same = IsNull(first) || IsNull(search) ? IsNull(first) == IsNull(search)
                                                              : Compared(first, search) == 0;
            return value(same ? 2 : 3);
        }
        case Kind::Concat: {
            const Cell a = value(0);
            const Cell b = value(1);
            const QString both = (IsNull(a) ? QString() : Reference::Shown(a)) +
                                 (IsNull(b) ? QString() : Reference::Shown(b));
            return both.isEmpty() ? Cell() : Cell(both);
        }
        case Kind::Add: {
            const Cell a = value(0);
            const Cell b = value(1);
            return IsNull(a) || IsNull(b) ? Cell() : Cell(NumberOf(a) + NumberOf(b));
        }
        case Kind::Case:
            return value(TruthOf(*term.arguments[0], place) == Truth::True ? 1 : 2);
        case Kind::Scalar: {
            const Rows rows = Run(*term.select, &place).rows;
            return rows.isEmpty() ? Cell() : rows[0][0];
        }
        case Kind::Aggregate:
            return AggregateOf(term, place);
        default:
            return {};
        }
    }

    Cell AggregateOf(const Term &term, const Place &place) const
    {
        if (term.arguments.isEmpty())
            return qint64(place.group->size());
        QList<Cell> values;
        for (const Combination &rows : *place.group) {
            const Cell value = ValueOf(*term.arguments[0], {place.outer, &rows});
            if (!IsNull(value) && !(term.distinct && values.contains(value)))
                values << value;
        }
        if (term.text == u"COUNT")
            return qint64(values.size());
        if (values.isEmpty())
            return {};
        if (term.text == u"SUM") {
            return std::accumulate(values.begin(), values.end(), qint64(0),
                                   [](qint64 sum, const Cell &c) { return sum + NumberOf(c); });
        }
        const auto less = [](const Cell &a, const Cell &b) { return Compared(a, b) < 0; };
        return term.text == u"MAX" ? *std::ranges::max_element(values, less)
                                   : *std::ranges::min_element(values, less);
    }

    // --- conditions

    static Truth ComparedBy(const QString &comparison, const Cell &a, const Cell &b)
    {
        if (IsNull(a) || IsNull(b))
            return Truth::Unknown;
        const int c = Compared(a, b);
        return Known(comparison == u"="    ? c == 0
                     : comparison == u"<>" ? c != 0
                     : comparison == u"<"  ? c < 0
                     : comparison == u"<=" ? c <= 0
                     : comparison == u">"  ? c > 0
                                           : c >= 0);
    }

    static Truth In(const Cell &value, const QList<Cell> &list)
    {
        Truth truth = Truth::False;
        for (const Cell &one : list)
            truth = std::max(truth, ComparedBy(u"="_s, value, one));
        return truth;
    }

    Truth TruthOf(const Term &term, const Place &place) const
    {
        const auto value = [&](int i) { return ValueOf(*term.arguments[i], place); };
        const auto truth = [&](const TermPtr &part) { return TruthOf(*part, place); };
        switch (term.kind) {
        case Kind::Compare:
            return ComparedBy(term.text, value(0), value(1));
        case Kind::IsNull:
            return Known(IsNull(value(0)) != term.negated);
        case Kind::Like: {
            const Cell text = value(0);
            const Cell pattern = value(1);
            if (IsNull(text) || IsNull(pattern))
                return Truth::Unknown;
            return NegatedIf(term.negated,
                             Known(Matches(Reference::Shown(text), Reference::Shown(pattern))));
        }
        case Kind::Between:
            return NegatedIf(term.negated, std::min(ComparedBy(u">="_s, value(0), value(1)),
                                                    ComparedBy(u"<="_s, value(0), value(2))));
        case Kind::InList: {
            QList<Cell> list;
            for (int i = 1; i < term.arguments.size(); ++i)
                list << value(i);
            return NegatedIf(term.negated, In(value(0), list));
        }
        case Kind::InSelect: {
            QList<Cell> list;
            for (const Row &row : Run(*term.select, &place).rows)
                list << row[0];
            return NegatedIf(term.negated, In(value(0), list));
        }
        case Kind::Exists:
            return Known(!Run(*term.select, &place).rows.isEmpty());
        case Kind::And: {
            Truth all = Truth::True;
            for (const TermPtr &part : term.arguments)
                all = std::min(all, truth(part));
            return all;
        }
        case Kind::Or: {
            Truth any = Truth::False;
            for (const TermPtr &part : term.arguments)
                any = std::max(any, truth(part));
            return any;
        }
        case Kind::Not:
            return Opposite(truth(term.arguments[0]));
        default:
            return Truth::Unknown;
        }
    }

    const QList<Rows> &tables_;
};

} // namespace

Answer Evaluate(const Select &select, const QList<Rows> &tables)
{
    return Evaluation(tables).Run(select, nullptr);
}

} // namespace Qel::Reference
