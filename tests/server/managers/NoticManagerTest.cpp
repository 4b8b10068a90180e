#include "ManagerSite.h"

#include "store/Clock.h"

#include <QTest>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

const QString Manager = u"com.notic.NoticManager"_s;
const QString Save = u"insertUpdateNotic"_s;
const QString Delete = u"deleteNotic"_s;
const QString Publish = u"confirmNotic"_s;

using Change = QList<std::pair<QString, QString>>;

/// Besides the site: admin may act for 300001, 300002 and the deleted 300005, and might for 300003
/// before; the announcements 10 to 300001 (published by 张伟), 11 to 300002 (not), 12 to 300004,
/// which is none of admin's, and 13 to 300005.
class Site : public ManagerSite
{
public:
    Site()
    {
        Connection().Run("INSERT INTO UNI_USER_UNION (USER_ID, UNION_ID, LAST_OPERATE) VALUES"
                         " ('600001', '300001', '1'), ('600001', '300002', '1'),"
                         " ('600001', '300005', '1'), ('600001', '300003', 'D'),"
                         " ('600002', '300004', '1')");
        Connection().Run(
            "INSERT INTO SYS_AFFICHE (ID, UNION_ID, AFFICHE_TYPE, AFFICHE_TITLE, AFFICHE_CONTENT,"
            " START_DATE, END_DATE, PUBLIC_FLAG, SALER_FLAG, BUYER_FLAG, ENABLE_FLAG, CREATE_USER,"
            " CREATE_DATE, CHECK_USER, CHECK_DATE, LAST_USER) VALUES"
            " ('10', '300001', '1', '停业通知', '春节停业。', '2024-03-05 00:00:00', NULL, '0', '1',"
            "  '1', '1', '张伟', '2024-03-01 09:00:00', '张伟', '2024-03-02 09:00:00', '张伟'),"
            " ('11', '300002', '1', '停业通知', '春节停业。', '2024-03-05 00:00:00', NULL, '0', '1',"
            "  '1', '0', '张伟', '2024-03-01 09:00:00', NULL, NULL, '张伟'),"
            " ('12', '300004', '1', '停业通知', '春节停业。', '2024-03-05 00:00:00', NULL, '0', '1',"
            "  '1', '0', '张伟', '2024-03-01 09:00:00', NULL, NULL, '张伟'),"
            " ('13', '300005', '1', '停业通知', '春节停业。', '2024-03-05 00:00:00', NULL, '0', '1',"
            "  '1', '0', '张伟', '2024-03-01 09:00:00', NULL, NULL, '张伟')");
    }

    /// What the editor posts for an announcement like the ones above, but for the changes.
    static Wire::NamedValues Row(const QString &id, const QString &unionId,
                                 const Change &changes = {})
    {
        Wire::NamedValues row{{u"ID"_s, id},
                              {u"START_DATE"_s, u"2024-03-05"_s},
                              {u"END_DATE"_s, {}},
                              {u"AFFICHE_TYPE"_s, u"1"_s},
                              {u"AFFICHE_TITLE"_s, u"停业通知"_s},
                              {u"AFFICHE_CONTENT"_s, u"春节停业。"_s},
                              {u"UNION_ID"_s, unionId},
                              {u"PUBLIC_FLAG"_s, u"0"_s},
                              {u"SALER_FLAG"_s, u"1"_s},
                              {u"BUYER_FLAG"_s, u"1"_s},
                              {u"LAST_USER_ID"_s, Admin().userId},
                              {u"LAST_USER"_s, Admin().userName},
                              {u"ENABLE_FLAG"_s, u"0"_s}};
        for (const auto &[name, value] : changes)
            for (auto &[posted, postedValue] : row)
                if (posted == name)
                    postedValue = value;
        return row;
    }
    static Wire::NamedValues PublishRow(const QString &id)
    {
        return {{u"ID"_s, id},
                {u"ENABLE_FLAG"_s, u"1"_s},
                {u"CHECK_USER"_s, Admin().userName},
                {u"LAST_USER"_s, Admin().userName},
                {u"LAST_USER_ID"_s, Admin().userId}};
    }

    QString Saved(const Wire::NamedValues &row) { return Codes(Manager, Save, {row}); }
    QString Deleted(const QString &id) { return Codes(Manager, Delete, {{{u"ID"_s, id}}}); }
    QString PublishedNow(const QString &id) { return Codes(Manager, Publish, {PublishRow(id)}); }

