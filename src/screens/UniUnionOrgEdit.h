#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"

#include <QStringList>

#include <memory>

namespace Qel {

namespace Ui {
class TFrmUniUnionOrgEdit;
}

/// What the member editor is opened with: a group and the member as its row shows it.
struct TMemberHandOver
{
    QString unionId;
    QString orgId;
    QString orgCode;
    QString orgName;
    QString orgTypeId;
    QString orgTypeName;
    QStringList roles; ///< "1" or "0", in the order of RoleFlags
    QString remark;    ///< of the member type
};

/// The hand-over for the member in the table's current row.
TMemberHandOver MemberOfCurrentRow(const QString &unionId, const ClientDataSet &members);

/// Changes the member type of one organisation in a group; the type decides the roles, which are
/// only shown. Set up with the hand-over, show modally: on Ok the new type is stored on the
/// server. The opener's table is left as it is.
class TFrmUniUnionOrgEdit : public TFrmBaseForm
{
    Q_OBJECT

public:
    TFrmUniUnionOrgEdit(QWidget *owner, const TMemberHandOver &handOver);
    ~TFrmUniUnionOrgEdit() override;

protected:
    void FormShow() override;

private:
    void ed_orgtypeCloseUp();
    void BtnSaveClick();

    void ShowRoles(const QStringList &roles, const QString &remark);

    std::unique_ptr<Ui::TFrmUniUnionOrgEdit> ui_;
    TMemberHandOver handOver_;
    ClientDataSet cdsOrgType;
};

} // namespace Qel
