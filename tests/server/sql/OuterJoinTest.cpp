#include "TestSeed.h"
#include "reference/Evaluator.h"
#include "reference/StatementMaker.h"

#include "sql/Compile.h"
#include "support/TestDatabase.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QTest>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>

using namespace Qel;
using namespace Qel::Reference;
using namespace Qt::StringLiterals;

namespace {

constexpr int Fewest = 200;
constexpr int MostAtOnce = 2'000;
constexpr int StatementsPerTables = 200;
constexpr int LongestPaged = 60;

/// The tables of the statements in a database.
class Site
{
public:
    Site()
    {
        const QByteArray text = Dialect() == Sql::Dialect::Sqlite ? "TEXT" : "TEXT COLLATE \"C\"";
        QByteArray csv = "TABLE,COLUMN,TYPE,SIZE,KEY,NOT_NULL,DEFAULT,READABLE,MEANING\n";
        for (int i = 0; i < TableCount; ++i) {
            const QByteArray name = 'T' + QByteArray::number(i);
            csv += name + ",ID,Text,5,1,1,,1,\n" + name + ",X,Text,5,,0,,1,\n" + name +
                   ",Y,Text,5,,0,,1,\n" + name + ",N,Integer,,,0,,1,\n";
            connection_.Execute("CREATE TABLE " + name + " (ID " + text +
                                " PRIMARY KEY NOT NULL, X " + text + ", Y " + text + ", N BIGINT)");
        }
        catalog_ = Sql::Catalog::FromCsv(csv);
    }

    const Sql::Catalog &Catalog() const { return catalog_; }
    Sql::Dialect Dialect() const { return connection_.CurrentDialect(); }

    void Fill(const QList<Rows> &tables)
    {
        Store::Transaction transaction(connection_);
        for (int i = 0; i < tables.size(); ++i) {
            const QByteArray name = 'T' + QByteArray::number(i);
            connection_.Execute("DELETE FROM " + name);
            for (const Row &row : tables[i]) {
                Store::Values values;
                for (const Cell &cell : row) {
                    if (const auto *text = std::get_if<QString>(&cell))
                        values << *text;
                    else if (const auto *number = std::get_if<qint64>(&cell))
                        values << *number;
                    else
                        values << nullptr;
                }
                connection_.Run("INSERT INTO " + name + " VALUES (?1, ?2, ?3, ?4)", values);
            }
        }
        transaction.Commit();
    }

    /// One line a row, NULL as "-".
    QStringList Run(const std::string &sql)
    {
        QStringList lines;
        const QByteArrayView text(sql.data(), std::ssize(sql));
        const auto statement = Dialect() == Sql::Dialect::Sqlite ? connection_.PrepareQuery(text)
                                                                 : connection_.Prepare(text);
        while (statement->Step()) {
            QStringList row;
            for (int i = 0; i < statement->ColumnCount(); ++i)
                row << (statement->IsNull(i) ? u"-"_s : statement->ColumnText(i));
            lines << row.join(u'|');
        }
        return lines;
    }

private:
    TestDatabase data_{TestDatabase::Content::Tables}; ///< for the functions of the language
    Store::Connection &connection_ = data_.Connection();
    Sql::Catalog catalog_;
};

QStringList Lines(const Rows &rows)
{
    QStringList lines;
    for (const Row &row : rows) {
        QStringList cells;
        for (const Cell &cell : row)
            cells << Shown(cell);
        lines << cells.join(u'|');
    }
    return lines;
}

/// The same rows, and where the order says so, in the same places.
bool SameRows(QStringList lines, QStringList expected, const QList<int> &places)
{
    if (lines.size() != expected.size())
        return false;
    for (qsizetype begin = 0, end = 0; begin < places.size(); begin = end) {
        while (end < places.size() && places[end] == places[begin])
            ++end;
        std::sort(lines.begin() + begin, lines.begin() + end);
        std::sort(expected.begin() + begin, expected.begin() + end);
    }
    return lines == expected;
}

/// Where `word` stands in the statement itself, in no bracket and no literal.
size_t TopLevel(const std::string &sql, std::string_view word, size_t begin = 0)
{
    int depth = 0;
    char quote = 0;
    for (size_t i = begin; i < sql.size(); ++i) {
        const char c = sql[i];
        if (quote == 0 && depth == 0 && sql.compare(i, word.size(), word) == 0)
            return i;
        if (quote != 0)
            quote = c == quote ? char(0) : quote;
        else if (c == '\'' || c == '"')
            quote = c;
        else
            depth += c == '(' ? 1 : c == ')' ? -1 : 0;
    }
    return std::string::npos;
}

} // namespace

/// Random statements over random tables: what the database makes of the printed text against a
/// simple-minded reading of the language. QEL_TEST_SEED repeats a run, QEL_TEST_ROUNDS says how
/// many statements are tried; else it is as many as five seconds allow.
class OuterJoinTest : public QObject
{
    Q_OBJECT

private slots:
    void RandomStatementsGiveTheRowsOfTheRule_data() { Test::AddRounds(MostAtOnce); }

