#pragma once

#include <QFile>
#include <QString>
#include <QStringList>

namespace Qel {

/// A statement that the tests of a screen expect, from tests/screens/data; empty: there is none of
/// that name.
inline QString ScreenStatement(const QString &file, const QString &name)
{
    QFile data(QStringLiteral(QEL_STATEMENTS) + u'/' + file);
    if (!data.open(QIODevice::ReadOnly))
        return {};
    const QString begin = name + QStringLiteral(" \"");
    for (const QString &line : QString::fromUtf8(data.readAll()).split(u'\n')) {
        if (line.startsWith(begin))
            return line.mid(begin.size(), line.lastIndexOf(u'"') - begin.size());
    }
    return {};
}

} // namespace Qel
