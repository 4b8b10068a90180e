#include "screens/TraBuyCatalog.h"

#include "frame/ActionBinding.h"
#include "frame/DataModule.h"
#include "frame/DataSetOperate.h"
#include "frame/Guards.h"
#include "frame/LibrarySide.h"
#include "frame/MisCommon.h"
#include "frame/Posting.h"
#include "frame/QelUtils.h"
#include "frame/QueryPage.h"
#include "frame/ResultMessages.h"
#include "screens/TraBuyCatalogEdit.h"
#include "screens/TraBuyCatalogUser.h"
#include "ui_TraBuyCatalog.h"

#include <QScopeGuard>

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

/// This list's own: elsewhere 6 is 营运, and there is no 7.
const ValueList &BuyCatalogOrgTypes()
{
    static const ValueList types{
        {u"1"_s, u"生产企业"_s}, {u"2"_s, u"商业企业"_s}, {u"3"_s, u"物流企业"_s},
        {u"4"_s, u"医院"_s},     {u"5"_s, u"药房"_s},     {u"6"_s, u"政府"_s},
        {u"7"_s, u"营运"_s},
    };
    return types;
}

constexpr ResultMessage DeleteMessages[]{
    {u"0", TBoxIcon::Error, u"删除药库失败！", u"错误"},
};

QString IdList(const QStringList &ids)
{
    QStringList quoted;
    for (const QString &id : ids)
        quoted.append(Quoted(id));
    return quoted.join(u',');
}

QStringList IdsOf(const ClientDataSet &rows, QStringView field)
{
    QStringList ids;
    for (int recNo = 0; recNo < rows.RecordCount(); ++recNo)
        ids.append(rows.TextAt(recNo, field));
    return ids;
}

} // namespace

QString BuyCatalogSql::Organisations(const QString &text)
{
    return u" SELECT ORG_ID AS BUY_ORGID, ORG_NAME, ORG_ABBR, ORG_TYPE, ORG_KIND, ORG_ADDRESS "
           "   FROM BAS_ORG  WHERE (ORG_TYPE = '4' OR ORG_TYPE = '5')  AND LAST_OPERATE <> 'D' "_s +
           AndLike(u"ORG_CODE,ORG_NAME,ORG_ABBR,ORG_NAME_PY"_s, text);
}

QString BuyCatalogSql::Catalogs(const QStringList &orgIds)
{
    return u" SELECT CATALOG_ID, CATALOG_NAME, BUY_ORGID, LAST_USER, LAST_UPDATE  "
           "   FROM TRA_BUY_CATALOG  WHERE BUY_ORGID IN ("_s +
           IdList(orgIds) + u") AND LAST_OPERATE <> 'D' "_s;
}

QString BuyCatalogSql::Users(const QStringList &catalogIds)
{
    return u" SELECT ROWNUM AS KEY_ID,A.CATALOG_ID,A.USER_ID,A.BUY_ORGID,B.USER_CODE,B.USER_NAME,"
           "A.RELATION_FLAG    FROM TRA_USER_BUY_CATALOG A, USR_USER B "
           "  WHERE A.USER_ID = B.USER_ID     AND A.CATALOG_ID IN ("_s +
           IdList(catalogIds) + u")     AND A.LAST_OPERATE <> 'D' "_s;
}

