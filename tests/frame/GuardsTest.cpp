#include "frame/Guards.h"

#include <QAction>
#include <QApplication>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <stdexcept>

using namespace Qel;

class GuardsTest : public QObject
{
    Q_OBJECT

private slots:
    void ActionIsDisabledForTheScope();
    void ActionIsEnabledAgainAfterAnError();
    void ActionThatWasDisabledStaysDisabled();
    void RuleDuringTheHoldTakesEffectAtItsEnd();
    void HoldsMayNest();
    void HeldControlMayGoAway();
    void FocusComesBackToTheButton();
    void FocusThatTheHandlerMovedStaysThere();
    void WaitCursorEndsWithItsScope();
    void AssignWhilePutsTheValueBack();
};

void GuardsTest::ActionIsDisabledForTheScope()
{
    QAction action;
    {
        const DisableWhile hold(&action);
        QVERIFY(!action.isEnabled());
    }
    QVERIFY(action.isEnabled());
}

void GuardsTest::ActionIsEnabledAgainAfterAnError()
{
    QAction action;
    try {
        const DisableWhile hold(&action);
        throw std::runtime_error("broken");
    } catch (const std::runtime_error &) {
    }
    QVERIFY(action.isEnabled());
}

void GuardsTest::ActionThatWasDisabledStaysDisabled()
{
    QAction action;
    action.setEnabled(false);
    {
        const DisableWhile hold(&action);
    }
    QVERIFY(!action.isEnabled());
}

void GuardsTest::RuleDuringTheHoldTakesEffectAtItsEnd()
{
    QAction emptied;
    QAction filled;
    SetEnabledByRule(&filled, false);
    {
        const DisableWhile first(&emptied);
        const DisableWhile second(&filled);
        SetEnabledByRule(&emptied, false);
        SetEnabledByRule(&filled, true);
        QVERIFY(!filled.isEnabled());
    }
    QVERIFY(!emptied.isEnabled());
    QVERIFY(filled.isEnabled());
}

void GuardsTest::HoldsMayNest()
{
    QPushButton button;
    {
        const DisableWhile outer(&button);
        {
            const DisableWhile inner(&button);
        }
        QVERIFY(!button.isEnabled());
    }
    QVERIFY(button.isEnabled());
}

void GuardsTest::HeldControlMayGoAway()
{
    auto action = std::make_unique<QAction>();
    const DisableWhile hold(action.get());
    action.reset();
}

void GuardsTest::FocusComesBackToTheButton()
{
    QWidget window;
    QHBoxLayout layout(&window);
    QPushButton button(&window);
    QLineEdit edit(&window);
    layout.addWidget(&button);
    layout.addWidget(&edit);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    button.setFocus();
    {
        const DisableWhile hold(&button);
        QVERIFY(!button.hasFocus());
        QVERIFY(!edit.hasFocus());
    }
    QVERIFY(button.hasFocus());
}

void GuardsTest::FocusThatTheHandlerMovedStaysThere()
{
    QWidget window;
    QHBoxLayout layout(&window);
    QPushButton button(&window);
    QLineEdit next(&window); // where the toolkit would move the focus
    layout.addWidget(&button);
    layout.addWidget(&next);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    button.setFocus();
    {
        const DisableWhile hold(&button);
        next.setFocus();
    }
    QVERIFY(next.hasFocus());
}

void GuardsTest::WaitCursorEndsWithItsScope()
{
    {
        const WaitCursor wait;
        QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
    }
    QVERIFY(!QApplication::overrideCursor());
}

void GuardsTest::AssignWhilePutsTheValueBack()
{
    bool loading = false;
    try {
        const AssignWhile hold(loading, true);
        QVERIFY(loading);
        throw std::runtime_error("broken");
    } catch (const std::runtime_error &) {
    }
    QVERIFY(!loading);
}

QTEST_MAIN(GuardsTest)
#include "GuardsTest.moc"
