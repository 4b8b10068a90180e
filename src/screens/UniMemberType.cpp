#include "screens/UniMemberType.h"

#include "frame/DataModule.h"
#include "frame/DataSetOperate.h"
#include "frame/Guards.h"
#include "frame/MisCommon.h"
#include "frame/Posting.h"
#include "frame/QelUtils.h"
#include "frame/QueryPage.h"
#include "screens/MemberTypes.h"
#include "ui_UniMemberType.h"

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

/// The fields of the table when no query has given it any; sizes in characters.
FieldDefs MemberTypeFields()
{
    return {
        {.name = u"ORG_TYPE_ID"_s, .size = 20}, {.name = u"ORG_TYPE_NAME"_s, .size = 40},
        {.name = u"BUYER_FLAG"_s, .size = 1},   {.name = u"SALER_FLAG"_s, .size = 1},
        {.name = u"SENDER_FLAG"_s, .size = 1},  {.name = u"ADMIN_FLAG"_s, .size = 1},
        {.name = u"REMARK"_s, .size = 200},     {.name = u"LAST_OPERATE"_s, .size = 1},
    };
}

} // namespace

QString UniMemberTypeSql(const QString &unionId)
{
    return u"Select a.* from uni_Org_type a where a.LAST_OPERATE <>'D'  and a.Union_ID = "_s +
           Quoted(unionId);
}

QList<Wire::NamedValues> UniMemberTypeRows(const ClientDataSet &types, const QString &unionId)
{
    QList<Wire::NamedValues> rows;
    for (int recNo = 0; recNo < types.RecordCount(); ++recNo) {
        const auto text = [&](QStringView field) { return types.TextAt(recNo, field); };
        if (text(u"ORG_TYPE_ID").isEmpty() && text(u"LAST_OPERATE") == u"D")
            continue;
        Wire::NamedValues row{{u"ORG_TYPE_ID"_s, text(u"ORG_TYPE_ID")},
                              {u"ORG_TYPE_NAME"_s, text(u"ORG_TYPE_NAME")},
                              {u"UNION_ID"_s, unionId}};
        for (const QStringView flag : RoleFlags) {
            const bool unset = types.IsNullAt(recNo, types.FieldIndex(flag));
            row.append({flag.toString(), unset ? u"0"_s : text(flag)});
        }
        row.append({u"REMARK"_s, text(u"REMARK")});
        row.append({u"LAST_OPERATE"_s, text(u"LAST_OPERATE")});
        rows.append(WithLogUser(row));
    }
    return rows;
}

TfrmUniMemberType::TfrmUniMemberType(QWidget *owner, const QString &unionId)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TfrmUniMemberType>())
    , unionId_(unionId)
{
    ui_->setupUi(this);
    DataModule().SetFormStyle(this);
    SetCancelButton(ui_->BtnClose);
    ui_->GridOrg->SetDataSet(&cdsQuery);
    cdsQuery.SetFilter(u"LAST_OPERATE<> 'D' or LAST_OPERATE = NULL"_s);
    cdsQuery.SetFiltered(true);

    Handle(ui_->btnAdd, &QPushButton::clicked, &TfrmUniMemberType::btnAddClick);
    Handle(ui_->btnModify, &QPushButton::clicked, &TfrmUniMemberType::btnModifyClick);
    Handle(ui_->btnDelete, &QPushButton::clicked, &TfrmUniMemberType::btnDeleteClick);
    Handle(ui_->BtnOk, &QPushButton::clicked, &TfrmUniMemberType::BtnOkClick);
    Handle(ui_->BtnClose, &QPushButton::clicked, [this] { SetModalResult(TModalResult::Cancel); });
    Handle(ui_->GridOrg, &DataGrid::RowActivated, [this] { ui_->btnModify->click(); });
    Handle(&cdsQuery, &ClientDataSet::Changed, &TfrmUniMemberType::UpdateButtons);
}

TfrmUniMemberType::~TfrmUniMemberType() = default;

void TfrmUniMemberType::FormShow()
{
    // An answer without columns is no table: the first 新增 makes one.
    ClientDataSet loaded;
    QueryAll(UniMemberTypeSql(unionId_), loaded, TQueryType::Detail);
    if (loaded.FieldCount() > 0)
        cdsQuery.AssignData(loaded);
    FocusAfterQuery(!cdsQuery.IsEmpty(), ui_->GridOrg, ui_->btnAdd);
}

void TfrmUniMemberType::UpdateButtons()
{
    SetEnabledByRule(ui_->btnModify, !cdsQuery.IsEmpty());
    SetEnabledByRule(ui_->btnDelete, !cdsQuery.IsEmpty());
}

void TfrmUniMemberType::btnAddClick()
{
    ui_->GridOrg->FinishEditing();
    if (!cdsQuery.IsActive()) {
        cdsQuery.SetFieldDefs(MemberTypeFields());
        cdsQuery.CreateDataSet();
    }
    cdsQuery.Append();
    ui_->GridOrg->EditCell(u"ORG_TYPE_NAME");
}

void TfrmUniMemberType::btnModifyClick()
{
    ui_->GridOrg->FinishEditing();
    if (cdsQuery.IsEmpty())
        return;
    cdsQuery.Edit();
    ui_->GridOrg->EditCell();
}

void TfrmUniMemberType::btnDeleteClick()
{
    ui_->GridOrg->FinishEditing();
    if (!cdsQuery.IsEmpty())
        EditRow(cdsQuery, {{u"LAST_OPERATE"_s, u"D"_s}});
}

void TfrmUniMemberType::BtnOkClick()
{
    ui_->GridOrg->FinishEditing();
    const DisableWhile running(ui_->BtnOk);
    const ControlsSuspender detached(cdsQuery);
    // Rows marked deleted are posted too. The filter stays off, so after a refusal they show again.
    cdsQuery.SetFiltered(false);
    cdsQuery.Post();
    if (cdsQuery.IsEmpty())
        return;
    const QString code = PostRows(u"com.business.admin.UniUnion"_s, u"insert_update_UniOrgType"_s,
                                  UniMemberTypeRows(cdsQuery, unionId_));
    if (code != u"1")
        return WarningBox(u"保存失败！"_s, u"警告"_s);
    InfoBox(u"保存成功！"_s, u"提示"_s);
    SetModalResult(TModalResult::Ok);
}

} // namespace Qel
