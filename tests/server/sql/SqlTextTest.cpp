#include "TestSeed.h"
#include "TextFile.h"

#include "sql/SqlError.h"
#include "store/QueryRunner.h"
#include "support/TestDatabase.h"

#include <QDir>
#include <QTest>

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <random>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

constexpr std::array SmallPages = {1, 2, 3};

/// A real database of the schema with a file's rows in it.
class FileDatabase
{
public:
    explicit FileDatabase(const TextFile &file)
    {
        for (const TableBlock &block : file.tables)
            Fill(block);
    }

    RowSet Run(const QString &sql, int page = 0, int pageSize = 0)
    {
        return RowSet::Load(runner_.Run(sql, page, pageSize).block);
    }
    /// As the counting text has it: only of a page that is not full is the total known without.
    qint64 Total(const QString &sql) { return runner_.Run(sql, 1, 1).total; }

private:
    void Fill(const TableBlock &block)
    {
        QStringList marks;
        for (int at = 1; at <= block.columns.size(); ++at)
            marks << u'?' + QString::number(at);
        const auto statement = data_.Connection().Prepare(
            u"INSERT INTO %1 (%2) VALUES (%3)"_s
                .arg(block.table, block.columns.join(u','), marks.join(u','))
                .toUtf8());
        for (const Row &row : block.rows) {
            for (int at = 0; at < row.size(); ++at)
                statement->Bind(at + 1, row[at]);
            statement->Step();
            statement->Reset();
        }
    }

    TestDatabase data_{TestDatabase::Content::Tables};
    std::unique_ptr<Store::Connection> reader_ = data_.Database().OpenReader();
    Store::QueryRunner runner_{*reader_, {}};
};

struct LoadedFile
{
    TextFile file;
    std::unique_ptr<FileDatabase> database;
};

std::map<QString, LoadedFile> &Files()
{
    static std::map<QString, LoadedFile> files;
    return files;
}

QStringList Labels(const RowSet &rows)
{
    QStringList labels;
    for (const FieldDef &field : rows.Fields())
        labels << field.name;
    return labels;
}

/// Rows as lines, NULL as <null>, of the columns asked for.
QStringList Shown(const RowSet &rows, const QStringList &columns)
{
    QStringList lines;
    for (int row = 0; row < rows.RowCount(); ++row) {
        QStringList cells;
        const QStringList wanted = columns.isEmpty() ? Labels(rows) : columns;
        for (int at = 0; at < wanted.size(); ++at) {
            const int field = columns.isEmpty() ? at : rows.FieldIndex(wanted[at]);
            if (field < 0)
                cells << u"<no "_s + wanted[at] + u'>';
            else
                cells << (rows.IsNull(row, field) ? u"<null>"_s : rows.Text(row, field));
        }
        lines << cells.join(u'|');
    }
    return lines;
}

QStringList Shown(const QList<Row> &rows)
{
    QStringList lines;
    for (Row row : rows) {
        for (QString &cell : row) {
            if (cell.isNull())
                cell = u"<null>"_s;
        }
        lines << row.join(u'|');
    }
    return lines;
}

QStringList Sorted(QStringList lines)
{
    std::ranges::sort(lines);
    return lines;
}

} // namespace

