#include "TestSeed.h"

#include "sql/SqlError.h"
#include "store/QueryRunner.h"
#include "support/TestDatabase.h"

#include <QDeadlineTimer>
#include <QTest>

#include <algorithm>
#include <memory>
#include <random>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

// What a value and a condition may be made of: %v a value, %c a condition, %s a sub-select of one
// column.
const QStringList ValueForms{
    u"NVL(%v,%v)"_s,
    u"NVL2(%v,%v,%v)"_s,
    u"DECODE(%v,%v,%v)"_s,
    u"DECODE(%v,%v,%v,%v)"_s,
    u"UPPER(%v)"_s,
    u"LOWER(%v)"_s,
    u"TRIM(%v)"_s,
    u"LENGTH(%v)"_s,
    u"SUBSTR(%v,2)"_s,
    u"SUBSTR(%v,-2,1)"_s,
    u"TO_CHAR(%v)"_s,
    u"TO_NUMBER(%v)"_s,
    u"TO_DATE(%v)"_s,
    u"TRUNC(%v)"_s,
    u"CAST(%v AS CHAR(3))"_s,
    u"CAST(%v AS VARCHAR2(5))"_s,
    u"CAST(%v AS NUMBER)"_s,
    u"(%v||%v)"_s,
    u"(%v+%v)"_s,
    u"(%v-%v)"_s,
    u"(%v*%v)"_s,
    u"(%v/%v)"_s,
    u"- %v"_s,
    u"(%v)"_s,
    u"CASE WHEN %c THEN %v ELSE %v END"_s,
    u"CASE %v WHEN %v THEN %v END"_s,
    u"(%s)"_s,
};
const QStringList ConditionForms{
    u"(%c AND %c)"_s,    u"(%c OR %c)"_s, u"NOT %c"_s,         u"%v IS NULL"_s,
    u"%v IS NOT NULL"_s, u"%v LIKE %v"_s, u"%v NOT LIKE %v"_s, u"%v BETWEEN %v AND %v"_s,
    u"%v IN (%v,%v)"_s,  u"%v IN (%s)"_s, u"%v NOT IN (%s)"_s, u"EXISTS (%s)"_s,
    u"%v=%v"_s,          u"%v<>%v"_s,     u"%v<%v"_s,          u"%v>=%v"_s,
};
const QStringList Literals{u"'1'"_s, u"'a%'"_s, u"''"_s,   u"1"_s,    u"2.5"_s,
                           u".5"_s,  u"0"_s,    u"NULL"_s, u"'药'"_s, u"DATE '2024-01-02'"_s};
const QStringList Aggregates{u"COUNT(*)"_s, u"MAX(%v)"_s, u"MIN(%v)"_s, u"COUNT(DISTINCT %v)"_s,
                             u"AVG(LENGTH(%v))"_s};
const QStringList Columns{u"ORG_ID"_s, u"ORG_CODE"_s, u"ORG_NAME"_s, u"ORG_TYPE"_s,
                          u"LAST_UPDATE"_s};

/// Makes statements that are right in their grammar; their types may not fit.
class StatementMaker
{
public:
    explicit StatementMaker(quint32 seed)
        : random_(seed)
    {
    }

    int Below(int bound) { return int(random_() % quint32(bound)); }

    QString Statement()
    {
        sources_ = 0;
        const QString select = Select(Below(4), 1 + Below(3), {});
        if (Below(5) > 0)
            return select;
        return u"SELECT * FROM ("_s + select + u')' + (Below(2) ? u" WHERE ROWNUM <= 3"_s : u""_s);
    }

private:
    bool OneIn(int chances) { return Below(chances) == 0; }
    const QString &Any(const QStringList &list) { return list.at(Below(int(list.size()))); }

    QString Value(int depth, const QStringList &columns)
    {
        if (depth > 0 && !OneIn(4))
            return Expanded(Any(ValueForms), depth - 1, columns);
        return OneIn(3) ? Any(Literals) : Any(columns);
    }

    QString Condition(int depth, const QStringList &columns)
    {
        return Expanded(depth > 0 ? Any(ConditionForms) : u"%v=%v"_s, depth - 1, columns);
    }

    QString Expanded(QString form, int depth, const QStringList &columns)
    {
        for (qsizetype at = form.indexOf(u'%'); at >= 0; at = form.indexOf(u'%', at)) {
            const QChar kind = at + 1 < form.size() ? form[at + 1] : QChar();
            QString part;
            if (kind == u'v')
                part = Value(depth, columns);
            else if (kind == u'c')
                part = Condition(depth, columns);
            else
                part = Select(depth, 1, columns);
            form.replace(at, 2, part);
            at += part.size();
        }
        return form;
    }

    QString Source(int depth, const QString &name)
    {
        if (depth <= 0 || OneIn(2))
            return u"BAS_ORG "_s + name;
        return u"(SELECT "_s + (OneIn(4) ? u"DISTINCT "_s : u""_s) + Columns.join(u',') +
               u" FROM BAS_ORG"_s +
               (OneIn(2) ? u" WHERE "_s + Condition(depth - 1, Columns) : u""_s) +
               (OneIn(4) ? u" ORDER BY "_s + Any(Columns) : u""_s) + u") "_s + name;
    }