    /// "state/creator/publisher/who stored it last", with "-" for NULL.
    QString State(const QString &id)
    {
        return Text("SELECT ENABLE_FLAG||'/'||CREATE_USER||'/'||COALESCE(CHECK_USER, '-')||'/'||"
                    "LAST_USER FROM SYS_AFFICHE WHERE ID = '" +
                    id.toLatin1() + '\'');
    }
    QStringList Listed()
    {
        const RowSet rows =
            Query(u" SELECT B.*, C.UNION_NAME    FROM UNI_USER_UNION A, SYS_AFFICHE B, UNI_UNION C "
                  "  WHERE A.UNION_ID = B.UNION_ID     AND B.UNION_ID = C.UNION_ID "
                  "    AND A.LAST_OPERATE <> 'D'     AND A.USER_ID = '600001'"
                  " ORDER BY B.CREATE_DATE DESC "_s);
        QStringList ids;
        for (int row = 0; row < rows.RowCount(); ++row)
            ids += rows.Text(row, rows.FieldIndex(u"ID"));
        ids.sort();
        return ids;
    }
};

QString LogEntry(const QString &id, int type)
{
    return u"SYS_AFFICHE/%1/-/600001/系统管理员/%2"_s.arg(id).arg(type);
}

} // namespace

/// Announcements: written, published, deleted.
class NoticManagerTest : public QObject
{
    Q_OBJECT

private slots:
    // --- Writing -------------------------------------------------------------------------------

    void NewAnnouncementIsStoredUnpublishedAndItsIdAnswered()
    {
        Site site;
        const QString before = Store::Now();
        const Wire::ResultRow result =
            site.Post(Manager, Save,
                      {Site::Row({}, u"300002"_s, {{u"END_DATE"_s, u"2024-03-05"_s}})})
                .rows.value(0);
        QCOMPARE(result.code, u"1"_s);
        QCOMPARE(result.values.size(), 1);
        QCOMPARE(result.values.first().first, u"ID"_s);
        const QString id = result.values.first().second;
        QCOMPARE(id, u"14"_s);
        QCOMPARE(site.State(id), u"0/系统管理员/-/系统管理员"_s);
        QCOMPARE(site.Text("SELECT UNION_ID||'/'||AFFICHE_TYPE||'/'||AFFICHE_TITLE||'/'||"
                           "AFFICHE_CONTENT||'/'||START_DATE||'/'||END_DATE||'/'||PUBLIC_FLAG||"
                           "SALER_FLAG||BUYER_FLAG||LAST_OPERATE FROM SYS_AFFICHE WHERE ID = '14'"),
                 u"300002/1/停业通知/春节停业。/2024-03-05 00:00:00/2024-03-05 00:00:00/0111"_s);
        const QString created = site.Text("SELECT CREATE_DATE FROM SYS_AFFICHE WHERE ID = '14'");
        QVERIFY(created >= before && created <= Store::Now());
        QCOMPARE(site.Log(), QStringList{LogEntry(id, 1)});
    }

