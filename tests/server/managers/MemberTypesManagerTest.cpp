#include "ManagerSite.h"

#include <QTest>

using namespace Qel;
using namespace Qt::StringLiterals;

namespace {

/// What the member type screen posts for one type of the group 300002.
struct Type
{
    QString id;
    QString name;
    QString flags; ///< buyer, seller, deliverer, administrator
    QString lastOperate = {};
    QString unionId = u"300002"_s;
    QString remark = {};

    Wire::NamedValues Row() const
    {
        return ByAdmin({{u"ORG_TYPE_ID"_s, id},
                        {u"ORG_TYPE_NAME"_s, name},
                        {u"UNION_ID"_s, unionId},
                        {u"BUYER_FLAG"_s, flags.mid(0, 1)},
                        {u"SALER_FLAG"_s, flags.mid(1, 1)},
                        {u"SENDER_FLAG"_s, flags.mid(2, 1)},
                        {u"ADMIN_FLAG"_s, flags.mid(3, 1)},
                        {u"REMARK"_s, remark},
                        {u"LAST_OPERATE"_s, lastOperate}});
    }
};

const Type Hospitals{u"400001"_s, u"医疗机构"_s, u"1000"_s};
const Type Dealers{u"400002"_s, u"经营企业"_s, u"0110"_s};

class Site : public ManagerSite
{
public:
    QString Save(const QList<Type> &types) { return Codes(Manager, Method, Rows(types)); }
    Wire::PostAnswer Results(const QList<Type> &types)
    {
        return Post(Manager, Method, Rows(types));
    }
    QByteArray Refused(const QList<Type> &types) { return Refusal(Manager, Method, Rows(types)); }

    /// As the screens ask for a group's types.
    QStringList LiveTypes(const QByteArray &unionId = "300002")
    {
        return Texts("SELECT ORG_TYPE_NAME FROM UNI_ORG_TYPE WHERE LAST_OPERATE <> 'D'"
                     " AND UNION_ID = '" +
                     unionId + "' ORDER BY ORG_TYPE_ID");
    }

private:
    static QList<Wire::NamedValues> Rows(const QList<Type> &types)
    {
        QList<Wire::NamedValues> rows;
        for (const Type &type : types)
            rows += type.Row();
        return rows;
    }

    const QString Manager = u"com.business.admin.UniUnion"_s;
    const QString Method = u"insert_update_UniOrgType"_s;
};

} // namespace

