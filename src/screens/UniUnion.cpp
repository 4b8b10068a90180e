#include "screens/UniUnion.h"

#include "frame/ActionBinding.h"
#include "frame/DataModule.h"
#include "frame/Guards.h"
#include "frame/MisCommon.h"
#include "frame/Posting.h"
#include "frame/QelUtils.h"
#include "frame/QueryPage.h"
#include "frame/ResultMessages.h"
#include "frame/TreeCode.h"
#include "frame/TreeSearch.h"
#include "screens/UniMemberType.h"
#include "screens/UniProduct.h"
#include "screens/UniRuleConfigure.h"
#include "screens/UniUnionEdit.h"
#include "screens/UniUnionOrgEdit.h"
#include "screens/UniUnionOrgNew.h"
#include "screens/Unions.h"
#include "ui_UniUnion.h"

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

// The room that both lists' columns need; what there is is shared in this proportion.
constexpr int UnionsWidth = 550;
constexpr int OrgsWidth = 702;

constexpr ResultMessage DeleteUnionMessages[]{
    {u"-2", TBoxIcon::Warning, u"该集团存在成员,不能删除！", u"警告"},
    {u"-1", TBoxIcon::Warning, u"存在下级不能删除数据！", u"警告"},
    {u"0", TBoxIcon::Error, u"数据删除失败！", u"错误"},
};

constexpr ResultMessage DeleteOrgMessages[]{
    {u"0", TBoxIcon::Error, u"数据删除失败！", u"错误"},
};

} // namespace

QString UniUnionSql::Members(const QString &unionId)
{
    return u" SELECT A.UNION_ID,C.ORG_TYPE_ID,C.ORG_TYPE_NAME,C.BUYER_FLAG, C.SALER_FLAG, "
           "C.SENDER_FLAG, C.ADMIN_FLAG, C.REMARK,  B.ORG_ID, B.ORG_CODE, B.ORG_NAME  FROM Uni_ORG "
           "A, BAS_ORG B, UNI_ORG_TYPE C  WHERE A.ORG_ID=B.ORG_ID   AND A.LAST_OPERATE <> 'D'   "
           "AND A.ORG_TYPE_ID = C.ORG_TYPE_ID    AND A.UNION_ID= "_s +
           Quoted(unionId);
}

TFrmUniUnion::TFrmUniUnion(QWidget *owner)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmUniUnion>())
    , focusChange_([this] { Guarded([this] { LoadMembers(FocusedUnionId()); }); })
{
    ui_->setupUi(this);
    ui_->splitter->setSizes({UnionsWidth, OrgsWidth});
    BindActions(this);
    DataModule().SetFormStyle(this);
    ui_->TreeGrid->SetDataSet(&cdsUnion);
    ui_->GridOrg->SetDataSet(&cdsOrg);

    Handle(ui_->ActionQuery, &QAction::triggered, &TFrmUniUnion::ActionQueryExecute);
    Handle(ui_->ActionClose, &QAction::triggered, &TFrmUniUnion::close);
    Handle(ui_->UniNew, &QAction::triggered, &TFrmUniUnion::UniNewExecute);
    Handle(ui_->UniChildNew, &QAction::triggered, &TFrmUniUnion::UniChildNewExecute);
    Handle(ui_->UniModify, &QAction::triggered, &TFrmUniUnion::UniModifyExecute);
    Handle(ui_->UniDelete, &QAction::triggered, &TFrmUniUnion::UniDeleteExecute);
    Handle(ui_->OrgNew, &QAction::triggered, &TFrmUniUnion::OrgNewExecute);
    Handle(ui_->OrgModify, &QAction::triggered, &TFrmUniUnion::OrgModifyExecute);
    Handle(ui_->OrgDelete, &QAction::triggered, &TFrmUniUnion::OrgDeleteExecute);
    Handle(ui_->ActMemberType, &QAction::triggered, &TFrmUniUnion::ActMemberTypeExecute);
    Handle(ui_->ActRuleConfigure, &QAction::triggered, &TFrmUniUnion::ActRuleConfigureExecute);
    Handle(ui_->ActUniProduct, &QAction::triggered, &TFrmUniUnion::ActUniProductExecute);

    Handle(ui_->TreeGrid, &DataTree::FocusedNodeChanged, &TFrmUniUnion::TreeGridFocusedNodeChanged);
    Handle(ui_->TreeGrid, &DataTree::SearchRequested, &TFrmUniUnion::TreeGridSearch);
    Handle(&cdsUnion, &ClientDataSet::Changed, &TFrmUniUnion::UpdateUnionActions);
    Handle(&cdsOrg, &ClientDataSet::Changed, &TFrmUniUnion::UpdateOrgActions);
    HandleKey(ui_->edInfo, Qt::Key_Return, [this] { ui_->ActionQuery->trigger(); });
}

TFrmUniUnion::~TFrmUniUnion() = default;

void TFrmUniUnion::FormShow()
{
    UpdateUnionActions();
    UpdateOrgActions();
    ui_->edInfo->setFocus();
}

