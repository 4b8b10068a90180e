#include "support/AdminRun.h"

#include <QProcess>
#include <QProcessEnvironment>

using namespace Qt::StringLiterals;

namespace Qel {

QStringList AdminRun::Lines() const
{
    return out.split(u'\n', Qt::SkipEmptyParts);
}

AdminRun RunAdmin(const QStringList &arguments, const QMap<QString, QString> &environment,
                  const QByteArray &input)
{
    QProcess process;
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    variables.remove(u"QEL_DATABASE"_s);
    for (const auto &[name, value] : environment.asKeyValueRange())
        variables.insert(name, value);
    process.setProcessEnvironment(variables);
    process.start(QStringLiteral(QEL_SERVER_PROGRAM), arguments);
    process.write(input);
    process.closeWriteChannel();
    constexpr int patience = 60'000; // milliseconds; under sanitizers on a busy machine
    if (!process.waitForFinished(patience) || process.exitStatus() != QProcess::NormalExit)
        return {-1, {}, QString::fromUtf8(process.readAllStandardError())};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

} // namespace Qel
