#include "frame/MrgUpdateLog.h"

#include "frame/QelUtils.h"
#include "frame/QueryPage.h"
#include "frame/UpdateLogGrid.h"
#include "remote/SoapCtrl.h"
#include "ui_MrgUpdateLog.h"

namespace Qel {

using namespace Qt::StringLiterals;

QString MrgUpdateLogSql(const TLoggedRecord &record)
{
    return u" SELECT * FROM SYS_UPDATE_LOG WHERE TABLE_NAME="_s + Quoted(record.tableName) +
           u" AND KEY_ID1="_s + Quoted(record.keyId1) + u" AND KEY_ID2="_s + Quoted(record.keyId2);
}

TFrmMrgUpdateLog::TFrmMrgUpdateLog(QWidget *owner, const TLoggedRecord &record)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmMrgUpdateLog>())
    , record_(record)
{
    ui_->setupUi(this);
    AllowMaximize();
    SetUpUpdateLogGrid(*ui_->GridLog, cdsLog);
    Handle(ui_->BtnClose, &QPushButton::clicked, &TFrmMrgUpdateLog::close);
}

TFrmMrgUpdateLog::~TFrmMrgUpdateLog() = default;

void TFrmMrgUpdateLog::FormShow()
{
    if (!record_.IsComplete())
        return;
    QueryAll(MrgUpdateLogSql(record_), cdsLog, TQueryType::List);
    SetModalResult(TModalResult::Ok); // set while showing, it closes nothing
}

} // namespace Qel
