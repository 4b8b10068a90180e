#include "screens/TraBuyCatalogUser.h"

#include "frame/ActionBinding.h"
#include "frame/DataModule.h"
#include "frame/DataSetOperate.h"
#include "frame/Guards.h"
#include "frame/LibrarySide.h"
#include "frame/MisCommon.h"
#include "frame/Posting.h"
#include "frame/QelUtils.h"
#include "frame/QueryPage.h"
#include "ui_TraBuyCatalogUser.h"

#include <algorithm>

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

const QString Manager = u"com.business.admin.TraBuyCatalog"_s;

/// Until the operator ticks it, as where nothing is stored.
const QString InitialRelationFlag = u"0"_s;

Wire::NamedValues UserOfCurrentRow(const ClientDataSet &users)
{
    Wire::NamedValues user;
    for (const QString &field : {u"USER_ID"_s, u"USER_CODE"_s, u"USER_NAME"_s, u"ORG_NAME"_s})
        user.append({field, users.FieldText(field)});
    return user;
}

/// A grid key that no row has yet.
QString NextKeyId(const ClientDataSet &rows)
{
    qint64 largest = 0;
    for (int recNo = 0; recNo < rows.RecordCount(); ++recNo)
        largest = std::max(largest, rows.TextAt(recNo, u"KEY_ID").toLongLong());
    return QString::number(largest + 1);
}

} // namespace

QString BuyCatalogUserSql::Assigned(const TBuyCatalog &catalog)
{
    const QString org = Quoted(catalog.buyOrgId);
    return u" SELECT B.USER_ID, B.USER_CODE, B.USER_NAME, C.ORG_NAME, A.RELATION_FLAG "
           "   FROM (SELECT USER_ID, DECODE(RELATION_FLAG, NULL, '0', '1', RELATION_FLAG)"
           " AS RELATION_FLAG            FROM TRA_USER_BUY_CATALOG           WHERE BUY_ORGID = "_s +
           org + u"            AND CATALOG_ID = "_s + Quoted(catalog.catalogId) +
           u"            AND LAST_OPERATE <> 'D') A,         USR_USER B,         BAS_ORG C "
           "  WHERE A.USER_ID = B.USER_ID     AND B.ORG_ID = C.ORG_ID     AND B.ENABLE_FLAG = '1' "
           "    AND B.ORG_ID = "_s +
           org;
}

QString BuyCatalogUserSql::Unassigned(const TBuyCatalog &catalog)
{
    const QString org = Quoted(catalog.buyOrgId);
    return u" SELECT B.USER_ID, B.USER_CODE, B.USER_NAME, C.ORG_NAME    FROM (SELECT USER_ID "
           "           FROM TRA_USER_BUY_CATALOG           WHERE BUY_ORGID = "_s +
           org + u"            AND CATALOG_ID = "_s + Quoted(catalog.catalogId) +
           u"            AND LAST_OPERATE <> 'D') A,         USR_USER B,         BAS_ORG C "
           "  WHERE A.USER_ID(+) = B.USER_ID     AND B.ORG_ID = C.ORG_ID "
           "    AND B.ENABLE_FLAG = '1'     AND B.ORG_ID = "_s +
           org + u"    AND A.USER_ID IS NULL "_s;
}

TFrmTraBuyCatalogUser::TFrmTraBuyCatalogUser(QWidget *owner, ClientDataSet &listedUsers,
                                             const TBuyCatalog &catalog)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmTraBuyCatalogUser>())
    , listedUsers_(listedUsers)
    , catalog_(catalog)
{
    ui_->setupUi(this);
    BindActions(this);
    DataModule().SetFormStyle(this);
    SetCancelButton(ui_->btnClose);
    ui_->GridMasterView->SetDataSet(&cdsMaster);
    ui_->GridSlaveView->SetDataSet(&cdsSlave);

    Handle(ui_->ActionMove, &QAction::triggered, &TFrmTraBuyCatalogUser::ActionMoveExecute);
    Handle(ui_->ActionDelete, &QAction::triggered, &TFrmTraBuyCatalogUser::ActionDeleteExecute);
    Handle(ui_->ActionUpdate, &QAction::triggered, &TFrmTraBuyCatalogUser::ActionUpdateExecute);
    Handle(ui_->GridSlaveView, &DataGrid::RowDoubleClicked, [this] { ui_->ActionMove->trigger(); });
    Handle(ui_->GridMasterView, &DataGrid::RowDoubleClicked,
           [this] { ui_->ActionDelete->trigger(); });
    for (QPushButton *back : {ui_->btnClose, ui_->btnClose1})
        Handle(back, &QPushButton::clicked, [this] { SetModalResult(TModalResult::Cancel); });
}

TFrmTraBuyCatalogUser::~TFrmTraBuyCatalogUser() = default;

