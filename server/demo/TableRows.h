#pragma once

#include "demo/OfficeTime.h"
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
    Affiliation = 700001,
    LogEntry = 70000001, ///< eight digits: there are more of them than six would hold
};

/// The key of the row that is counted `index` in its table, from 0.
QString MakeId(IdSeries series, qsizetype index);

/// The number with zeros before it, of so many digits at least.
QString Padded(qsizetype number, int digits);

/// Who changed a row last, and when.
struct Stamp
{
    QString userId;
    QString userName;
    OfficeTime time = 0;
};

/// Rows to be stored in a table.
class TableRows
{
public:
    enum class Audit {
        Columns, ///< the table has the four columns that say who stored a row last
        None,
    };

    TableRows(QString table, QStringList columns, Audit audit = Audit::Columns);

    /// One value a column, the empty text for NULL. Master data: imported by the operator of the
    /// sample database on the first day, one row after the other.
    void Add(QStringList values, State state = State::Live);
    void Add(QStringList values, const Stamp &last, State state = State::Live);
    /// For a table without audit columns.
    void AddPlain(QStringList values);

    const QString &Table() const { return table_; }
    const QStringList &Columns() const { return columns_; }
    const std::vector<QStringList> &Rows() const { return rows_; }
    /// The first value of each row that is not deleted.
    QStringList LiveKeys() const;

    void Store(Store::Connection &connection) const;

private:
    QString table_;
    QStringList columns_; ///< LAST_OPERATE is the first of the audit columns, which come last
    std::vector<QStringList> rows_;
};

} // namespace Qel::Demo
