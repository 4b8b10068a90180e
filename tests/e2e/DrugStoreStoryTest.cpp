#include "e2e/Hands.h"
#include "e2e/Site.h"

#include <QLineEdit>
#include <QTabWidget>
#include <QTest>
#include <QTreeView>

#include <memory>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

const QString Manager = u"com.business.admin.TraBuyCatalog"_s;

/// The drug stores' screen, over the first hospital that has some.
class Story
{
public:
    Story()
        : screen(site.OpenScreen(u"ADMIN08"_s))
        , orgId(site.Select(u"SELECT MIN(ORG_ID) FROM BAS_ORG O WHERE ORG_TYPE='4' AND EXISTS"
                            " (SELECT 1 FROM TRA_BUY_CATALOG C WHERE C.BUY_ORGID=O.ORG_ID AND"
                            " C.LAST_OPERATE<>'D')"_s)
                    .value(0))
        , orgName(site.Select(u"SELECT ORG_NAME FROM BAS_ORG WHERE ORG_ID='"_s + orgId + u'\'')
                      .value(0))
    {
    }

    /// Finds the hospital by its code, which is no column of the answer.
    void FindHospital()
    {
        Type(
            screen, u"edOrg"_s,
            site.Select(u"SELECT ORG_CODE FROM BAS_ORG WHERE ORG_ID='"_s + orgId + u'\'').value(0));
        Press(screen, u"edOrg"_s, Qt::Key_Return);
        QCOMPARE(Tree().model()->rowCount(), 1);
        Trigger(screen, u"ActionFullExpand"_s);
    }

    QTreeView &Tree() { return *Child<QTreeView>(screen, u"Grid"_s); }
    QModelIndex Hospital() { return Tree().model()->index(0, 0); }
    /// The details' rows, without the row of captions above them.
    static QList<QModelIndex> Details(const QModelIndex &master)
    {
        QList<QModelIndex> rows;
        for (int row = 1; row < master.model()->rowCount(master); ++row)
            rows << master.model()->index(row, 0, master);
        return rows;
    }
    static QStringList Texts(const QList<QModelIndex> &rows)
    {
        QStringList texts;
        for (const QModelIndex &row : rows)
            texts << row.data().toString();
        texts.sort();
        return texts;
    }
    QModelIndex Store(const QString &name)
    {
        for (const QModelIndex &row : Details(Hospital())) {
            if (row.data().toString() == name)
                return row;
        }
        return {};
    }
    void Focus(const QModelIndex &row) { Tree().setCurrentIndex(row); }

    QString IdOf(const QString &store)
    {
        return site
            .Select(u"SELECT CATALOG_ID FROM TRA_BUY_CATALOG WHERE LAST_OPERATE<>'D' AND"
                    " BUY_ORGID='%1' AND CATALOG_NAME='%2'"_s.arg(orgId, store))
            .value(0);
    }
    QStringList StoredStores()
    {
        QStringList names =
            site.Select(u"SELECT CATALOG_NAME FROM TRA_BUY_CATALOG WHERE LAST_OPERATE<>'D' AND"
                        " BUY_ORGID='%1'"_s.arg(orgId));
        names.sort();
        return names;
    }
    /// "USER_CODE/link" of who is stored to work with the drug store.
    QStringList StoredUsers(const QString &id)
    {
        return site.Select(u"SELECT U.USER_CODE||'/'||A.RELATION_FLAG FROM TRA_USER_BUY_CATALOG A,"
                           " USR_USER U WHERE U.USER_ID=A.USER_ID AND A.LAST_OPERATE<>'D' AND"
                           " A.CATALOG_ID='%1' ORDER BY U.USER_CODE"_s.arg(id));
    }
    /// "table/kind" of what was logged of the drug store today, by the operator.
    QStringList Log(const QString &id)
    {
        return site.Select(u"SELECT TABLE_NAME||'/'||USER_NAME||'/'||OPTION_TYPE FROM"
                           " SYS_UPDATE_LOG WHERE KEY_ID1='%1' AND TABLE_NAME LIKE 'TRA_%CATALOG'"
                           " ORDER BY CAST(LOG_ID AS INTEGER)"_s.arg(id));
    }
    QString Colleague(const QString &method, const QString &id)
    {
        return site.PostAsColleague(Manager, method,
                                    {{u"CATALOG_ID"_s, id}, {u"BUY_ORGID"_s, orgId}});
    }
    void NewStores(const QStringList &names)
    {
        InDialog(screen, u"ActionNewCatalog"_s, [&](QWidget *editor) {
            for (const QString &name : names) {
                Type(editor, u"edName"_s, name);
                Click(editor, u"btnSave"_s);
                QCOMPARE(Child<QLineEdit>(editor, u"edName"_s)->text(), QString());
            }
            Click(editor, u"btnCancel"_s);
        });
    }

