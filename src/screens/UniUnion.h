#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"
#include "frame/LatestCall.h"

#include <memory>

namespace Qel {

namespace Ui {
class TFrmUniUnion;
}

/// The statement of the member list; the id is quoted here. The groups: screens/Unions.h.
namespace UniUnionSql {
QString Members(const QString &unionId);
} // namespace UniUnionSql

/// Group management: the tree of purchasing groups, the members of the focused group beside it,
/// and the way to every group dialog.
class TFrmUniUnion : public TFrmBaseForm
{
    Q_OBJECT

public:
    explicit TFrmUniUnion(QWidget *owner = nullptr);
    ~TFrmUniUnion() override;

protected:
    void FormShow() override;

private:
    void ActionQueryExecute();
    void UniNewExecute();
    void UniChildNewExecute();
    void UniModifyExecute();
    void UniDeleteExecute();
    void OrgNewExecute();
    void OrgModifyExecute();
    void OrgDeleteExecute();
    void ActMemberTypeExecute();
    void ActRuleConfigureExecute();
    void ActUniProductExecute();
    void TreeGridFocusedNodeChanged();
    void TreeGridSearch();

    void LoadMembers(const QString &unionId);
    void UpdateUnionActions();
    void UpdateOrgActions();
    QString FocusedUnionId() const;

    std::unique_ptr<Ui::TFrmUniUnion> ui_;
    ClientDataSet cdsUnion;
    ClientDataSet cdsOrg;
    LatestCall focusChange_;
};

} // namespace Qel
