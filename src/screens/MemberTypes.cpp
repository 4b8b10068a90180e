#include "screens/MemberTypes.h"

#include "dataset/ClientDataSet.h"
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
    ValueList choices;
    const int value = types.FieldIndex(u"org_type_id");
    const int text = types.FieldIndex(u"org_type_name");
    for (int recNo = 0; recNo < types.RecordCount(); ++recNo)
        choices.append({types.TextAt(recNo, value), types.TextAt(recNo, text)});
    return choices;
}

} // namespace Qel
