#include "support/TestAuthority.h"

#include "dataset/QelError.h"

#include <QFile>
#include <QProcess>
#include <QSslCertificate>
#include <QSslConfiguration>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

constexpr int Patience = 20'000; ///< milliseconds

void RunOpenSsl(const QStringList &arguments)
{
    QProcess openssl;
    openssl.start(u"openssl"_s, arguments);
    if (!openssl.waitForFinished(Patience) || openssl.exitCode() != 0)
        throw EQelError(u"openssl：%1"_s.arg(QString::fromUtf8(openssl.readAllStandardError())));
}

} // namespace

TestAuthority::TestAuthority()
{
    RunOpenSsl({u"req"_s, u"-x509"_s, u"-newkey"_s, u"ec"_s, u"-pkeyopt"_s,
                u"ec_paramgen_curve:prime256v1"_s, u"-nodes"_s, u"-days"_s, u"2"_s, u"-subj"_s,
                u"/CN=Test authority"_s, u"-keyout"_s, File(u"ca.key"_s), u"-out"_s,
                File(u"ca.pem"_s)});
}

void TestAuthority::Issue(const QString &name, const QString &host)
{
    RunOpenSsl({u"req"_s, u"-newkey"_s, u"ec"_s, u"-pkeyopt"_s, u"ec_paramgen_curve:prime256v1"_s,
                u"-nodes"_s, u"-subj"_s, u"/CN="_s + name, u"-keyout"_s, File(name + u".key"_s),
                u"-out"_s, File(name + u".csr"_s)});
    QFile extensions(File(name + u".ext"_s));
    if (!extensions.open(QIODevice::WriteOnly))
        throw EQelError(extensions.errorString());
    extensions.write("subjectAltName=" + host.toUtf8() + '\n');
    extensions.close();
    RunOpenSsl({u"x509"_s, u"-req"_s, u"-in"_s, File(name + u".csr"_s), u"-CA"_s, File(u"ca.pem"_s),
                u"-CAkey"_s, File(u"ca.key"_s), u"-CAcreateserial"_s, u"-days"_s, u"2"_s,
                u"-extfile"_s, extensions.fileName(), u"-out"_s, File(name + u".pem"_s)});
}

QStringList TestAuthority::Options(const QString &name) const
{
    return {u"--cert"_s, File(name + u".pem"_s), u"--key"_s, File(name + u".key"_s)};
}

void TestAuthority::Trust() const
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates(QSslCertificate::fromPath(File(u"ca.pem"_s)));
    QSslConfiguration::setDefaultConfiguration(configuration);
}

} // namespace Qel
