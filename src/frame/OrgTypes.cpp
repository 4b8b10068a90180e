#include "frame/OrgTypes.h"

namespace Qel {

using namespace Qt::StringLiterals;

const ValueList &OrgTypes()
{
    static const ValueList types{
        {u"1"_s, u"生产企业"_s}, {u"2"_s, u"商业企业"_s}, {u"3"_s, u"物流企业"_s},
        {u"4"_s, u"医院"_s},     {u"5"_s, u"药房"_s},     {u"6"_s, u"营运"_s},
    };
    return types;
}

ValueList OrgTypeFilter()
{
    return ValueList{{u"0"_s, AllOrgTypes.toString()}} + OrgTypes();
}

} // namespace Qel
