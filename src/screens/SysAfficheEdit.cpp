#include "screens/SysAfficheEdit.h"

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
#include "ui_SysAfficheEdit.h"

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

constexpr ResultMessage SaveMessages[]{
    {u"0", TBoxIcon::Warning, u"保存数据失败！", u"警告"},
};

/// The table of a list that was never queried. Its kind is spelt AFFICH_TYPE, so that the rows'
/// AFFICHE_TYPE finds no field; the server's table has it.
FieldDefs AfficheFields()
{
    const auto text = [](const QString &name, int size) {
        return FieldDef{name, FieldType::WideText, size};
    };
    const auto date = [](const QString &name) { return FieldDef{name, FieldType::DateTime}; };
    return {
        text(u"ID"_s, 10),         date(u"START_DATE"_s),        date(u"END_DATE"_s),
        text(u"AFFICH_TYPE"_s, 1), text(u"AFFICHE_TITLE"_s, 50), text(u"AFFICHE_CONTENT"_s, 500),
        text(u"UNION_ID"_s, 10),   text(u"UNION_NAME"_s, 50),    text(u"PUBLIC_FLAG"_s, 1),
        text(u"SALER_FLAG"_s, 1),  text(u"BUYER_FLAG"_s, 1),     text(u"ENABLE_FLAG"_s, 1),
        date(u"CREATE_DATE"_s),    date(u"CHECK_DATE"_s),        text(u"CHECK_USER"_s, 20),
    };
}

Wire::NamedValues PostedValues(const TAffiche &affiche)
{
    return {
        {u"ID"_s, affiche.id},
        {u"START_DATE"_s, affiche.start},
        {u"END_DATE"_s, affiche.end},
        {u"AFFICHE_TYPE"_s, u"1"_s},
        {u"AFFICHE_TITLE"_s, affiche.title},
        {u"AFFICHE_CONTENT"_s, affiche.content},
        {u"UNION_ID"_s, affiche.unionId},
        {u"PUBLIC_FLAG"_s, affiche.publicFlag},
        {u"SALER_FLAG"_s, affiche.salerFlag},
        {u"BUYER_FLAG"_s, affiche.buyerFlag},
        {u"LAST_USER_ID"_s, RunParam().UserId},
        {u"LAST_USER"_s, RunParam().UserName},
        {u"ENABLE_FLAG"_s, u"0"_s},
    };
}

QString FlagOf(const QCheckBox *mark)
{
    return mark->isChecked() ? u"1"_s : u"0"_s;
}

} // namespace

TAffiche AfficheOfCurrentRow(const ClientDataSet &affiches)
{
    const auto field = [&affiches](QStringView name) { return affiches.FieldText(name); };
    return {
        .id = field(u"ID"),
        .start = field(u"START_DATE"),
        .end = field(u"END_DATE"),
        .title = field(u"AFFICHE_TITLE"),
        .content = field(u"AFFICHE_CONTENT"),
        .publicFlag = field(u"PUBLIC_FLAG"),
        .salerFlag = field(u"SALER_FLAG"),
        .buyerFlag = field(u"BUYER_FLAG"),
        .unionId = field(u"UNION_ID"),
        .unionName = field(u"UNION_NAME"),
    };
}

Wire::NamedValues ShownValues(const TAffiche &affiche)
{
    Wire::NamedValues row{
        {u"START_DATE"_s, affiche.start},        {u"AFFICHE_TITLE"_s, affiche.title},
        {u"AFFICHE_CONTENT"_s, affiche.content}, {u"UNION_ID"_s, affiche.unionId},
        {u"UNION_NAME"_s, affiche.unionName},    {u"PUBLIC_FLAG"_s, affiche.publicFlag},
        {u"SALER_FLAG"_s, affiche.salerFlag},    {u"BUYER_FLAG"_s, affiche.buyerFlag},
        {u"CREATE_USER"_s, RunParam().UserName},
    };
    if (!affiche.end.isEmpty())
        row.append({u"END_DATE"_s, affiche.end});
    return row;
}

QString AfficheUnionsSql(const QString &userId)
{
    return u" SELECT B.UNION_ID, B.UNION_NAME    FROM (SELECT UNION_ID            FROM "
           "UNI_USER_UNION           WHERE USER_ID = "_s +
           Quoted(userId) +
           u"            AND LAST_OPERATE <> 'D') A,         UNI_UNION B   WHERE A.UNION_ID = "
           "B.UNION_ID "_s;
}

TFrmSysAfficheEdit::TFrmSysAfficheEdit(QWidget *owner, Mode mode, const QString &id,
                                       ClientDataSet *target)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmSysAfficheEdit>())
    , mode_(mode)
    , id_(id)
    , target_(target)
{
    ui_->setupUi(this);
    BindActions(this);
    DataModule().SetFormStyle(this);
    SetCancelButton(ui_->btnCancel);

    Handle(ui_->ActionSave, &QAction::triggered, &TFrmSysAfficheEdit::ActionSaveExecute);
    Handle(ui_->btnCancel, &QPushButton::clicked, [this] { SetModalResult(TModalResult::Cancel); });
    Handle(ui_->edUnion, &ImageComboBox::DroppingDown, &TFrmSysAfficheEdit::edUnionInitPopup);
}