void TFrmUniUnion::ActionQueryExecute()
{
    {
        const DisableWhile running(ui_->ActionQuery);
        const DataTree::FocusSignalBlocker detached(*ui_->TreeGrid);
        cdsOrg.Close();
        QueryAll(UnionsSql(ui_->edInfo->text()), cdsUnion, TQueryType::Detail);
        LoadMembers(FocusedUnionId());
        focusChange_.Cancel();
    }
    FocusTreeAfterQuery(*ui_->TreeGrid, ui_->edInfo);
}

void TFrmUniUnion::LoadMembers(const QString &unionId)
{
    if (unionId.isEmpty())
        return cdsOrg.Close();
    QueryAll(UniUnionSql::Members(unionId), cdsOrg, TQueryType::Detail);
}

void TFrmUniUnion::TreeGridFocusedNodeChanged()
{
    focusChange_.Request();
    UpdateUnionActions();
}

void TFrmUniUnion::UpdateUnionActions()
{
    const bool any = !cdsUnion.IsEmpty();
    for (QAction *action : {ui_->UniChildNew, ui_->UniModify, ui_->OrgNew, ui_->ActRuleConfigure,
                            ui_->ActUniProduct, ui_->ActMemberType})
        SetEnabledByRule(action, any);
    // A group with sub-groups is never deleted from here: the focused node has the last word.
    SetEnabledByRule(ui_->UniDelete,
                     any && !ui_->TreeGrid->HasChildren(ui_->TreeGrid->FocusedNode()));
}

void TFrmUniUnion::UpdateOrgActions()
{
    for (QAction *action : {ui_->OrgModify, ui_->OrgDelete})
        SetEnabledByRule(action, !cdsOrg.IsEmpty());
}

QString TFrmUniUnion::FocusedUnionId() const
{
    return cdsUnion.IsEmpty() ? QString() : cdsUnion.FieldText(u"UNION_ID");
}

void TFrmUniUnion::TreeGridSearch()
{
    const QString text = ui_->edInfo->text().trimmed();
    if (text.isEmpty())
        return;
    DataTree &tree = *ui_->TreeGrid;
    int node = tree.NextNode(tree.FocusedNode());
    while (node >= 0 && !tree.NodeContains(node, text))
        node = tree.NextNode(node);
    if (node < 0)
        return ReportSearchFinished(text);
    tree.FocusNode(node);
    tree.ExpandNode(node);
}

void TFrmUniUnion::UniNewExecute()
{
    TFrmUniUnionEdit(this, cdsUnion, {}).ShowModal();
}

void TFrmUniUnion::UniChildNewExecute()
{
    if (cdsUnion.FieldText(u"Union_CODE").size() == TreeCode::MaxLength)
        return InfoBox(u"不能添加下级！"_s, u"提示"_s);
    TFrmUniUnionEdit(this, cdsUnion, ChildOfCurrentRow(cdsUnion)).ShowModal();
}

void TFrmUniUnion::UniModifyExecute()
{
    TFrmUniUnionEdit(this, cdsUnion, UnionOfCurrentRow(cdsUnion)).ShowModal();
}

void TFrmUniUnion::UniDeleteExecute()
{
    if (!QuestionBox(u"是否真的要删除该数据？"_s, u"提示"_s))
        return;
    const DisableWhile running(ui_->UniDelete);
    const QString code = PostRow(u"com.business.admin.UniUnion"_s, u"delete_UniUnion"_s,
                                 WithLastAndLogUser({{u"UNION_ID"_s, FocusedUnionId()}}));
    ShowResultMessage(code, DeleteUnionMessages);
    if (code == u"1")
        cdsUnion.Delete();
}

void TFrmUniUnion::OrgNewExecute()
{
    if (TFrmUniUnionOrgNew(this, FocusedUnionId()).ShowModal() == TModalResult::Ok)
        LoadMembers(FocusedUnionId());
}

void TFrmUniUnion::OrgModifyExecute()
{
    // Nothing is loaded anew: the grid shows the member's old type until its group is focused
    // again.
    TFrmUniUnionOrgEdit(this, MemberOfCurrentRow(FocusedUnionId(), cdsOrg)).ShowModal();
}

void TFrmUniUnion::ActMemberTypeExecute()
{
    // The member grid shows the types' names and roles.
    if (TfrmUniMemberType(this, FocusedUnionId()).ShowModal() == TModalResult::Ok)
        LoadMembers(FocusedUnionId());
}

void TFrmUniUnion::ActRuleConfigureExecute()
{
    TFrmUniRuleConfigure(this, FocusedUnionId()).ShowModal();
}

void TFrmUniUnion::ActUniProductExecute()
{
    (new TFrmUniProduct(this, FocusedUnionId()))->ShowModal(); // frees itself when it is closed
}

void TFrmUniUnion::OrgDeleteExecute()
{
    if (!QuestionBox(u"是否真的要删除该数据？"_s, u"提示"_s))
        return;
    const DisableWhile running(ui_->OrgDelete);
    const QString code = PostRow(u"com.business.admin.UniUnionOrg"_s, u"delete_UniOrg"_s,
                                 WithLogUser({{u"UNION_ID"_s, FocusedUnionId()},
                                              {u"ORG_ID"_s, cdsOrg.FieldText(u"ORG_ID")}}));
    ShowResultMessage(code, DeleteOrgMessages);
    if (code == u"1")
        cdsOrg.Delete();
}

} // namespace Qel
