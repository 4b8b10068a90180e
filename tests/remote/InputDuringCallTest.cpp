#include "remote/SoapCtrl.h"

#include "dataset/ClientDataSet.h"
#include "support/Raised.h"
#include "support/ScreenDriver.h"
#include "support/ScriptedServer.h"
#include "support/Service.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QPaintEvent>
#include <QPushButton>
#include <QShortcut>
#include <QTest>
#include <QVBoxLayout>
#include <QWindow>

using namespace Qel;
using namespace Qel::Test;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Kind = ERemoteError::Kind;

namespace {

class PaintCounter : public QWidget
{
public:
    int paints = 0;

protected:
    void paintEvent(QPaintEvent *) override { ++paints; }
};

/// Notes presses and releases that reach it.
class PressTarget : public QWidget
{
public:
    std::function<void()> onPress;
    int releases = 0;

protected:
    void mousePressEvent(QMouseEvent *) override { onPress(); }
    void mouseReleaseEvent(QMouseEvent *) override { ++releases; }
};

QWidget *BusyBoxShown()
{
    QWidget *box = QApplication::activeModalWidget();
    return box && box->objectName() == "BusyBox"_L1 ? box : nullptr;
}

} // namespace

class InputDuringCallTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        server_ = std::make_unique<ScriptedServer>();
        soap_ = std::make_unique<TSoapCtrl>();
        UseServer(*soap_, server_->Url());
        window_ = std::make_unique<QWidget>();
        edit_ = new QLineEdit;
        save_ = new QPushButton(u"保存"_s);
        painted_ = new PaintCounter;
        auto *layout = new QVBoxLayout(window_.get());
        for (QWidget *widget : {static_cast<QWidget *>(edit_), static_cast<QWidget *>(save_),
                                static_cast<QWidget *>(painted_)})
            layout->addWidget(widget);
        window_->resize(300, 200);
        window_->show();
        QVERIFY(QTest::qWaitForWindowActive(window_.get()));
        connect(save_, &QPushButton::clicked, this, &InputDuringCallTest::Save);
    }
    void cleanup()
    {
        window_.reset();
        soap_.reset();
        server_.reset();
    }

    // --- Thrown away ---------------------------------------------------------------------------

    void DoubleClickOnSaveStoresOnceWhileTheServerIsSlow()
    {
        server_->OnPost(u"m"_s).Code(u"1"_s).HoldUntilReleased();
        WhileRunning([this] {
            ClickInWindow(save_);
            server_->Release();
        });
        ClickInWindow(save_);
        QCoreApplication::processEvents();
        QCOMPARE(server_->Posts().size(), 1);
    }

    void DoubleClickOnSaveStoresOnceHoweverFastTheServerIs()
    {
        server_->OnPost(u"m"_s).Code(u"1"_s);
        // The first click is answered before the second comes.
        QTest::mouseDClick(window_->windowHandle(), Qt::LeftButton, {}, InWindow(save_));
        QCoreApplication::processEvents();
        QCOMPARE(server_->Posts().size(), 1);
    }

    void NextClickAfterTheDoubleClickTimeStoresAgain()
    {
        server_->OnPost(u"m"_s).Code(u"1"_s);
        ClickInWindow(save_);
        QTest::mouseClick(save_, Qt::LeftButton, {}, {}, QApplication::doubleClickInterval() + 100);
        QCOMPARE(server_->Posts().size(), 2);
    }

    void DoubleClickAfterAQueryStillArrives()
    {
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {}));
        QVERIFY(!RaisedByQuery());
        DoubleClick(edit_->window());
        edit_->setText(u"word"_s);
        QTest::mouseDClick(edit_, Qt::LeftButton);
        QCOMPARE(edit_->selectedText(), u"word"_s);
    }

    void KeysAreThrownAwayNotDeferred()
    {
        edit_->setFocus();
        WhileRunning([this] {
            for (const char key : {'t', 'y', 'p', 'e', 'd'})
                QTest::keyClick(window_->windowHandle(), key);
            server_->Release();
        });
        RunHeldQuery();
        QCoreApplication::processEvents();
        QCOMPARE(edit_->text(), QString());
        QTest::keyClicks(edit_, u"after"_s);
        QCOMPARE(edit_->text(), u"after"_s);
    }

    void ShortcutsAreThrownAway()
    {
        int pressed = 0;
        QShortcut shortcut(Qt::Key_F5, window_.get());
        connect(&shortcut, &QShortcut::activated, this, [&] { ++pressed; });
        WhileRunning([this] {
            QTest::keyClick(window_->windowHandle(), Qt::Key_F5);
            server_->Release();
        });
        RunHeldQuery();
        QCOMPARE(pressed, 0);
        QTest::keyClick(window_->windowHandle(), Qt::Key_F5);
        QCOMPARE(pressed, 1);
    }

    void ClosingIsRefusedWhileACallRuns()
    {
        bool closed = true;
        WhileRunning([&] {
            closed = window_->close();
            server_->Release();
        });
        RunHeldQuery();
        QVERIFY(!closed);
        QVERIFY(window_->isVisible());
        QVERIFY(window_->close());
    }

    void ReleaseOfAButtonPressedBeforeArrivesAfterwards()
    {
        auto *target = new PressTarget;
        window_->layout()->addWidget(target);
        target->setMinimumSize(50, 50);
        QCoreApplication::processEvents();
        const QPoint at = InWindow(target);
        int releasesInside = -1;
        target->onPress = [&] { RunHeldQuery(); };
        WhileRunning([&] {
            QTest::mouseRelease(window_->windowHandle(), Qt::LeftButton, {}, at);
            releasesInside = target->releases;
            server_->Release();
        });
        QTest::mousePress(window_->windowHandle(), Qt::LeftButton, {}, at);
        QCoreApplication::processEvents();
        QCOMPARE(releasesInside, 0);
        QCOMPARE(target->releases, 1);
    }

    void WindowRepaintsWhileACallRuns()
    {
        const int before = painted_->paints;
        WhileRunning([&] {
            painted_->repaint();
            painted_->update();
            QVERIFY(QTest::qWaitFor([&] { return painted_->paints > before + 1; }));
            server_->Release();
        });
        RunHeldQuery();
        QVERIFY(painted_->paints > before + 1);
    }

    // --- The busy box --------------------------------------------------------------------------

    void BusyBoxAppearsAfter300Milliseconds()
    {
        QElapsedTimer elapsed;
        qint64 appeared = 0;
        WhileRunning([&] {
            QVERIFY(!BusyBoxShown());
            QVERIFY(QTest::qWaitFor(BusyBoxShown));
            appeared = elapsed.elapsed();
            server_->Release();
        });
        elapsed.start();
        RunHeldQuery();
        QVERIFY2(appeared >= 300, qPrintable(QString::number(appeared)));
        QVERIFY(!BusyBoxShown());
    }

    void FastCallShowsNoBox()
    {
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {}));
        ModalWatch watch;
        QVERIFY(!RaisedByQuery());
        QCOMPARE(watch.shown, 0);
    }

    void QueryBoxSaysWhatRunsAndTheSeconds()
    {
        soap_->SetBusyDelay(0ms);
        QString text;
        QString seconds;
        bool counted = false;
        WhileRunning([&] {
            QVERIFY(QTest::qWaitFor(BusyBoxShown));
            text = Child<QLabel>(BusyBoxShown(), u"LabelBusy"_s)->text();
            auto *label = Child<QLabel>(BusyBoxShown(), u"LabelSeconds"_s);
            seconds = label->text();
            counted = QTest::qWaitFor([&] { return label->text() == u"已用 1 秒"_s; });
            server_->Release();
        });
        RunHeldQuery();
        QCOMPARE(text, u"正在查询…"_s);
        QCOMPARE(seconds, u"已用 0 秒"_s);
        QVERIFY(counted);
    }

    void CancelEndsTheQuery()
    {
        CancelledBy([](QWidget *box) { Click(box, u"BtnCancel"_s); });
    }

    void EscEndsTheQuery()
    {
        CancelledBy([](QWidget *box) { Press(box, Qt::Key_Escape); });
    }

    void NextCallWorksAfterACancelledOne()
    {
        CancelledBy([](QWidget *box) { Click(box, u"BtnCancel"_s); });
        server_->ClearScripts();
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {{u"x"_s}}));
        QVERIFY(!RaisedByQuery());
        QCOMPARE(table_.FieldText(u"A"), u"x"_s);
    }

    void PostCannotBeCancelled()
    {
        soap_->SetBusyDelay(0ms);
        server_->OnPost(u"m"_s).Code(u"1"_s).HoldUntilReleased();
        QString text;
        bool hasButton = true;
        bool stillThere = false;
        WhileRunning([&] {
            QVERIFY(QTest::qWaitFor(BusyBoxShown));
            QWidget *box = BusyBoxShown();
            text = Child<QLabel>(box, u"LabelBusy"_s)->text();
            hasButton = box->findChild<QPushButton *>();
            Press(box, Qt::Key_Escape);
            box->close();
            stillThere = BusyBoxShown() == box && soap_->IsRunning();
            server_->Release();
        });
        Save();
        QCOMPARE(text, u"正在保存…"_s);
        QVERIFY(!hasButton);
        QVERIFY(stillThere);
        QCOMPARE(soap_->ResultParams.GetResultCode(0), u"1"_s);
    }

    void QuittingTheProgramEndsACall()
    {
        server_->OnAnyQuery().HoldUntilReleased();
        WhileRunning([] { QCoreApplication::exit(); });
        const auto error = RaisedByQuery();
        QVERIFY(error);
        QCOMPARE(error->ErrorKind(), Kind::Cancelled);
    }

