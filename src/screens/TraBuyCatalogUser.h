#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"

#include <memory>

namespace Qel {

namespace Ui {
class TFrmTraBuyCatalogUser;
}

/// The drug store whose users are chosen.
struct TBuyCatalog
{
    QString catalogId;
    QString catalogName;
    QString buyOrgId;
};

/// The statements of the two tabs; the ids are quoted here.
namespace BuyCatalogUserSql {
/// Who is assigned, with the product link: "1" if it is on, "0" where nothing is stored, and
/// NULL, which reads as off, for a stored "0".
QString Assigned(const TBuyCatalog &catalog);
QString Unassigned(const TBuyCatalog &catalog); ///< the organisation's other enabled users
} // namespace BuyCatalogUserSql

/// Which users of the organisation may work with a drug store, and for whom its product link is
/// on. Users are moved between the two tabs; nothing reaches the server before they are submitted,
/// all together. What was submitted is carried over into the opener's table of users.
class TFrmTraBuyCatalogUser : public TFrmBaseForm
{
    Q_OBJECT

public:
    /// `listedUsers` is the opener's; not owned.
    TFrmTraBuyCatalogUser(QWidget *owner, ClientDataSet &listedUsers, const TBuyCatalog &catalog);
    ~TFrmTraBuyCatalogUser() override;

protected:
    void FormShow() override;

private:
    void ActionMoveExecute();
    void ActionDeleteExecute();
    void ActionUpdateExecute();

    QString PostAssigned();
    QString PostNone();
    void CarryOver();

    std::unique_ptr<Ui::TFrmTraBuyCatalogUser> ui_;
    ClientDataSet &listedUsers_;
    TBuyCatalog catalog_;
    ClientDataSet cdsMaster;
    ClientDataSet cdsSlave;
};

} // namespace Qel
