#include "demo/TableRows.h"

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

constexpr OfficeTime ImportSeconds = 3; ///< so long takes a row of the master data
const QStringList AuditColumns{u"LAST_OPERATE"_s, u"LAST_USER"_s, u"LAST_USER_ID"_s,
                               u"LAST_UPDATE"_s};
const QString Deleted = u"D"_s;

} // namespace

QString MakeId(IdSeries series, qsizetype index)
{
    return QString::number(static_cast<qsizetype>(series) + index);
}

QString Padded(qsizetype number, int digits)
{
    return QString::number(number).rightJustified(digits, u'0');
}

TableRows::TableRows(QString table, QStringList columns, Audit audit)
    : table_(std::move(table))
    , columns_(std::move(columns))
{
    if (audit == Audit::Columns)
        columns_ += AuditColumns;
}

void TableRows::Add(QStringList values, State state)
{
    const Stamp import{MakeId(IdSeries::User, 0), AdminUserName.toString(),
                       static_cast<qsizetype>(rows_.size()) * ImportSeconds};
    Add(std::move(values), import, state);
}

void TableRows::Add(QStringList values, const Stamp &last, State state)
{
    values += {state == State::Deleted ? Deleted : u"1"_s, last.userName, last.userId,
               OfficeTimeText(last.time)};
    AddPlain(std::move(values));
}

void TableRows::AddPlain(QStringList values)
{
    Q_ASSERT(values.size() == columns_.size());
    rows_.push_back(std::move(values));
}

QStringList TableRows::LiveKeys() const
{
    const qsizetype operation = columns_.indexOf(AuditColumns.front());
    QStringList keys;
    for (const QStringList &row : rows_) {
        if (row[operation] != Deleted)
            keys += row.front();
    }
    return keys;
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
