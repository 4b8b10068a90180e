#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <vector>

namespace Qel {

/// Every different value that was ever put into a changed cell, kept once. Values are numbered
/// from 0 and stay until Clear(); views into them hold until the next Intern().
class ValuePool
{
public:
    quint32 Intern(QByteArrayView value);
    QByteArrayView At(quint32 index) const
    {
        return {bytes_.constData() + ends_[index], qsizetype(ends_[index + 1] - ends_[index])};
    }
    void Clear();

private:
    void Grow();

    QByteArray bytes_;
    std::vector<quint32> ends_{0};
    std::vector<quint32> slots_; ///< open addressing, value index + 1, 0: free
};

} // namespace Qel
