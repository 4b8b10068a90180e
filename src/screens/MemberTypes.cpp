#include "screens/MemberTypes.h"

#include "frame/Choices.h"
#include "frame/QelUtils.h"
#include "frame/QueryPage.h"
#include "remote/SoapCtrl.h"

namespace Qel {

using namespace Qt::StringLiterals;

void LoadMemberTypes(const QString &unionId, ClientDataSet &types)
{
    QueryAll(u" select * from uni_org_type where last_operate <> 'D' and union_ID = "_s +
                 Quoted(unionId),
             types, TQueryType::List);
}

ValueList MemberTypeChoices(const ClientDataSet &types)
{
    return ChoicesOf(types, u"ORG_TYPE_ID", u"ORG_TYPE_NAME");
}

} // namespace Qel
