#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"

#include <memory>

namespace Qel {

namespace Ui {
class TFrmStockOrgSet;
}

/// The live permissions to see stock; `text` finds code, name and initials of either organisation.
QString StockPermissionsSql(const QString &text);

/// Who may see whose stock: a paged list of permissions, each from an owner to a viewer, with how
/// the quantity is shown. They are added by the dialog TFrmStockOrgSetAdd and deleted here; a
/// permission is not changed. Nothing is queried before the operator asks.
class TFrmStockOrgSet : public TFrmBaseForm
{
    Q_OBJECT

public:
    explicit TFrmStockOrgSet(QWidget *owner = nullptr);
    ~TFrmStockOrgSet() override;

protected:
    void FormShow() override;

private:
    void PageGuide1ChangePage();
    void ActAddExecute();
    void ActDelExecute();
    void UpdateActions();

    std::unique_ptr<Ui::TFrmStockOrgSet> ui_;
    ClientDataSet cdsStkOrgSet;
};

} // namespace Qel
