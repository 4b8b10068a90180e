#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"
#include "wire/Wire.h"

#include <memory>

namespace Qel {

namespace Ui {
class TfrmUniMemberType;
}

/// The statement that loads a group's member types.
QString UniMemberTypeSql(const QString &unionId);

/// What saving posts: one row a visible row of `types`, changed or not, without those that were
/// added and deleted again.
QList<Wire::NamedValues> UniMemberTypeRows(const ClientDataSet &types, const QString &unionId);

/// Edits the member types of one group in the grid itself; nothing is stored before 保存, which
/// posts the whole list. Set up with the group, show modally: on Ok the list is stored.
class TfrmUniMemberType : public TFrmBaseForm
{
    Q_OBJECT

public:
    TfrmUniMemberType(QWidget *owner, const QString &unionId);
    ~TfrmUniMemberType() override;

protected:
    void FormShow() override;

private:
    void btnAddClick();
    void btnModifyClick();
    void btnDeleteClick();
    void BtnOkClick();

    void UpdateButtons();

    std::unique_ptr<Ui::TfrmUniMemberType> ui_;
    ClientDataSet cdsQuery;
    QString unionId_;
};

} // namespace Qel
