#include "answers/StatementMaker.h"

#include "demo/SampleDatabase.h"
#include "sql/SqlError.h"
#include "sql/TestSeed.h"
#include "store/QueryRunner.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QTest>

#include <algorithm>
#include <cstdio>
#include <optional>

using namespace Qel;
using namespace Qel::Answers;
using namespace Qt::StringLiterals;

namespace {

constexpr int Fewest = 30;
constexpr int WorthCounting = 200;
constexpr int MostAtOnce = 500;
constexpr int RowsOfSample = 60;
constexpr int LargeTable = 1'500; ///< rows
constexpr int RowsOfValue = 20;   ///< that a value of a column to join by stands in, at most
constexpr int Patience = 3'000;   ///< milliseconds for one statement

/// What a database says of a statement.
struct Verdict
{
    bool stopped = false;
    QByteArray error; ///< its code; empty: there are rows
    QString message;
    RowSet rows;
};

/// A database with a client's session.
class Side
{
public:
    explicit Side(SampleDatabase::Source source)
        : data_(source)
    {
        reader_->StopWhen([this] { return end_.hasExpired(); });
    }

    Verdict Ask(const QString &sql, int page, int pageSize,
                const std::optional<QStringList> &unions)
    {
        end_.setRemainingTime(Patience);
        Verdict verdict;
        try {
            verdict.rows = RowSet::Load(runner_.Run(sql, page, pageSize, unions).block);
        } catch (const Sql::ESqlError &error) {
            verdict.error = QByteArray::fromStdString(error.Code());
            verdict.message = error.Message();
        } catch (const Store::EQueryTooLarge &error) {
            verdict.error = "too large";
        } catch (const Store::EStoreError &error) {
            verdict.stopped = error.WhichKind() == Store::EStoreError::Kind::Stopped;
            verdict.error = "store";
            verdict.message = error.Message();
        }
        return verdict;
    }

    SampleDatabase &Data() { return data_; }

private:
    SampleDatabase data_;
    QDeadlineTimer end_;
    std::unique_ptr<Store::Connection> reader_ = data_.database->OpenReader();
    Store::QueryRunner runner_{*reader_, {}};
};

QStringList Lines(const RowSet &rows)
{
    QStringList lines;
    for (int row = 0; row < rows.RowCount(); ++row) {
        QStringList cells;
        for (int column = 0; column < rows.FieldCount(); ++column)
            cells << (rows.IsNull(row, column) ? u"<null>"_s : rows.Text(row, column));
        lines << cells.join(u'|');
    }
    return lines;
}

QStringList FieldTexts(const RowSet &rows)
{
    QStringList fields;
    for (const FieldDef &field : rows.Fields())
        fields << u"%1 %2 %3"_s.arg(field.name).arg(int(field.type)).arg(field.size);
    return fields;
}

/// The first columns of keys and indexes, as far as a value of theirs stands in few rows.
QList<int> FoundBy(SampleDatabase &data, const Sql::Table &table, int rows)
{
    std::vector<Sql::ColumnList> indexes = table.uniqueIndexes;
    indexes.insert(indexes.end(), table.indexes.begin(), table.indexes.end());
    indexes.push_back(table.primaryKey);
    QList<int> columns;
    for (const Sql::ColumnList &index : indexes) {
        const QByteArray column = QByteArray::fromStdString(table.columns[index.front()].name);
        const int values = data.Number("SELECT COUNT(DISTINCT " + column + ") FROM " +
                                       QByteArray::fromStdString(table.name));
        if (values * RowsOfValue >= rows)
            columns << index.front();
    }
    return columns;
}

QList<Sample> Samples(SampleDatabase &data)
{
    QList<Sample> samples;
    for (const Sql::Table &table : Store::SchemaCatalog().Tables()) {
        if (!table.columns.front().readable)
            continue;
        Sample sample{&table, {}, false, {}};
        const QByteArray name = QByteArray::fromStdString(table.name);
        const int count = data.Number("SELECT COUNT(*) FROM " + name);
        sample.large = count > LargeTable;
        sample.foundBy = FoundBy(data, table, count);
        const auto rows = data.connection->Prepare("SELECT * FROM " + name + " WHERE rowid % " +
                                                   QByteArray::number(count / RowsOfSample + 1) +
                                                   " = 0 ORDER BY rowid");
        while (rows->Step()) {
            QStringList row;
            for (int column = 0; column < rows->ColumnCount(); ++column)
                row << (rows->IsNull(column) ? QString() : rows->ColumnText(column));
            sample.rows << row;
        }
        samples << sample;
    }
    return samples;
}

} // namespace

