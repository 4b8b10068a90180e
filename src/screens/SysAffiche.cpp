#include "screens/SysAffiche.h"

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
#include "frame/UpdateLog.h"
#include "screens/SysAfficheEdit.h"
#include "ui_SysAffiche.h"

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

constexpr int DaysShown = 15; // of the creation dates at first

constexpr ResultMessage DeleteMessages[]{
    {u"0", TBoxIcon::Warning, u"数据删除失败！", u"警告"},
};

constexpr ResultMessage CheckMessages[]{
    {u"0", TBoxIcon::Information, u"发布公告失败！", u"提示"},
};

/// The condition of one audience; an audience beyond the three has none.
QString AudienceCondition(const QString &value)
{
    if (value == u"0")
        return u" AND B.PUBLIC_FLAG = '1' "_s;
    if (value == u"1")
        return u" AND B.BUYER_FLAG = '1' "_s;
    if (value == u"2")
        return u" AND B.SALER_FLAG = '1' "_s;
    return {};
}

} // namespace

QString AffichesSql(const TAfficheFilter &filter)
{
    QString sql = u" SELECT B.*, C.UNION_NAME    FROM UNI_USER_UNION A, SYS_AFFICHE B, UNI_UNION C "
                  "  WHERE A.UNION_ID = B.UNION_ID     AND B.UNION_ID = C.UNION_ID "
                  "    AND A.LAST_OPERATE <> 'D'     AND A.USER_ID = "_s +
                  Quoted(filter.userId);
    if (filter.audienceText.trimmed() != u"全部")
        sql += AudienceCondition(filter.audienceValue);
    if (filter.start.isValid() || filter.end.isValid())
        sql += u" AND "_s + DateRangeCondition(u"B.CREATE_DATE"_s, filter.start, filter.end);
    sql += AndLike(u"B.AFFICHE_TITLE"_s, filter.title);
    return sql + u" ORDER BY B.CREATE_DATE DESC "_s;
}

TFrmSysAffiche::TFrmSysAffiche(QWidget *owner)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmSysAffiche>())
{
    ui_->setupUi(this);
    BindActions(this);
    DataModule().SetFormStyle(this);
    ui_->gridMasterView->SetDataSet(&cdsMaster);
    ui_->gridMasterView->SetValueList(u"ENABLE_FLAG",
                                      {{u"1"_s, u"已发布"_s}, {u"0"_s, u"未发布"_s}});

    Handle(ui_->ActionQuery, &QAction::triggered, [this] { ui_->PageGuide1->QueryFirstPage(); });
    Handle(ui_->ActionNew, &QAction::triggered, &TFrmSysAffiche::ActionNewExecute);
    Handle(ui_->ActionModify, &QAction::triggered, &TFrmSysAffiche::ActionModifyExecute);
    Handle(ui_->ActionDelete, &QAction::triggered, &TFrmSysAffiche::ActionDeleteExecute);
    Handle(ui_->ActionCheck, &QAction::triggered, &TFrmSysAffiche::ActionCheckExecute);
    Handle(ui_->ActionLog, &QAction::triggered, &TFrmSysAffiche::ActionLogExecute);
    Handle(ui_->ActionClose, &QAction::triggered, &TFrmSysAffiche::close);
    Handle(ui_->PageGuide1, &TPageGuide::ChangePage, &TFrmSysAffiche::PageGuide1ChangePage);
    Handle(&cdsMaster, &ClientDataSet::Changed, &TFrmSysAffiche::UpdateActions);
    Handle(&cdsMaster, &ClientDataSet::CurrentChanged, &TFrmSysAffiche::UpdateActions);
    Handle(ui_->gridMasterView, &DataGrid::RowDoubleClicked,
           [this] { ui_->ActionModify->trigger(); });
    HandleKey(ui_->gridMasterView, Qt::Key_Return, &TFrmSysAffiche::gridMasterViewKeyPress);
    for (QWidget *filter : QWidgetList{ui_->edStart, ui_->edEnd, ui_->edFlag, ui_->edTitle})
        HandleKey(filter, Qt::Key_Return, [this] { ui_->ActionQuery->trigger(); });
}

TFrmSysAffiche::~TFrmSysAffiche() = default;

