#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"
#include "wire/Wire.h"

#include <memory>

class QModelIndex;

namespace Qel {

namespace Ui {
class TFrmOrgRuleSet;
}

/// The statements of the organisation rules; values are quoted here.
namespace OrgRuleSql {
QString Organisations(const QString &text); ///< `text` in code, names or initials
QString Rules(const QString &orgId);
QString Superior(const QString &orgId); ///< as the affiliation has it: PARENT_ORGID, ORG_NAME
QString OrgName(const QString &orgId);
} // namespace OrgRuleSql

/// The trading rules of an organisation: a paged list of organisations, and beside it the rules of
/// the one that was loaded last. Moving in the list alone does not load; a click, Enter or 修改
/// does. The superior organisation is proposed from the affiliation, not typed.
class TFrmOrgRuleSet : public TFrmBaseForm
{
    Q_OBJECT

public:
    explicit TFrmOrgRuleSet(QWidget *owner = nullptr);
    ~TFrmOrgRuleSet() override;

protected:
    void FormShow() override;

private:
    void PageGuide1ChangePage();
    void ActModifyExecute();
    void ActGetOrgExecute();
    void ActSaveExecute();
    void ORG_SJJGSHClick();
    void ORG_DDYXQClick();
    void UpdateActions();

    void ShowRules(const ClientDataSet &rules, const QString &superiorName);
    bool CanSave();
    QList<Wire::NamedValues> PostedRules() const;

    std::unique_ptr<Ui::TFrmOrgRuleSet> ui_;
    ClientDataSet cdsOrg;
    QString currentOrgId_; ///< whose rules are shown; empty: nobody's yet
};

} // namespace Qel
