#pragma once

#include "dataset/RowSet.h"
#include "support/TestDatabase.h"
#include "wire/Wire.h"

namespace Qel {

/// A test database on which manager methods are called, as the operator admin. Besides:
///
///   types      of 300002: 400001 医疗机构 (buyer), 400002 经营企业 (seller, deliverer), 400003
///              临时采购单位 (buyer, deleted); of 300004: 400004 医疗机构 (buyer)
///   products   500001 to 500005, of them 500004 disabled and 500005 deleted
///   catalogue  of 300002: 500001; 500002 was moved out when it was disabled there
class ManagerSite : public TestDatabase
{
public:
    ManagerSite();

    Wire::PostAnswer Post(const QString &manager, const QString &method,
                          const QList<Wire::NamedValues> &rows);
    /// The first result's code, over a connection of its own: for threads that post at once.
    QString PostBeside(const Wire::PostRequest &request);
    /// The codes of the results, parted by blanks.
    QString Codes(const QString &manager, const QString &method,
                  const QList<Wire::NamedValues> &rows);
    /// The code of the error that the post is refused with as a whole; "none" without.
    QByteArray Refusal(const QString &manager, const QString &method,
                       const QList<Wire::NamedValues> &rows);

    int Logged() { return Number("SELECT count(*) FROM SYS_UPDATE_LOG"); }
    /// The change log, oldest first: "TABLE/KEY_ID1/KEY_ID2/USER_ID/USER_NAME/OPTION_TYPE", with
    /// "-" for NULL.
    QStringList Log();
    /// The first row's columns, parted by "/"; numbers as clients get them.
    QString Row(const QByteArray &sql);
    /// The first column of every row.
    QStringList Texts(const QByteArray &sql);
    /// Has the database refuse each row for which the condition holds, where it says: as a
    /// constraint does, or for a reason of its own.
    enum class Trouble { Constraint, Failure };
    void Trap(Trouble trouble, const QByteArray &where, const QByteArray &condition);
    /// What a client reads, through the front end.
    RowSet Query(const QString &sql);

private:
    void AddMemberTypes();
    void AddProducts();
};

/// The row, followed by the operator as most screens post it.
Wire::NamedValues ByAdmin(Wire::NamedValues row);

} // namespace Qel