    /// `outer` are the columns of the query around, which this one may look at.
    QString Select(int depth, int width, const QStringList &outer)
    {
        QStringList names{u"T%1"_s.arg(++sources_)};
        if (OneIn(3))
            names << u"T%1"_s.arg(++sources_);
        QStringList from;
        QStringList own;
        for (const QString &name : std::as_const(names)) {
            from << Source(depth, name);
            for (const QString &column : Columns)
                own << name + u'.' + column;
        }
        const QStringList seen = OneIn(2) ? own + outer : own;
        QStringList where;
        if (names.size() > 1 && !OneIn(4))
            where << names[0] + u'.' + Any(Columns) + u'=' + names[1] + u'.' + Any(Columns) +
                         (OneIn(2) ? u"(+)"_s : u""_s);
        if (!OneIn(3))
            where << Condition(depth, seen);
        if (OneIn(6))
            where << u"ROWNUM <= "_s + QString::number(Below(5));
        const QString source = u" FROM "_s + from.join(u',') +
                               (where.isEmpty() ? u""_s : u" WHERE "_s + where.join(u" AND "_s));
        if (OneIn(7))
            return Grouped(depth, width, own, source);
        QStringList items;
        for (int i = 0; i < width; ++i)
            items << Value(depth, seen) + (OneIn(2) ? u" AS C%1"_s.arg(i) : u""_s);
        if (OneIn(10))
            items[0] = u"ROWNUM"_s;
        return u"SELECT "_s + (OneIn(7) ? u"DISTINCT "_s : u""_s) + items.join(u',') + source +
               (OneIn(3) ? u" ORDER BY "_s + Order(depth, seen) : u""_s);
    }

    QString Grouped(int depth, int width, const QStringList &columns, const QString &source)
    {
        const QString group = Value(qMin(depth, 1), columns);
        QStringList items{group};
        while (items.size() <= width)
            items << Expanded(Any(Aggregates), qMin(depth, 1), columns);
        if (OneIn(2))
            return u"SELECT "_s + items.mid(1).join(u',') + source;
        return u"SELECT "_s + items.mid(0, width).join(u',') + source + u" GROUP BY "_s + group +
               (OneIn(3) ? u" HAVING COUNT(*)>1"_s : u""_s) +
               (OneIn(3) ? u" ORDER BY 1 DESC"_s : u""_s);
    }

    QString Order(int depth, const QStringList &columns)
    {
        return (OneIn(3) ? u"1"_s : Value(qMin(depth, 1), columns)) +
               (OneIn(2) ? u" DESC"_s : u""_s) + (OneIn(4) ? u" NULLS FIRST"_s : u""_s);
    }

    std::mt19937 random_;
    int sources_ = 0;
};

QStringList Lines(const RowSet &rows)
{
    QStringList lines;
    for (int row = 0; row < rows.RowCount(); ++row) {
        QStringList cells;
        for (int column = 0; column < rows.Fields().size(); ++column)
            cells << (rows.IsNull(row, column) ? u"-"_s : rows.Text(row, column));
        lines << cells.join(u'|');
    }
    return lines;
}

} // namespace

/// Random statements of the accepted language: each is answered or refused with a code, and its
/// total and its pages are those of the whole. The seed is printed with a failure; QEL_TEST_SEED
/// repeats it.
class RandomStatementTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        data_.Connection().Execute(
            "UPDATE BAS_ORG SET ORG_CODE = CAST((CAST(ORG_ID AS INTEGER) - 200000) * 7 AS TEXT),"
            " ORG_TYPE = CAST(NULLIF(CAST(ORG_ID AS INTEGER) % 3, 0) AS TEXT),"
            " LAST_UPDATE = '2024-01-0' || SUBSTR(ORG_ID, 6) || ' 00:00:00'");
    }

    void EachIsAnsweredWholeOrRefused()
    {
        const quint32 seed = Test::TestSeed();
        StatementMaker maker(seed);
        constexpr int fewest = 200;
        constexpr int most = 4'000;
        const QDeadlineTimer end(2'000);
        int answered = 0;
        for (int round = 0; round < fewest || (round < most && !end.hasExpired()); ++round) {
            const QString sql = maker.Statement();
            QString failure;
            try {
                failure = Compared(sql, 1 + maker.Below(4));
                ++answered;
            } catch (const Sql::ESqlError &) {
            } catch (const std::exception &error) {
                failure = QString::fromUtf8(error.what());
            }
            QVERIFY2(failure.isEmpty(),
                     qPrintable(u"seed %1: %2\n%3"_s.arg(seed).arg(failure, sql)));
        }
        QVERIFY2(answered > fewest / 4, qPrintable(u"seed %1"_s.arg(seed)));
    }

private:
    /// How the pages differ from the whole; empty: not at all.
    QString Compared(const QString &sql, int size)
    {
        QStringList whole = Lines(RowSet::Load(runner_.Run(sql, 0, 0).block));
        if (runner_.Run(sql, 1, 1).total != whole.size())
            return u"another total than rows"_s;
        QStringList pages;
        for (int page = 1; (page - 1) * size < whole.size(); ++page)
            pages << Lines(RowSet::Load(runner_.Run(sql, page, size).block));
        std::ranges::sort(whole);
        std::ranges::sort(pages);
        return whole == pages ? QString() : u"pages overlap or skip"_s;
    }

    TestDatabase data_;
    std::unique_ptr<Store::Connection> reader_ = data_.Database().OpenReader();
    Store::QueryRunner runner_{*reader_, {}};
};

QTEST_GUILESS_MAIN(RandomStatementTest)
#include "RandomStatementTest.moc"