/// Random statements over the sample data: SQLite and PostgreSQL give the same rows in the same
/// order with the same types, or refuse for the same reason. QEL_TEST_SEED repeats a run,
/// QEL_TEST_ROUNDS says how many statements are tried; else it is as many as five seconds allow.
class SameAnswersTest : public QObject
{
    Q_OBJECT

private slots:
    void BothDatabasesAnswerAlike_data() { Test::AddRounds(MostAtOnce); }

    void BothDatabasesAnswerAlike()
    {
        QFETCH(quint32, seed);
        QFETCH(int, rounds);
        const QDeadlineTimer end =
            rounds > 0 ? QDeadlineTimer(QDeadlineTimer::Forever) : QDeadlineTimer(5'000);
        counts_ = {};
        QElapsedTimer clock;
        clock.start();
        const QList<Sample> samples = Samples(sqlite_.Data());
        Dice dice(seed);
        int round = 0;
        for (; rounds > 0 ? round < rounds : round < Fewest || !end.hasExpired(); ++round) {
            const MadeStatement made = MakeStatement(dice, samples);
            const QString failure = Difference(made, dice);
            if (!failure.isEmpty()) { // whole, which Qt's messages are not
                const QString what = u"seed %1, statement %2: %3\n%4\n"_s;
                std::fputs(qPrintable(what.arg(seed).arg(round).arg(failure, made.text)), stderr);
                ++counts_.different;
            }
            if (counts_.different > 0 && rounds <= 0)
                break;
        }
        QCOMPARE(counts_.different, 0);
        qInfo("seed %u: %d statements in %lld s (%d answered, %d of them without rows, %d refused,"
              " %d stopped, %lld rows), no difference",
              seed, round, clock.elapsed() / 1000, counts_.answered, counts_.empty, counts_.refused,
              counts_.stopped, counts_.rows);
        QVERIFY2(round < WorthCounting ||
                     (counts_.answered > round * 3 / 4 &&
                      counts_.empty < counts_.answered * 3 / 4 && counts_.stopped < round / 10),
                 "the statements try little");
    }

private:
    /// Empty: none.
    QString Difference(const MadeStatement &made, Dice &dice)
    {
        const QString whole = Difference(made, 0, 0);
        if (!whole.isEmpty() || !made.ordered || !dice.OneIn(3))
            return whole;
        return Difference(made, 1 + dice.Below(3), 1 + dice.Below(10));
    }

    QString Difference(const MadeStatement &made, int page, int pageSize)
    {
        const Verdict sqlite = sqlite_.Ask(made.text, page, pageSize, {});
        const Verdict postgres = postgres_.Ask(made.text, page, pageSize, {});
        if (sqlite.stopped || postgres.stopped) {
            ++counts_.stopped;
            return {};
        }
        if (sqlite.error != postgres.error) {
            if (made.mayFail && (sqlite.error == "sql.value" || postgres.error == "sql.value"))
                return {};
            return u"SQLite “%1 %2”, PostgreSQL “%3 %4”"_s.arg(
                QString::fromLatin1(sqlite.error), sqlite.message,
                QString::fromLatin1(postgres.error), postgres.message);
        }
        if (!sqlite.error.isEmpty()) {
            ++counts_.refused;
            return sqlite.error == "store" ? sqlite.message + u" / "_s + postgres.message
                                           : QString();
        }
        ++counts_.answered;
        counts_.empty += sqlite.rows.RowCount() == 0;
        counts_.rows += sqlite.rows.RowCount();
        if (sqlite.rows.Total() != postgres.rows.Total())
            return u"total %1 and %2"_s.arg(sqlite.rows.Total()).arg(postgres.rows.Total());
        if (FieldTexts(sqlite.rows) != FieldTexts(postgres.rows))
            return u"fields"_s;
        return DifferentRows(Lines(sqlite.rows), Lines(postgres.rows), made.ordered);
    }

    static QString DifferentRows(QStringList left, QStringList right, bool ordered)
    {
        if (!ordered) {
            std::ranges::sort(left);
            std::ranges::sort(right);
        }
        if (left == right)
            return {};
        if (left.size() != right.size())
            return u"%1 and %2 rows"_s.arg(left.size()).arg(right.size());
        const auto [a, b] = std::ranges::mismatch(left, right);
        QString what = u"row %1: SQLite “%2”, PostgreSQL “%3”"_s.arg(a - left.begin()).arg(*a, *b);
        std::ranges::sort(left);
        std::ranges::sort(right);
        return left == right ? u"another order, "_s + what : what;
    }

    struct
    {
        int answered;
        int empty;
        int refused;
        int stopped;
        int different;
        qint64 rows;
    } counts_ = {};
    Side sqlite_{SampleDatabase::Source::SqliteCopy};
    Side postgres_{SampleDatabase::Source::Copy};
};

QTEST_GUILESS_MAIN(SameAnswersTest)
#include "SameAnswersTest.moc"
