#include "Fuzz.h"

#include "sql/Grams.h"
#include "sql/SqlError.h"
#include "sql/SqliteFunctions.h"
#include "store/Database.h"
#include "store/QueryRunner.h"
#include "store/Schema.h"

#include <QTemporaryDir>

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string_view>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

constexpr int RowsPerTable = 3;
constexpr int PageSize = 2;
/// Looks at the clock, one every thousand operations of the database, that a statement may take:
/// the tables are small, but forty of them can be joined.
constexpr int MostLooks = 20;

/// What a client's statement may call, by the database's own names.
constexpr std::array<std::string_view, 14> Functions = {
    "count", "max",    "min",    "sum",  "avg",      "coalesce",   "nullif",
    "trim",  "length", "substr", "like", "strftime", "row_number", "match",
};

/// Values that differ in every column that must; NULL, case, wildcards and quotes elsewhere.
QString ValueFor(const Sql::Table &table, int column, int row)
{
    const auto isIn = [column](const Sql::ColumnList &key) {
        return std::find(key.begin(), key.end(), column) != key.end();
    };
    const Sql::Column &definition = table.columns[static_cast<std::size_t>(column)];
    if (isIn(table.primaryKey) ||
        std::any_of(table.uniqueIndexes.begin(), table.uniqueIndexes.end(), isIn))
        return QString::number(row + 1);
    static const std::array texts{u"1"_s, u"a'B%_"_s, QString(), u"阿莫西林"_s};
    const QString text = texts[static_cast<std::size_t>(row + column) % texts.size()];
    if (text.isEmpty())
        return definition.notNull ? u"2"_s : text;
    if (definition.type == Sql::ColumnType::DateTime)
        return u"2024-03-0%1 10:20:30"_s.arg(row + 1);
    return definition.type == Sql::ColumnType::Text ? text : QString::number(row + column);
}

void FillTable(Store::Connection &connection, const Sql::Table &table)
{
    const int columns = static_cast<int>(table.columns.size());
    QByteArray marks;
    for (int column = 1; column <= columns; ++column)
        marks += (column > 1 ? ",?" : "?") + QByteArray::number(column);
    const auto statement = connection.Prepare(
        "INSERT INTO " + QByteArray::fromStdString(table.name) + " VALUES (" + marks + ')');
    for (int row = 0; row < RowsPerTable; ++row) {
        for (int column = 0; column < columns; ++column)
            statement->Bind(column + 1, ValueFor(table, column, row));
        statement->Step();
        statement->Reset();
    }
}

/// A database of the schema with a few rows in each table, read the server's way and, beside it,
/// over a connection that watches what a statement touches.
class Site
{
public:
    Site()
    {
        const QString path = folder_.filePath(u"fuzz.sqlite"_s);
        database_ = Store::Database::Open(u"sqlite:"_s + path);
        writer_ = database_->OpenWriter();
        Store::CreateSchema(*writer_);
        Store::Transaction transaction(*writer_);
        for (const Sql::Table &table : Store::SchemaCatalog().Tables()) {
            if (!table.name.starts_with("SRV_"))
                FillTable(*writer_, table);
        }
        transaction.Commit();
        reader_ = database_->OpenReader();
        sqlite3_open_v2(path.toUtf8().constData(), &watched_, SQLITE_OPEN_READONLY, nullptr);
        Sql::PrepareSqliteConnection(watched_);
        // A session declares a gram table to itself when it first meets it.
        for (const Sql::Table &table : Store::SchemaCatalog().Tables()) {
            const std::string look =
                "SELECT rowid FROM " + Sql::GramTableOf(table.name) + " LIMIT 0";
            if (!table.searched.empty())
                Fuzz::Require(sqlite3_exec(watched_, look.c_str(), nullptr, nullptr, nullptr) ==
                                  SQLITE_OK,
                              "a gram table can be read", look.c_str());
        }
        sqlite3_set_authorizer(watched_, &Site::Authorize, this);
    }
    ~Site() { sqlite3_close_v2(watched_); }
    Q_DISABLE_COPY_MOVE(Site)

    /// Whether the database takes the text; false where it is too complex for it.
    bool Prepares(const std::string &sql, const Sql::CompiledQuery &query)
    {
        allowed_ = &query.tables;
        sqlite3_stmt *statement = nullptr;
        const int result = sqlite3_prepare_v2(watched_, sql.c_str(), -1, &statement, nullptr);
        Fuzz::Require(result != SQLITE_AUTH, "a statement touches what it names and no more",
                      sql.c_str());
        if (result == SQLITE_OK)
            Fuzz::Require(sqlite3_stmt_readonly(statement), "a statement changes nothing",
                          sql.c_str());
        sqlite3_finalize(statement);
        return result == SQLITE_OK;
    }

