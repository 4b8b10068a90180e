#include "remote/SoapParamsList.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

template <class Values>
auto FindName(Values &values, QStringView name)
{
    return std::find_if(values.begin(), values.end(), [name](const Wire::NamedValue &value) {
        return name.compare(value.first, Qt::CaseInsensitive) == 0;
    });
}

} // namespace

void TSoapParamsList::Clear()
{
    rows_.clear();
    current_.reset();
}

void TSoapParamsList::NewParams()
{
    current_.emplace();
}

void TSoapParamsList::AddParam(const QString &name, const QString &value)
{
    if (!current_)
        throw EParamsError(u"参数 %1 不属于任何一行：要先调用 NewParams。"_s.arg(name));
    if (const auto found = FindName(*current_, name); found != current_->end())
        found->second = value;
    else
        current_->append({name, value});
}

void TSoapParamsList::PostParams()
{
    if (!current_)
        throw EParamsError(u"没有可以提交的参数行：要先调用 NewParams。"_s);
    rows_.append({QString(), std::move(*current_)});
    current_.reset();
}

int TSoapParamsList::Count() const
{
    return int(rows_.size());
}

QString TSoapParamsList::GetParamValue(int index, QStringView name) const
{
    if (index < 0 || index >= rows_.size())
        return {};
    const Wire::NamedValues &values = rows_.at(index).values;
    const auto found = FindName(values, name);
    return found == values.end() ? QString() : found->second;
}

QString TSoapParamsList::GetResultCode(int index) const
{
    return index < 0 || index >= rows_.size() ? QString() : rows_.at(index).code;
}

QList<Wire::NamedValues> TSoapParamsList::Rows() const
{
    QList<Wire::NamedValues> rows;
    rows.reserve(rows_.size());
    for (const Wire::ResultRow &row : rows_)
        rows.append(row.values);
    return rows;
}

void TSoapParamsList::SetResult(const Wire::PostAnswer &answer)
{
    Clear();
    rows_ = answer.rows;
}

} // namespace Qel