/// insert_update_UniOrgType: a group's member types, posted as a whole list.
class MemberTypesManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void EmptyKeyIsAnInsertionAndAnswersTheNewKey()
    {
        Site site;
        const Wire::PostAnswer answer =
            site.Results({Hospitals, {{}, u"物流企业"_s, u"0010"_s, {}, u"300002"_s, u"仅配送"_s}});
        QCOMPARE(answer.rows.size(), 2);
        QCOMPARE(answer.rows[0].code, u"1"_s);
        QCOMPARE(answer.rows[0].values, (Wire::NamedValues{{u"ORG_TYPE_ID"_s, u"400001"_s}}));
        QCOMPARE(answer.rows[1].code, u"1"_s);
        QCOMPARE(answer.rows[1].values, (Wire::NamedValues{{u"ORG_TYPE_ID"_s, u"400005"_s}}));
        QCOMPARE(site.Text("SELECT UNION_ID||'/'||ORG_TYPE_NAME||'/'||BUYER_FLAG||SALER_FLAG||"
                           "SENDER_FLAG||ADMIN_FLAG||'/'||REMARK||'/'||LAST_OPERATE||'/'||LAST_USER"
                           "||'/'||LAST_USER_ID FROM UNI_ORG_TYPE WHERE ORG_TYPE_ID = '400005'"),
                 u"300002/物流企业/0010/仅配送/1/系统管理员/600001"_s);
        QCOMPARE(site.Log(), QStringList{u"UNI_ORG_TYPE/400005/-/600001/系统管理员/1"_s});
        QVERIFY(!site.Text("SELECT OPTION_DATE FROM SYS_UPDATE_LOG").isEmpty());
    }

    void EmptyLastOperateIsStoredAsLiveAndSavingTwiceKeepsTheTypes()
    {
        Site site;
        const Type changed{u"400002"_s, u"配送企业"_s, u"0110"_s};
        QCOMPARE(site.Save({Hospitals, changed, {{}, u"药房"_s, u"1000"_s}}), u"1 1 1"_s);
        const QStringList live{u"医疗机构"_s, u"配送企业"_s, u"药房"_s};
        QCOMPARE(site.LiveTypes(), live);
        QCOMPARE(site.Save({Hospitals, changed, {u"400005"_s, u"药房"_s, u"1000"_s}}), u"1 1 1"_s);
        QCOMPARE(site.LiveTypes(), live);
        QCOMPARE(site.Number("SELECT count(*) FROM UNI_ORG_TYPE WHERE LAST_OPERATE IS NULL"), 0);
    }

    void RowPostedUnchangedIsNeitherWrittenNorLogged()
    {
        Site site;
        const QByteArray stamps = "SELECT coalesce(LAST_USER,'-')||coalesce(LAST_UPDATE,'-')"
                                  " FROM UNI_ORG_TYPE WHERE ORG_TYPE_ID = '400001'";
        QCOMPARE(site.Text(stamps), u"--"_s);
        QCOMPARE(site.Save({Hospitals, Dealers}), u"1 1"_s);
        QCOMPARE(site.Text(stamps), u"--"_s);
        QCOMPARE(site.Logged(), 0);
        Type asRead = Hospitals;
        asRead.lastOperate = u"1"_s;
        QCOMPARE(site.Save({asRead}), u"1"_s);
        QCOMPARE(site.Logged(), 0);
    }

    void ChangeIsStampedAndLoggedAsAModification_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("flags");
        QTest::addColumn<QString>("remark");
        QTest::newRow("name") << u"医院"_s << u"1000"_s << QString();
        QTest::newRow("a flag") << u"医疗机构"_s << u"1001"_s << QString();
        QTest::newRow("remark") << u"医疗机构"_s << u"1000"_s << u"按目录采购"_s;
    }
    void ChangeIsStampedAndLoggedAsAModification()
    {
        QFETCH(QString, name);
        QFETCH(QString, flags);
        QFETCH(QString, remark);
        Site site;
        QCOMPARE(site.Save({{u"400001"_s, name, flags, {}, u"300002"_s, remark}, Dealers}),
                 u"1 1"_s);
        QCOMPARE(site.Text("SELECT ORG_TYPE_NAME||'/'||BUYER_FLAG||SALER_FLAG||SENDER_FLAG||"
                           "ADMIN_FLAG||'/'||coalesce(REMARK,'')||'/'||LAST_USER||'/'||LAST_USER_ID"
                           " FROM UNI_ORG_TYPE WHERE ORG_TYPE_ID = '400001'"),
                 u"%1/%2/%3/系统管理员/600001"_s.arg(name, flags, remark));
        QVERIFY(!site.Text("SELECT LAST_UPDATE FROM UNI_ORG_TYPE WHERE ORG_TYPE_ID = '400001'")
                     .isEmpty());
        QCOMPARE(site.Log(), QStringList{u"UNI_ORG_TYPE/400001/-/600001/系统管理员/2"_s});
    }

    void DeletionIsLogical()
    {
        Site site;
        QCOMPARE(site.Save({Hospitals, {u"400002"_s, u"经营企业"_s, u"0110"_s, u"D"_s}}), u"1 1"_s);
        QCOMPARE(site.LiveTypes(), QStringList{u"医疗机构"_s});
        QCOMPARE(site.Number("SELECT count(*) FROM UNI_ORG_TYPE WHERE ORG_TYPE_ID = '400002'"), 1);
        QCOMPARE(site.Log(), QStringList{u"UNI_ORG_TYPE/400002/-/600001/系统管理员/5"_s});
    }

    void TypeOfALiveMemberIsNotDeletedAndTheWholeListIsRefused()
    {
        Site site;
        const Type gone{u"400001"_s, u"医疗机构"_s, u"1000"_s, u"D"_s};
        QCOMPARE(site.Save({{{}, u"药房"_s, u"1000"_s}, gone, Dealers}), u"-1 -1 -1"_s);
        QCOMPARE(site.LiveTypes(), QStringList({u"医疗机构"_s, u"经营企业"_s}));
        QCOMPARE(site.Logged(), 0);
        // The member has left: nobody has the type any more.
        site.Connection().Run("UPDATE UNI_ORG SET LAST_OPERATE = 'D'");
        QCOMPARE(site.Save({gone, Dealers}), u"1 1"_s);
        QCOMPARE(site.LiveTypes(), QStringList{u"经营企业"_s});
    }

    void TypeThatAnotherOperatorDeletedStaysDeletedWhenPostedUnchanged()
    {
        Site site;
        const Type temporary{u"400003"_s, u"临时采购单位"_s, u"1000"_s};
        QCOMPARE(site.Save({temporary, {{}, u"药房"_s, u"1000"_s}}), u"1 1"_s);
        QCOMPARE(site.LiveTypes(), QStringList({u"医疗机构"_s, u"经营企业"_s, u"药房"_s}));
        QCOMPARE(site.Logged(), 1);
        QCOMPARE(site.Save({{u"400003"_s, u"临时采购单位"_s, u"1000"_s, u"D"_s}}), u"1"_s);
        QCOMPARE(site.Logged(), 1);
        // A change to it would be lost.
        QCOMPARE(site.Save({{u"400003"_s, u"临时单位"_s, u"1000"_s}}), u"0"_s);
        QCOMPARE(site.Logged(), 1);
    }

    void EmptyListIsStoredAndAnsweredWithOneResult()
    {
        Site site;
        const Wire::PostAnswer answer = site.Results({});
        QCOMPARE(answer.rows.size(), 1);
        QCOMPARE(answer.rows[0].code, u"1"_s);
        QVERIFY(answer.rows[0].values.isEmpty());
        QCOMPARE(site.Logged(), 0);
    }

    void RowsThatMakeNoSenseAreNotStored_data()
    {
        QTest::addColumn<Type>("type");
        QTest::newRow("no name") << Type{{}, {}, u"1000"_s};
        QTest::newRow("blank name") << Type{u"400001"_s, u"  "_s, u"1000"_s};
        QTest::newRow("flag that is none") << Type{{}, u"药房"_s, u"1x00"_s};
        QTest::newRow("flag left out") << Type{{}, u"药房"_s, u"100"_s};
        QTest::newRow("unknown type") << Type{u"499999"_s, u"药房"_s, u"1000"_s};
        QTest::newRow("type of another group") << Type{u"400004"_s, u"药房"_s, u"1000"_s};
        QTest::newRow("deletion of another group's type")
            << Type{u"400004"_s, u"医疗机构"_s, u"1000"_s, u"D"_s};
        QTest::newRow("deletion of a type that was never stored")
            << Type{{}, u"药房"_s, u"1000"_s, u"D"_s};
        QTest::newRow("unknown group") << Type{{}, u"药房"_s, u"1000"_s, {}, u"399999"_s};
        QTest::newRow("deleted group") << Type{{}, u"药房"_s, u"1000"_s, {}, u"300005"_s};
    }
    void RowsThatMakeNoSenseAreNotStored()
    {
        QFETCH(Type, type);
        Site site;
        QCOMPARE(site.Save({{{}, u"物流企业"_s, u"0010"_s}, type}), u"0 0"_s);
        QCOMPARE(site.LiveTypes(), QStringList({u"医疗机构"_s, u"经营企业"_s}));
        QCOMPARE(site.LiveTypes("300004"), QStringList{u"医疗机构"_s});
        QCOMPARE(site.Logged(), 0);
    }

    void TextLongerThanItsColumnIsRefused()
    {
        Site site;
        QCOMPARE(site.Refused({{{}, QString(41, u'药'), u"1000"_s}}), "post.bad_row");
        QCOMPARE(site.Refused({{{}, u"药房"_s, u"1000"_s, {}, u"300002"_s, QString(201, u'备')}}),
                 "post.bad_row");
        QCOMPARE(
            site.Save({{{}, QString(40, u'药'), u"1000"_s, {}, u"300002"_s, QString(200, u'备')}}),
            u"1"_s);
    }

    void TypeNamedTwiceInOneListIsRefused()
    {
        Site site;
        QCOMPARE(site.Refused({Hospitals, {u"400001"_s, u"医院"_s, u"1000"_s}}), "post.bad_row");
        QCOMPARE(site.Save({{{}, u"药房"_s, u"1000"_s}, {{}, u"药店"_s, u"1000"_s}}), u"1 1"_s);
    }

    void FailureInTheMiddleLeavesNothing()
    {
        Site site;
        site.Connection().Execute("ALTER TABLE SYS_UPDATE_LOG RENAME TO LOG_ASIDE");
        QVERIFY_THROWS_EXCEPTION(Store::EStoreError, site.Save({{{}, u"药房"_s, u"1000"_s}}));
        QCOMPARE(site.LiveTypes(), QStringList({u"医疗机构"_s, u"经营企业"_s}));
    }
};

QTEST_GUILESS_MAIN(MemberTypesManagerTest)
#include "MemberTypesManagerTest.moc"
