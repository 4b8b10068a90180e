#pragma once

#include "store/Connection.h"

#include <QStringList>

#include <vector>

namespace Qel::Demo {

enum class State { Live, Deleted };

/// The operator whom the sample database names as the one who entered it, and who signs in.
inline constexpr QStringView AdminUserCode = u"admin";
inline constexpr QStringView AdminUserName = u"系统管理员";

/// Keys are six digits, in which the first tells the table: an id that is taken for one of another
/// table finds nothing. The series are named in SRV_SEQUENCE, where the server goes on counting.
enum class IdSeries {
    Region = 100001,
    Organisation = 200001,
    Group = 300001,
    MemberType = 400001,
    Product = 500001,
    User = 600001,
};

/// The key of the row that is counted `index` in its table, from 0.
QString MakeId(IdSeries series, qsizetype index);

/// The number with zeros before it, of so many digits at least.
QString Padded(qsizetype number, int digits);

/// Rows to be stored in a table, with the audit columns that every table has.
class TableRows
{
public:
    TableRows(QString table, QStringList columns);

    /// One value a column, the empty text for NULL.
    void Add(QStringList values, State state = State::Live);

    const QString &Table() const { return table_; }
    const QStringList &Columns() const { return columns_; }
    const std::vector<QStringList> &Rows() const { return rows_; }

    void Store(Store::Connection &connection) const;

private:
    QString table_;
    QStringList columns_;
    std::vector<QStringList> rows_;
};

} // namespace Qel::Demo
