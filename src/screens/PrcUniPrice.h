#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"
#include "screens/PrcUniPriceSql.h"

#include <memory>

namespace Qel {

namespace Ui {
class TFrmPrcUniPrice;
}

/// What a selling member of a group asks for the group's products: a retail price and up to nine
/// further prices, which are named and switched on as price types, one of which each buying member
/// is given. The form's parameter is the class of products; empty: all.
///
/// 保存 of the prices is enabled exactly while there are edits that are not stored. Whatever closes
/// the screen then asks first.
class TFrmPrcUniPrice : public TFrmBaseForm
{
    Q_OBJECT

public:
    explicit TFrmPrcUniPrice(QWidget *owner = nullptr);
    ~TFrmPrcUniPrice() override;

protected:
    void FormShow() override;
    void closeEvent(QCloseEvent *event) override;

private:
    // --- Group and quoting organisation --------------------------------------------------------
    void FillUnions();
    void cxUnionChange();
    void cxUniOrgChange();

    // --- Product prices ------------------------------------------------------------------------
    void BtnQueryClick();
    void PageGuide1ChangePage();
    void MarkWhenChanged(const QString &field);
    void btnSaveClick();
    bool MayLeave();

    // --- Price types ---------------------------------------------------------------------------
    void ReadPriceTypes();
    void ShowPriceColumns();
    void cxButton1Click();
    void btnOrgQueryClick();
    void cxButton4Click();

    std::unique_ptr<Ui::TFrmPrcUniPrice> ui_;
    ClientDataSet cdsPriceType;
    ClientDataSet cdsPriceTypeSet;
    ClientDataSet cdsProductPrice;
    ClientDataSet cdsUniOrg;
    TQuote quote_; ///< as the two boxes say
};

} // namespace Qel