void TFrmSysAffiche::FormShow()
{
    UpdateActions();
    ui_->edTitle->setFocus();
    PresetDates(*ui_->edStart, *ui_->edEnd, DaysShown);
}

void TFrmSysAffiche::PageGuide1ChangePage()
{
    const TAfficheFilter filter{.userId = RunParam().UserId,
                                .start = DateIn(*ui_->edStart),
                                .end = DateIn(*ui_->edEnd),
                                .audienceText = ui_->edFlag->currentText(),
                                .audienceValue = ui_->edFlag->EditValue(),
                                .title = ui_->edTitle->text()};
    if (filter.start.isValid() && filter.end.isValid() && filter.start > filter.end) {
        InfoBox(u"开始时间不能大于结束时间"_s, u"提示"_s);
        return ui_->edStart->setFocus();
    }
    {
        const DisableWhile running(ui_->ActionQuery);
        QueryPage(AffichesSql(filter), cdsMaster, *ui_->PageGuide1);
    }
    FocusAfterQuery(!cdsMaster.IsEmpty(), ui_->gridMasterView, ui_->edTitle);
}

void TFrmSysAffiche::UpdateActions()
{
    const bool any = !cdsMaster.IsEmpty();
    for (QAction *action : {ui_->ActionModify, ui_->ActionDelete, ui_->ActionLog})
        SetEnabledByRule(action, any);
    SetEnabledByRule(ui_->ActionCheck, any && cdsMaster.FieldText(u"ENABLE_FLAG") == u"0");
}

void TFrmSysAffiche::gridMasterViewKeyPress()
{
    if (cdsMaster.IsEmpty())
        ActionNewExecute();
    else
        ui_->ActionModify->trigger();
}

void TFrmSysAffiche::ActionNewExecute()
{
    TFrmSysAfficheEdit editor(this, &cdsMaster);
    editor.ShowModal(); // what it added stands in the list
    if (editor.AddedCount() > 0)
        ui_->PageGuide1->SetRecordCount(ui_->PageGuide1->RecordCount() + editor.AddedCount());
}

void TFrmSysAffiche::ActionModifyExecute()
{
    if (cdsMaster.IsEmpty())
        return;
    TFrmSysAfficheEdit editor(this, AfficheOfCurrentRow(cdsMaster));
    if (editor.ShowModal() == TModalResult::Ok)
        EditRow(cdsMaster, ShownValues(editor.Affiche()));
}

void TFrmSysAffiche::ActionDeleteExecute()
{
    if (cdsMaster.IsEmpty() || !QuestionBox(u"是否真的要删除此公告？"_s, u"提示"_s))
        return;
    const DisableWhile running(ui_->ActionDelete);
    const QString code = PostRow(u"com.notic.NoticManager"_s, u"deleteNotic"_s,
                                 {{u"ID"_s, cdsMaster.FieldText(u"ID")}});
    ShowResultMessage(code, DeleteMessages);
    if (code == u"1")
        DeleteFromPage(cdsMaster, *ui_->PageGuide1);
}

void TFrmSysAffiche::ActionCheckExecute()
{
    if (cdsMaster.IsEmpty() || !QuestionBox(u"是否真的要发布此公告？"_s, u"提示"_s))
        return;
    const DisableWhile running(ui_->ActionCheck);
    const QString &userName = RunParam().UserName;
    const QString code = PostRow(u"com.notic.NoticManager"_s, u"confirmNotic"_s,
                                 WithLastUser({{u"ID"_s, cdsMaster.FieldText(u"ID")},
                                               {u"ENABLE_FLAG"_s, u"1"_s},
                                               {u"CHECK_USER"_s, userName}}));
    ShowResultMessage(code, CheckMessages);
    if (code == u"1")
        EditRow(cdsMaster, {{u"ENABLE_FLAG"_s, u"1"_s},
                            {u"CHECK_USER"_s, userName},
                            {u"CHECK_DATE"_s, QDate::currentDate().toString(Qt::ISODate)}});
}

void TFrmSysAffiche::ActionLogExecute()
{
    TFrmUpdateLog(this, u"SYS_AFFICHE"_s, cdsMaster.FieldText(u"ID")).ShowModal();
}

} // namespace Qel
