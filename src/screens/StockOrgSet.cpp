#include "screens/StockOrgSet.h"

#include "frame/ActionBinding.h"
#include "frame/DataModule.h"
#include "frame/Guards.h"
#include "frame/LibrarySide.h"
#include "frame/MisCommon.h"
#include "frame/Posting.h"
#include "frame/QelUtils.h"
#include "frame/QueryPage.h"
#include "screens/StockOrgSetAdd.h"
#include "ui_StockOrgSet.h"

namespace Qel {

using namespace Qt::StringLiterals;

QString StockPermissionsSql(const QString &text)
{
    return u" select a.org_name as Owner_OrgName, b.org_name, c.*  from bas_org a,      bas_org b,"
           "    stk_org_set c where a.org_id = c.owner_orgid  and b.org_id = c.org_id "
           " and c.last_operate <> 'D' "_s +
           AndLike(u"a.org_code,a.org_name, a.org_name_py,b.org_code,b.org_name,b.org_name_py"_s,
                   text, u" and ") +
           u" order by a.org_name, b.org_name "_s;
}

TFrmStockOrgSet::TFrmStockOrgSet(QWidget *owner)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmStockOrgSet>())
{
    ui_->setupUi(this);
    BindActions(this);
    DataModule().SetFormStyle(this);
    ui_->GridOrgSetView->SetDataSet(&cdsStkOrgSet);
    ui_->GridOrgSetView->SetValueList(u"SHOW_QTY", {{u"0"_s, u"有或无"_s}, {u"1"_s, u"数值"_s}});
    ui_->PageGuide1->Reset();

    Handle(ui_->ActQuery, &QAction::triggered, [this] { ui_->PageGuide1->QueryFirstPage(); });
    Handle(ui_->ActAdd, &QAction::triggered, &TFrmStockOrgSet::ActAddExecute);
    Handle(ui_->ActDel, &QAction::triggered, &TFrmStockOrgSet::ActDelExecute);
    Handle(ui_->ActClose, &QAction::triggered, &TFrmStockOrgSet::close);
    Handle(ui_->PageGuide1, &TPageGuide::ChangePage, &TFrmStockOrgSet::PageGuide1ChangePage);
    Handle(&cdsStkOrgSet, &ClientDataSet::Changed, &TFrmStockOrgSet::UpdateActions);
    HandleKey(ui_->edInfo, Qt::Key_Return, [this] { ui_->ActQuery->trigger(); });
}

TFrmStockOrgSet::~TFrmStockOrgSet() = default;

void TFrmStockOrgSet::FormShow()
{
    UpdateActions();
    ui_->edInfo->setFocus();
}

void TFrmStockOrgSet::PageGuide1ChangePage()
{
    {
        const DisableWhile running(ui_->ActQuery);
        QueryPage(StockPermissionsSql(ui_->edInfo->text()), cdsStkOrgSet, *ui_->PageGuide1);
    }
    FocusAfterQuery(!cdsStkOrgSet.IsEmpty(), ui_->GridOrgSetView, ui_->edInfo);
}

void TFrmStockOrgSet::UpdateActions()
{
    SetEnabledByRule(ui_->ActDel, !cdsStkOrgSet.IsEmpty());
}

void TFrmStockOrgSet::ActAddExecute()
{
    TFrmStockOrgSetAdd dialog(this);
    dialog.ShowModal();
    if (dialog.HasSaved())
        ui_->PageGuide1->QueryFirstPage();
}

void TFrmStockOrgSet::ActDelExecute()
{
    if (!QuestionBox(u"确定要删除该条记录吗？"_s, u"提示"_s))
        return;
    const DisableWhile running(ui_->ActDel);
    const QString code = PostRow(u"com.business.stock.StockManager"_s, u"stockOrgManager"_s,
                                 {{u"OWNER_ORGID"_s, cdsStkOrgSet.FieldText(u"OWNER_ORGID")},
                                  {u"ORG_ID"_s, cdsStkOrgSet.FieldText(u"ORG_ID")},
                                  {u"LAST_OPERATE"_s, u"D"_s},
                                  {u"LAST_USER"_s, RunParam().UserName},
                                  {u"SHOW_QTY"_s, cdsStkOrgSet.FieldText(u"SHOW_QTY")},
                                  {u"LOG_USER_ID"_s, RunParam().UserId}});
    if (code != u"1")
        return InfoBox(u"删除失败！"_s, u"提示"_s);
    DeleteFromPage(cdsStkOrgSet, *ui_->PageGuide1);
}

} // namespace Qel
