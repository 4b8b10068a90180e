#pragma once

#include "admin/Check.h"

#include <QStringList>

namespace Qel {

/// What the check says, "code place text". Without the settings that the test cluster saves time
/// by.
inline QStringList Problems(Store::Database &database)
{
    QStringList problems;
    for (const Admin::CheckFinding &finding : Admin::CheckDatabase(database))
        if (finding.place != QStringLiteral("fsync") &&
            finding.place != QStringLiteral("full_page_writes") &&
            finding.place != QStringLiteral("synchronous_commit"))
            problems += finding.code + u' ' + finding.place + u' ' + finding.text;
    return problems;
}

} // namespace Qel
