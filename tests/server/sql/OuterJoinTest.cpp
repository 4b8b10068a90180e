#include "TestSeed.h"

#include "sql/Compile.h"
#include "store/Database.h"

#include <QDeadlineTimer>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <memory>
#include <optional>
#include <random>
#include <set>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

using Row = QStringList; ///< a null QString is NULL
using Rows = QList<Row>;
using Joined = QList<const Row *>; ///< one row a relation; null: none fits

constexpr int TableCount = 5;
constexpr int ColumnCount = 3;
constexpr std::array<const char *, ColumnCount> Columns = {"ID", "X", "Y"};
constexpr int LongestPaged = 60;
const QString IsNull = u" IS NULL"_s;
const QString IsNotNull = u" IS NOT NULL"_s;

class Dice
{
public:
    explicit Dice(quint32 seed)
        : engine_(seed)
    {
    }
    int Below(int bound) { return int(engine_() % quint32(bound)); }
    bool OneIn(int chances) { return Below(chances) == 0; }
    template <typename List>
    void Shuffle(List &list)
    {
        std::shuffle(list.begin(), list.end(), engine_);
    }

private:
    std::mt19937 engine_;
};

struct Column
{
    int relation = 0;
    int column = 0;
};

/// left op right, left op 'literal', left IS [NOT] NULL; `marked` is the relation with the (+).
struct Condition
{
    Column left;
    QString op;
    std::optional<Column> right = {};
    QString literal = {};
    int marked = -1;

    QString Text() const
    {
        const auto name = [this](const Column &c) {
            return u"R%1.%2%3"_s.arg(c.relation)
                .arg(QLatin1StringView(Columns[size_t(c.column)]),
                     marked == c.relation ? u"(+)"_s : QString());
        };
        if (right)
            return name(left) + op + name(*right);
        return name(left) + op + (literal.isNull() ? QString() : u'\'' + literal + u'\'');
    }

    bool Holds(const Joined &rows) const
    {
        const auto value = [&](const Column &c) {
            return rows[c.relation] ? rows[c.relation]->at(c.column) : QString();
        };
        const QString a = value(left);
        if (op == IsNull)
            return a.isNull();
        if (op == IsNotNull)
            return !a.isNull();
        const QString b = right ? value(*right) : literal;
        if (a.isNull() || b.isNull())
            return false;
        return op == u"=" ? a == b : op == u"<" ? a < b : a != b;
    }
};

/// A SELECT over several tables, and what it means by the rule of (+), without any planning.
class JoinGraph
{
public:
    explicit JoinGraph(Dice &dice)
    {
        const int size = 2 + dice.Below(4);
        for (int i = 0; i < size; ++i)
            tables_ << dice.Below(TableCount);
        for (int i = 1; i < size; ++i)
            Join(i, dice);
        dice.Shuffle(conditions_);
        needs_.resize(size);
        for (const Condition &one : std::as_const(conditions_)) {
            if (one.marked >= 0 && one.right)
                needs_[one.marked].insert(one.left.relation == one.marked ? one.right->relation
                                                                          : one.left.relation);
        }
    }

    QString Text() const
    {
        QStringList from;
        for (int i = 0; i < tables_.size(); ++i)
            from << u"T%1 R%2"_s.arg(tables_[i]).arg(i);
        QStringList where;
        for (const Condition &one : conditions_)
            where << one.Text();
        return u"SELECT * FROM "_s + from.join(u',') + (where.isEmpty() ? u""_s : u" WHERE "_s) +
               where.join(u" AND "_s);
    }

    /// An outer relation is one that a condition marks and joins to another.
    int OuterCount() const
    {
        return int(std::ranges::count_if(needs_, [](const auto &needs) { return !needs.empty(); }));
    }

    /// The relations, each behind those that its (+) hangs on; nothing: they go round in a circle.
    std::optional<QList<int>> Order() const
    {
        QList<int> order;
        const auto ready = [&](int relation) {
            return !order.contains(relation) &&
                   std::ranges::all_of(needs_[relation],
                                       [&](int other) { return order.contains(other); });
        };
        while (order.size() < tables_.size()) {
            int next = 0;
            while (next < tables_.size() && !ready(next))
                ++next;
            if (next == tables_.size())
                return std::nullopt;
            order << next;
        }
        return order;
    }

