#include "screens/MrgOrgAffiliation.h"

#include "frame/ActionBinding.h"
#include "frame/DataModule.h"
#include "frame/DataSetOperate.h"
#include "frame/Guards.h"
#include "frame/MisCommon.h"
#include "frame/Posting.h"
#include "frame/QelUtils.h"
#include "frame/QueryPage.h"
#include "frame/ResultMessages.h"
#include "frame/TreeCode.h"
#include "frame/TreeSearch.h"
#include "screens/MrgOrgAffiliationEdit.h"
#include "ui_MrgOrgAffiliation.h"

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

constexpr ResultMessage DeleteMessages[]{
    {u"-2", TBoxIcon::Warning, u"该集团存在成员,不能删除！", u"警告"},
    {u"-1", TBoxIcon::Warning, u"存在下级不能删除数据！", u"警告"},
    {u"0", TBoxIcon::Error, u"数据删除失败！", u"错误"},
};

TAffiliation BelowCurrentRow(const ClientDataSet &places)
{
    return {
        .parentOrgId = places.FieldText(u"ORG_ID"),
        .parentCode = places.FieldText(u"TREE_CODE"),
        .parentName = places.FieldText(u"ORG_NAME"),
    };
}

/// The superior's name is taken from the table, if it holds the superior.
TAffiliation PlaceOfCurrentRow(const ClientDataSet &places, bool hasChildren)
{
    const auto [parentCode, ownCode] = TreeCode::Split(places.FieldText(u"TREE_CODE"));
    const QString parentOrgId = places.FieldText(u"PARENT_ORGID");
    const int parent = parentOrgId.isEmpty() ? -1 : places.Find(u"ORG_ID", {parentOrgId});
    return {
        .mode = TAffiliation::Mode::Modify,
        .parentOrgId = parentOrgId,
        .parentCode = parentCode,
        .parentName = parent < 0 ? QString() : places.TextAt(parent, u"ORG_NAME"),
        .id = places.FieldText(u"ID"),
        .orgId = places.FieldText(u"ORG_ID"),
        .orgName = places.FieldText(u"ORG_NAME"),
        .orgAbbr = places.FieldText(u"ORG_ABBR"),
        .code = ownCode,
        .codeFixed = hasChildren,
    };
}

} // namespace

QString AffiliationSql::Places(const QString &filter)
{
    return u" SELECT A.*,    B.ORG_ABBR,    B.ORG_NAME  FROM BAS_ORG_AFFILIATION A, "
           "      BAS_ORG B  WHERE A.ORG_ID=B.ORG_ID      AND B.LAST_OPERATE <>'D' "
           "     and a.enable_flag <> 'D' "_s +
           AndLike(u"A.TREE_CODE, B.ORG_ABBR, B.ORG_NAME,B.ORG_NAME_PY,B.ORG_NAME_WB"_s, filter) +
           u"ORDER BY A.TREE_CODE"_s;
}

TFrmMrgOrgAffiliation::TFrmMrgOrgAffiliation(QWidget *owner)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmMrgOrgAffiliation>())
{
    ui_->setupUi(this);
    BindActions(this);
    DataModule().SetFormStyle(this);
    ui_->TreeGrid->SetDataSet(&cdsMaster);

    Handle(ui_->ActionQuery, &QAction::triggered, &TFrmMrgOrgAffiliation::ActionQueryExecute);
    Handle(ui_->ActionNew, &QAction::triggered, &TFrmMrgOrgAffiliation::ActionNewExecute);
    Handle(ui_->ActionChildNew, &QAction::triggered, &TFrmMrgOrgAffiliation::ActionChildNewExecute);
    Handle(ui_->ActionModify, &QAction::triggered, &TFrmMrgOrgAffiliation::ActionModifyExecute);
    Handle(ui_->ActionDelete, &QAction::triggered, &TFrmMrgOrgAffiliation::ActionDeleteExecute);
    Handle(ui_->ActionClose, &QAction::triggered, &TFrmMrgOrgAffiliation::close);

    Handle(ui_->TreeGrid, &DataTree::FocusedNodeChanged, &TFrmMrgOrgAffiliation::UpdateActions);
    Handle(ui_->TreeGrid, &DataTree::SearchRequested, &TFrmMrgOrgAffiliation::TreeGridSearch);
    Handle(&cdsMaster, &ClientDataSet::Changed, &TFrmMrgOrgAffiliation::UpdateActions);
    HandleKey(ui_->edInfo, Qt::Key_Return, [this] { ui_->ActionQuery->trigger(); });
}

