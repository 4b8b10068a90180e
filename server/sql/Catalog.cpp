#include "sql/Catalog.h"

#include "dataset/QelError.h"
#include "sql/Lexer.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <map>
#include <optional>

using namespace Qt::StringLiterals;

namespace Qel::Sql {

namespace {

[[noreturn]] void Fail(int line, const QString &message)
{
    throw EQelError(u"表结构文件第 %1 行：%2"_s.arg(line).arg(message));
}

/// Reads comma-separated lines with a header; a cell may be quoted by " with "" inside.
class CsvReader
{
public:
    explicit CsvReader(QByteArrayView text)
        : text_(text.data(), static_cast<size_t>(text.size()))
    {
        if (text_.starts_with("\xEF\xBB\xBF"))
            at_ = 3;
        header_ = ReadLine();
    }

    bool Next()
    {
        do {
            if (at_ >= text_.size())
                return false;
            cells_ = ReadLine();
        } while (cells_.size() == 1 && cells_[0].empty());
        if (cells_.size() != header_.size())
            Fail(line_, u"应有 %1 个单元，实有 %2 个"_s.arg(header_.size()).arg(cells_.size()));
        return true;
    }

    const std::string &Cell(const char *name) const
    {
        const auto found = std::find(header_.begin(), header_.end(), name);
        if (found == header_.end())
            Fail(1, u"没有“%1”列"_s.arg(QLatin1StringView(name)));
        return cells_[static_cast<size_t>(found - header_.begin())];
    }

    bool Flag(const char *name) const
    {
        const std::string &cell = Cell(name);
        if (!cell.empty() && cell != "0" && cell != "1")
            Fail(line_, u"“%1”应为 0 或 1"_s.arg(QLatin1StringView(name)));
        return cell == "1";
    }

    int Number(const char *name) const
    {
        const std::string &cell = Cell(name);
        if (cell.empty())
            return 0;
        if (cell.size() > 9 || cell.find_first_not_of("0123456789") != std::string::npos)
            Fail(line_, u"“%1”不是数字"_s.arg(QString::fromStdString(cell)));
        return std::stoi(cell);
    }

    int Line() const { return line_; }

private:
    std::vector<std::string> ReadLine()
    {
        ++line_;
        std::vector<std::string> cells(1);
        bool quoted = false;
        for (; at_ < text_.size(); ++at_) {
            const char c = text_[at_];
            if (quoted) {
                if (c != '"') {
                    cells.back() += c;
                } else if (at_ + 1 < text_.size() && text_[at_ + 1] == '"') {
                    cells.back() += c;
                    ++at_;
                } else {
                    quoted = false;
                }
            } else if (c == '"' && cells.back().empty()) {
                quoted = true;
            } else if (c == ',') {
                cells.emplace_back();
            } else if (c == '\n') {
                ++at_;
                return cells;
            } else if (c != '\r') {
                cells.back() += c;
            }
        }
        if (quoted)
            Fail(line_, u"引号没有结束"_s);
        return cells;
    }

    std::string_view text_;
    size_t at_ = 0;
    int line_ = 0;
    std::vector<std::string> header_;
    std::vector<std::string> cells_;
};

std::optional<ColumnType> TypeOf(const std::string &name)
{
    static const std::map<std::string, ColumnType> types = {{"TEXT", ColumnType::Text},
                                                            {"INTEGER", ColumnType::Integer},
                                                            {"REAL", ColumnType::Real},
                                                            {"DATETIME", ColumnType::DateTime}};
    const auto found = types.find(UpperAscii(name));
    return found == types.end() ? std::nullopt : std::optional(found->second);
}

ColumnList ColumnsOf(const Table &table, const std::string &names, int line)
{
    ColumnList columns;
    for (const QByteArray &name : QByteArray::fromStdString(names).simplified().split(' ')) {
        columns.push_back(table.IndexOf(UpperAscii(name.toStdString())));
        if (columns.back() < 0)
            Fail(line, u"表 %1 没有列“%2”"_s.arg(QString::fromStdString(table.name),
                                                 QString::fromUtf8(name)));
    }
    return columns;
}

} // namespace

int Table::IndexOf(std::string_view column) const
{
    const auto found = std::find_if(columns.begin(), columns.end(),
                                    [&](const Column &c) { return c.name == column; });
    return found == columns.end() ? -1 : static_cast<int>(found - columns.begin());
}

const Table *Catalog::Find(std::string_view name) const
{
    const auto found = byName_.find(UpperAscii(name));
    return found == byName_.end() ? nullptr : &tables_[found->second];
}

Catalog Catalog::FromCsv(QByteArrayView columnsCsv, QByteArrayView indexesCsv,
                         QByteArrayView searchedCsv)
{
    Catalog catalog;
    std::map<std::string, std::map<int, int>> keys; // of each table: key position to column
    for (CsvReader reader(columnsCsv); reader.Next();) {
        const std::string tableName = UpperAscii(reader.Cell("TABLE"));
        const auto [place, isNew] = catalog.byName_.emplace(tableName, catalog.tables_.size());
        if (isNew)
            catalog.tables_.emplace_back().name = tableName;
        Table &table = catalog.tables_[place->second];

        Column column;
        column.name = UpperAscii(reader.Cell("COLUMN"));
        if (tableName.empty() || column.name.empty() || table.IndexOf(column.name) >= 0)
            Fail(reader.Line(), u"表名、列名为空或重复"_s);
        const auto type = TypeOf(reader.Cell("TYPE"));
        if (!type)
            Fail(reader.Line(), u"类型应为 Text、Integer、Real 或 DateTime"_s);
        column.type = *type;
        column.size = *type == ColumnType::Text ? reader.Number("SIZE") : 0;
        column.notNull = reader.Flag("NOT_NULL");
        column.defaultValue = reader.Cell("DEFAULT");
        column.readable = reader.Flag("READABLE");
        const int index = static_cast<int>(table.columns.size());
        if (const int key = reader.Number("KEY");
            key > 0 && !keys[tableName].emplace(key, index).second)
            Fail(reader.Line(), u"主键序号重复"_s);
        table.columns.push_back(std::move(column));
    }
    for (const auto &[tableName, columns] : keys) {
        Table &table = catalog.tables_[catalog.byName_.at(tableName)];
        for (const auto &[position, column] : columns) {
            table.primaryKey.push_back(column);
            table.columns[static_cast<size_t>(column)].notNull = true;
        }
    }
    const auto forEachList = [&](QByteArrayView csv, const auto &take) {
        if (csv.isEmpty())
            return;
        for (CsvReader reader(csv); reader.Next();) {
            const auto place = catalog.byName_.find(UpperAscii(reader.Cell("TABLE")));
            if (place == catalog.byName_.end())
                Fail(reader.Line(), u"没有这个表"_s);
            Table &table = catalog.tables_[place->second];
            take(table, ColumnsOf(table, reader.Cell("COLUMNS"), reader.Line()), reader);
        }
    };
    forEachList(indexesCsv, [](Table &table, ColumnList columns, CsvReader &reader) {
        (reader.Flag("UNIQUE") ? table.uniqueIndexes : table.indexes).push_back(std::move(columns));
    });
    forEachList(searchedCsv, [](Table &table, ColumnList columns, CsvReader &) {
        table.searched = std::move(columns);
    });
    return catalog;
}

} // namespace Qel::Sql