    Rows Evaluate(const QList<int> &order, const QList<Rows> &tables) const
    {
        QList<Joined> joined{Joined(tables_.size(), nullptr)};
        for (const int relation : order)
            joined = Extended(joined, relation, tables[tables_[relation]]);
        Rows result;
        for (const Joined &rows : std::as_const(joined)) {
            if (!Fits(rows, -1))
                continue;
            Row cells;
            for (const Row *row : rows)
                cells << (row ? *row : Row(ColumnCount, QString()));
            result << cells;
        }
        return result;
    }

private:
    /// Conditions on relation `at`: perhaps outer, hanging on one or two others.
    void Join(int at, Dice &dice)
    {
        const bool outer = !dice.OneIn(3);
        const int joins = 1 + dice.Below(2);
        for (int i = 0; i < joins; ++i) {
            const int other = dice.OneIn(8) ? dice.Below(int(tables_.size())) : dice.Below(at);
            if (other == at)
                continue;
            Column left{at, dice.Below(ColumnCount)};
            Column right{other, dice.Below(ColumnCount)};
            if (dice.OneIn(2))
                std::swap(left, right);
            conditions_ << Condition{.left = left,
                                     .op = dice.OneIn(6) ? u"<"_s : u"="_s,
                                     .right = right,
                                     .marked = outer ? at : -1};
        }
        if (dice.OneIn(4))
            conditions_ << Condition{.left = {at, dice.Below(ColumnCount)},
                                     .op = dice.OneIn(2) ? u"<>"_s : u"="_s,
                                     .literal = QString::number(dice.Below(3)),
                                     .marked = outer && dice.OneIn(2) ? at : -1};
        if (dice.OneIn(5))
            conditions_ << Condition{.left = {at, dice.Below(ColumnCount)},
                                     .op = dice.OneIn(2) ? IsNull : IsNotNull,
                                     .marked = outer && dice.OneIn(3) ? at : -1};
    }

    /// Whether all conditions hold that decide about this outer relation; -1: about the whole row.
    bool Fits(const Joined &rows, int outer) const
    {
        return std::ranges::all_of(conditions_, [&](const Condition &one) {
            const bool ofOuter = one.marked >= 0 && !needs_[one.marked].empty();
            return (ofOuter ? one.marked : -1) != outer || one.Holds(rows);
        });
    }

    QList<Joined> Extended(const QList<Joined> &joined, int relation, const Rows &table) const
    {
        const bool outer = !needs_[relation].empty();
        QList<Joined> result;
        for (const Joined &rows : joined) {
            bool found = false;
            for (const Row &row : table) {
                Joined more = rows;
                more[relation] = &row;
                if (outer && !Fits(more, relation))
                    continue;
                found = true;
                result << more;
            }
            if (outer && !found)
                result << rows;
        }
        return result;
    }

    QList<int> tables_; ///< of each relation
    QList<Condition> conditions_;
    QList<std::set<int>> needs_; ///< the relations that each one's (+) hangs on
};

/// Five small tables full of ties and NULL, in memory and in a database.
class Tables
{
public:
    explicit Tables(Dice &dice)
        : database_(Store::Database::Open(u"sqlite:"_s + folder_.filePath(u"t.sqlite"_s)))
        , connection_(database_->OpenWriter())
    {
        QByteArray csv = "TABLE,COLUMN,TYPE,SIZE,KEY,NOT_NULL,DEFAULT,READABLE,MEANING\n";
        Store::Transaction transaction(*connection_);
        for (int i = 0; i < TableCount; ++i) {
            const QByteArray name = 'T' + QByteArray::number(i);
            csv += name + ",ID,Text,5,1,1,,1,\n" + name + ",X,Text,5,,0,,1,\n" + name +
                   ",Y,Text,5,,0,,1,\n";
            connection_->Execute("CREATE TABLE " + name +
                                 " (ID TEXT PRIMARY KEY NOT NULL, X TEXT, Y TEXT)");
            Fill(name, dice);
        }
        transaction.Commit();
        catalog_ = Sql::Catalog::FromCsv(csv);
    }

    const QList<Rows> &InMemory() const { return rows_; }
    const Sql::Catalog &Catalog() const { return catalog_; }

