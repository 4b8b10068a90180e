#pragma once

#include "controls/DataGrid.h"
#include "controls/DateEdit.h"
#include "remote/PageGuide.h"
#include "screens/ScreenFixture.h"
#include "screens/TraRollBack.h"

#include <QPointer>

namespace Qel::Test {

/// Lines 8001 .. of the orders DD-001 ..; the statement selects no STATE.
RowSet Orders(int count = 3);
/// Returns 6001 .., by their states.
RowSet Returns(const QStringList &states = {QStringLiteral("0"), QStringLiteral("1"),
                                            QStringLiteral("2"), QStringLiteral("7")});
/// Deliveries 5001 ..
RowSet Receipts(int count = 3);

/// What a tab of the rollback screen consists of, by name.
struct TabNames
{
    QString query;
    QString grid;
    QString pages;
    QString from;
    QString to;
};

const QList<TabNames> &RollBackTabs(); ///< orders, returns, receipts
const QStringList &RollBackActions();  ///< order, line, return, receipt

/// The rollback screen, shown, and a server that knows some rows for each tab, 120 in all.
/// Questions are answered with their default button.
class RollBackScreen : public ScreenFixture
{
public:
    RollBackScreen();
    ~RollBackScreen();

    void AnswerQueries(const RowSet &orders, const RowSet &returns, const RowSet &receipts,
                       qint64 total = 120);
    void AnswerPost(const QString &method, const QString &code);
    void SayNo();

    void ShowTab(int tab);
    void Query(int tab); ///< and shows the tab
    void SetDates(int tab, const QDateTime &from, const QDateTime &to);
    void Force(const QString &action); ///< as code could, whatever the screen's rule says

    DataGrid &Grid(int tab) const;
    ClientDataSet &RowsOf(int tab) const;
    TPageGuide &Pages(int tab) const;
    QStringList Enabled() const; ///< of RollBackActions
    QString Focused() const;

    QPointer<TFrmTraRollBack> form; ///< null once it has freed itself
};

} // namespace Qel::Test
