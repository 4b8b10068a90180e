#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"

#include <memory>

namespace Qel {

namespace Ui {
class TFrmMrgOrgAffiliation;
}

struct TAffiliation;

/// The statement of the tree; `filter` is a search text, a blank one asks for everything.
namespace AffiliationSql {
QString Places(const QString &filter);
} // namespace AffiliationSql

/// Organisation affiliation: the tree of organisations below their superiors.
class TFrmMrgOrgAffiliation : public TFrmBaseForm
{
    Q_OBJECT

public:
    explicit TFrmMrgOrgAffiliation(QWidget *owner = nullptr);
    ~TFrmMrgOrgAffiliation() override;

protected:
    void FormShow() override;

private:
    void ActionQueryExecute();
    void ActionNewExecute();
    void ActionChildNewExecute();
    void ActionModifyExecute();
    void ActionDeleteExecute();
    void TreeGridSearch();

    void UpdateActions();
    void StoreInTable(const TAffiliation &place);
    void RehangChildren(const QString &oldOrgId, const QString &newOrgId);

    std::unique_ptr<Ui::TFrmMrgOrgAffiliation> ui_;
    ClientDataSet cdsMaster;
};

} // namespace Qel