    void RandomStatementsGiveTheRowsOfTheRule()
    {
        QFETCH(quint32, seed);
        QFETCH(int, rounds);
        const QDeadlineTimer end =
            rounds > 0 ? QDeadlineTimer(QDeadlineTimer::Forever) : QDeadlineTimer(5'000);
        QElapsedTimer clock;
        clock.start();
        counts_ = {};
        Dice dice(seed);
        Site site;
        QList<Rows> tables;
        int round = 0;
        for (; rounds > 0 ? round < rounds : round < Fewest || !end.hasExpired(); ++round) {
            if (round % StatementsPerTables == 0) {
                tables = MakeTables(dice);
                site.Fill(tables);
            }
            const SelectPtr select = MakeStatement(dice, tables);
            const QString failure = Examine(*select, tables, site, dice);
            if (!failure.isEmpty()) // whole, which Qt's messages are not
                std::fputs(qPrintable(u"%1\n%2\n%3\n"_s.arg(failure, Text(*select), Shown(tables))),
                           stderr);
            QVERIFY2(failure.isEmpty(), qPrintable(u"statement %1: %2"_s.arg(round).arg(failure)));
        }
        qInfo("seed %u: %d statements in %lld s (%d with outer joins, %d refused for a circle,"
              " %d without rows, %lld rows on average), no difference",
              seed, round, clock.elapsed() / 1000, counts_.outer, counts_.circles, counts_.empty,
              counts_.rows / round);
        QVERIFY2(counts_.outer > round / 2 && counts_.empty < round * 3 / 4 &&
                     counts_.circles < round / 10,
                 "the statements try little");
    }

private:
    /// What is wrong; empty: nothing.
    QString Examine(const Select &select, const QList<Rows> &tables, Site &site, Dice &dice)
    {
        std::optional<Answer> answer;
        try {
            answer = Evaluate(select, tables);
        } catch (const ECircle &) {
            ++counts_.circles;
        }
        Sql::CompiledQuery query;
        try {
            query = Sql::Compile(Text(select).toUtf8(), site.Catalog(), site.Dialect());
        } catch (const Sql::ESqlError &error) {
            const bool right = !answer && error.Code() == "sql.syntax" &&
                               error.Message().endsWith(u"外连接（+）互相循环"_s);
            return right ? QString() : error.Message();
        }
        if (!answer)
            return u"outer joins in a circle were accepted"_s;
        counts_.outer += query.all.find(" LEFT JOIN ") != std::string::npos;
        counts_.empty += answer->rows.isEmpty();
        counts_.rows += answer->rows.size();
        try {
            return Difference(select, query, *answer, site, dice);
        } catch (const Store::EStoreError &error) {
            return error.Message();
        }
    }

    static QString Difference(const Select &select, const Sql::CompiledQuery &query,
                              const Answer &answer, Site &site, Dice &dice)
    {
        const auto because = [](const QString &what, const std::string &sql) {
            return what + u": "_s + QString::fromStdString(sql);
        };
        const QStringList expected = Lines(answer.rows);
        const QStringList all = site.Run(query.all);
        if (!SameRows(all, expected, answer.places))
            return because(u"wrong rows ("_s + all.join(u' ') + u"; expected "_s +
                               expected.join(u' ') + u')',
                           query.all);
        if (site.Run(query.count) != QStringList{QString::number(expected.size())})
            return because(u"wrong total"_s, query.count);
        QStringList labels;
        for (const FieldDef &field : query.fields)
            labels << field.name;
        if (labels != LabelsOf(select))
            return u"wrong labels: "_s + labels.join(u',');
        if (expected.size() > LongestPaged)
            return {};
        QStringList pages;
        const int size = 1 + dice.Below(4);
        for (int offset = 0; offset < expected.size(); offset += size)
            pages << site.Run(query.Page(size, offset));
        if (!SameRows(pages, expected, answer.places) ||
            (!select.orderBy.isEmpty() && pages != all) || !IsTotal(select, query, site, expected))
            return because(u"pages overlap or skip"_s, query.ordered);
        return {};
    }

    /// Whether each row has a place of its own in the order that pages are cut from, seen by how
    /// many groups its values make.
    static bool IsTotal(const Select &select, const Sql::CompiledQuery &query, Site &site,
                        const QStringList &rows)
    {
        if (select.distinct || select.grouped)
            return true; // no two rows are alike
        const std::string &sql = query.ordered;
        size_t from = TopLevel(sql, " FROM ");
        while (sql.compare(from - 9, 9, " DISTINCT") == 0) // IS NOT DISTINCT FROM
            from = TopLevel(sql, " FROM ", from + 1);
        const size_t by = TopLevel(sql, " ORDER BY ");
        if (by == std::string::npos)
            return rows.size() < 2;
        std::string values = sql.substr(by + 10);
        for (const std::string_view word : {" NULLS FIRST", " NULLS LAST", " DESC"}) {
            for (size_t at = TopLevel(values, word); at != std::string::npos;
                 at = TopLevel(values, word))
                values.erase(at, word.size());
        }
        const QStringList groups =
            site.Run("SELECT COUNT(*)" + sql.substr(from, by - from) + " GROUP BY " + values);
        return std::ranges::count(groups, u"1"_s) == rows.size();
    }

    static QString Shown(const QList<Rows> &tables)
    {
        QStringList lines;
        for (int i = 0; i < tables.size(); ++i)
            lines << u"T%1: "_s.arg(i) + Lines(tables[i]).join(u' ');
        return lines.join(u'\n');
    }

    /// Of the statements so far.
    struct
    {
        int outer;
        int circles;
        int empty;
        qint64 rows;
    } counts_ = {};
};

QTEST_GUILESS_MAIN(OuterJoinTest)
#include "OuterJoinTest.moc"
