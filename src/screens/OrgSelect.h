#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"

#include <memory>

namespace Qel {

namespace Ui {
class TFrmOrgSelect;
}

/// The filter of the organisation picker.
struct TOrgFilter
{
    QString text;
    QString typeText;  ///< the kind's caption; "全部" adds no condition
    QString typeValue; ///< its value
};

/// The picker's statement over the caller's base query.
QString OrgSelectSql(const QString &baseSql, bool multiSelect, const TOrgFilter &filter);

/// Lets the user choose one organisation (or several) from a paged list over a query of the
/// caller's. Create, SetOrgText, set BaseSql (and MultiSelect), ShowModal. On Ok read the result
/// fields or, with MultiSelect, the rows of cdsQuery whose SELECTED is "1".
class TFrmOrgSelect : public TFrmBaseForm
{
    Q_OBJECT

public:
    explicit TFrmOrgSelect(QWidget *owner);
    ~TFrmOrgSelect() override;

    void SetOrgText(const QString &text); ///< queried at once when the picker is shown

    QString BaseSql; ///< a complete SELECT over organisations, without ORDER BY
    bool MultiSelect = false;

    QString OrgId;
    QString OrgCode;
    QString OrgName;
    QString OrgAbbr;
    QString OrgNamePy;
    QString OrgNameWb;
    QString OrgType;

    ClientDataSet cdsQuery;

protected:
    void FormShow() override;

private:
    void PageGuide1ChangePage();
    void BtnSelectClick();

    void TakeCurrentRow();

    std::unique_ptr<Ui::TFrmOrgSelect> ui_;
};

} // namespace Qel
