#include "screens/RollBackScreen.h"

#include <QTabWidget>

namespace Qel::Test {

using namespace Qt::StringLiterals;

RowSet Orders(int count)
{
    QList<QStringList> rows;
    for (int row = 1; row <= count; ++row) {
        const QString number = QString::number(row).rightJustified(3, u'0');
        rows << QStringList{u"8"_s + number, u"DD-"_s + number, u"市第一医院"_s, u"10"_s};
    }
    return Rows({u"ORD_ITEM_ID"_s, u"ORD_CODE"_s, u"BUY_NAME"_s, u"ORD_QTY"_s}, rows);
}

RowSet Returns(const QStringList &states)
{
    QList<QStringList> rows;
    for (const QString &state : states)
        rows << QStringList{QString::number(6001 + rows.size()), state, u"阿莫西林胶囊"_s};
    return Rows({u"RETURN_ID"_s, u"CONFIRM_FLAG"_s, u"PRODUCT_NAME"_s}, rows);
}

RowSet Receipts(int count)
{
    QList<QStringList> rows;
    for (int row = 0; row < count; ++row)
        rows << QStringList{QString::number(5001 + row), u"头孢呋辛酯片"_s};
    return Rows({u"SEND_ID"_s, u"PRODUCT_NAME"_s}, rows);
}

const QList<TabNames> &RollBackTabs()
{
    static const QList<TabNames> tabs{
        {u"ActionBuyerOrderQuery"_s, u"GridBuyerOrder"_s, u"PageGuide1"_s, u"edBuyerOrderStart"_s,
         u"edBuyerOrderEnd"_s},
        {u"ActionBuyerReturnQuery"_s, u"GridReturn"_s, u"PageGuide2"_s, u"dtReceiveDateFrom1"_s,
         u"dtReceiveDateTo1"_s},
        {u"ActionBuyerReceiveQuery"_s, u"GridReceive"_s, u"PageGuide3"_s, u"dtReceiveDateFrom"_s,
         u"dtReceiveDateTo"_s},
    };
    return tabs;
}

const QStringList &RollBackActions()
{
    static const QStringList actions{u"ActionBuyerOrderRollBack"_s,
                                     u"ActionBuyerOrderRollBackItem"_s, u"ActionBuyerReturn"_s,
                                     u"ActionBuyerReceiveRollBark"_s};
    return actions;
}

RollBackScreen::RollBackScreen()
    : form(new TFrmTraRollBack)
{
    AnswerQueries(Orders(), Returns(), Receipts());
    ShowScreen(*form);
}

RollBackScreen::~RollBackScreen()
{
    delete form;
}

void RollBackScreen::AnswerQueries(const RowSet &orders, const RowSet &returns,
                                   const RowSet &receipts, qint64 total)
{
    server.OnQuery(u"FROM TRA_ORDER A"_s).Answer(orders, total);
    server.OnQuery(u"TRA_RETURN A"_s).Answer(returns, total);
    server.OnQuery(u"FROM TRA_SEND A"_s).Answer(receipts, total);
}

void RollBackScreen::AnswerPost(const QString &method, const QString &code)
{
    server.OnPost(u"com.business.rollback.BusDataRollBack"_s, method).Code(code);
}

void RollBackScreen::SayNo()
{
    hook.SetAnswer([](const TMessageBox &) { return TBoxButton::No; });
}

void RollBackScreen::ShowTab(int tab)
{
    Child<QTabWidget>(form, u"cxPageControl1"_s)->setCurrentIndex(tab);
}

void RollBackScreen::Query(int tab)
{
    ShowTab(tab);
    Trigger(form, RollBackTabs().at(tab).query);
}

void RollBackScreen::SetDates(int tab, const QDateTime &from, const QDateTime &to)
{
    Child<DateEdit>(form, RollBackTabs().at(tab).from)->SetValue(from);
    Child<DateEdit>(form, RollBackTabs().at(tab).to)->SetValue(to);
}

void RollBackScreen::Force(const QString &action)
{
    auto *forced = Child<QAction>(form, action);
    forced->setEnabled(true);
    forced->trigger();
}

DataGrid &RollBackScreen::Grid(int tab) const
{
    return *Child<DataGrid>(form, RollBackTabs().at(tab).grid);
}

ClientDataSet &RollBackScreen::RowsOf(int tab) const
{
    return *Grid(tab).DataSet();
}

TPageGuide &RollBackScreen::Pages(int tab) const
{
    return *Child<TPageGuide>(form, RollBackTabs().at(tab).pages);
}

QStringList RollBackScreen::Enabled() const
{
    QStringList enabled;
    for (const QString &action : RollBackActions()) {
        if (ActionEnabled(form, action))
            enabled << action;
    }
    return enabled;
}

QString RollBackScreen::Focused() const
{
    return form->focusWidget()->objectName();
}

} // namespace Qel::Test
