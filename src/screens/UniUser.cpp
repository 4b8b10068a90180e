#include "screens/UniUser.h"

#include "frame/ActionBinding.h"
#include "frame/DataModule.h"
#include "frame/Guards.h"
#include "frame/MisCommon.h"
#include "frame/Posting.h"
#include "frame/QelUtils.h"
#include "frame/QueryPage.h"
#include "frame/ResultMessages.h"
#include "frame/TreeSearch.h"
#include "screens/UniUserAdd.h"
#include "screens/Unions.h"
#include "ui_UniUser.h"

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

// The room that both lists' columns need; what there is is shared in this proportion.
constexpr int UnionsWidth = 550;
constexpr int UsersWidth = 630;

constexpr ResultMessage MoveOutMessages[]{
    {u"0", TBoxIcon::Error, u"移出用户失败！", u"错误"},
};

} // namespace

QString UnionUsersSql(const QString &unionId)
{
    return u" SELECT A.USER_ID,         A.UNION_ID,         B.USER_CODE,         B.USER_NAME, "
           "        B.ENABLE_FLAG,         B.REMARK,         C.ORG_NAME "
           "   FROM UNI_USER_UNION A, USR_USER B, BAS_ORG C   WHERE A.USER_ID = B.USER_ID "
           "    AND B.ORG_ID = C.ORG_ID     AND A.UNION_ID= "_s +
           Quoted(unionId) + u"    AND A.LAST_OPERATE <> 'D'   ORDER BY B.ORG_ID "_s;
}

TFrmUniUser::TFrmUniUser(QWidget *owner)
    : TFrmBaseForm(owner)
    , ui_(std::make_unique<Ui::TFrmUniUser>())
    , focusChange_([this] { Guarded([this] { LoadUsers(FocusedUnion(u"UNION_ID")); }); })
{
    ui_->setupUi(this);
    ui_->splitter->setSizes({UnionsWidth, UsersWidth});
    BindActions(this);
    DataModule().SetFormStyle(this);
    ui_->TreeGrid->SetDataSet(&cdsUnion);
    ui_->GridUserView->SetDataSet(&cdsUser);
    ui_->GridUserView->SetValueList(u"ENABLE_FLAG", {{u"0"_s, u"禁用"_s}, {u"1"_s, u"启用"_s}});

    Handle(ui_->ActionQuery, &QAction::triggered, &TFrmUniUser::ActionQueryExecute);
    Handle(ui_->ActionNew, &QAction::triggered, &TFrmUniUser::ActionNewExecute);
    Handle(ui_->ActionDelete, &QAction::triggered, &TFrmUniUser::ActionDeleteExecute);
    Handle(ui_->ActionClose, &QAction::triggered, &TFrmUniUser::close);
    Handle(ui_->TreeGrid, &DataTree::FocusedNodeChanged, &TFrmUniUser::TreeGridFocusedNodeChanged);
    Handle(ui_->TreeGrid, &DataTree::SearchRequested, &TFrmUniUser::TreeGridSearch);
    Handle(&cdsUnion, &ClientDataSet::Changed, &TFrmUniUser::UpdateActionNew);
    Handle(&cdsUser, &ClientDataSet::Changed, &TFrmUniUser::UpdateActionDelete);
    HandleKey(ui_->edInfo, Qt::Key_Return, [this] { ui_->ActionQuery->trigger(); });
}

TFrmUniUser::~TFrmUniUser() = default;

void TFrmUniUser::FormShow()
{
    UpdateActionNew();
    UpdateActionDelete();
    ui_->edInfo->setFocus();
}

void TFrmUniUser::ActionQueryExecute()
{
    {
        const DisableWhile running(ui_->ActionQuery);
        const DataTree::FocusSignalBlocker detached(*ui_->TreeGrid);
        cdsUser.Close(); // where no group is found, nobody is listed
        QueryAll(UnionsSql(ui_->edInfo->text()), cdsUnion, TQueryType::Detail);
        LoadUsers(FocusedUnion(u"UNION_ID"));
        focusChange_.Cancel();
    }
    FocusTreeAfterQuery(*ui_->TreeGrid, ui_->edInfo);
}

/// A group without an id leaves the list as it is.
void TFrmUniUser::LoadUsers(const QString &unionId)
{
    if (!unionId.isEmpty())
        QueryAll(UnionUsersSql(unionId), cdsUser, TQueryType::Detail);
    UpdateActionDelete();
}

void TFrmUniUser::TreeGridFocusedNodeChanged()
{
    if (cdsUnion.IsEmpty())
        return;
    // Until they are loaded, the users on screen are another group's.
    SetEnabledByRule(ui_->ActionDelete, false);
    focusChange_.Request();
}

void TFrmUniUser::UpdateActionNew()
{
    SetEnabledByRule(ui_->ActionNew, !cdsUnion.IsEmpty());
}

void TFrmUniUser::UpdateActionDelete()
{
    SetEnabledByRule(ui_->ActionDelete, !cdsUser.IsEmpty());
}

QString TFrmUniUser::FocusedUnion(QStringView field) const
{
    return cdsUnion.FieldText(field).trimmed();
}

void TFrmUniUser::TreeGridSearch()
{
    FindNextInTree(*ui_->TreeGrid, {u"UNION_CODE"_s, u"UNION_NAME"_s, u"REGION_NAME"_s},
                   ui_->edInfo->text().trimmed());
}

void TFrmUniUser::ActionNewExecute()
{
    if (cdsUnion.IsEmpty())
        return;
    TFrmUniUserAdd picker(this, cdsUser);
    picker.UnionId = FocusedUnion(u"UNION_ID");
    picker.UnionName = FocusedUnion(u"UNION_NAME");
    picker.ShowModal(); // what it added stands in the list
}

void TFrmUniUser::ActionDeleteExecute()
{
    if (!QuestionBox(u"确定将用户“"_s + cdsUser.FieldText(u"USER_NAME") + u"”移出“"_s +
                         cdsUnion.FieldText(u"UNION_NAME") + u"”吗？"_s,
                     u"提示"_s))
        return;
    const DisableWhile running(ui_->ActionDelete);
    const QString code = PostRow(u"com.business.admin.UniUser"_s, u"deleteUniUser"_s,
                                 WithLastUser({{u"USER_ID"_s, cdsUser.FieldText(u"USER_ID")},
                                               {u"UNION_ID"_s, cdsUser.FieldText(u"UNION_ID")}}));
    ShowResultMessage(code, MoveOutMessages);
    if (code == u"1")
        cdsUser.Delete();
}

} // namespace Qel