TFrmTraBuyCatalog::TFrmTraBuyCatalog(QWidget *owner)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmTraBuyCatalog>())
{
    ui_->setupUi(this);
    BindActions(this);
    // The look of every screen, but for the paging bar, which keeps the layout's own values.
    for (QWidget *part :
         QList<QWidget *>{ui_->filterBar, ui_->edOrg, ui_->btnQuery, ui_->Grid, ui_->buttonBar})
        DataModule().SetComponentStyle(part);
    ui_->PageGuide1->Reset();
    GridLevel *orgView = ui_->Grid->Level(u"GridOrgView");
    GridLevel *catalogView = ui_->Grid->Level(u"GridCatalogView");
    GridLevel *userView = ui_->Grid->Level(u"GridUserView");
    orgView->SetDataSet(&cdsOrg);
    catalogView->SetDataSet(&cdsCatalog);
    userView->SetDataSet(&cdsUser);
    orgView->SetValueList(u"ORG_TYPE", BuyCatalogOrgTypes());

    Handle(ui_->ActionQuery, &QAction::triggered, [this] { ui_->PageGuide1->QueryFirstPage(); });
    Handle(ui_->ActionClose, &QAction::triggered, &TFrmTraBuyCatalog::close);
    Handle(ui_->ActionNewCatalog, &QAction::triggered, &TFrmTraBuyCatalog::ActionNewCatalogExecute);
    Handle(ui_->ActionEditCatalog, &QAction::triggered,
           &TFrmTraBuyCatalog::ActionEditCatalogExecute);
    Handle(ui_->ActionDelCatalog, &QAction::triggered, &TFrmTraBuyCatalog::ActionDelCatalogExecute);
    Handle(ui_->ActionCatalogUser, &QAction::triggered,
           &TFrmTraBuyCatalog::ActionCatalogUserExecute);
    Handle(ui_->ActionFullExpand, &QAction::triggered, [this] { ui_->Grid->ExpandAll(); });
    Handle(ui_->ActionFullCollapse, &QAction::triggered, [this] { ui_->Grid->CollapseAll(); });
    Handle(ui_->PageGuide1, &TPageGuide::ChangePage, &TFrmTraBuyCatalog::PageGuide1ChangePage);
    Handle(orgView, &GridLevel::RowFocused, &TFrmTraBuyCatalog::GridOrgViewRowFocused);
    Handle(catalogView, &GridLevel::RowFocused, &TFrmTraBuyCatalog::GridCatalogViewRowFocused);
    // Enter and double click on a row run the level's main action; a disabled one does nothing.
    Handle(orgView, &GridLevel::RowActivated, [this] { ui_->ActionNewCatalog->trigger(); });
    Handle(catalogView, &GridLevel::RowActivated, [this] { ui_->ActionEditCatalog->trigger(); });
    Handle(userView, &GridLevel::RowActivated, [this] { ui_->ActionCatalogUser->trigger(); });
    Handle(userView, &GridLevel::RowDoubleClicked, [this] { ui_->ActionCatalogUser->trigger(); });
    Handle(catalogView, &GridLevel::RowDoubleClicked,
           &TFrmTraBuyCatalog::GridCatalogViewRowDoubleClicked);
    HandleKey(ui_->edOrg, Qt::Key_Return, [this] { ui_->ActionQuery->trigger(); });
}

TFrmTraBuyCatalog::~TFrmTraBuyCatalog() = default;

void TFrmTraBuyCatalog::FormShow()
{
    FocusIfPossible(ui_->edOrg);
    RefreshActionStates();
}

// --- The page ------------------------------------------------------------------------------------

void TFrmTraBuyCatalog::PageGuide1ChangePage()
{
    const auto finally = qScopeGuard([this] { RefreshActionStates(); });
    const DisableWhile running(ui_->ActionQuery);
    const ControlsSuspender orgs(cdsOrg);
    const ControlsSuspender catalogs(cdsCatalog);
    const ControlsSuspender users(cdsUser);
    const auto collapsed = qScopeGuard([this] { ShowFirstRow(); });
    LoadPage();
}

/// Each statement asks for the details of the rows that the one before it found; without any, the
/// levels below stay closed.
void TFrmTraBuyCatalog::LoadPage()
{
    cdsUser.Close();
    cdsCatalog.Close();
    QueryPage(BuyCatalogSql::Organisations(ui_->edOrg->text()), cdsOrg, *ui_->PageGuide1);
    if (cdsOrg.IsEmpty())
        return;
    QueryAll(BuyCatalogSql::Catalogs(IdsOf(cdsOrg, u"BUY_ORGID")), cdsCatalog, TQueryType::List);
    if (cdsCatalog.IsEmpty())
        return;
    QueryAll(BuyCatalogSql::Users(IdsOf(cdsCatalog, u"CATALOG_ID")), cdsUser, TQueryType::List);
}

void TFrmTraBuyCatalog::ShowFirstRow()
{
    ui_->Grid->CollapseAll();
    FocusAfterQuery(!cdsOrg.IsEmpty(), ui_->Grid, ui_->edOrg);
    if (!cdsOrg.IsEmpty())
        cdsOrg.First();
}

// --- What can be done ----------------------------------------------------------------------------

void TFrmTraBuyCatalog::RefreshActionStates()
{
    for (QAction *action : {ui_->ActionNewCatalog, ui_->ActionFullExpand, ui_->ActionFullCollapse})
        SetEnabledByRule(action, !cdsOrg.IsEmpty());
    // What a row of the page before has enabled must not reach another organisation's drug store.
    if (!IsCatalogOfCurrentOrg())
        EnableCatalogActions(false);
}

