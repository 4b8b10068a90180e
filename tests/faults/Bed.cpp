#include "faults/Bed.h"

#include "dataset/QelError.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace Qel::Faults {

namespace {

class SqliteBed : public Bed
{
public:
    QString Name() const override { return u"sqlite"_s; }
    QString NewDatabase(const QString &folder) override
    {
        return u"sqlite:"_s + folder + u"/faults.sqlite"_s;
    }
    void WaitUntilQuiet(const QString &) override {} // it lived in the server's process
};

} // namespace

QString Bed::NewFolder() const
{
    const QString name = QString::number(++folders_);
    if (!folder_.isValid() || !QDir(folder_.path()).mkdir(name))
        throw EQelError(u"无法建立 %1。"_s.arg(folder_.filePath(name)));
    return folder_.filePath(name);
}

std::unique_ptr<Bed> Bed::Make(const QString &name)
{
    if (name == u"sqlite")
        return std::make_unique<SqliteBed>();
    throw EQelError(u"--database 应为 sqlite，而不是：%1"_s.arg(name));
}

} // namespace Qel::Faults
