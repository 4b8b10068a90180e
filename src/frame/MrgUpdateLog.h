#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"

#include <memory>

namespace Qel {

namespace Ui {
class TFrmMrgUpdateLog;
}

/// Which record a log is about: its table and both its keys.
struct TLoggedRecord
{
    QString tableName;
    QString keyId1;
    QString keyId2;

    bool IsComplete() const
    {
        return !(tableName.isEmpty() || keyId1.isEmpty() || keyId2.isEmpty());
    }
};

/// The log of a record that two keys identify, in the server's order. Its blanks are others than
/// those of the one-key statement, on purpose: both texts are known to the server side as they are.
QString MrgUpdateLogSql(const TLoggedRecord &record);

/// Shows the whole change log of one record. Create it with the record, ShowModal. A record that
/// is not complete gives an empty list. It has the plain look: no styling pass.
class TFrmMrgUpdateLog : public TFrmBaseForm
{
    Q_OBJECT

public:
    TFrmMrgUpdateLog(QWidget *owner, const TLoggedRecord &record);
    ~TFrmMrgUpdateLog() override;

protected:
    void FormShow() override;

private:
    std::unique_ptr<Ui::TFrmMrgUpdateLog> ui_;
    ClientDataSet cdsLog;
    TLoggedRecord record_;
};

} // namespace Qel
