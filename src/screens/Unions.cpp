#include "screens/Unions.h"

#include "frame/QelUtils.h"

namespace Qel {

using namespace Qt::StringLiterals;

QString UnionsSql(const QString &filter)
{
    return u" SELECT A.*,    B.FULL_NAME AS REGION_NAME,    C.ORG_NAME AS MASTER_ORGNAME "
           " FROM UNI_UNION A,       BAS_REGION B,       BAS_ORG C "
           " WHERE A.REGION_ID=B.REGION_ID(+)    AND A.MASTER_ORGID=C.ORG_ID(+) "
           "   AND A.LAST_OPERATE <> 'D' "_s +
           AndLike(u"A.UNION_CODE, A.UNION_NAME, "_s, filter) + u"ORDER BY A.Union_CODE"_s;
}

} // namespace Qel
