#include "faults/SmallDisk.h"

#include "dataset/QelError.h"

#include <sys/mount.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel::Faults {

SmallDisk::SmallDisk(const QString &folder)
    : folder_(folder)
    , ballast_(folder + u"/ballast"_s)
    , isMounted_(::mount("tmpfs", folder.toUtf8().constData(), "tmpfs", 0, "size=32m") == 0)
{
}

SmallDisk::~SmallDisk()
{
    Empty();
    if (isMounted_)
        ::umount2(folder_.toUtf8().constData(), MNT_DETACH);
}

Outcome SmallDisk::NotRun()
{
    return Findings().Result(u"not run: only root can mount a small disk"_s, {});
}

void SmallDisk::Fill(qint64 left)
{
    if (!ballast_.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered))
        throw EQelError(ballast_.errorString());
    const QByteArray block(4096, 'x');
    while (ballast_.write(block) == block.size()) {
    }
    ballast_.resize(std::max<qint64>(0, ballast_.size() - left));
    ballast_.close();
}

void SmallDisk::Empty()
{
    ballast_.remove();
}

} // namespace Qel::Faults
