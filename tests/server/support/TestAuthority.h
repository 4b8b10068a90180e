#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace Qel {

/// Certificates made for one run by the program that administrators make theirs with: a key in the
/// tree would be one that everybody has, and a certificate there would end some day. Throws
/// EQelError if that program fails.
class TestAuthority
{
public:
    TestAuthority();

    /// NAME.pem and NAME.key, for a host ("IP:127.0.0.1", "DNS:example").
    void Issue(const QString &name, const QString &host);

    QString File(const QString &name) const { return folder_.filePath(name); }
    /// Arguments for a server that shows this certificate.
    QStringList Options(const QString &name) const;
    /// Clients of this process believe the authority, and nobody else.
    void Trust() const;

private:
    QTemporaryDir folder_;
};

} // namespace Qel
