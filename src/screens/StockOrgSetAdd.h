#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"

#include <memory>

namespace Qel {

namespace Ui {
class TFrmStockOrgSetAdd;
}

/// The organisations that share a group with the owner and may not see its stock yet; `text` is in
/// their code, name or initials.
QString StockCandidatesSql(const QString &ownerOrgId, const QString &text);

/// Opens an owner's stock to other organisations: the owner is picked, the candidates on the page
/// are ticked, and saved; then the next owner, or Ok. Candidates are shown for the chosen owner
/// only: with another owner, or none, the list is closed. Runs no styling pass: its paging bar
/// starts with the values of its layout, 20 rows a page.
class TFrmStockOrgSetAdd : public TFrmBaseForm
{
    Q_OBJECT

public:
    explicit TFrmStockOrgSetAdd(QWidget *owner = nullptr);
    ~TFrmStockOrgSetAdd() override;

    /// Whether permissions were stored while it was open, whatever the result.
    bool HasSaved() const { return hasSaved_; }

protected:
    void FormShow() override;

private:
    void ChooseOwner();
    void edOwnerOrgButtonClick(int button);
    void PageGuide1ChangePage();
    void cxButton1Click();

    void CloseCandidates();

    std::unique_ptr<Ui::TFrmStockOrgSetAdd> ui_;
    ClientDataSet cdsStkOrg;
    bool hasSaved_ = false;
};

} // namespace Qel
