#include "frame/QueryPage.h"

#include "controls/DataTree.h"
#include "dataset/ClientDataSet.h"
#include "frame/DataModule.h"
#include "remote/PageGuide.h"

#include <QWidget>

namespace Qel {

void QueryAll(const QString &sql, ClientDataSet &target, TQueryType type)
{
    const ControlsSuspender suspend(target);
    target.Close();
    DataModule().SoapCtrl().SQLQuery(sql, 0, 0, target, type);
}

void QueryPage(const QString &sql, ClientDataSet &target, TPageGuide &pages)
{
    const ControlsSuspender suspend(target);
    target.Close();
    pages.SetRecordCount(DataModule().SoapCtrl().SQLQuery(sql, pages.PageNumber(), pages.PageSize(),
                                                          target, TQueryType::List));
}

void DeleteFromPage(ClientDataSet &target, TPageGuide &pages)
{
    target.Delete();
    pages.SetRecordCount(pages.RecordCount() - 1);
}

void FocusIfPossible(QWidget *widget)
{
    if (widget->isVisible() && widget->isEnabled())
        widget->setFocus();
}

void FocusAfterQuery(bool found, QWidget *list, QWidget *filter)
{
    FocusIfPossible(found ? list : filter);
}

void FocusTreeAfterQuery(DataTree &tree, QWidget *filter)
{
    const bool found = tree.TopLevelCount() > 0;
    if (found) {
        tree.ExpandFocused();
        tree.FocusFirstNode();
    }
    FocusAfterQuery(found, &tree, filter);
}

} // namespace Qel
