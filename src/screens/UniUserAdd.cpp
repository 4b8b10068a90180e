#include "screens/UniUserAdd.h"

#include "frame/DataModule.h"
#include "frame/DataSetOperate.h"
#include "frame/Guards.h"
#include "frame/MisCommon.h"
#include "frame/OrgTypes.h"
#include "frame/Posting.h"
#include "frame/QelUtils.h"
#include "frame/QueryPage.h"
#include "frame/Ticks.h"
#include "ui_UniUserAdd.h"

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

/// The list of a group's users as the picker builds it; sizes in characters.
FieldDefs UserListFields()
{
    return {
        {u"USER_ID"_s, FieldType::Text, 10},    {u"UNION_ID"_s, FieldType::Text, 10},
        {u"USER_CODE"_s, FieldType::Text, 20},  {u"USER_NAME"_s, FieldType::Text, 50},
        {u"ENABLE_FLAG"_s, FieldType::Text, 1}, {u"REMARK"_s, FieldType::Text, 100},
        {u"ORG_NAME"_s, FieldType::Text, 100},
    };
}

void BuildUserList(ClientDataSet &users)
{
    const ControlsSuspender still(users);
    users.Close();
    users.SetFieldDefs(UserListFields());
    users.CreateDataSet();
}

QList<Wire::NamedValues> TickedAssignments(const ClientDataSet &candidates, const QString &unionId)
{
    QList<Wire::NamedValues> rows;
    for (const int recNo : TickedRows(candidates))
        rows.append(WithLastUser(
            {{u"USER_ID"_s, candidates.TextAt(recNo, u"USER_ID")}, {u"UNION_ID"_s, unionId}}));
    return rows;
}

/// The candidate's row as it goes into the list of a group's users.
Wire::NamedValues UserOfCurrentRow(const ClientDataSet &candidates, const QString &unionId)
{
    Wire::NamedValues row{{u"USER_ID"_s, candidates.FieldText(u"USER_ID")},
                          {u"UNION_ID"_s, unionId}};
    for (const auto &field :
         {u"USER_CODE"_s, u"USER_NAME"_s, u"ENABLE_FLAG"_s, u"REMARK"_s, u"ORG_NAME"_s})
        row.append({field, candidates.FieldText(field)});
    return row;
}

} // namespace

QString CandidateUsersSql(const TUserFilter &filter)
{
    QString sql =
        u"SELECT '0' AS SELECTED, C.* "
        "  FROM (SELECT A.ENABLE_FLAG, A.USER_ID, A.USER_CODE, A.USER_NAME, A.REMARK, B.ORG_NAME, "
        "B.ORG_ABBR, B.ORG_TYPE, B.ORG_NAME_PY           FROM USR_USER A, BAS_ORG B "
        "         WHERE A.ORG_ID = B.ORG_ID            AND B.LAST_OPERATE <> 'D' "
        "           AND A.ENABLE_FLAG = '1'            AND B.ENABLE_FLAG = '1') C, "
        "       (SELECT USER_ID           FROM UNI_USER_UNION          WHERE UNION_ID = "_s +
        Quoted(filter.unionId) +
        u"           AND LAST_OPERATE <> 'D') D  WHERE C.USER_ID = D.USER_ID(+) "
        "   AND D.USER_ID IS NULL "_s +
        AndLike(u"C.ORG_NAME, C.ORG_ABBR, C.ORG_NAME_PY"_s, filter.org) +
        AndLike(u"C.USER_CODE, C.USER_NAME"_s, filter.user);
    if (filter.typeText.trimmed() != AllOrgTypes)
        sql += u" AND C.ORG_TYPE = "_s + Quoted(filter.typeValue);
    return sql;
}

TFrmUniUserAdd::TFrmUniUserAdd(QWidget *owner, ClientDataSet &targetUsers)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmUniUserAdd>())
    , TargetUsers(targetUsers)
{
    ui_->setupUi(this);
    DataModule().SetFormStyle(this);
    SetCancelButton(ui_->btnCancel);
    ui_->edType->SetItems(OrgTypeFilter());
    ui_->edType->SetEditValue(u"0"_s);
    ui_->GridQueryView->SetDataSet(&cdsQuery);
    ui_->PageGuide1->Reset();

    Handle(ui_->btnQuery, &QPushButton::clicked, [this] { ui_->PageGuide1->QueryFirstPage(); });
    Handle(ui_->btnSelect, &QPushButton::clicked, &TFrmUniUserAdd::btnSelectClick);
    Handle(ui_->btnCancel, &QPushButton::clicked, [this] { SetModalResult(TModalResult::Cancel); });
    Handle(ui_->PageGuide1, &TPageGuide::ChangePage, &TFrmUniUserAdd::PageGuide1ChangePage);
    Handle(ui_->PageGuide1, &TPageGuide::SelectAll,
           [this](bool ticked) { TickAll(cdsQuery, ticked); });
    for (QWidget *filter : QList<QWidget *>{ui_->edUser, ui_->edOrg, ui_->edType})
        HandleKey(filter, Qt::Key_Return, [this] { ui_->btnQuery->click(); });
}

TFrmUniUserAdd::~TFrmUniUserAdd() = default;

void TFrmUniUserAdd::FormShow()
{
    ui_->edUser->setFocus();
}

void TFrmUniUserAdd::PageGuide1ChangePage()
{
    {
        const DisableWhile running(ui_->btnQuery);
        QueryPage(CandidateUsersSql({.unionId = UnionId,
                                     .org = ui_->edOrg->text(),
                                     .user = ui_->edUser->text(),
                                     .typeText = ui_->edType->currentText(),
                                     .typeValue = ui_->edType->EditValue()}),
                  cdsQuery, *ui_->PageGuide1);
    }
    FocusIfPossible(ui_->GridQueryView);
}

void TFrmUniUserAdd::btnSelectClick()
{
    if (cdsQuery.IsEmpty())
        return;
    if (!QuestionBox(u"确定将用户移入到“"_s + UnionName + u"”中吗？"_s, u"提示"_s))
        return;
    const DisableWhile running(ui_->btnSelect);
    const QList<Wire::NamedValues> rows = TickedAssignments(cdsQuery, UnionId);
    if (rows.isEmpty()) {
        InfoBox(u"请选择要加入的用户！"_s, u"提示"_s);
        return FocusIfPossible(ui_->GridQueryView);
    }
    PostRows(u"com.business.admin.UniUser"_s, u"insertUniUser"_s, rows);
    if (TargetUsers.IsEmpty())
        BuildUserList(TargetUsers);
    if (TakeAcceptedUsers())
        return SetModalResult(TModalResult::Ok);
    ErrorBox(u"将用户移入“"_s + UnionName + u"”失败！"_s, u"错误"_s);
    FocusIfPossible(ui_->GridQueryView);
}

/// Walks the answer's rows in their order: an accepted user leaves the candidates for the opener's
/// list; the first refused one becomes the current row and ends the walk, whatever the rows behind
/// it say. False then. Both lists stand still meanwhile.
bool TFrmUniUserAdd::TakeAcceptedUsers()
{
    const ControlsSuspender candidates(cdsQuery);
    const ControlsSuspender users(TargetUsers);
    for (int row = 0; row < PostedCount(); ++row) {
        const bool found = cdsQuery.Locate(u"USER_ID", {PostedValue(u"USER_ID", row)});
        if (PostedCode(row) != u"1")
            return false;
        if (!found)
            continue;
        AppendRow(TargetUsers, UserOfCurrentRow(cdsQuery, UnionId));
        cdsQuery.Delete();
    }
    return true;
}

} // namespace Qel
