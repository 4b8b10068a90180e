#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"

#include <memory>

namespace Qel {

namespace Ui {
class TFrmRegionSelect;
}

/// Lets the user choose one region from the whole hierarchy, which comes from the local cache.
/// Create, SetInformation, ShowModal; on Ok read the result fields, on Cancel they are empty.
class TFrmRegionSelect : public TFrmBaseForm
{
    Q_OBJECT

public:
    explicit TFrmRegionSelect(QWidget *owner);
    ~TFrmRegionSelect() override;

    void SetInformation(const QString &text); ///< located at once when the picker is shown

    QString RegionId;
    QString RegionCode;
    QString FullName;

protected:
    void FormShow() override;

private:
    void ActionQueryExecute();
    void ActionSelectExecute();
    void TreeGridSearch();

    std::unique_ptr<Ui::TFrmRegionSelect> ui_;
    ClientDataSet cdsQuery;
    QString lastLocatedId_;
    int skipCount_ = 0; ///< rows passed over by successive locates, not reset by a hit
};

} // namespace Qel
