#pragma once

#include <QByteArrayView>

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Qel::Sql {

/// DateTime columns are stored as text 'YYYY-MM-DD HH24:MI:SS', so they compare as text.
enum class ColumnType { Text, Integer, Real, DateTime };

struct Column
{
    std::string name; ///< upper case
    ColumnType type = ColumnType::Text;
    int size = 0; ///< largest number of characters of a text; 0 elsewhere
    bool notNull = false;
    std::string defaultValue; ///< as written in the file; empty: none
    bool readable = true;     ///< false: no client statement sees this column, `*` included
};

using ColumnList = std::vector<int>; ///< positions in Table::columns

struct Table
{
    std::string name; ///< upper case
    std::vector<Column> columns;
    ColumnList primaryKey;                 ///< in key order
    std::vector<ColumnList> uniqueIndexes; ///< beside the primary key
    std::vector<ColumnList> indexes;       ///< not unique
    ColumnList searched;                   ///< texts of which clients look for parts

    /// Position of the column of this upper-case name; -1: none.
    int IndexOf(std::string_view name) const;
};

/// The tables that exist, and of them what clients may read. Made once, then read by any thread.
class Catalog
{
public:
    /// `columnsCsv` has the header TABLE,COLUMN,TYPE,SIZE,KEY,NOT_NULL,DEFAULT,READABLE,MEANING:
    /// TYPE is Text, Integer, Real or DateTime, KEY the position in the primary key from 1 or
    /// empty, NOT_NULL and READABLE 1, 0 or empty (0). `indexesCsv` has TABLE,COLUMNS,UNIQUE with
    /// COLUMNS parted by blanks, `searchedCsv` TABLE,COLUMNS likewise; they may be empty. Further
    /// columns are skipped. Throws EQelError with the line number for anything else.
    static Catalog FromCsv(QByteArrayView columnsCsv, QByteArrayView indexesCsv = {},
                           QByteArrayView searchedCsv = {});

    /// The table of this name in any case; null: there is none.
    const Table *Find(std::string_view name) const;

    /// In the order of the file.
    const std::vector<Table> &Tables() const noexcept { return tables_; }

private:
    std::vector<Table> tables_;
    std::unordered_map<std::string, size_t> byName_;
};

} // namespace Qel::Sql
