#pragma once

#include "dataset/ClientDataSet.h"
#include "frame/BaseForm.h"

#include <memory>

namespace Qel {

namespace Ui {
class TFrmUpdateLog;
}

/// The log of a record that one key identifies, newest entry first.
QString UpdateLogSql(const QString &tableName, const QString &keyId1);

/// Shows the change log of one record, a page at a time. Create it with the record's table and
/// KEY_ID1, ShowModal.
class TFrmUpdateLog : public TFrmBaseForm
{
    Q_OBJECT

public:
    TFrmUpdateLog(QWidget *owner, const QString &tableName, const QString &keyId1);
    ~TFrmUpdateLog() override;

protected:
    void FormShow() override;

private:
    void PageGuide1ChangePage();

    std::unique_ptr<Ui::TFrmUpdateLog> ui_;
    ClientDataSet cdsLog;
    QString tableName_;
    QString keyId1_;
};

} // namespace Qel
