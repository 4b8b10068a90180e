#include "screens/StockOrgSetAdd.h"

#include "frame/Guards.h"
#include "frame/LibrarySide.h"
#include "frame/MisCommon.h"
#include "frame/Posting.h"
#include "frame/QelUtils.h"
#include "frame/QueryPage.h"
#include "frame/Ticks.h"
#include "screens/Pickers.h"
#include "ui_StockOrgSetAdd.h"

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

constexpr int ClearButton = 1; // of the owner's edit; the one before it chooses

QList<Wire::NamedValues> TickedPermissions(const ClientDataSet &candidates,
                                           const QString &ownerOrgId, const QString &showQty)
{
    QList<Wire::NamedValues> rows;
    for (const int recNo : TickedRows(candidates))
        rows.append({{u"OWNER_ORGID"_s, ownerOrgId},
                     {u"LAST_OPERATE"_s, u"1"_s},
                     {u"ORG_ID"_s, candidates.TextAt(recNo, u"ORG_ID")},
                     {u"LAST_USER"_s, RunParam().UserName},
                     {u"SHOW_QTY"_s, showQty},
                     {u"LOG_USER_ID"_s, RunParam().UserId}});
    return rows;
}

} // namespace

QString StockCandidatesSql(const QString &ownerOrgId, const QString &text)
{
    const QString owner = Quoted(ownerOrgId);
    return u" select '0' as selected,a.org_code,a.org_name,a.org_id  from bas_org a,"
           " ( select * from stk_org_set where owner_orgid = "_s +
           owner +
           u"    and last_operate<> 'D' ) b, (select distinct u.org_id from uni_org u, "
           "    ( select distinct union_id from uni_org where org_id = "_s +
           owner +
           u"            and last_operate <> 'D' ) v      where u.union_id = v.union_id"
           " and u.last_operate<> 'D' ) d  where  d.org_id = a.org_id "
           " and d.org_id = b.org_id(+)  and b.org_id is null and d.org_id <> "_s +
           owner + AndLike(u"a.org_code,a.org_name,a.org_name_py"_s, text, u" and ") +
           u" order by a.org_name "_s;
}

TFrmStockOrgSetAdd::TFrmStockOrgSetAdd(QWidget *owner)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmStockOrgSetAdd>())
{
    ui_->setupUi(this);
    SetCancelButton(ui_->cxButton2);
    ui_->GridOrgView->SetDataSet(&cdsStkOrg);

    Handle(ui_->edOwnerOrg, &ButtonEdit::ButtonClicked, &TFrmStockOrgSetAdd::edOwnerOrgButtonClick);
    Handle(ui_->edOwnerOrg, &ButtonEdit::ChoiceChanged, &TFrmStockOrgSetAdd::CloseCandidates);
    HandleKey(ui_->edOwnerOrg, Qt::Key_Return, &TFrmStockOrgSetAdd::ChooseOwner);
    Handle(ui_->btnQuery, &QPushButton::clicked, [this] { ui_->PageGuide1->QueryFirstPage(); });
    HandleKey(ui_->edKey, Qt::Key_Return, [this] { ui_->btnQuery->click(); });
    Handle(ui_->PageGuide1, &TPageGuide::ChangePage, &TFrmStockOrgSetAdd::PageGuide1ChangePage);
    Handle(ui_->PageGuide1, &TPageGuide::SelectAll,
           [this](bool ticked) { TickAll(cdsStkOrg, ticked); });
    Handle(ui_->cxButton1, &QPushButton::clicked, &TFrmStockOrgSetAdd::cxButton1Click);
    Handle(ui_->cxButton2, &QPushButton::clicked, [this] { SetModalResult(TModalResult::Cancel); });
}

TFrmStockOrgSetAdd::~TFrmStockOrgSetAdd() = default;

void TFrmStockOrgSetAdd::FormShow()
{
    ui_->edOwnerOrg->setFocus();
}

void TFrmStockOrgSetAdd::edOwnerOrgButtonClick(int button)
{
    if (button == ClearButton)
        ui_->edOwnerOrg->ClearChoice();
    else
        ChooseOwner();
}

void TFrmStockOrgSetAdd::ChooseOwner()
{
    PickOrg(this, u"SELECT * FROM BAS_ORG "_s, *ui_->edOwnerOrg);
    ui_->edKey->setFocus();
}

void TFrmStockOrgSetAdd::PageGuide1ChangePage()
{
    const QString ownerOrgId = ui_->edOwnerOrg->ChosenValue();
    if (ownerOrgId.isEmpty())
        return InfoBox(u"请选择本机构！"_s, u"提示"_s);
    {
        const DisableWhile running(ui_->btnQuery);
        QueryPage(StockCandidatesSql(ownerOrgId, ui_->edKey->text()), cdsStkOrg, *ui_->PageGuide1);
    }
    FocusAfterQuery(!cdsStkOrg.IsEmpty(), ui_->GridOrgView, ui_->edKey);
}

void TFrmStockOrgSetAdd::CloseCandidates()
{
    cdsStkOrg.Close();
    ui_->PageGuide1->Reset();
}

void TFrmStockOrgSetAdd::cxButton1Click()
{
    if (cdsStkOrg.IsEmpty())
        return;
    const DisableWhile running(ui_->cxButton1);
    const QList<Wire::NamedValues> rows = TickedPermissions(
        cdsStkOrg, ui_->edOwnerOrg->ChosenValue(), ui_->cbType1->isChecked() ? u"0"_s : u"1"_s);
    if (rows.isEmpty())
        return InfoBox(u"请选择查看本机构库存的机构！"_s, u"提示"_s);
    const QString code = PostRows(u"com.business.stock.StockManager"_s, u"stockOrgManager"_s, rows);
    if (code != u"1")
        return InfoBox(u"保存失败！"_s, u"提示"_s);
    hasSaved_ = true;
    if (!QuestionBox(u"保存成功，是否继续维护库存设置？"_s, u"提示"_s))
        return SetModalResult(TModalResult::Ok);
    CloseCandidates();
    ui_->edOwnerOrg->setFocus();
}

} // namespace Qel
