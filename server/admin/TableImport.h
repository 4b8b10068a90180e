#pragma once

#include "admin/Csv.h"
#include "admin/SiteImport.h"
#include "sql/Catalog.h"
#include "store/Connection.h"

#include <functional>
#include <memory>

namespace Qel::Admin {

/// What was found so far, up to a limit.
class Findings
{
public:
    explicit Findings(int limit)
        : limit_(limit)
    {
    }

    void Add(const ImportFinding &finding)
    {
        if (Full())
            cut_ = true;
        else
            list_.append(finding);
    }
    int Room() const { return limit_ - static_cast<int>(list_.size()); }
    bool Full() const { return Room() <= 0; }
    bool Cut() const { return cut_; }
    QList<ImportFinding> Take() { return std::move(list_); }

private:
    int limit_;
    bool cut_ = false;
    QList<ImportFinding> list_;
};

/// Reads one table from its file: checks each cell against its column and stores the rows that
/// pass; the others are findings.
class TableImport
{
public:
    TableImport(Store::Connection &connection, const QString &table, Findings &findings);

    void Load(QIODevice &file);

    qint64 Rows() const { return rows_; }       ///< that the file has
    bool Rejected() const { return rejected_; } ///< rows of the file did not come in

    /// Calls `visit` with the primary key and the line of every row of a file that was loaded.
    static void ForEachKey(QIODevice &file, const QString &table,
                           const std::function<void(const QStringList &, qint64)> &visit);

private:
    bool ReadHeader(CsvReader &csv);
    bool StoreAtOnce(CsvReader &csv);
    bool TakeRow(const CsvReader &csv, QList<QByteArrayView> &row) const;
    void StoreOneByOne(CsvReader &csv);
    void StoreRow(const CsvReader &csv);
    QString ProblemOf(const CsvCell &cell, const Sql::Column &column) const;
    QString TakenColumn(const std::vector<CsvCell> &cells);
    bool IsTaken(const Sql::ColumnList &columns, const std::vector<CsvCell> &cells);
    void Add(qint64 line, const QString &column, const QString &text);

    Store::Connection &connection_;
    const Sql::Table &table_;
    QString file_;
    Findings &findings_;
    QStringList columns_;
    std::unique_ptr<Store::Statement> insert_;
    std::vector<int> places_; ///< of the table's columns in a record
    qint64 rows_ = 0;
    bool rejected_ = false;
};

} // namespace Qel::Admin
