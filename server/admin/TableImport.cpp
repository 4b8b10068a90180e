#include "admin/TableImport.h"

#include "store/Schema.h"

#include <QDateTime>
#include <QStringDecoder>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Admin {

namespace {

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool AreDigits(QByteArrayView text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), IsDigit);
}

/// "-12": no sign but a minus, no zeros before it, no more digits than a number has room for.
bool IsInteger(QByteArrayView text)
{
    if (text.startsWith('-'))
        text = text.sliced(1);
    return AreDigits(text) && text.size() <= 18 && (text.size() == 1 || text[0] != '0');
}

/// "-12.05": digits on both sides of the point, at most 15 of them behind leading zeros.
bool IsReal(QByteArrayView text)
{
    constexpr qsizetype mostDigits = 15; // that a number has room for
    constexpr qsizetype longest = 150;
    if (text.startsWith('-'))
        text = text.sliced(1);
    const qsizetype point = text.indexOf('.');
    const QByteArrayView whole = point < 0 ? text : text.first(point);
    const QByteArrayView part = point < 0 ? QByteArrayView("0") : text.sliced(point + 1);
    if (!AreDigits(whole) || !AreDigits(part) || (whole.size() > 1 && whole[0] == '0') ||
        text.size() > longest)
        return false;
    const auto *const first =
        std::find_if(text.begin(), text.end(), [](char c) { return c != '0' && c != '.'; });
    return std::count_if(first, text.end(), IsDigit) <= mostDigits;
}

/// "2026-03-05 13:07:00", a day and a time that there are.
bool IsDate(QByteArrayView text)
{
    static constexpr QByteArrayView form = "0000-00-00 00:00:00";
    if (text.size() != form.size())
        return false;
    for (qsizetype at = 0; at < form.size(); ++at)
        if (form[at] == '0' ? !IsDigit(text[at]) : text[at] != form[at])
            return false;
    const auto number = [&](qsizetype at, qsizetype size) { return text.sliced(at, size).toInt(); };
    return QDate::isValid(number(0, 4), number(5, 2), number(8, 2)) && number(11, 2) < 24 &&
           number(14, 2) < 60 && number(17, 2) < 60;
}

/// The number of characters; -1: it is not UTF-8, or has a zero byte, which no database keeps.
qsizetype CharacterCount(const QByteArray &text)
{
    if (std::all_of(text.begin(), text.end(),
                    [](char c) { return static_cast<signed char>(c) > 0; }))
        return text.size();
    if (text.contains('\0'))
        return -1;
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    [[maybe_unused]] const QString decoded = decoder(text);
    if (decoder.hasError())
        return -1;
    return std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; });
}

QString NameOf(const Sql::Column &column)
{
    return QString::fromStdString(column.name);
}

std::vector<QByteArray> HeaderOf(CsvReader &csv)
{
    std::vector<QByteArray> names;
    if (!csv.Next())
        return names;
    for (const CsvCell &cell : csv.Cells())
        names.push_back(cell.text);
    if (names.front().startsWith("\xEF\xBB\xBF"))
        names.front().remove(0, 3);
    return names;
}

} // namespace

TableImport::TableImport(Store::Connection &connection, const QString &table, Findings &findings)
    : connection_(connection)
    , table_(*Store::SchemaCatalog().Find(table.toStdString()))
    , file_(FileName(table))
    , findings_(findings)
{
    for (const Sql::Column &column : table_.columns)
        columns_ += NameOf(column);
}

/// A table without a fault comes in as quickly as the database can. Another one is read a second
/// time, row by row, to tell what is wrong where.
void TableImport::Load(QIODevice &file)
{
    try {
        CsvReader csv(file);
        if (!ReadHeader(csv) || StoreAtOnce(csv))
            return;
        file.seek(0);
        CsvReader again(file);
        again.Next(); // the header
        StoreOneByOne(again);
    } catch (const ECsvError &error) {
        Add(error.Line(), {}, error.Message());
    }
}

