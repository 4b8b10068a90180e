#include "faults/Bed.h"

#include "dataset/QelError.h"
#include "faults/PostgresBed.h"

#include <QDir>
#include <QFile>

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
    void Restart(const QString &, Stop) override { HasNoServer(); }
    void Freeze() override { HasNoServer(); }
    void Thaw() override { HasNoServer(); }

private:
    [[noreturn]] static void HasNoServer() { throw EQelError(u"SQLite 没有服务器。"_s); }
};

} // namespace

Bed::Bed()
{
    // A database server that is another user's finds its files below.
    QFile::setPermissions(folder_.path(), QFile::Permissions(0x7011));
}

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
    if (name == u"postgresql")
        return std::make_unique<PostgresBed>();
    throw EQelError(u"--database 应为 sqlite 或 postgresql，而不是：%1"_s.arg(name));
}

} // namespace Qel::Faults
