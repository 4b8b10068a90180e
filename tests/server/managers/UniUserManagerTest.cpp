#include "ManagerSite.h"

#include <QTest>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

const QString Manager = u"com.business.admin.UniUser"_s;
const QString Insert = u"insertUniUser"_s;
const QString Delete = u"deleteUniUser"_s;

/// Besides the site: 600002 is assigned to 300002 and 300004, 600001 was to 300002; 600004 is
/// deleted, the organisation of 600005 disabled and that of 600006 deleted.
class Site : public ManagerSite
{
public:
    Site()
    {
        Connection().Run("INSERT INTO USR_USER (USER_ID, USER_CODE, ORG_ID, LAST_OPERATE)"
                         " VALUES ('600004', 'u4', '200002', 'D'), ('600005', 'u5', '200005', '1'),"
                         " ('600006', 'u6', '200006', '1')");
        Connection().Run("UPDATE BAS_ORG SET ENABLE_FLAG = '0' WHERE ORG_ID = '200005'");
        Connection().Run("UPDATE BAS_ORG SET LAST_OPERATE = 'D' WHERE ORG_ID = '200006'");
        Connection().Run("INSERT INTO UNI_USER_UNION (USER_ID, UNION_ID, LAST_OPERATE) VALUES"
                         " ('600002', '300002', '1'), ('600002', '300004', '1'),"
                         " ('600001', '300002', 'D')");
    }

    /// "CODE:USER_ID" of each result.
    QStringList Run(const QString &method, const QStringList &users,
                    const QString &unionId = u"300002"_s)
    {
        QList<Wire::NamedValues> rows;
        for (const QString &user : users)
            rows += {{u"USER_ID"_s, user},
                     {u"UNION_ID"_s, unionId},
                     {u"LAST_USER"_s, Admin().userName},
                     {u"LAST_USER_ID"_s, Admin().userId}};
        QStringList results;
        for (const Wire::ResultRow &result : Post(Manager, method, rows).rows)
            for (const auto &[name, value] : result.values)
                results += result.code + (name == u"USER_ID"_s ? u':' + value : u'!' + name);
        return results;
    }

    QStringList Assigned()
    {
        return Texts("SELECT USER_ID||'/'||UNION_ID FROM UNI_USER_UNION WHERE LAST_OPERATE <> 'D'"
                     " ORDER BY UNION_ID, USER_ID");
    }
};

const QString Zhang = u"600002/300002"_s;
const QString ZhangElsewhere = u"600002/300004"_s;

} // namespace

/// The assignment of users to groups, which answers row by row.
class UniUserManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void UserMovedInIsStampedAndLogged()
    {
        Site site;
        QCOMPARE(site.Run(Insert, {u"600001"_s}, u"300001"_s), QStringList{u"1:600001"_s});
        QCOMPARE(site.Assigned(), QStringList({u"600001/300001"_s, Zhang, ZhangElsewhere}));
        QCOMPARE(site.Text("SELECT LAST_OPERATE||'/'||LAST_USER||'/'||LAST_USER_ID"
                           " FROM UNI_USER_UNION WHERE UNION_ID = '300001'"),
                 u"1/系统管理员/600001"_s);
        QCOMPARE(site.Log(), QStringList{u"UNI_USER_UNION/600001/300001/600001/系统管理员/1"_s});
    }

    void UserMovedInAgainTakesOverItsOldRow()
    {
        Site site;
        QCOMPARE(site.Run(Insert, {u"600001"_s}), QStringList{u"1:600001"_s});
        QCOMPARE(site.Assigned(), QStringList({u"600001/300002"_s, Zhang, ZhangElsewhere}));
        QCOMPARE(site.Number("SELECT count(*) FROM UNI_USER_UNION"), 3);
        QCOMPARE(site.Log(), QStringList{u"UNI_USER_UNION/600001/300002/600001/系统管理员/1"_s});
    }

    void UserThatAnotherOperatorAssignedIsAssigned()
    {
        Site site;
        QCOMPARE(site.Run(Insert, {u"600002"_s, u"600001"_s}),
                 QStringList({u"1:600002"_s, u"1:600001"_s}));
        QCOMPARE(site.Log(), QStringList{u"UNI_USER_UNION/600001/300002/600001/系统管理员/1"_s});
    }

    void RefusedUserDoesNotUndoTheOthers()
    {
        Site site;
        QCOMPARE(site.Run(Insert, {u"600001"_s, u"600003"_s, u"600002"_s}, u"300003"_s),
                 QStringList({u"1:600001"_s, u"0:600003"_s, u"1:600002"_s}));
        QCOMPARE(site.Assigned(),
                 QStringList({Zhang, u"600001/300003"_s, u"600002/300003"_s, ZhangElsewhere}));
    }

    void WhoIsNotOfferedIsNotAssigned_data()
    {
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("unionId");
        QTest::newRow("disabled user") << u"600003"_s << u"300001"_s;
        QTest::newRow("deleted user") << u"600004"_s << u"300001"_s;
        QTest::newRow("disabled organisation") << u"600005"_s << u"300001"_s;
        QTest::newRow("deleted organisation") << u"600006"_s << u"300001"_s;
        QTest::newRow("unknown user") << u"699999"_s << u"300001"_s;
        QTest::newRow("no user") << QString() << u"300001"_s;
        QTest::newRow("deleted group") << u"600001"_s << u"300005"_s;
        QTest::newRow("unknown group") << u"600001"_s << u"399999"_s;
        QTest::newRow("no group") << u"600001"_s << QString();
    }
    void WhoIsNotOfferedIsNotAssigned()
    {
        QFETCH(QString, user);
        QFETCH(QString, unionId);
        Site site;
        QCOMPARE(site.Run(Insert, {user}, unionId), QStringList{u"0:"_s + user});
        QCOMPARE(site.Assigned(), QStringList({Zhang, ZhangElsewhere}));
        QCOMPARE(site.Logged(), 0);
    }

    void MovingOutRemovesOnlyTheAssignment()
    {
        Site site;
        QCOMPARE(site.Run(Delete, {u"600002"_s}), QStringList{u"1:600002"_s});
        QCOMPARE(site.Assigned(), QStringList{ZhangElsewhere});
        QCOMPARE(site.Text("SELECT ENABLE_FLAG||LAST_OPERATE FROM USR_USER"
                           " WHERE USER_ID = '600002'"),
                 u"11"_s);
        QCOMPARE(site.Number("SELECT count(*) FROM UNI_USER_UNION"), 3);
        QCOMPARE(site.Log(), QStringList{u"UNI_USER_UNION/600002/300002/600001/系统管理员/5"_s});
    }

    void UserThatAnotherOperatorMovedOutIsOut()
    {
        Site site;
        QCOMPARE(site.Run(Delete, {u"600001"_s}), QStringList{u"1:600001"_s});
        QCOMPARE(site.Logged(), 0);
    }

    void UserWhoNeverWasInTheGroupIsNotMovedOut()
    {
        Site site;
        QCOMPARE(site.Run(Delete, {u"600003"_s, u"600002"_s}),
                 QStringList({u"0:600003"_s, u"1:600002"_s}));
        QCOMPARE(site.Assigned(), QStringList{ZhangElsewhere});
    }
};

QTEST_GUILESS_MAIN(UniUserManagerTest)
#include "UniUserManagerTest.moc"
