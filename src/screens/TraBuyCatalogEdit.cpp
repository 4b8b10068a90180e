#include "screens/TraBuyCatalogEdit.h"

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
#include "ui_TraBuyCatalogEdit.h"

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

constexpr ResultMessage SaveMessages[]{
    {u"0", TBoxIcon::Warning, u"保存数据失败！", u"警告"},
    {u"-1", TBoxIcon::Warning, u"名称重复，保存失败！", u"警告"},
};

/// The opener's table, where it is not open yet.
FieldDefs CatalogFields()
{
    return {{u"CATALOG_ID"_s, FieldType::WideText, 10},
            {u"CATALOG_NAME"_s, FieldType::WideText, 20},
            {u"BUY_ORGID"_s, FieldType::WideText, 10},
            {u"LAST_UPDATE"_s, FieldType::DateTime},
            {u"LAST_USER"_s, FieldType::WideText, 20}};
}

} // namespace

TFrmTraBuyCatalogEdit::TFrmTraBuyCatalogEdit(QWidget *owner)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmTraBuyCatalogEdit>())
{
    ui_->setupUi(this);
    BindActions(this);
    DataModule().SetFormStyle(this);
    SetCancelButton(ui_->btnCancel);

    Handle(ui_->ActionSave, &QAction::triggered, &TFrmTraBuyCatalogEdit::ActionSaveExecute);
    Handle(ui_->btnCancel, &QPushButton::clicked, [this] { SetModalResult(TModalResult::Cancel); });
}

TFrmTraBuyCatalogEdit::~TFrmTraBuyCatalogEdit() = default;

void TFrmTraBuyCatalogEdit::SetName(const QString &name)
{
    ui_->edName->setText(name);
}

QString TFrmTraBuyCatalogEdit::Name() const
{
    return ui_->edName->text().trimmed();
}

void TFrmTraBuyCatalogEdit::FormShow()
{
    if (!isEdit_)
        return StartNext();
    FocusIfPossible(ui_->edName);
    ui_->edName->selectAll();
}

void TFrmTraBuyCatalogEdit::StartNext()
{
    ui_->edName->clear();
    FocusIfPossible(ui_->edName);
    ui_->edName->selectAll();
}

void TFrmTraBuyCatalogEdit::ActionSaveExecute()
{
    const DisableWhile running(ui_->ActionSave);
    if (Name().isEmpty()) {
        WarningBox(u"药库名称不能为空！"_s, u"警告"_s);
        return FocusIfPossible(ui_->edName);
    }
    const QString code = PostRow(u"com.business.admin.TraBuyCatalog"_s, u"insertUpdateBuyCatalog"_s,
                                 {{u"CATALOG_ID"_s, catalogId_},
                                  {u"CATALOG_NAME"_s, Name()},
                                  {u"BUY_ORGID"_s, buyOrgId_},
                                  {u"LAST_USER_ID"_s, RunParam().UserId},
                                  {u"LAST_USER"_s, RunParam().UserName}});
    ShowResultMessage(code, SaveMessages);
    if (code != u"1")
        return;
    if (isEdit_ || !catalogs_)
        return SetModalResult(TModalResult::Ok);
    AppendCatalog();
    StartNext();
}

void TFrmTraBuyCatalogEdit::AppendCatalog()
{
    if (!catalogs_->IsActive()) {
        catalogs_->SetFieldDefs(CatalogFields());
        catalogs_->CreateDataSet();
    }
    AppendRow(*catalogs_, {{u"CATALOG_ID"_s, PostedValue(u"CATALOG_ID")},
                           {u"CATALOG_NAME"_s, Name()},
                           {u"BUY_ORGID"_s, buyOrgId_},
                           {u"LAST_UPDATE"_s, LocalNowText()},
                           {u"LAST_USER"_s, RunParam().UserName}});
}

} // namespace Qel