    Site site;
    QWidget *screen;
    QString orgId;
    QString orgName;
};

} // namespace

/// The drug stores of a hospital and who works with them, with another operator and another
/// program at work on the same ones.
class DrugStoreStoryTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { story_ = std::make_unique<Story>(); }
    void cleanupTestCase() { story_.reset(); }

    void APageShowsTheThreeLevelsAsTheyAreStored()
    {
        Trigger(story_->screen, u"ActionQuery"_s);
        const QAbstractItemModel *model = story_->Tree().model();
        QCOMPARE(model->rowCount(), 20);
        int stores = 0;
        int users = 0;
        for (int row = 0; row < 20; ++row) {
            for (const QModelIndex &store : Story::Details(model->index(row, 0))) {
                ++stores;
                users += int(Story::Details(store).size());
            }
        }
        QVERIFY(stores >= 20);
        QCOMPARE(users, 4 * stores);
        story_->FindHospital();
        QCOMPARE(Story::Texts(Story::Details(story_->Hospital())), story_->StoredStores());
    }

    void SeveralDrugStoresAreCreatedInARow()
    {
        story_->FindHospital();
        const QStringList before = story_->StoredStores();
        story_->Focus(story_->Hospital());
        story_->NewStores({u"夜间药库"_s, u"药库之二"_s});
        QStringList wanted = before + QStringList{u"夜间药库"_s, u"药库之二"_s};
        wanted.sort();
        QCOMPARE(story_->StoredStores(), wanted);
        QCOMPARE(Story::Texts(Story::Details(story_->Hospital())), wanted);
        QCOMPARE(story_->Log(story_->IdOf(u"夜间药库"_s)),
                 QStringList{u"TRA_BUY_CATALOG/系统管理员/1"_s});
    }

    void ANameThatTheHospitalHasIsRefused()
    {
        story_->FindHospital();
        const QStringList before = story_->StoredStores();
        story_->Focus(story_->Hospital());
        InDialog(story_->screen, u"ActionNewCatalog"_s, [&](QWidget *editor) {
            Type(editor, u"edName"_s, u"夜间药库"_s);
            QCOMPARE(Answer(u"Ok"_s, [&] { Click(editor, u"btnSave"_s); }),
                     u"名称重复，保存失败！"_s);
            QCOMPARE(Child<QLineEdit>(editor, u"edName"_s)->text(), u"夜间药库"_s);
            Type(editor, u"edName"_s, u"   "_s);
            QCOMPARE(Answer(u"Ok"_s, [&] { Click(editor, u"btnSave"_s); }),
                     u"药库名称不能为空！"_s);
            Type(editor, u"edName"_s, {});
            QTest::keyClicks(Child<QLineEdit>(editor, u"edName"_s), u"12345678901"_s);
            QCOMPARE(Child<QLineEdit>(editor, u"edName"_s)->text(), u"1234567890"_s);
            Click(editor, u"btnCancel"_s);
        });
        QCOMPARE(story_->StoredStores(), before);
    }

    void ADrugStoreIsRenamed()
    {
        story_->FindHospital();
        const QString id = story_->IdOf(u"药库之二"_s);
        story_->Focus(story_->Store(u"药库之二"_s));
        InDialog(story_->screen, u"ActionEditCatalog"_s, [&](QWidget *editor) {
            QCOMPARE(Child<QLineEdit>(editor, u"edName"_s)->text(), u"药库之二"_s);
            Type(editor, u"edName"_s, u"周末药库"_s);
            Click(editor, u"btnSave"_s);
        });
        QCOMPARE(story_->IdOf(u"周末药库"_s), id);
        QVERIFY(story_->Store(u"周末药库"_s).isValid());
        QCOMPARE(story_->Log(id), QStringList({u"TRA_BUY_CATALOG/系统管理员/1"_s,
                                               u"TRA_BUY_CATALOG/系统管理员/2"_s}));
    }

    void UsersAreAssignedAllAtOnceOrNotAtAll()
    {
        story_->FindHospital();
        const QString id = story_->IdOf(u"夜间药库"_s);
        story_->Focus(story_->Store(u"夜间药库"_s));
        QStringList chosen;
        InDialog(story_->screen, u"ActionCatalogUser"_s, [&](QWidget *dialog) {
            auto *tabs = Child<QTabWidget>(dialog, u"cxPageControl1"_s);
            tabs->setCurrentIndex(1);
            chosen = Texts(Grid(dialog, u"GridSlaveView"_s), u"用户编码"_s).mid(0, 2);
            QCOMPARE(chosen.size(), 2);
            Click(dialog, u"btnAdd"_s);
            Click(dialog, u"btnAdd"_s);
            tabs->setCurrentIndex(0);
            ClickCell(Grid(dialog, u"GridMasterView"_s), 0, u"启用药库品种关联"_s);
            // One of them loses the account before the list is submitted.
            const QString flag = u"UPDATE USR_USER SET ENABLE_FLAG='%1' WHERE USER_CODE='%2'"_s;
            story_->site.Change(flag.arg(u"0"_s, chosen[1]));
            QCOMPARE(Answers({u"Yes"_s, u"Ok"_s}, [&] { Click(dialog, u"btnSave"_s); }),
                     QStringList({u"是否真的要提交该数据？"_s, u"提交数据失败！"_s}));
            QCOMPARE(story_->StoredUsers(id), QStringList());
            story_->site.Change(flag.arg(u"1"_s, chosen[1]));
            QCOMPARE(Answer(u"Yes"_s, [&] { Click(dialog, u"btnSave"_s); }),
                     u"是否真的要提交该数据？"_s);
            Click(dialog, u"btnClose"_s);
        });
        QStringList stored{chosen[0] + u"/1"_s, chosen[1] + u"/0"_s};
        stored.sort();
        QCOMPARE(story_->StoredUsers(id), stored);
        chosen.sort();
        QCOMPARE(Story::Texts(Story::Details(story_->Store(u"夜间药库"_s))), chosen);
    }

    void TheStoredLinksComeBackAndAnEmptyListRemovesAll()
    {
        story_->FindHospital();
        const QString id = story_->IdOf(u"夜间药库"_s);
        story_->Focus(story_->Store(u"夜间药库"_s));
        InDialog(story_->screen, u"ActionCatalogUser"_s, [&](QWidget *dialog) {
            QTableView &assigned = Grid(dialog, u"GridMasterView"_s);
            QStringList ticks;
            for (int row = 0; row < 2; ++row)
                ticks << Cell(assigned, row, u"启用药库品种关联"_s)
                             .data(Qt::CheckStateRole)
                             .toString();
            ticks.sort();
            QCOMPARE(ticks, QStringList({u"0"_s, u"2"_s}));
            for (int count = 0; count < 2; ++count)
                QCOMPARE(Answer(u"Yes"_s, [&] { Click(dialog, u"btnDel"_s); }),
                         u"是否真的要移出该用户？"_s);
            QCOMPARE(Answer(u"Yes"_s, [&] { Click(dialog, u"btnSave"_s); }),
                     u"是否真的要提交该数据？"_s);
            Click(dialog, u"btnClose"_s);
        });
        QCOMPARE(story_->StoredUsers(id), QStringList());
        QVERIFY(Story::Details(story_->Store(u"夜间药库"_s)).isEmpty());
    }

    void ADrugStoreThatAColleagueDeletedIsNotRenamed()
    {
        story_->FindHospital();
        const QString id = story_->IdOf(u"周末药库"_s);
        story_->Focus(story_->Store(u"周末药库"_s));
        InDialog(story_->screen, u"ActionEditCatalog"_s, [&](QWidget *editor) {
            QCOMPARE(story_->Colleague(u"deleteBuyCatalog"_s, id), u"1"_s);
            Type(editor, u"edName"_s, u"节日药库"_s);
            QCOMPARE(Answer(u"Ok"_s, [&] { Click(editor, u"btnSave"_s); }), u"保存数据失败！"_s);
            Click(editor, u"btnCancel"_s);
        });
        QVERIFY(!story_->StoredStores().contains(u"节日药库"_s));
        // Deleting it is what was done already: the row goes, and the log names the colleague.
        QCOMPARE(Answer(u"Yes"_s, [&] { Trigger(story_->screen, u"ActionDelCatalog"_s); }),
                 u"确定删除“%1”的“周末药库”吗？ "_s.arg(story_->orgName));
        QVERIFY(!story_->Store(u"周末药库"_s).isValid());
        QCOMPARE(story_->Log(id).last(),
                 u"TRA_BUY_CATALOG/"_s + story_->site.Colleague() + u"/5"_s);
    }

    void ADeletedDrugStoreTakesItsUsersAlong()
    {
        story_->FindHospital();
        const QModelIndex store = Story::Details(story_->Hospital()).first();
        const QString name = store.data().toString();
        const QString id = story_->IdOf(name);
        QCOMPARE(story_->StoredUsers(id).size(), 4);
        story_->Focus(store);
        QCOMPARE(Answer(u"Yes"_s, [&] { Trigger(story_->screen, u"ActionDelCatalog"_s); }),
                 u"确定删除“%1”的“%2”吗？ "_s.arg(story_->orgName, name));
        QVERIFY(!story_->Store(name).isValid());
        QCOMPARE(story_->StoredUsers(id), QStringList());
        QVERIFY(!story_->StoredStores().contains(name));
        QCOMPARE(story_->Log(id).size(), 5);
        QCOMPARE(Story::Texts(Story::Details(story_->Hospital())), story_->StoredStores());
    }

private:
    std::unique_ptr<Story> story_;
};

QTEST_MAIN(DrugStoreStoryTest)
#include "DrugStoreStoryTest.moc"
