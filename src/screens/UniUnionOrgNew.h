#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"

#include <memory>

namespace Qel {

namespace Ui {
class TFrmUniUnionOrgNew;
}

/// Which organisations are listed as candidates for a group.
struct TCandidateFilter
{
    QString unionId;   ///< the group; its members are left out
    QString regionId;  ///< empty: any region
    QString text;      ///< in code, name, short name or initials
    QString typeText;  ///< the kind's caption; "全部" adds no condition
    QString typeValue; ///< its value
};

/// The enabled organisations that are not, or no longer, members of the group.
QString CandidatesSql(const TCandidateFilter &filter);

/// Adds members to a group: a paged list of candidates in which the operator ticks several and
/// gives each a member type. Create with the group's id, show modally: on Ok they are stored, all
/// in one request. Only the page on screen can be ticked; another page drops the ticks.
class TFrmUniUnionOrgNew : public TFrmBaseForm
{
    Q_OBJECT

public:
    TFrmUniUnionOrgNew(QWidget *owner, const QString &unionId);
    ~TFrmUniUnionOrgNew() override;

protected:
    void FormShow() override;

private:
    void PageGuide1ChangePage();
    void bdRegionButtonClick(int button);
    void bdRegionEnter();
    void colOrgTypeValueChanged();
    void BtnSaveClick();

    std::unique_ptr<Ui::TFrmUniUnionOrgNew> ui_;
    QString unionId_;
    ClientDataSet cdsQuery;
    ClientDataSet cdsOrgType;
};

} // namespace Qel