void TFrmTraBuyCatalog::EnableCatalogActions(bool enabled)
{
    SetEnabledByRule(ui_->ActionEditCatalog, enabled);
    SetEnabledByRule(ui_->ActionDelCatalog, enabled);
}

bool TFrmTraBuyCatalog::IsCatalogOfCurrentOrg() const
{
    return !cdsCatalog.IsEmpty() &&
           cdsCatalog.FieldText(u"BUY_ORGID") == cdsOrg.FieldText(u"BUY_ORGID");
}

/// A focused organisation that has drug stores makes one of them current; the others' must be out
/// of reach.
void TFrmTraBuyCatalog::GridOrgViewRowFocused()
{
    if (ui_->ActionQuery->isEnabled())
        EnableCatalogActions(ui_->Grid->Level(u"GridOrgView")->HasDetails(cdsOrg.RecNo()));
}

void TFrmTraBuyCatalog::GridCatalogViewRowFocused()
{
    if (ui_->ActionQuery->isEnabled())
        EnableCatalogActions(true);
}

/// A drug store without users has no user row to set its first ones from, nor anything to expand.
void TFrmTraBuyCatalog::GridCatalogViewRowDoubleClicked()
{
    if (!ui_->Grid->Level(u"GridCatalogView")->HasDetails(cdsCatalog.RecNo()))
        ui_->ActionCatalogUser->trigger();
}

// --- Drug stores ---------------------------------------------------------------------------------

void TFrmTraBuyCatalog::ActionNewCatalogExecute()
{
    TFrmTraBuyCatalogEdit editor(this);
    editor.SetDataSet(&cdsCatalog);
    editor.SetEditMode(false);
    editor.SetBuyOrgId(cdsOrg.FieldText(u"BUY_ORGID"));
    editor.ShowModal(); // what it stored stands in the list
    ui_->Grid->Level(u"GridOrgView")->Expand(cdsOrg.RecNo());
    EnableCatalogActions(IsCatalogOfCurrentOrg());
}

void TFrmTraBuyCatalog::ActionEditCatalogExecute()
{
    if (cdsCatalog.IsEmpty())
        return;
    TFrmTraBuyCatalogEdit editor(this);
    editor.SetEditMode(true);
    editor.SetCatalogId(cdsCatalog.FieldText(u"CATALOG_ID"));
    editor.SetBuyOrgId(cdsOrg.FieldText(u"BUY_ORGID"));
    editor.SetName(cdsCatalog.FieldText(u"CATALOG_NAME"));
    if (editor.ShowModal() != TModalResult::Ok)
        return;
    EditRow(cdsCatalog, {{u"CATALOG_NAME"_s, editor.Name()},
                         {u"LAST_USER"_s, RunParam().UserName},
                         {u"LAST_UPDATE"_s, LocalNowText()}});
}

/// Users of a deleted drug store stay in their table until the next query; without their master
/// they are not shown.
void TFrmTraBuyCatalog::ActionDelCatalogExecute()
{
    if (cdsCatalog.IsEmpty())
        return;
    if (!QuestionBox(u"确定删除“"_s + cdsOrg.FieldText(u"ORG_NAME") + u"”的“"_s +
                         cdsCatalog.FieldText(u"CATALOG_NAME") + u"”吗？ "_s,
                     u"提示"_s))
        return;
    const DisableWhile running(ui_->ActionDelCatalog);
    const QString code =
        PostRow(u"com.business.admin.TraBuyCatalog"_s, u"deleteBuyCatalog"_s,
                WithLastUser({{u"CATALOG_ID"_s, cdsCatalog.FieldText(u"CATALOG_ID")},
                              {u"BUY_ORGID"_s, cdsOrg.FieldText(u"BUY_ORGID")}}));
    ShowResultMessage(code, DeleteMessages);
    if (code == u"1") {
        cdsCatalog.Delete();
        EnableCatalogActions(IsCatalogOfCurrentOrg());
    }
    if (code == u"0" || code == u"1")
        FocusIfPossible(ui_->Grid);
}

void TFrmTraBuyCatalog::ActionCatalogUserExecute()
{
    if (cdsCatalog.IsEmpty())
        return;
    TFrmTraBuyCatalogUser dialog(this, cdsUser,
                                 {.catalogId = cdsCatalog.FieldText(u"CATALOG_ID"),
                                  .catalogName = cdsCatalog.FieldText(u"CATALOG_NAME"),
                                  .buyOrgId = cdsOrg.FieldText(u"BUY_ORGID")});
    dialog.ShowModal(); // what it submitted stands in the list
}

} // namespace Qel
