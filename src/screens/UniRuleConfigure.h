#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"
#include "wire/Wire.h"

#include <memory>

namespace Qel {

namespace Ui {
class TFrmUniRuleConfigure;
}

/// The statements of the group rules; values are quoted here.
namespace UniRuleSql {
QString Rules(const QString &unionId);
QString OrgName(const QString &orgId);
QString Members(const QString &unionId); ///< the organisations that may audit: any member
} // namespace UniRuleSql

/// Edits the rules of one group: whether purchase orders are audited within the group, and by
/// which member organisation. Set up with the group, show modally. 确认 closes with Ok whatever
/// became of the save.
class TFrmUniRuleConfigure : public TFrmBaseForm
{
    Q_OBJECT

public:
    TFrmUniRuleConfigure(QWidget *owner, const QString &unionId);
    ~TFrmUniRuleConfigure() override;

protected:
    void FormShow() override;

private:
    void JTCGDSH_FLAGClick();
    void UNI_JTCGDSH_OrgButtonClick();
    void btnSaveClick();
    void BtnOkClick();

    void Save();
    QList<Wire::NamedValues> ChangedRules() const;
    void StoreInTable(const QList<Wire::NamedValues> &posted);

    std::unique_ptr<Ui::TFrmUniRuleConfigure> ui_;
    ClientDataSet cdsUniRule;
    QString unionId_;
};

} // namespace Qel
