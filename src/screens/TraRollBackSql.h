#pragma once

#include <QDateTime>
#include <QString>

namespace Qel {

/// The state of a filter that adds no condition.
constexpr QStringView AllReturnStates = u"-1";

/// What a tab's list is narrowed by; texts may be empty, an invalid date is no date.
struct TRollBackFilter
{
    QString orderCode = {};
    QString product = {}; ///< name, trade name, initials and the like
    QString org = {};     ///< buyer's or seller's name, short name or initials
    QDateTime from = {};
    QDateTime to = {};
    QString state = AllReturnStates.toString(); ///< of returns only: a value of CONFIRM_FLAG
};

/// The statements of the rollback screen; values are quoted here.
namespace TraRollBackSql {
QString Orders(const TRollBackFilter &filter);   ///< one date alone is a condition
QString Returns(const TRollBackFilter &filter);  ///< one date alone is none
QString Receipts(const TRollBackFilter &filter); ///< one date alone is a condition; no order
} // namespace TraRollBackSql

} // namespace Qel
