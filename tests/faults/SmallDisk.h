#pragma once

#include "faults/Report.h"

#include <QFile>
#include <QString>

namespace Qel::Faults {

/// A file system of its own, of 32 MiB, and something to fill it with. Only root may mount one.
class SmallDisk
{
public:
    /// `folder` is there, and empty.
    explicit SmallDisk(const QString &folder);
    ~SmallDisk();
    Q_DISABLE_COPY_MOVE(SmallDisk)

    bool IsMounted() const { return isMounted_; }
    static Outcome NotRun(); ///< of a scenario that needs one, where it is not mounted

    void Fill(qint64 left); ///< until it is full but for `left` bytes; again, where room has come
    void Empty();           ///< takes away what Fill has put there

private:
    QString folder_;
    QFile ballast_;
    bool isMounted_;
};

} // namespace Qel::Faults