TFrmMrgOrgAffiliation::~TFrmMrgOrgAffiliation() = default;

void TFrmMrgOrgAffiliation::FormShow()
{
    UpdateActions();
    ui_->edInfo->setFocus();
}

void TFrmMrgOrgAffiliation::ActionQueryExecute()
{
    {
        const DisableWhile running(ui_->ActionQuery);
        QueryAll(AffiliationSql::Places(ui_->edInfo->text()), cdsMaster, TQueryType::Detail);
    }
    FocusIfPossible(ui_->TreeGrid);
}

void TFrmMrgOrgAffiliation::UpdateActions()
{
    const bool any = !cdsMaster.IsEmpty();
    for (QAction *action : {ui_->ActionChildNew, ui_->ActionModify})
        SetEnabledByRule(action, any);
    // A superior is never deleted from here: the focused node has the last word.
    SetEnabledByRule(ui_->ActionDelete,
                     any && !ui_->TreeGrid->HasChildren(ui_->TreeGrid->FocusedNode()));
    ui_->LabelCout->setText(u"共有：%1条记录。"_s.arg(cdsMaster.RecordCount()));
}

void TFrmMrgOrgAffiliation::TreeGridSearch()
{
    FindNextInTree(*ui_->TreeGrid, {u"TREE_CODE"_s, u"TREE_LEVEL"_s, u"ORG_ABBR"_s},
                   ui_->edInfo->text().trimmed());
}

void TFrmMrgOrgAffiliation::ActionNewExecute()
{
    TFrmMrgOrgAffiliationEdit(this, cdsMaster, {}).ShowModal();
}

void TFrmMrgOrgAffiliation::ActionChildNewExecute()
{
    ui_->TreeGrid->ExpandFocused();
    if (cdsMaster.FieldText(u"TREE_CODE").size() >= TreeCode::MaxLength)
        return InfoBox(u"不能添加下级！"_s, u"提示"_s);
    TFrmMrgOrgAffiliationEdit(this, cdsMaster, BelowCurrentRow(cdsMaster)).ShowModal();
}

void TFrmMrgOrgAffiliation::ActionModifyExecute()
{
    const bool hasChildren = ui_->TreeGrid->HasChildren(ui_->TreeGrid->FocusedNode());
    TFrmMrgOrgAffiliationEdit editor(this, cdsMaster, PlaceOfCurrentRow(cdsMaster, hasChildren));
    if (editor.ShowModal() == TModalResult::Ok)
        StoreInTable(editor.Place());
}

void TFrmMrgOrgAffiliation::StoreInTable(const TAffiliation &place)
{
    const ControlsSuspender suspend(cdsMaster);
    const QString oldOrgId = cdsMaster.FieldText(u"ORG_ID");
    EditRow(cdsMaster, {
                           {u"ORG_ID"_s, place.orgId},
                           {u"PARENT_ORGID"_s, place.parentOrgId},
                           {u"ORG_NAME"_s, place.orgName},
                           {u"ORG_ABBR"_s, place.orgAbbr},
                           {u"TREE_CODE"_s, place.parentCode + place.code},
                       });
    if (place.orgId != oldOrgId)
        RehangChildren(oldOrgId, place.orgId);
}

void TFrmMrgOrgAffiliation::RehangChildren(const QString &oldOrgId, const QString &newOrgId)
{
    const ClientDataSet::Bookmark current = cdsMaster.GetBookmark();
    for (int row = 0; row < cdsMaster.RecordCount(); ++row) {
        if (cdsMaster.TextAt(row, u"PARENT_ORGID") == oldOrgId) {
            cdsMaster.SetRecNo(row);
            EditRow(cdsMaster, {{u"PARENT_ORGID"_s, newOrgId}});
        }
    }
    cdsMaster.GotoBookmark(current);
}

void TFrmMrgOrgAffiliation::ActionDeleteExecute()
{
    if (!QuestionBox(u"是否真的要删除该数据？"_s, u"提示"_s))
        return;
    const DisableWhile running(ui_->ActionDelete);
    const QString code =
        PostRow(u"com.business.basedata.OrgAffiliationManager"_s, u"deleteOrgAffiliation"_s,
                WithLastAndLogUser(
                    {{u"ORG_ID"_s, cdsMaster.FieldText(u"ORG_ID")}, {u"ENABLE_FLAG"_s, u"D"_s}}));
    ShowResultMessage(code, DeleteMessages);
    if (code == u"1")
        cdsMaster.Delete();
}

} // namespace Qel