private:
    /// Counts modal windows that are shown while it lives.
    struct ModalWatch : QObject
    {
        ModalWatch() { qApp->installEventFilter(this); }
        bool eventFilter(QObject *watched, QEvent *event) override
        {
            if (event->type() == QEvent::Show && watched->isWidgetType() &&
                static_cast<QWidget *>(watched)->isModal())
                ++shown;
            return false;
        }
        int shown = 0;
    };

    /// Runs `action` inside the loop of the next call, once its request is with the server.
    void WhileRunning(std::function<void()> action)
    {
        connect(server_.get(), &ScriptedServer::RequestArrived, this, std::move(action),
                Qt::ConnectionType(Qt::QueuedConnection | Qt::SingleShotConnection));
    }
    QPoint InWindow(const QWidget *widget) const
    {
        return widget->mapTo(window_.get(), widget->rect().center());
    }
    /// Clicks through the window system, so that the window's own handling takes part.
    void ClickInWindow(const QWidget *widget)
    {
        QTest::mouseClick(window_->windowHandle(), Qt::LeftButton, {}, InWindow(widget));
    }
    void Save()
    {
        soap_->RequestParams.Clear();
        soap_->RequestParams.NewParams();
        soap_->RequestParams.AddParam(u"NAME"_s, u"a"_s);
        soap_->RequestParams.PostParams();
        soap_->PostDataList(u"M"_s, u"m"_s, soap_->RequestParams, soap_->ResultParams);
    }
    std::optional<ERemoteError> RaisedByQuery()
    {
        return Raised<ERemoteError>(
            [&] { soap_->SQLQuery(u"select A from T"_s, 0, 0, table_, TQueryType::List); });
    }
    void RunHeldQuery()
    {
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {})).HoldUntilReleased();
        const auto error = RaisedByQuery();
        QVERIFY2(!error, error ? error->what() : "");
    }
    void CancelledBy(const std::function<void(QWidget *box)> &cancel)
    {
        soap_->SetBusyDelay(0ms);
        table_.Open(Rows({u"OLD"_s}, {{u"before"_s}}));
        server_->OnAnyQuery().Answer(Rows({u"A"_s}, {})).HoldUntilReleased();
        WhileRunning([&] {
            QVERIFY(QTest::qWaitFor(BusyBoxShown));
            cancel(BusyBoxShown());
        });
        const auto error = RaisedByQuery();
        QVERIFY(error);
        QCOMPARE(error->ErrorKind(), Kind::Cancelled);
        QVERIFY(!BusyBoxShown());
        QCOMPARE(table_.FieldText(u"OLD"), u"before"_s);
    }

    std::unique_ptr<ScriptedServer> server_;
    std::unique_ptr<TSoapCtrl> soap_;
    ClientDataSet table_;
    std::unique_ptr<QWidget> window_;
    QLineEdit *edit_ = nullptr;
    QPushButton *save_ = nullptr;
    PaintCounter *painted_ = nullptr;
};

QTEST_MAIN(InputDuringCallTest)
#include "InputDuringCallTest.moc"