/// False: some row cannot be stored, and none is.
bool TableImport::StoreAtOnce(CsvReader &csv)
{
    Store::Savepoint savepoint(connection_);
    qint64 rows = 0;
    bool good = true;
    try {
        connection_.InsertRows(QByteArray::fromStdString(table_.name), columns_.join(u',').toUtf8(),
                               [&](QList<QByteArrayView> &row) {
                                   if (!csv.Next())
                                       return false;
                                   ++rows;
                                   good = TakeRow(csv, row);
                                   return good;
                               });
    } catch (const ECsvError &) {
        return false;
    } catch (const Store::EStoreError &error) {
        if (error.WhichKind() != Store::EStoreError::Kind::Constraint)
            throw;
        return false; // a key that an earlier row has
    }
    if (!good)
        return false;
    savepoint.Keep();
    rows_ = rows;
    return true;
}

/// The row's values in the order of the table's columns; false: one of them does not fit.
bool TableImport::TakeRow(const CsvReader &csv, QList<QByteArrayView> &row) const
{
    const std::vector<CsvCell> &cells = csv.Cells();
    if (cells.size() != table_.columns.size())
        return false;
    for (std::size_t index = 0; index < places_.size(); ++index) {
        const CsvCell &cell = cells[static_cast<std::size_t>(places_[index])];
        if (!ProblemOf(cell, table_.columns[index]).isEmpty())
            return false;
        row[static_cast<qsizetype>(index)] = cell.text; // NULL has none
    }
    return true;
}

void TableImport::StoreOneByOne(CsvReader &csv)
{
    QStringList values;
    for (qsizetype place = 1; place <= columns_.size(); ++place)
        values += u"?%1"_s.arg(place);
    insert_ = connection_.Prepare(
        u"INSERT INTO %1 (%2) VALUES (%3) ON CONFLICT DO NOTHING"_s
            .arg(QString::fromStdString(table_.name), columns_.join(u", "_s), values.join(u", "_s))
            .toUtf8());
    while (!findings_.Full() && csv.Next()) {
        ++rows_;
        StoreRow(csv);
    }
}

bool TableImport::ReadHeader(CsvReader &csv)
{
    const std::vector<QByteArray> names = HeaderOf(csv);
    for (const QByteArray &name : names)
        if (table_.IndexOf(name.toStdString()) < 0 ||
            std::count(names.begin(), names.end(), name) > 1)
            Add(1, QString::fromUtf8(name), u"没有这一列，或重复"_s);
    for (const Sql::Column &column : table_.columns) {
        const auto found =
            std::find(names.begin(), names.end(), QByteArray::fromStdString(column.name));
        if (found == names.end())
            Add(1, NameOf(column), u"缺少这一列"_s);
        places_.push_back(static_cast<int>(found - names.begin()));
    }
    return !rejected_;
}

void TableImport::StoreRow(const CsvReader &csv)
{
    const std::vector<CsvCell> &cells = csv.Cells();
    if (cells.size() != table_.columns.size()) {
        Add(csv.Line(), {},
            u"应有 %1 个单元，实有 %2 个"_s.arg(table_.columns.size()).arg(cells.size()));
        return;
    }
    bool good = true;
    for (std::size_t index = 0; index < places_.size(); ++index) {
        const CsvCell &cell = cells[static_cast<std::size_t>(places_[index])];
        const Sql::Column &column = table_.columns[index];
        const QString problem = ProblemOf(cell, column);
        if (!problem.isEmpty()) {
            Add(csv.Line(), NameOf(column), problem);
            good = false;
        } else if (cell.isNull) {
            insert_->BindNull(static_cast<int>(index) + 1);
        } else {
            insert_->Bind(static_cast<int>(index) + 1, QByteArrayView(cell.text));
        }
    }
    if (!good)
        return;
    while (insert_->Step()) {
    }
    insert_->Reset();
    if (connection_.ChangedRows() == 0)
        Add(csv.Line(), TakenColumn(cells), u"与前面的行重复"_s);
}

