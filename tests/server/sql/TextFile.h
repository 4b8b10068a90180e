#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace Qel::Test {

using Row = QStringList; ///< a null QString is NULL

/// Rows for one table of a test's database.
struct TableBlock
{
    QString table;
    QStringList columns;
    QList<Row> rows = {};
};

/// One statement and what it must give.
struct SqlCase
{
    QString name;
    int line = 0;
    QString sql = {};
    QString error = {};       ///< code; empty: rows are expected
    QStringList labels = {};  ///< of every output column; empty: not looked at
    QStringList columns = {}; ///< compared, by label; empty: all
    QList<Row> rows = {};
    bool ordered = true;
    std::optional<qint64> count = {}; ///< the total; none: as many as rows
    int page = 0;
    int pageSize = 0;
};

/// A text file of tests: table blocks that make up a database, then cases. The form is described
/// at the head of README.md in this folder.
struct TextFile
{
    QList<TableBlock> tables;
    QList<SqlCase> cases;
};

/// Throws std::runtime_error that names the line.
TextFile ReadTextFile(const QString &path);

} // namespace Qel::Test
