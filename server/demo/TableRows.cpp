#include "demo/TableRows.h"

using namespace Qt::StringLiterals;

namespace Qel::Demo {

namespace {

constexpr OfficeTime ImportSeconds = 3; ///< so long takes a row of the master data
const QStringList AuditColumns{u"LAST_OPERATE"_s, u"LAST_USER"_s, u"LAST_USER_ID"_s,
                               u"LAST_UPDATE"_s};
const QString Live = u"1"_s;
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

QString FlagText(bool flag)
{
    static const QString yes = u"1"_s;
    static const QString no = u"0"_s;
    return flag ? yes : no;
}

QString Yuan(qint64 fen)
{
    return QString::number(fen / 100) + u'.' + Padded(fen % 100, 2);
}

TableRows::TableRows(QString table, QStringList columns, Audit audit)
    : table_(std::move(table))
    , columns_(std::move(columns))
{
    if (audit == Audit::Columns)
        columns_ += AuditColumns;
}

void TableRows::Add(const QStringList &values, State state)
{
    const Stamp import{MakeId(IdSeries::User, 0), AdminUserName.toString(),
                       Count() * ImportSeconds};
    Add(values, import, state);
}

void TableRows::Add(const QStringList &values, const Stamp &last, State state)
{
    Append(values);
    Append({state == State::Deleted ? Deleted : Live, last.userName, last.userId,
            OfficeTimeText(last.time)});
    Q_ASSERT(static_cast<qsizetype>(ends_.size()) % columns_.size() == 0);
}

void TableRows::AddPlain(const QStringList &values)
{
    Q_ASSERT(values.size() == columns_.size());
    Append(values);
}

QString TableRows::Text(qsizetype row, qsizetype place) const
{
    return QString::fromUtf8(Bytes(row * columns_.size() + place));
}

QList<qsizetype> TableRows::LiveRows() const
{
    const qsizetype operation = Place(AuditColumns.front());
    QList<qsizetype> rows;
    for (qsizetype row = 0; row < Count(); ++row) {
        if (Text(row, operation) != Deleted)
            rows += row;
    }
    return rows;
}

QStringList TableRows::LiveKeys() const
{
    QStringList keys;
    for (const qsizetype row : LiveRows())
        keys += Text(row, 0);
    return keys;
}

void TableRows::Store(Store::Connection &connection) const
{
    const qsizetype width = columns_.size();
    qsizetype row = 0;
    connection.InsertRows(table_.toUtf8(), columns_.join(u',').toUtf8(),
                          [&](QList<QByteArrayView> &values) {
                              if (row == Count())
                                  return false;
                              for (qsizetype column = 0; column < width; ++column)
                                  values[column] = Bytes(row * width + column);
                              ++row;
                              return true;
                          });
}

void TableRows::Append(const QStringList &values)
{
    for (const QString &value : values) {
        bytes_ += value.toUtf8();
        ends_.push_back(bytes_.size());
    }
}

QByteArrayView TableRows::Bytes(qsizetype cell) const
{
    const auto at = static_cast<std::size_t>(cell);
    const qsizetype begin = at == 0 ? 0 : ends_[at - 1];
    return QByteArrayView(bytes_).sliced(begin, ends_[at] - begin);
}

} // namespace Qel::Demo
