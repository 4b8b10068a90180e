#pragma once

#include "admin/Check.h"

#include <QByteArray>
#include <QHash>

#include <initializer_list>
#include <utility>

namespace Qel::Admin {

/// Findings, of each code no more than a limit and then one that says so.
class FindingList
{
public:
    explicit FindingList(int limit)
        : limit_(limit)
    {
    }

    void Add(const QByteArray &code, const QString &place, const QString &text)
    {
        const int count = ++counts_[code];
        if (count <= limit_)
            list_.append({QString::fromLatin1(code), place, text});
        else if (count == limit_ + 1)
            list_.append({QString::fromLatin1(code), QStringLiteral("-"),
                          QStringLiteral("多于 %1 个，其余从略").arg(limit_)});
    }

    bool HasAny(std::initializer_list<QByteArray> codes) const
    {
        for (const QByteArray &code : codes)
            if (counts_.contains(code))
                return true;
        return false;
    }

    QList<CheckFinding> Take() { return std::move(list_); }

private:
    int limit_;
    QHash<QByteArray, int> counts_;
    QList<CheckFinding> list_;
};

} // namespace Qel::Admin