    /// What one input runs is compiled once.
    void BeginInput() { runner_.emplace(*reader_, Store::QueryLimits{}); }

    /// Nothing where the statement took too long or met a value that it cannot work with.
    std::optional<Store::QueryResult> Run(const QString &text, int page, int pageSize)
    {
        int looks = 0;
        reader_->StopWhen([&looks] { return ++looks > MostLooks; });
        try {
            return runner_->Run(text, page, pageSize);
        } catch (const Sql::ESqlError &) {
            return std::nullopt;
        } catch (const Store::EQueryTooLarge &) {
            return std::nullopt;
        } catch (const Store::EStoreError &error) {
            Fuzz::Require(error.WhichKind() == Store::EStoreError::Kind::Stopped,
                          "what compiles runs", error.what());
            return std::nullopt;
        }
    }

private:
    /// Of the statement, or what FTS5 keeps the grams of one of its tables in.
    bool IsNamed(std::string_view table) const
    {
        return std::any_of(allowed_->begin(), allowed_->end(), [&](const std::string &name) {
            return table == name || table.starts_with(Sql::GramTableOf(name));
        });
    }

    static int Authorize(void *self, int action, const char *first, const char *second,
                         const char *, const char *)
    {
        const auto &site = *static_cast<Site *>(self);
        const std::string_view table = first ? first : "";
        const std::string_view function = second ? second : "";
        bool allowed = false;
        if (action == SQLITE_READ)
            allowed = site.IsNamed(table);
        else if (action == SQLITE_FUNCTION)
            allowed = function.starts_with("QEL_") ||
                      std::count(Functions.begin(), Functions.end(), function) > 0;
        else
            allowed = action == SQLITE_SELECT;
        return allowed ? SQLITE_OK : SQLITE_DENY;
    }

    QTemporaryDir folder_;
    std::unique_ptr<Store::Database> database_;
    std::unique_ptr<Store::Connection> writer_;
    std::unique_ptr<Store::Connection> reader_;
    std::optional<Store::QueryRunner> runner_;
    sqlite3 *watched_ = nullptr;
    const std::vector<std::string> *allowed_ = nullptr;
};

std::optional<Sql::CompiledQuery> Compiled(const QByteArray &text, Sql::Dialect dialect)
{
    try {
        return Sql::Compile(text, Store::SchemaCatalog(), dialect);
    } catch (const Sql::ESqlError &error) {
        // A statement of one database may be longer than that of the other.
        if (error.Code() == "sql.limit")
            throw;
        return std::nullopt;
    }
}

void CheckPages(Site &site, const QString &text)
{
    site.BeginInput();
    const auto all = site.Run(text, 0, 0);
    const auto first = all ? site.Run(text, 1, PageSize) : std::nullopt;
    // The clock may tick between the two.
    if (!first || text.contains(u"SYSDATE"_s, Qt::CaseInsensitive))
        return;
    Fuzz::Require(first->total == all->count, "the total is the number of rows", text.toUtf8());
    Fuzz::Require(first->count == std::min<qint64>(PageSize, all->count), "a page is full",
                  text.toUtf8());
    RowSet::Load(all->block);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static Site site;
    // As a request hands it over: text, of which the bytes are made anew.
    const QString text = QString::fromUtf8(Fuzz::Input(data, size).Rest());
    std::optional<Sql::CompiledQuery> query;
    try {
        query = Compiled(text.toUtf8(), Sql::Dialect::Sqlite);
        const auto other = Compiled(text.toUtf8(), Sql::Dialect::PostgreSql);
        Fuzz::Require(query.has_value() == other.has_value(),
                      "a statement is one of both databases or of none", text.toUtf8());
        if (query)
            Fuzz::Require(query->fields == other->fields && query->tables == other->tables,
                          "a statement gives the same columns on both databases", text.toUtf8());
    } catch (const Sql::ESqlError &) {
        return 0;
    }
    if (query && site.Prepares(query->all, *query) && site.Prepares(query->count, *query) &&
        site.Prepares(query->Page(PageSize, 0), *query))
        CheckPages(site, text);
    return 0;
}
