#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"

#include <memory>

namespace Qel {

namespace Ui {
class TFrmTraBuyCatalog;
}

/// The three statements behind the grid. Ids are quoted here.
namespace BuyCatalogSql {
/// Hospitals and pharmacies that `text` fits; blanks alone fit all. Without an order.
QString Organisations(const QString &text);
QString Catalogs(const QStringList &orgIds);  ///< the drug stores of these organisations
QString Users(const QStringList &catalogIds); ///< who may operate these drug stores
} // namespace BuyCatalogSql

/// Buying organisations with their drug stores and the users of these, on three levels. Drug
/// stores are created, renamed and deleted here, users assigned in a dialog; the list is kept in
/// step without a new query.
class TFrmTraBuyCatalog : public TFrmBaseForm
{
    Q_OBJECT

public:
    explicit TFrmTraBuyCatalog(QWidget *owner = nullptr);
    ~TFrmTraBuyCatalog() override;

protected:
    void FormShow() override;

private:
    void PageGuide1ChangePage();
    void ActionNewCatalogExecute();
    void ActionEditCatalogExecute();
    void ActionDelCatalogExecute();
    void ActionCatalogUserExecute();
    void GridOrgViewRowFocused();
    void GridCatalogViewRowFocused();
    void GridCatalogViewRowDoubleClicked();

    void LoadPage();
    void ShowFirstRow();
    void RefreshActionStates();
    void EnableCatalogActions(bool enabled);
    bool IsCatalogOfCurrentOrg() const;

    std::unique_ptr<Ui::TFrmTraBuyCatalog> ui_;
    ClientDataSet cdsOrg;
    ClientDataSet cdsCatalog;
    ClientDataSet cdsUser;
};

} // namespace Qel
