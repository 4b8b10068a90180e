#include "demo/TableRows.h"

#include <QDateTime>

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

/// The rows were entered one after the other in the platform's first months.
QString EntryTime(qsizetype row)
{
    static const QDateTime first(QDate(2024, 3, 1), QTime(8, 30), Qt::UTC);
    return first.addSecs(row * 937).toString(u"yyyy-MM-dd hh:mm:ss"_s);
}

} // namespace

QString MakeId(IdSeries series, qsizetype index)
{
    return QString::number(static_cast<qsizetype>(series) + index);
}

QString Padded(qsizetype number, int digits)
{
    return QString::number(number).rightJustified(digits, u'0');
}

TableRows::TableRows(QString table, QStringList columns)
    : table_(std::move(table))
    , columns_(std::move(columns))
{
    columns_ += {u"LAST_OPERATE"_s, u"LAST_USER"_s, u"LAST_USER_ID"_s, u"LAST_UPDATE"_s};
}

void TableRows::Add(QStringList values, State state)
{
    values += {state == State::Deleted ? u"D"_s : u"1"_s, AdminUserName.toString(),
               MakeId(IdSeries::User, 0), EntryTime(static_cast<qsizetype>(rows_.size()))};
    Q_ASSERT(values.size() == columns_.size());
    rows_.push_back(std::move(values));
}

void TableRows::Store(Store::Connection &connection) const
{
    QStringList places;
    for (qsizetype column = 1; column <= columns_.size(); ++column)
        places += u"?%1"_s.arg(column);
    const auto statement =
        connection.Prepare(u"INSERT INTO %1 (%2) VALUES (%3)"_s
                               .arg(table_, columns_.join(u", "_s), places.join(u", "_s))
                               .toUtf8());
    for (const QStringList &row : rows_) {
        for (int column = 0; column < row.size(); ++column) {
            if (row[column].isEmpty())
                statement->BindNull(column + 1);
            else
                statement->Bind(column + 1, row[column]);
        }
        statement->Step();
        statement->Reset();
    }
}

} // namespace Qel::Demo