void TFrmTraBuyCatalogUser::FormShow()
{
    ui_->lbRoleName->setText(u"当前药库："_s + catalog_.catalogName);
    ui_->GridMasterView->setFocus();
    // A list that could not be read looks like an empty one; submitted, it would remove everybody.
    SetEnabledByRule(ui_->ActionUpdate, false);
    QueryAll(BuyCatalogUserSql::Assigned(catalog_), cdsMaster, TQueryType::List);
    SetEnabledByRule(ui_->ActionUpdate, true);
    QueryAll(BuyCatalogUserSql::Unassigned(catalog_), cdsSlave, TQueryType::List);
}

// --- Moves, which the server does not hear of ----------------------------------------------------

void TFrmTraBuyCatalogUser::ActionMoveExecute()
{
    if (cdsSlave.IsEmpty())
        return;
    Wire::NamedValues user = UserOfCurrentRow(cdsSlave);
    if (cdsMaster.Find(u"USER_ID", {cdsSlave.FieldText(u"USER_ID")}) >= 0)
        return InfoBox(u"已经添加了该用户！"_s, u"提示"_s);
    user.append({u"RELATION_FLAG"_s, InitialRelationFlag});
    AppendRow(cdsMaster, user);
    cdsSlave.Delete();
}

void TFrmTraBuyCatalogUser::ActionDeleteExecute()
{
    if (cdsMaster.IsEmpty())
        return;
    if (!QuestionBox(u"是否真的要移出该用户？"_s, u"提示"_s))
        return;
    AppendRow(cdsSlave, UserOfCurrentRow(cdsMaster));
    cdsMaster.Delete();
}

// --- Submitting ----------------------------------------------------------------------------------

/// No is the default: whatever stands there replaces all that is stored for the drug store.
void TFrmTraBuyCatalogUser::ActionUpdateExecute()
{
    if (!QuestionBox(u"是否真的要提交该数据？"_s, u"提示"_s, true))
        return;
    const DisableWhile running(ui_->ActionUpdate);
    const QString code = cdsMaster.IsEmpty() ? PostNone() : PostAssigned();
    if (code != u"1")
        return InfoBox(u"提交数据失败！"_s, u"提示"_s);
    if (listedUsers_.IsActive())
        CarryOver();
}

QString TFrmTraBuyCatalogUser::PostAssigned()
{
    QList<Wire::NamedValues> rows;
    for (int recNo = 0; recNo < cdsMaster.RecordCount(); ++recNo)
        rows.append({{u"USER_ID"_s, cdsMaster.TextAt(recNo, u"USER_ID")},
                     {u"CATALOG_ID"_s, catalog_.catalogId},
                     {u"BUY_ORGID"_s, catalog_.buyOrgId},
                     {u"RELATION_FLAG"_s, cdsMaster.TextAt(recNo, u"RELATION_FLAG")},
                     {u"LAST_USER_ID"_s, RunParam().UserId}});
    return PostRows(Manager, u"insertUpdateTraUserBuyCatalog"_s, rows);
}

QString TFrmTraBuyCatalogUser::PostNone()
{
    return PostRow(Manager, u"deleteTraUserBuyCatalog"_s,
                   {{u"CATALOG_ID"_s, catalog_.catalogId},
                    {u"BUY_ORGID"_s, catalog_.buyOrgId},
                    {u"LAST_USER_ID"_s, RunParam().UserId},
                    {u"LAST_USER"_s, RunParam().UserName}});
}

/// What is assigned now becomes what the opener's table holds of this drug store.
void TFrmTraBuyCatalogUser::CarryOver()
{
    const ControlsSuspender quiet(listedUsers_);
    const ClientDataSet::Bookmark current = listedUsers_.GetBookmark();
    listedUsers_.DeleteRows([this](int recNo) {
        return listedUsers_.TextAt(recNo, u"CATALOG_ID") == catalog_.catalogId &&
               cdsMaster.Find(u"USER_ID", {listedUsers_.TextAt(recNo, u"USER_ID")}) < 0;
    });
    for (int recNo = 0; recNo < cdsMaster.RecordCount(); ++recNo) {
        const auto field = [this, recNo](QStringView name) {
            return cdsMaster.TextAt(recNo, name);
        };
        if (listedUsers_.Locate(u"USER_ID;CATALOG_ID", {field(u"USER_ID"), catalog_.catalogId}))
            EditRow(listedUsers_, {{u"RELATION_FLAG"_s, field(u"RELATION_FLAG")}});
        else
            AppendRow(listedUsers_, {{u"KEY_ID"_s, NextKeyId(listedUsers_)},
                                     {u"USER_ID"_s, field(u"USER_ID")},
                                     {u"RELATION_FLAG"_s, field(u"RELATION_FLAG")},
                                     {u"USER_CODE"_s, field(u"USER_CODE")},
                                     {u"USER_NAME"_s, field(u"USER_NAME")},
                                     {u"CATALOG_ID"_s, catalog_.catalogId},
                                     {u"BUY_ORGID"_s, catalog_.buyOrgId}});
    }
    listedUsers_.GotoBookmark(current); // unless it went
}

} // namespace Qel