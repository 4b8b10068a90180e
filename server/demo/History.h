#pragma once

#include "demo/Groups.h"
#include "demo/Random.h"
#include "demo/Users.h"

#include <QHash>
#include <QList>

namespace Qel::Demo {

/// Values of OPTION_TYPE.
enum class Change {
    Insert = 1,
    Modify = 2,
    Approve = 3,
    Disable = 4,
    LogicalDelete = 5,
    PhysicalDelete = 6,
};

/// How a record came to be as it is: entered, and deleted again if it is.
QList<Change> LifeOf(State state);

/// The work on a group, in this order. Each phase goes from group to group.
enum class Phase { Founding, MemberTypes, Users, Members, Rules, Catalogue, Prices, Stock };

/// A record as the change log names it: its table and its key, in the order of the primary key.
struct Record
{
    QString table;
    QString key1;
    QString key2; ///< empty where the key is one column
};

/// What operators did to the groups' data. Every record's entries end in the state in which the
/// record is stored, and the row is stamped with the last of them.
class History
{
public:
    History(const std::vector<Group> &groups, const std::vector<User> &users);

    /// When this phase begins for this group.
    OfficeTime Begin(Phase phase, const QString &groupId) const;

    /// Notes the record's changes: the first at `time`, each other one some days or weeks later.
    /// Gives the stamp of the last. `changes` must hold something.
    Stamp Note(const Record &record, const QString &groupId, OfficeTime time,
               const QList<Change> &changes);

    /// Notes one change at a moment of its own and gives its stamp.
    Stamp Enter(const Record &record, const QString &groupId, OfficeTime time, Change change);

    /// SYS_UPDATE_LOG, in the order of time.
    TableRows Rows() const;

private:
    struct Entry
    {
        Record record;
        Change change = Change::Insert;
        Stamp stamp;
    };

    struct Office
    {
        OfficeTime number = 0;        ///< of the group, from 0
        std::vector<Stamp> operators; ///< who work for the group; without a time
    };

    QHash<QString, Office> offices_; ///< by group
    std::vector<Entry> entries_;
    Random random_{u"SYS_UPDATE_LOG"};
};

} // namespace Qel::Demo
