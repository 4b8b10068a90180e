#include "screens/RegionSelect.h"

#include "frame/ActionBinding.h"
#include "frame/DataModule.h"
#include "frame/Guards.h"
#include "frame/QueryPage.h"
#include "frame/TreeSearch.h"
#include "ui_RegionSelect.h"

namespace Qel {

using namespace Qt::StringLiterals;

TFrmRegionSelect::TFrmRegionSelect(QWidget *owner)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmRegionSelect>())
{
    ui_->setupUi(this);
    BindActions(this);
    DataModule().SetFormStyle(this);
    ui_->TreeGrid->SetLines(DataTree::TreeLines::Solid);
    ui_->TreeGrid->SetLineColor(Qt::darkGreen);
    SetCancelButton(ui_->BtnCancel);

    DataModule().LoadRegions(cdsQuery, false);
    ui_->TreeGrid->SetDataSet(&cdsQuery);
    ui_->TreeGrid->ExpandFocused();
    for (QAction *action : {ui_->ActionSelect, ui_->ActionFullExpand, ui_->ActionFullCollapse})
        SetEnabledByRule(action, !cdsQuery.IsEmpty());

    const auto select = [this] { ui_->ActionSelect->trigger(); };
    Handle(ui_->ActionQuery, &QAction::triggered, &TFrmRegionSelect::ActionQueryExecute);
    Handle(ui_->ActionSelect, &QAction::triggered, &TFrmRegionSelect::ActionSelectExecute);
    Handle(ui_->ActionFullExpand, &QAction::triggered, [this] { ui_->TreeGrid->ExpandAll(); });
    Handle(ui_->ActionFullCollapse, &QAction::triggered, [this] { ui_->TreeGrid->CollapseAll(); });
    Handle(ui_->BtnCancel, &QPushButton::clicked, [this] { SetModalResult(TModalResult::Cancel); });
    Handle(ui_->TreeGrid, &DataTree::NodeActivated, select);
    Handle(ui_->TreeGrid, &DataTree::NodeDoubleClicked, select);
    Handle(ui_->TreeGrid, &DataTree::SearchRequested, &TFrmRegionSelect::TreeGridSearch);
    HandleKey(ui_->edInformation, Qt::Key_Return, [this] { ui_->ActionQuery->trigger(); });
}

TFrmRegionSelect::~TFrmRegionSelect() = default;

void TFrmRegionSelect::SetInformation(const QString &text)
{
    ui_->edInformation->setText(text);
}

void TFrmRegionSelect::FormShow()
{
    ui_->cxPageControl1->setTabText(0, windowTitle());
    ui_->edInformation->setFocus();
    if (!ui_->edInformation->text().isEmpty())
        ui_->ActionQuery->trigger();
}

void TFrmRegionSelect::ActionQueryExecute()
{
    const int count = cdsQuery.RecordCount();
    if (count == 0)
        return;
    const QString text = ui_->edInformation->text().trimmed();
    const bool onLastFound = cdsQuery.FieldText(u"REGION_ID") == lastLocatedId_;
    const int first = cdsQuery.RecNo() + (onLastFound ? 1 : 0);
    const int found = cdsQuery.FindContaining(u"FULL_NAME", text, first);
    // skipCount_ counts on over hits, so the wrap to the top comes only when exactly a whole
    // table's worth of rows has been passed. Deliberate.
    skipCount_ += (found < 0 ? count : found) - first;
    cdsQuery.SetRecNo(found < 0 ? count - 1 : found);
    if (found >= 0)
        lastLocatedId_ = cdsQuery.FieldText(u"REGION_ID");
    if (skipCount_ == count) {
        skipCount_ = 0;
        lastLocatedId_.clear();
        cdsQuery.First();
    }
    if (!lastLocatedId_.isEmpty())
        cdsQuery.Locate(u"REGION_ID", {lastLocatedId_});
    FocusAfterQuery(true, ui_->TreeGrid, ui_->edInformation);
}

void TFrmRegionSelect::TreeGridSearch()
{
    FindNextInTree(*ui_->TreeGrid, {u"REGION_CODE"_s, u"REGION_NAME"_s, u"FULL_NAME"_s},
                   ui_->edInformation->text().trimmed());
}

void TFrmRegionSelect::ActionSelectExecute()
{
    if (cdsQuery.IsEmpty())
        return;
    RegionId = cdsQuery.FieldText(u"REGION_ID");
    RegionCode = cdsQuery.FieldText(u"REGION_CODE");
    FullName = cdsQuery.FieldText(u"FULL_NAME");
    SetModalResult(TModalResult::Ok);
}

} // namespace Qel