TFrmSysAfficheEdit::TFrmSysAfficheEdit(QWidget *owner, ClientDataSet *target)
    : TFrmSysAfficheEdit(owner, Mode::Insert, {}, target)
{
}

TFrmSysAfficheEdit::TFrmSysAfficheEdit(QWidget *owner, const TAffiche &affiche)
    : TFrmSysAfficheEdit(owner, Mode::Edit, affiche.id, nullptr)
{
    ui_->edStart->SetDateText(affiche.start);
    ui_->edEnd->SetDateText(affiche.end);
    ui_->edTitle->setText(affiche.title);
    ui_->edAff->setPlainText(affiche.content);
    ui_->edPublic->setChecked(affiche.publicFlag == u"1");
    ui_->edSaler->setChecked(affiche.salerFlag == u"1");
    ui_->edBuyer->setChecked(affiche.buyerFlag == u"1");
    ui_->edUnion->SetChoice(affiche.unionId, affiche.unionName);
}

TFrmSysAfficheEdit::~TFrmSysAfficheEdit() = default;

void TFrmSysAfficheEdit::FormShow()
{
    if (mode_ == Mode::Insert)
        ClearBoxes();
    FocusFirstBox();
}

void TFrmSysAfficheEdit::ClearBoxes()
{
    ui_->edStart->Clear();
    ui_->edEnd->Clear();
    ui_->edTitle->clear();
    ui_->edAff->clear();
    ui_->edUnion->ClearSelection();
    for (QCheckBox *mark : {ui_->edPublic, ui_->edBuyer, ui_->edSaler})
        mark->setChecked(false);
}

void TFrmSysAfficheEdit::FocusFirstBox()
{
    FocusIfPossible(ui_->edStart);
    ui_->edStart->selectAll();
}

void TFrmSysAfficheEdit::edUnionInitPopup()
{
    if (ui_->edUnion->count() > 0)
        return;
    ClientDataSet unions;
    QueryAll(AfficheUnionsSql(RunParam().UserId), unions, TQueryType::List);
    ValueList items;
    for (int recNo = 0; recNo < unions.RecordCount(); ++recNo)
        items.append({unions.TextAt(recNo, u"UNION_ID"), unions.TextAt(recNo, u"UNION_NAME")});
    ui_->edUnion->SetItems(items);
}

TAffiche TFrmSysAfficheEdit::Affiche() const
{
    return {
        .id = id_,
        .start = ui_->edStart->DateText(),
        .end = ui_->edEnd->DateText(),
        .title = ui_->edTitle->text().trimmed(),
        .content = ui_->edAff->toPlainText(),
        .publicFlag = FlagOf(ui_->edPublic),
        .salerFlag = FlagOf(ui_->edSaler),
        .buyerFlag = FlagOf(ui_->edBuyer),
        .unionId = ui_->edUnion->EditValue(),
        .unionName = ui_->edUnion->ShownText(),
    };
}

bool TFrmSysAfficheEdit::InputIsComplete(const TAffiche &affiche)
{
    QString missing;
    if (affiche.start.isEmpty())
        missing = u"起始时间不能为空！"_s;
    else if (affiche.title.isEmpty())
        missing = u"请输入公告标题！"_s;
    else if (affiche.content.trimmed().isEmpty())
        missing = u"请输入公告内容！"_s;
    else if (affiche.unionId.isEmpty())
        missing = u"请选择接收公告的集团！"_s;
    else
        return true;
    WarningBox(missing, u"警告"_s);
    return false;
}

void TFrmSysAfficheEdit::ActionSaveExecute()
{
    for (DateEdit *date : {ui_->edStart, ui_->edEnd})
        date->TakeTyped();
    const TAffiche affiche = Affiche();
    if (!InputIsComplete(affiche))
        return;
    const QString code = Store(affiche);
    ShowResultMessage(code, SaveMessages);
    if (code != u"1")
        return;
    if (!target_)
        return SetModalResult(TModalResult::Ok);
    AppendToTarget(affiche);
    ClearBoxes();
    FocusFirstBox();
}

QString TFrmSysAfficheEdit::Store(const TAffiche &affiche)
{
    const DisableWhile running(ui_->ActionSave);
    return PostRow(u"com.notic.NoticManager"_s, u"insertUpdateNotic"_s, PostedValues(affiche));
}

void TFrmSysAfficheEdit::AppendToTarget(const TAffiche &affiche)
{
    if (!target_->IsActive()) {
        target_->SetFieldDefs(AfficheFields());
        target_->CreateDataSet();
    }
    Wire::NamedValues row = ShownValues(affiche);
    row.append({
        {u"ID"_s, PostedValue(u"ID")},
        {u"AFFICHE_TYPE"_s, u"1"_s},
        {u"ENABLE_FLAG"_s, u"0"_s},
        {u"CREATE_DATE"_s, QDate::currentDate().toString(Qt::ISODate)},
    });
    AppendRow(*target_, row);
    ++addedCount_;
}

} // namespace Qel
