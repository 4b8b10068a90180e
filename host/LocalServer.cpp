#include "host/LocalServer.h"

#include "dataset/QelError.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTimer>

#include <array>

namespace Qel::Host {

using namespace Qt::StringLiterals;

namespace {

constexpr int StartTime = 180'000; // milliseconds
constexpr int StopTime = 5'000;
constexpr auto Announcement = "listening on "_L1;

/// 256 bits of the system's random source.
QString FreshToken()
{
    std::array<quint32, 8> words{};
    QRandomGenerator::system()->fillRange(words.data(), words.size());
    return QString::fromLatin1(
        QByteArray(reinterpret_cast<const char *>(words.data()), sizeof words).toHex());
}

} // namespace

QString LocalServer::Find()
{
    const QString fixed = qEnvironmentVariable("QEL_SERVER");
    if (!fixed.isEmpty())
        return fixed;
    const QDir here(QCoreApplication::applicationDirPath());
    for (const QString &folder : {u"."_s, u"../server"_s}) {
        const QFileInfo candidate(here.filePath(folder + u"/qel-server"_s));
        if (candidate.isExecutable())
            return candidate.canonicalFilePath();
    }
    return QStandardPaths::findExecutable(u"qel-server"_s);
}

LocalServer::LocalServer(const QString &user, const QString &database)
    : user_(user)
    , token_(FreshToken())
{
    QStringList arguments{u"--demo"_s,     u"--listen"_s, u"127.0.0.1:0"_s,
                          u"--operator"_s, user,          u"--exit-with-parent"_s};
    if (!database.isEmpty())
        arguments << u"--database"_s << u"sqlite:"_s + database;
    process_.setArguments(arguments);
    // In the environment, where other users cannot read it, not on the command line.
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"QEL_OPERATOR_TOKEN"_s, token_);
    process_.setProcessEnvironment(environment);
}

LocalServer::~LocalServer()
{
    if (process_.state() == QProcess::NotRunning)
        return;
    process_.closeWriteChannel();
    if (process_.waitForFinished(StopTime))
        return;
    process_.kill();
    process_.waitForFinished();
}

QUrl LocalServer::Start(const QString &program)
{
    if (program.isEmpty())
        throw EQelError(u"找不到本机服务程序 qel-server。"_s);
    process_.setProgram(program);

    QByteArray line;
    QEventLoop loop;
    QObject::connect(&process_, &QProcess::readyReadStandardOutput, &loop, [&] {
        while (process_.canReadLine() && !line.startsWith(Announcement.data()))
            line = process_.readLine().trimmed();
        if (line.startsWith(Announcement.data()))
            loop.quit();
    });
    QObject::connect(&process_, &QProcess::finished, &loop, &QEventLoop::quit);
    QObject::connect(&process_, &QProcess::errorOccurred, &loop, &QEventLoop::quit);
    QTimer::singleShot(StartTime, &loop, &QEventLoop::quit);
    process_.start();
    if (process_.state() != QProcess::NotRunning)
        loop.exec();

    if (!line.startsWith(Announcement.data())) {
        const bool runs = process_.state() == QProcess::Running;
        const QString why = runs ? u"等待超时"_s : process_.errorString();
        const QString said = QString::fromLocal8Bit(process_.readAllStandardError()).trimmed();
        throw EQelError(u"本机服务 %1 没有启动：%2"_s.arg(program, said.isEmpty() ? why : said));
    }
    QUrl url(QString::fromLatin1(line.mid(Announcement.size())));
    url.setUserName(user_);
    url.setPassword(token_);
    return url;
}

} // namespace Qel::Host
