#include "FormList.h"

#include "frame/FormRegistryCtrl.h"
#include "screens/MrgOrgAffiliation.h"
#include "screens/OrgRuleSet.h"
#include "screens/PrcUniPrice.h"
#include "screens/StockOrgSet.h"
#include "screens/SysAffiche.h"
#include "screens/TraBuyCatalog.h"
#include "screens/TraRollBack.h"
#include "screens/UniUnion.h"
#include "screens/UniUser.h"

#include <array>

namespace Qel {

namespace {

using TMake = TFrmBaseForm *(*)(QWidget *owner);

struct Form
{
    const char16_t *code;
    const char16_t *caption; ///< with the full-width hyphen; hosts open screens by it
    const char16_t *className;
    TMake make;
};

template <typename Screen>
TFrmBaseForm *Make(QWidget *owner)
{
    return new Screen(owner);
}

constexpr std::array Forms{
    Form{u"ADMIN01", u"营运管理－集团管理", u"TFrmUniUnion", Make<TFrmUniUnion>},
    Form{u"ADMIN02", u"营运管理－企业报价维护", u"TFrmPrcUniPrice", Make<TFrmPrcUniPrice>},
    Form{u"ADMIN03", u"营运管理－集团用户", u"TFrmUniUser", Make<TFrmUniUser>},
    Form{u"ADMIN04", u"营运管理－业务回退", u"TFrmTraRollBack", Make<TFrmTraRollBack>},
    Form{u"ADMIN05", u"营运管理－库存开放维护", u"TFrmStockOrgSet", Make<TFrmStockOrgSet>},
    Form{u"ADMIN06", u"营运管理－机构规则设置", u"TFrmOrgRuleSet", Make<TFrmOrgRuleSet>},
    Form{u"ADMIN07", u"营运管理－机构从属关系", u"TFrmMrgOrgAffiliation",
         Make<TFrmMrgOrgAffiliation>},
    Form{u"ADMIN08", u"营运管理－机构药库设置", u"TFrmTraBuyCatalog", Make<TFrmTraBuyCatalog>},
    Form{u"ADMIN09", u"营运管理－公告管理", u"TFrmSysAffiche", Make<TFrmSysAffiche>},
};

TFormClass ClassOf(const Form &form)
{
    return {QString::fromUtf16(form.className), form.make};
}

} // namespace

void RegisterForms()
{
    for (const Form &form : Forms)
        RegisterForm(ClassOf(form), QString::fromUtf16(form.code), QString::fromUtf16(form.caption),
                     false, {}, {});
}

} // namespace Qel
