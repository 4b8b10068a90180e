#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"
#include "frame/LatestCall.h"

#include <memory>

namespace Qel {

namespace Ui {
class TFrmUniUser;
}

/// The users who may act for a group; the id is quoted here. The groups: screens/Unions.h.
QString UnionUsersSql(const QString &unionId);

/// Group users: the tree of groups, the users assigned to the focused group beside it, and the
/// ways to move users in (through the user picker) and out.
class TFrmUniUser : public TFrmBaseForm
{
    Q_OBJECT

public:
    explicit TFrmUniUser(QWidget *owner = nullptr);
    ~TFrmUniUser() override;

protected:
    void FormShow() override;

private:
    void ActionQueryExecute();
    void ActionNewExecute();
    void ActionDeleteExecute();
    void TreeGridFocusedNodeChanged();
    void TreeGridSearch();

    void LoadUsers(const QString &unionId);
    void UpdateActionNew();
    void UpdateActionDelete();
    QString FocusedUnion(QStringView field) const;

    std::unique_ptr<Ui::TFrmUniUser> ui_;
    ClientDataSet cdsUnion;
    ClientDataSet cdsUser;
    LatestCall focusChange_;
};

} // namespace Qel