/// Empty: there is none.
QString TableImport::ProblemOf(const CsvCell &cell, const Sql::Column &column) const
{
    if (cell.isNull)
        return column.notNull ? u"不能没有值"_s : QString();
    const auto isNo = [&](const QString &kind) {
        return u"“%1”不是%2"_s.arg(QString::fromUtf8(cell.text.left(60)), kind);
    };
    switch (column.type) {
    case Sql::ColumnType::Integer:
        return IsInteger(cell.text) ? QString() : isNo(u"整数"_s);
    case Sql::ColumnType::Real:
        return IsReal(cell.text) ? QString() : isNo(u"数字"_s);
    case Sql::ColumnType::DateTime:
        return IsDate(cell.text) ? QString() : isNo(u"“年-月-日 时:分:秒”的日期"_s);
    case Sql::ColumnType::Text:
        break;
    }
    if (cell.text.isEmpty())
        return u"文本是空的；没有值时两个逗号之间什么也不写"_s;
    const qsizetype count = CharacterCount(cell.text);
    if (count < 0)
        return u"不是 UTF-8 文本"_s;
    if (column.size > 0 && count > column.size)
        return u"文本过长：至多 %1 个字符，实有 %2 个"_s.arg(column.size).arg(count);
    return {};
}

/// Which key the row has in common with another.
QString TableImport::TakenColumn(const std::vector<CsvCell> &cells)
{
    const auto names = [&](const Sql::ColumnList &columns) {
        QStringList list;
        for (const int column : columns)
            list += NameOf(table_.columns[static_cast<std::size_t>(column)]);
        return list.join(u", "_s);
    };
    for (const Sql::ColumnList &columns : table_.uniqueIndexes)
        if (!IsTaken(table_.primaryKey, cells) && IsTaken(columns, cells))
            return names(columns);
    return names(table_.primaryKey);
}

bool TableImport::IsTaken(const Sql::ColumnList &columns, const std::vector<CsvCell> &cells)
{
    QStringList terms;
    Store::Values values;
    for (const int column : columns) {
        const auto index = static_cast<std::size_t>(column);
        values.append(QString::fromUtf8(cells[static_cast<std::size_t>(places_[index])].text));
        terms += u"%1 = ?%2"_s.arg(NameOf(table_.columns[index])).arg(values.size());
    }
    return connection_.Exists(u"SELECT 1 FROM %1 WHERE %2"_s
                                  .arg(QString::fromStdString(table_.name), terms.join(u" AND "_s))
                                  .toUtf8(),
                              values);
}

void TableImport::Add(qint64 line, const QString &column, const QString &text)
{
    rejected_ = true;
    findings_.Add({file_, line, column, text});
}

void TableImport::ForEachKey(QIODevice &file, const QString &table,
                             const std::function<void(const QStringList &, qint64)> &visit)
{
    const Sql::Table &found = *Store::SchemaCatalog().Find(table.toStdString());
    CsvReader csv(file);
    const std::vector<QByteArray> names = HeaderOf(csv);
    std::vector<std::size_t> places;
    for (const int column : found.primaryKey) {
        const std::string &name = found.columns[static_cast<std::size_t>(column)].name;
        const auto place = std::find(names.begin(), names.end(), QByteArray::fromStdString(name));
        places.push_back(static_cast<std::size_t>(place - names.begin()));
    }
    try {
        while (csv.Next()) {
            QStringList key;
            for (const std::size_t place : places)
                if (place < csv.Cells().size())
                    key += QString::fromUtf8(csv.Cells()[place].text);
            visit(key, csv.Line());
        }
    } catch (const ECsvError &) {
        // told when the table was loaded
    }
}

} // namespace Qel::Admin
