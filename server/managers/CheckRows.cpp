#include "managers/Method.h"

#include "store/Schema.h"

#include <QHash>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Managers {

namespace {

constexpr qsizetype MaxRows = 20'000;

/// A parameter that says who acts, and which of the credential's texts it may say.
struct OperatorParameter
{
    QString name;
    QList<QString Store::Operator::*> accepted;
};

const QList<OperatorParameter> &OperatorParameters()
{
    using Store::Operator;
    static const QList<OperatorParameter> parameters{
        {u"LOG_USER_ID"_s, {&Operator::userId}},
        {u"LAST_USER_ID"_s, {&Operator::userId}},
        {u"LOG_USER_NAME"_s, {&Operator::userName}},
        {u"CREATE_USER"_s, {&Operator::userName}},
        {u"CHECK_USER"_s, {&Operator::userName}},
        // Two postings write the code, one the organisation.
        {u"LAST_USER"_s, {&Operator::userName, &Operator::userCode, &Operator::orgName}},
    };
    return parameters;
}

const OperatorParameter *FindOperatorParameter(const QString &name)
{
    const auto &all = OperatorParameters();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const auto &one) { return one.name == name; });
    return found == all.end() ? nullptr : &*found;
}

[[noreturn]] void BadRow(qsizetype row, const QString &what)
{
    throw EPostError("post.bad_row", u"提交的第 %1 行有误：%2"_s.arg(row + 1).arg(what));
}

/// An empty text names nobody; what is stored is taken from the credential anyway.
void CheckOperator(const OperatorParameter &parameter, const QString &value,
                   const Store::Operator &user, qsizetype row)
{
    const auto matches = [&](QString Store::Operator::*text) { return user.*text == value; };
    if (value.isEmpty() ||
        std::any_of(parameter.accepted.begin(), parameter.accepted.end(), matches))
        return;
    throw EPostError("post.operator",
                     u"提交的第 %1 行的 %2 不是当前登录的操作员 %3。"_s.arg(row + 1).arg(
                         parameter.name, user.userCode));
}

qsizetype Characters(const QString &text)
{
    return text.size() -
           std::count_if(text.begin(), text.end(), [](QChar c) { return c.isHighSurrogate(); });
}

int ColumnSize(const QString &table, const QString &column)
{
    const Sql::Table *found = Store::SchemaCatalog().Find(table.toStdString());
    const int position = found ? found->IndexOf(column.toStdString()) : -1;
    Q_ASSERT_X(position >= 0, "ColumnSize", qUtf8Printable(table + u'.' + column));
    return position < 0 ? 0 : found->columns[static_cast<std::size_t>(position)].size;
}

/// The largest number of characters of each parameter; 0: no limit.
QHash<QString, int> SizesOf(const Method &method)
{
    QHash<QString, int> sizes;
    for (const QString &name : method.parameters)
        sizes.insert(name, ColumnSize(method.table, name));
    for (const QString &flag : method.flags)
        sizes.insert(flag, 1);
    return sizes;
}

void CheckValue(const QString &name, int size, const QString &value, qsizetype row)
{
    if (size > 0 && Characters(value) > size)
        BadRow(row, u"参数 %1 超过 %2 个字符。"_s.arg(name).arg(size));
    if (value.contains(QChar(u'\0')))
        BadRow(row, u"参数 %1 含有空字符。"_s.arg(name));
}

void CheckComplete(const Method &method, const PostedRow &posted, qsizetype row)
{
    for (const QString &name : method.parameters + method.flags)
        if (!posted.Has(name))
            BadRow(row, u"缺少参数 %1。"_s.arg(name));
    for (const QString &flag : method.flags)
        if (!IsFlag(posted[flag]))
            BadRow(row, u"参数 %1 只能是 0 或 1。"_s.arg(flag));
}

void CheckCount(const Method &method, qsizetype rows)
{
    if (rows == 0 && !method.takesNoRows)
        throw EPostError("post.bad_row", u"没有提交任何行，%1 至少需要 1 行。"_s.arg(method.name));
    if (rows > MaxRows)
        throw EPostError("post.bad_row",
                         u"一次最多提交 %1 行，收到 %2 行。"_s.arg(MaxRows).arg(rows));
}

/// A row whose key is not complete names no record yet.
void CheckRecordsDiffer(const Method &method, const QList<Wire::NamedValues> &rows)
{
    if (rows.size() < 2)
        return;
    QHash<QString, qsizetype> rowOf;
    rowOf.reserve(rows.size());
    for (qsizetype row = 0; row < rows.size(); ++row) {
        const QStringList values = PostedRow(rows[row]).Of(method.key);
        if (values.contains(QString()))
            continue;
        const QString key = values.join(QChar(u'\0')); // no value holds one
        if (const auto earlier = rowOf.constFind(key); earlier != rowOf.constEnd())
            BadRow(row, u"与第 %1 行是同一条记录：%2。"_s.arg(*earlier + 1).arg(values.join(u' ')));
        rowOf.insert(key, row);
    }
}

} // namespace

void CheckRows(const Method &method, const QList<Wire::NamedValues> &rows,
               const Store::Operator &user)
{
    CheckCount(method, rows.size());
    const QHash<QString, int> sizes = SizesOf(method);
    for (qsizetype row = 0; row < rows.size(); ++row) {
        const Wire::NamedValues &values = rows[row];
        for (auto at = values.begin(); at != values.end(); ++at) {
            const auto &[name, value] = *at;
            if (std::any_of(values.begin(), at,
                            [&](const Wire::NamedValue &one) { return one.first == at->first; }))
                BadRow(row, u"参数 %1 重复。"_s.arg(name));
            if (const auto size = sizes.constFind(name); size != sizes.constEnd())
                CheckValue(name, *size, value, row);
            else if (const auto *parameter = FindOperatorParameter(name))
                CheckOperator(*parameter, value, user, row);
            else
                BadRow(row, u"未知参数 %1。"_s.arg(name.left(64)));
        }
        CheckComplete(method, PostedRow(values), row);
    }
    CheckRecordsDiffer(method, rows);
}

} // namespace Qel::Managers
