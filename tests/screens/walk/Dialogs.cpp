#include "screens/walk/Dialogs.h"

#include "frame/MrgUpdateLog.h"
#include "frame/UpdateLog.h"
#include "screens/MrgOrgAffiliationEdit.h"
#include "screens/OrgSelect.h"
#include "screens/RegionSelect.h"
#include "screens/StockOrgSetAdd.h"
#include "screens/SysAfficheEdit.h"
#include "screens/TraBuyCatalogEdit.h"
#include "screens/TraBuyCatalogUser.h"
#include "screens/UniMemberType.h"
#include "screens/UniProduct.h"
#include "screens/UniRuleConfigure.h"
#include "screens/UniUnionEdit.h"
#include "screens/UniUnionOrgEdit.h"
#include "screens/UniUnionOrgNew.h"
#include "screens/UniUserAdd.h"

namespace Qel::Test {

using namespace Qt::StringLiterals;

namespace {

/// For a dialog that needs nothing but its owner.
template <typename Dialog>
TFrmBaseForm *Make(WalkStage &)
{
    return new Dialog(nullptr);
}

/// For a dialog that is opened on a group.
template <typename Dialog>
TFrmBaseForm *MakeForUnion(WalkStage &)
{
    return new Dialog(nullptr, u"10"_s);
}

TFrmBaseForm *MakeMrgOrgAffiliationEdit(WalkStage &stage)
{
    stage.server.OnQuery(u"AS CODE"_s).Answer(Rows({u"CODE"_s}, {{u"13"_s}}));
    return new TFrmMrgOrgAffiliationEdit(nullptr, stage.table, {});
}

TFrmBaseForm *MakeMrgUpdateLog(WalkStage &)
{
    return new TFrmMrgUpdateLog(nullptr, {u"UNI_PRODUCT"_s, u"10"_s, u"7"_s});
}

TFrmBaseForm *MakeRegionSelect(WalkStage &stage)
{
    stage.server.OnQuery(u"BAS_REGION"_s)
        .Answer(Rows({u"REGION_ID"_s, u"PARENT_ID"_s, u"REGION_CODE"_s, u"REGION_NAME"_s,
                      u"FULL_NAME"_s, u"CHINA_FLAG"_s},
                     {{u"13"_s, u"-1"_s, u"13"_s, u"河北省"_s, u"河北省"_s, u"1"_s}}));
    return new TFrmRegionSelect(nullptr);
}

TFrmBaseForm *MakeSysAfficheEdit(WalkStage &stage)
{
    return new TFrmSysAfficheEdit(nullptr, &stage.table);
}

TFrmBaseForm *MakeUpdateLog(WalkStage &)
{
    return new TFrmUpdateLog(nullptr, u"SYS_AFFICHE"_s, u"1"_s);
}

TFrmBaseForm *MakeUniUnionEdit(WalkStage &stage)
{
    stage.server.OnQuery(u"AS CODE"_s).Answer(Rows({u"CODE"_s}, {{u"13"_s}}));
    return new TFrmUniUnionEdit(nullptr, stage.table, {});
}

TFrmBaseForm *MakeUniUnionOrgEdit(WalkStage &)
{
    return new TFrmUniUnionOrgEdit(nullptr, {.unionId = u"10"_s,
                                             .orgId = u"501"_s,
                                             .orgCode = u"H501"_s,
                                             .orgName = u"市第一医院"_s,
                                             .orgTypeId = u"T1"_s,
                                             .orgTypeName = u"采购成员"_s,
                                             .roles = {u"1"_s, u"0"_s, u"0"_s, u"0"_s},
                                             .remark = u"只采购"_s});
}

TFrmBaseForm *MakeUniUserAdd(WalkStage &stage)
{
    return new TFrmUniUserAdd(nullptr, stage.table);
}

TFrmBaseForm *MakeTraBuyCatalogUser(WalkStage &stage)
{
    return new TFrmTraBuyCatalogUser(nullptr, stage.table, {u"71"_s, u"西药库"_s, u"501"_s});
}

constexpr WalkedDialog Dialogs[]{
    {"TFrmMrgOrgAffiliationEdit", MakeMrgOrgAffiliationEdit},
    {"TFrmMrgUpdateLog", MakeMrgUpdateLog},
    {"TFrmOrgSelect", Make<TFrmOrgSelect>},
    {"TFrmRegionSelect", MakeRegionSelect},
    {"TFrmStockOrgSetAdd", Make<TFrmStockOrgSetAdd>},
    {"TFrmSysAfficheEdit", MakeSysAfficheEdit},
    {"TFrmTraBuyCatalogEdit", Make<TFrmTraBuyCatalogEdit>},
    {"TFrmTraBuyCatalogUser", MakeTraBuyCatalogUser},
    {"TFrmUniProduct", MakeForUnion<TFrmUniProduct>},
    {"TFrmUniRuleConfigure", MakeForUnion<TFrmUniRuleConfigure>},
    {"TFrmUniUnionEdit", MakeUniUnionEdit},
    {"TFrmUniUnionOrgEdit", MakeUniUnionOrgEdit},
    {"TFrmUniUnionOrgNew", MakeForUnion<TFrmUniUnionOrgNew>},
    {"TFrmUniUserAdd", MakeUniUserAdd},
    {"TFrmUpdateLog", MakeUpdateLog},
    {"TfrmUniMemberType", MakeForUnion<TfrmUniMemberType>},
};

} // namespace

std::span<const WalkedDialog> WalkedDialogs()
{
    return Dialogs;
}

} // namespace Qel::Test
