#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"
#include "screens/TraRollBackSql.h"

#include <array>
#include <functional>
#include <memory>

class QAction;

namespace Qel {

class DataGrid;
class TPageGuide;

namespace Ui {
class TFrmTraRollBack;
}

/// Undoing what buyers did: an order or one line of it, a return, a receipt; one tab each, with
/// filters, list, paging bar and actions of its own. Whether a record may be undone and what that
/// changes is the server's business; the screen finds it, asks, and tells the answer.
class TFrmTraRollBack : public TFrmBaseForm
{
    Q_OBJECT

public:
    explicit TFrmTraRollBack(QWidget *owner = nullptr);
    ~TFrmTraRollBack() override;

protected:
    void FormShow() override;

private:
    /// What the tabs have in common.
    struct Tab
    {
        QAction *query;
        QWidgetList filters;
        std::function<QString()> statement; ///< of what the filters hold
        ClientDataSet *rows;
        DataGrid *grid;
        TPageGuide *pages;
        QWidget *focusWhenEmpty; ///< after a query without rows
    };

    std::array<Tab, 3> MakeTabs();
    void BindTab(const Tab &tab);
    void LoadPage(const Tab &tab);
    void DropRow(const Tab &tab);
    void CustomKeyPress();

    void ActionBuyerOrderRollBackExecute();
    void ActionBuyerOrderRollBackItemExecute();
    void ActionBuyerReturnExecute();
    void ActionBuyerReceiveRollBarkExecute();
    void UpdateActions();

    void RollBackOrder(QAction *action, const QString &allFlag, const QString &question,
                       const QString &failure);
    bool CanRollBackReturn() const;

    std::unique_ptr<Ui::TFrmTraRollBack> ui_;
    ClientDataSet cdsBuyerOrder;
    ClientDataSet cdsReturn;
    ClientDataSet cdsReceive;
    std::array<Tab, 3> tabs_; ///< in the order of the page control
};

} // namespace Qel
