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
    DrugStore = 800001,
    Announcement = 900001,
    // Eight digits: there are more of these than six would hold.
    LogEntry = 70000001,
    PriceType = 80000001,
    Price = 81000001,
    Order = 90000001,
    OrderLine = 91000001,
    Delivery = 92000001,
    Return = 93000001,
};

/// The key of the row that is counted `index` in its table, from 0.
QString MakeId(IdSeries series, qsizetype index);

/// The number with zeros before it, of so many digits at least.
QString Padded(qsizetype number, int digits);

/// "1" or "0".
QString FlagText(bool flag);

/// An amount of 1/100 yuan as a number of yuan: "12.05".
QString Yuan(qint64 fen);

/// Who changed a row last, and when.
struct Stamp
{
    QString userId;
    QString userName;
    OfficeTime time = 0;
};

/// Rows to be stored in a table; kept as the bytes that are stored, for there are many of them.
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
    void Add(const QStringList &values, State state = State::Live);
    void Add(const QStringList &values, const Stamp &last, State state = State::Live);
    /// For a table without audit columns.
    void AddPlain(const QStringList &values);

    const QString &Table() const { return table_; }
    qsizetype Count() const { return static_cast<qsizetype>(ends_.size()) / columns_.size(); }
    /// Where the column stands in a row.
    qsizetype Place(const QString &column) const { return columns_.indexOf(column); }
    QString Text(qsizetype row, qsizetype place) const;
    /// The rows that are not deleted.
    QList<qsizetype> LiveRows() const;
    /// The first value of each row that is not deleted.
    QStringList LiveKeys() const;

    void Store(Store::Connection &connection) const;

private:
    void Append(const QStringList &values);
    QByteArrayView Bytes(qsizetype cell) const;

    QString table_;
    QStringList columns_; ///< LAST_OPERATE is the first of the audit columns, which come last
    QByteArray bytes_;    ///< of all cells, row by row
    std::vector<qsizetype> ends_; ///< of each cell in them
};

} // namespace Qel::Demo