    Rows Run(const std::string &sql)
    {
        Rows rows;
        const auto statement = connection_->Prepare(QByteArrayView(sql.data(), std::ssize(sql)));
        while (statement->Step()) {
            Row row;
            for (int i = 0; i < statement->ColumnCount(); ++i)
                row << (statement->IsNull(i) ? QString() : statement->ColumnText(i));
            rows << row;
        }
        return rows;
    }

private:
    void Fill(const QByteArray &name, Dice &dice)
    {
        Rows rows;
        const auto insert = connection_->Prepare("INSERT INTO " + name + " VALUES (?1, ?2, ?3)");
        const int count = 2 + dice.Below(4);
        for (int id = 0; id < count; ++id) {
            Row row{QString::number(id)};
            for (int i = 1; i < ColumnCount; ++i)
                row << (dice.OneIn(4) ? QString() : QString::number(dice.Below(3)));
            for (int i = 0; i < ColumnCount; ++i)
                insert->Bind(i + 1, row[i]);
            insert->Step();
            insert->Reset();
            rows << row;
        }
        rows_ << rows;
    }

    QTemporaryDir folder_;
    std::unique_ptr<Store::Database> database_;
    std::unique_ptr<Store::Connection> connection_;
    Sql::Catalog catalog_;
    QList<Rows> rows_;
};

/// Lines in one order, NULL told from any text.
QStringList Sorted(const Rows &rows)
{
    QStringList lines;
    for (Row row : rows) {
        for (QString &cell : row)
            cell = cell.isNull() ? u"-"_s : cell;
        lines << row.join(u'|');
    }
    std::ranges::sort(lines);
    return lines;
}

/// How many different places the rows have in the order that pages are cut from.
qsizetype PlacesIn(Tables &tables, const std::string &ordered)
{
    const size_t from = ordered.find(" FROM ");
    const size_t by = ordered.rfind(" ORDER BY ");
    if (by == std::string::npos)
        return tables.Run("SELECT DISTINCT 1" + ordered.substr(from)).size();
    return tables
        .Run("SELECT 1" + ordered.substr(from, by - from) + " GROUP BY " + ordered.substr(by + 10))
        .size();
}

} // namespace

/// Random statements with (+) over random tables: what the database makes of the printed text
/// against a naive reading of the rule. The seed is printed with a failure; QEL_TEST_SEED repeats
/// it.
class OuterJoinTest : public QObject
{
    Q_OBJECT

private slots:
    void RandomJoinGraphsGiveTheRowsOfTheRule()
    {
        const quint32 seed = Test::TestSeed();
        Dice dice(seed);
        Tables tables(dice);
        constexpr int fewest = 100;
        constexpr int most = 3'000;
        const QDeadlineTimer end(2'000);
        int outer = 0;
        for (int round = 0; round < fewest || (round < most && !end.hasExpired()); ++round) {
            const JoinGraph graph(dice);
            const QString failure = Examine(graph, tables, dice);
            QVERIFY2(failure.isEmpty(),
                     qPrintable(u"seed %1: %2\n%3"_s.arg(seed).arg(failure, graph.Text())));
            outer += graph.OuterCount();
        }
        QVERIFY2(outer > fewest / 2, qPrintable(u"seed %1"_s.arg(seed)));
    }

private:
    /// What is wrong; empty: nothing.
    static QString Examine(const JoinGraph &graph, Tables &tables, Dice &dice)
    {
        const auto order = graph.Order();
        Sql::CompiledQuery query;
        try {
            query = Sql::Compile(graph.Text().toUtf8(), tables.Catalog(), Sql::Dialect::Sqlite);
        } catch (const Sql::ESqlError &error) {
            return order ? error.Message() : QString();
        }
        if (!order)
            return u"outer joins in a circle were accepted"_s;
        const Rows rows = graph.Evaluate(*order, tables.InMemory());
        const QStringList expected = Sorted(rows);
        if (Sorted(tables.Run(query.all)) != expected)
            return u"wrong rows: "_s + QString::fromStdString(query.all);
        if (tables.Run(query.count).value(0).value(0) != QString::number(rows.size()))
            return u"wrong total: "_s + QString::fromStdString(query.count);
        if (rows.size() > LongestPaged)
            return {};
        Rows pages;
        const int size = 1 + dice.Below(4);
        for (int offset = 0; offset < rows.size(); offset += size)
            pages << tables.Run(query.Page(size, offset));
        if (Sorted(pages) != expected || PlacesIn(tables, query.ordered) != rows.size())
            return u"pages overlap or skip: "_s + QString::fromStdString(query.ordered);
        return {};
    }
};

QTEST_GUILESS_MAIN(OuterJoinTest)
#include "OuterJoinTest.moc"
