#include "e2e/Site.h"
#include "support/ScreenDriver.h"

#include <QAction>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QTreeView>

using namespace Qel::Test;
using namespace Qt::StringLiterals;

namespace {

constexpr int MidRequest = 200; ///< ms after which a frozen server is killed

/// What this test had logged; the sample data's own history ends long ago.
const QString Logged = u"SELECT OPTION_TYPE FROM SYS_UPDATE_LOG WHERE TABLE_NAME='UNI_UNION' AND "
                       "OPTION_DATE > "_s +
                       BeforeTheStory();

int GroupsShown(QWidget *screen)
{
    return Child<QTreeView>(screen, u"TreeGrid"_s)->model()->rowCount();
}

/// Closes the host's error dialog when it comes.
class ErrorCloser : public ModalVisitor
{
public:
    ErrorCloser()
        : ModalVisitor([](QWidget *dialog) { dialog->close(); })
    {
    }
};

} // namespace

/// The server is killed in the middle of a request: the host says so, the screen is usable, and
/// what is stored is stored once.
class OutageTest : public QObject
{
    Q_OBJECT

private slots:
    void ServerKilledInTheMiddleOfAQuery()
    {
        Site site;
        QWidget *screen = site.OpenScreen(u"ADMIN01"_s);
        Trigger(screen, u"ActionQuery"_s);
        QVERIFY(GroupsShown(screen) > 0);

        QSignalSpy told(&site.Window(), &Qel::Host::MainWindow::ErrorTold);
        site.FreezeServer();
        QTimer::singleShot(MidRequest, &site.Window(), [&] { site.KillServer(); });
        ErrorCloser closer;
        Trigger(screen, u"ActionQuery"_s);
        QVERIFY(closer.Visited());
        QCOMPARE(told.size(), 1);
        QVERIFY(!told.value(0).value(0).toString().contains(u"0123456789abcdef"_s));

        site.StartServer();
        Trigger(screen, u"ActionQuery"_s);
        QVERIFY(GroupsShown(screen) > 0);
        QCOMPARE(told.size(), 1);
    }

    void ServerKilledInTheMiddleOfAPost()
    {
        Site site;
        QWidget *screen = site.OpenScreen(u"ADMIN01"_s);
        Trigger(screen, u"ActionQuery"_s);
        ModalVisitor editor([&](QWidget *dialog) {
            Type(dialog, u"edUnion_NAME"_s, u"浙江省药品采购联合体"_s);
            site.FreezeServer();
            QTimer::singleShot(MidRequest, &site.Window(), [&] { site.KillServer(); });
            {
                ErrorCloser closer;
                Click(dialog, u"BtnSave"_s);
            }
            QVERIFY(dialog->isVisible());
            QCOMPARE(Child<QLineEdit>(dialog, u"edUnion_NAME"_s)->text(),
                     u"浙江省药品采购联合体"_s);
            site.StartServer();
            Click(dialog, u"BtnSave"_s);
        });
        Trigger(screen, u"UniModify"_s);
        QCOMPARE(site.Select(u"SELECT UNION_NAME FROM UNI_UNION WHERE UNION_CODE='0001'"_s),
                 QStringList{u"浙江省药品采购联合体"_s});
        QCOMPARE(site.Select(Logged), QStringList{u"2"_s});
    }
};

QTEST_MAIN(OutageTest)
#include "OutageTest.moc"