/// Every statement that the screens send, and the meaning of the language where it is peculiar:
/// query, expected rows or error, as text files beside this one.
class SqlTextTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanupTestCase() { Files().clear(); }

    void Statement_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("at");
        const QDir folder(QStringLiteral(QEL_SQL_TEST_DIR));
        for (const QString &name : folder.entryList({u"*.test"_s}, QDir::Files, QDir::Name)) {
            LoadedFile &loaded = Files()[name];
            loaded.file = ReadTextFile(folder.filePath(name));
            for (int at = 0; at < loaded.file.cases.size(); ++at) {
                const SqlCase &test = loaded.file.cases[at];
                QTest::addRow("%s:%d %s", qPrintable(name), test.line, qPrintable(test.name))
                    << name << at;
            }
        }
    }

    void Statement()
    {
        QFETCH(QString, file);
        QFETCH(int, at);
        LoadedFile &loaded = Files()[file];
        if (!loaded.database)
            loaded.database = std::make_unique<FileDatabase>(loaded.file);
        const SqlCase &test = loaded.file.cases[at];
        if (test.error.isEmpty())
            ExpectRows(*loaded.database, test);
        else
            ExpectError(*loaded.database, test);
    }

    void TenThousandLiteralsInAList()
    {
        FileDatabase database(TextFile{});
        QStringList ids;
        for (int id = 0; id < 10'000; ++id)
            ids << u'\'' + QString::number(id) + u'\'';
        const RowSet rows =
            database.Run(u"SELECT CATALOG_ID FROM TRA_BUY_CATALOG WHERE BUY_ORGID IN ("_s +
                         ids.join(u',') + u')');
        QCOMPARE(rows.RowCount(), 0);
    }

    /// The seed is printed with a failure; QEL_TEST_SEED repeats it.
    void TokenSoupIsRefusedAndNeverCrashes()
    {
        FileDatabase database(TextFile{});
        const QStringList words{
            u"SELECT"_s, u"FROM"_s, u"WHERE"_s,   u"("_s,      u")"_s,      u","_s,    u"*"_s,
            u"A.*"_s,    u"'x'"_s,  u"BAS_ORG"_s, u"A"_s,      u"ORG_ID"_s, u"="_s,    u"(+)"_s,
            u"AND"_s,    u"OR"_s,   u"NOT"_s,     u"NULL"_s,   u"IS"_s,     u"LIKE"_s, u"IN"_s,
            u"ORDER"_s,  u"BY"_s,   u"NVL"_s,     u"DECODE"_s, u"1"_s,      u";"_s,    u"--"_s,
            u"/*"_s,     u"CASE"_s, u"WHEN"_s,    u"END"_s,    u"'"_s,      u"\""_s,   u"UNION"_s};
        const quint32 seed = TestSeed();
        std::mt19937 random(seed);
        for (int round = 0; round < 5'000; ++round) {
            QStringList soup{u"SELECT"_s};
            for (int at = 0; at < 14; ++at)
                soup << words[random() % quint32(words.size())];
            const QString text = soup.join(u' ');
            QString failure;
            try {
                database.Run(text);
            } catch (const Sql::ESqlError &) {
            } catch (const std::exception &error) {
                failure = QString::fromUtf8(error.what());
            }
            QVERIFY2(failure.isEmpty(),
                     qPrintable(u"seed %1: %2\n%3"_s.arg(seed).arg(failure, text)));
        }
    }

private:
    static void ExpectError(FileDatabase &database, const SqlCase &test)
    {
        try {
            const RowSet rows = database.Run(test.sql);
            QFAIL(qPrintable(u"%1 rows instead of %2"_s.arg(rows.RowCount()).arg(test.error)));
        } catch (const Sql::ESqlError &error) {
            QCOMPARE(QString::fromStdString(error.Code()), test.error);
            QVERIFY(!error.Message().isEmpty());
        }
    }

    static void ExpectRows(FileDatabase &database, const SqlCase &test)
    {
        RowSet rows;
        try {
            rows = database.Run(test.sql, test.page, test.pageSize);
        } catch (const EQelError &error) {
            QFAIL(qPrintable(error.Message() + u" / "_s + error.Details()));
        }
        if (!test.labels.isEmpty())
            QCOMPARE(Labels(rows), test.labels);
        QStringList actual = Shown(rows, test.columns);
        QStringList expected = Shown(test.rows);
        if (!test.ordered) {
            actual = Sorted(actual);
            expected = Sorted(expected);
        }
        QCOMPARE(actual, expected);
        if (test.page == 0) {
            QCOMPARE(database.Total(test.sql), test.count.value_or(test.rows.size()));
            ExpectPages(database, test, Shown(rows, {}));
        }
    }

    /// Small pages one after another are the whole result, in its order if it has one.
    static void ExpectPages(FileDatabase &database, const SqlCase &test, const QStringList &whole)
    {
        const bool ordered = test.sql.contains(u"ORDER BY"_s, Qt::CaseInsensitive);
        for (const int size : SmallPages) {
            QStringList pages;
            for (int page = 1; (page - 1) * size < whole.size(); ++page)
                pages << Shown(database.Run(test.sql, page, size), {});
            QCOMPARE(ordered ? pages : Sorted(pages), ordered ? whole : Sorted(whole));
        }
    }
};

QTEST_GUILESS_MAIN(SqlTextTest)
#include "SqlTextTest.moc"