    void AnnouncementIsOnlyForAGroupThatTheUserIsAssignedTo_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("unionId");
        for (const QString &id : {QString(), u"11"_s}) {
            const auto row = [&id](const QString &name, const QString &unionId) {
                QTest::newRow(qPrintable(name + (id.isEmpty() ? u", new"_s : u", changed"_s)))
                    << id << unionId;
            };
            row(u"another's group"_s, u"300004"_s);
            row(u"group whose assignment was removed meanwhile"_s, u"300003"_s);
            row(u"deleted group"_s, u"300005"_s);
            row(u"unknown group"_s, u"399999"_s);
            row(u"no group"_s, {});
        }
    }
    void AnnouncementIsOnlyForAGroupThatTheUserIsAssignedTo()
    {
        QFETCH(QString, id);
        QFETCH(QString, unionId);
        Site site;
        QCOMPARE(site.Saved(Site::Row(id, unionId)), u"0"_s);
        QCOMPARE(site.Number("SELECT count(*) FROM SYS_AFFICHE"), 4);
        QCOMPARE(site.Text("SELECT UNION_ID FROM SYS_AFFICHE WHERE ID = '11'"), u"300002"_s);
        QCOMPARE(site.Logged(), 0);
    }

    void WhatMakesNoSenseIsRefused_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("value");
        QTest::newRow("no start") << u"START_DATE"_s << u""_s;
        QTest::newRow("no date as start") << u"START_DATE"_s << u"2024-02-30"_s;
        QTest::newRow("no date as end") << u"END_DATE"_s << u"soon"_s;
        QTest::newRow("end before the start") << u"END_DATE"_s << u"2024-03-04"_s;
        QTest::newRow("no title") << u"AFFICHE_TITLE"_s << u""_s;
        QTest::newRow("title of blanks") << u"AFFICHE_TITLE"_s << u" 　 "_s;
        QTest::newRow("content of blanks") << u"AFFICHE_CONTENT"_s << u" \n "_s;
        QTest::newRow("unknown kind") << u"AFFICHE_TYPE"_s << u"2"_s;
        QTest::newRow("no flag") << u"PUBLIC_FLAG"_s << u""_s;
        QTest::newRow("other flag") << u"BUYER_FLAG"_s << u"2"_s;
        QTest::newRow("published") << u"ENABLE_FLAG"_s << u"1"_s;
    }
    void WhatMakesNoSenseIsRefused()
    {
        QFETCH(QString, name);
        QFETCH(QString, value);
        Site site;
        for (const QString &id : {QString(), u"11"_s})
            QCOMPARE(site.Saved(Site::Row(id, u"300002"_s, {{name, value}})), u"0"_s);
        QCOMPARE(site.Number("SELECT count(*) FROM SYS_AFFICHE"), 4);
        QCOMPARE(site.Logged(), 0);
    }

    void TextsBeyondTheirColumnsAreAnError_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("size");
        QTest::newRow("title") << u"AFFICHE_TITLE"_s << 50;
        QTest::newRow("content") << u"AFFICHE_CONTENT"_s << 500;
    }
    void TextsBeyondTheirColumnsAreAnError()
    {
        QFETCH(QString, name);
        QFETCH(int, size);
        Site site;
        const auto row = [&](int length) {
            return Site::Row({}, u"300002"_s, {{name, QString(length, u'药')}});
        };
        QCOMPARE(site.Refusal(Manager, Save, {row(size + 1)}), QByteArray("post.bad_row"));
        QCOMPARE(site.Saved(row(size)), u"1"_s);
    }

    void ModificationKeepsTheOriginAndIsLogged()
    {
        Site site;
        QCOMPARE(site.Saved(Site::Row(
                     u"11"_s, u"300001"_s,
                     {{u"AFFICHE_TITLE"_s, u"开业通知"_s}, {u"END_DATE"_s, u"2024-03-06"_s}})),
                 u"1"_s);
        QCOMPARE(site.State(u"11"_s), u"0/张伟/-/系统管理员"_s);
        QCOMPARE(site.Text("SELECT UNION_ID||'/'||AFFICHE_TITLE||'/'||END_DATE||'/'||CREATE_DATE"
                           " FROM SYS_AFFICHE WHERE ID = '11'"),
                 u"300001/开业通知/2024-03-06 00:00:00/2024-03-01 09:00:00"_s);
        QCOMPARE(site.Log(), QStringList{LogEntry(u"11"_s, 2)});
    }

    void ModifyingAPublishedAnnouncementUnpublishesIt()
    {
        Site site;
        QCOMPARE(site.Saved(Site::Row(u"10"_s, u"300001"_s)), u"1"_s);
        QCOMPARE(site.State(u"10"_s), u"0/张伟/-/系统管理员"_s);
        QCOMPARE(site.Text("SELECT COALESCE(CHECK_DATE, '-') FROM SYS_AFFICHE WHERE ID = '10'"),
                 u"-"_s);
        QCOMPARE(site.Log(), QStringList{LogEntry(u"10"_s, 2)});
    }

    void SavingWhatIsStoredLeavesNoTrace()
    {
        Site site;
        QCOMPARE(site.Saved(Site::Row(u"11"_s, u"300002"_s)), u"1"_s);
        QCOMPARE(site.State(u"11"_s), u"0/张伟/-/张伟"_s);
        QCOMPARE(site.Logged(), 0);
    }

    // --- Publishing ----------------------------------------------------------------------------

    void PublishedAnnouncementNamesItsPublisherAndIsLoggedAsApproved()
    {
        Site site;
        const QString before = Store::Now();
        QCOMPARE(site.PublishedNow(u"11"_s), u"1"_s);
        QCOMPARE(site.State(u"11"_s), u"1/张伟/系统管理员/系统管理员"_s);
        const QString date = site.Text("SELECT CHECK_DATE FROM SYS_AFFICHE WHERE ID = '11'");
        QVERIFY(date >= before && date <= Store::Now());
        QCOMPARE(site.Log(), QStringList{LogEntry(u"11"_s, 3)});
    }

    void PublishedAnnouncementIsNotPublishedTwice()
    {
        Site site;
        QCOMPARE(site.PublishedNow(u"10"_s), u"0"_s);
        QCOMPARE(site.State(u"10"_s), u"1/张伟/张伟/张伟"_s);
        QCOMPARE(site.Text("SELECT CHECK_DATE FROM SYS_AFFICHE WHERE ID = '10'"),
                 u"2024-03-02 09:00:00"_s);
        QCOMPARE(site.Logged(), 0);
    }

    void ModifiedAnnouncementIsPublishedAgain()
    {
        Site site;
        QCOMPARE(site.Saved(Site::Row(u"10"_s, u"300001"_s)), u"1"_s);
        QCOMPARE(site.PublishedNow(u"10"_s), u"1"_s);
        QCOMPARE(site.State(u"10"_s), u"1/张伟/系统管理员/系统管理员"_s);
        QCOMPARE(site.Log(), QStringList({LogEntry(u"10"_s, 2), LogEntry(u"10"_s, 3)}));
    }

    void OnlyTheStatePublishedIsPublished()
    {
        Site site;
        Wire::NamedValues row = Site::PublishRow(u"11"_s);
        row[1].second = u"0"_s;
        QCOMPARE(site.Codes(Manager, Publish, {row}), u"0"_s);
        QCOMPARE(site.State(u"11"_s), u"0/张伟/-/张伟"_s);
    }

    void PublisherIsTheOperator()
    {
        Site site;
        Wire::NamedValues row = Site::PublishRow(u"11"_s);
        row[2].second = u"张伟"_s;
        QCOMPARE(site.Refusal(Manager, Publish, {row}), QByteArray("post.operator"));
        QCOMPARE(site.State(u"11"_s), u"0/张伟/-/张伟"_s);
    }

    // --- Deleting ------------------------------------------------------------------------------

    void DeletedAnnouncementLeavesTheListAndItsHistoryStays()
    {
        Site site;
        QCOMPARE(site.Listed(), QStringList({u"10"_s, u"11"_s, u"13"_s}));
        QCOMPARE(site.PublishedNow(u"11"_s), u"1"_s);
        QCOMPARE(site.Deleted(u"11"_s), u"1"_s);
        QCOMPARE(site.Listed(), QStringList({u"10"_s, u"13"_s}));
        // The row names no operator: the entry's is the credential's.
        QCOMPARE(site.Log(), QStringList({LogEntry(u"11"_s, 3), LogEntry(u"11"_s, 6)}));
    }

    void IdOfADeletedAnnouncementIsNotGivenAgain()
    {
        Site site;
        const auto save = [&] {
            return site.Post(Manager, Save, {Site::Row({}, u"300002"_s)})
                .rows.value(0)
                .values.value(0)
                .second;
        };
        const QString first = save();
        QCOMPARE(site.Deleted(first), u"1"_s);
        QVERIFY(save() != first);
    }

    void AnnouncementToADeletedGroupCanBeDeletedButNotPublished()
    {
        Site site;
        QCOMPARE(site.PublishedNow(u"13"_s), u"0"_s);
        QCOMPARE(site.Deleted(u"13"_s), u"1"_s);
        QCOMPARE(site.Log(), QStringList{LogEntry(u"13"_s, 6)});
    }

    // --- Gone, another's -----------------------------------------------------------------------

    void WhatIsGoneOrAnothersIsRefused_data()
    {
        QTest::addColumn<QString>("id");
        QTest::newRow("deleted by somebody else meanwhile") << u"11"_s;
        QTest::newRow("to a group of others") << u"12"_s;
        QTest::newRow("unknown") << u"999"_s;
    }
    void WhatIsGoneOrAnothersIsRefused()
    {
        QFETCH(QString, id);
        Site site;
        QCOMPARE(site.Deleted(u"11"_s), u"1"_s);
        const int logged = site.Logged();
        QCOMPARE(site.Saved(Site::Row(id, u"300002"_s)), u"0"_s);
        QCOMPARE(site.PublishedNow(id), u"0"_s);
        QCOMPARE(site.Deleted(id), u"0"_s);
        QCOMPARE(site.Number("SELECT count(*) FROM SYS_AFFICHE"), 3);
        QCOMPARE(site.Logged(), logged);
    }

    void AssignmentThatWasRemovedMeanwhileEndsWhatTheOperatorMayDo()
    {
        Site site;
        site.Connection().Run("UPDATE UNI_USER_UNION SET LAST_OPERATE = 'D'"
                              " WHERE USER_ID = '600001' AND UNION_ID = '300002'");
        QCOMPARE(site.Saved(Site::Row(u"11"_s, u"300001"_s)), u"0"_s);
        QCOMPARE(site.PublishedNow(u"11"_s), u"0"_s);
        QCOMPARE(site.Deleted(u"11"_s), u"0"_s);
        QCOMPARE(site.State(u"11"_s), u"0/张伟/-/张伟"_s);
    }

    void EmptyIdIsNeitherDeletedNorPublished()
    {
        Site site;
        QCOMPARE(site.PublishedNow({}), u"0"_s);
        QCOMPARE(site.Deleted({}), u"0"_s);
    }
};

QTEST_GUILESS_MAIN(NoticManagerTest)
#include "NoticManagerTest.moc"
