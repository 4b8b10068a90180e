#include "frame/UpdateLog.h"

#include "frame/DataModule.h"
#include "frame/QelUtils.h"
#include "frame/QueryPage.h"
#include "frame/UpdateLogGrid.h"
#include "ui_UpdateLog.h"

namespace Qel {

using namespace Qt::StringLiterals;

QString UpdateLogSql(const QString &tableName, const QString &keyId1)
{
    return u" SELECT * FROM SYS_UPDATE_LOG  WHERE TABLE_NAME="_s + Quoted(tableName) +
           u" AND KEY_ID1 = "_s + Quoted(keyId1) + u" ORDER BY OPTION_DATE DESC"_s;
}

TFrmUpdateLog::TFrmUpdateLog(QWidget *owner, const QString &tableName, const QString &keyId1)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmUpdateLog>())
    , tableName_(tableName)
    , keyId1_(keyId1)
{
    ui_->setupUi(this);
    DataModule().SetFormStyle(this);
    AllowMaximize();
    SetCancelButton(ui_->BtnClose);
    SetUpUpdateLogGrid(*ui_->GridLog, cdsLog);

    Handle(ui_->PageGuide1, &TPageGuide::ChangePage, &TFrmUpdateLog::PageGuide1ChangePage);
    Handle(ui_->BtnClose, &QPushButton::clicked, &TFrmUpdateLog::close);
}

TFrmUpdateLog::~TFrmUpdateLog() = default;

void TFrmUpdateLog::FormShow()
{
    ui_->PageGuide1->QueryFirstPage();
}

void TFrmUpdateLog::PageGuide1ChangePage()
{
    QueryPage(UpdateLogSql(tableName_, keyId1_), cdsLog, *ui_->PageGuide1);
}

} // namespace Qel
