#include "frame/Posting.h"

#include "frame/DataModule.h"
#include "frame/LibrarySide.h"

#include <utility>

namespace Qel {

using namespace Qt::StringLiterals;

Wire::NamedValues WithLogUser(Wire::NamedValues row)
{
    row.append({u"LOG_USER_ID"_s, RunParam().UserId});
    row.append({u"LOG_USER_NAME"_s, RunParam().UserName});
    return row;
}

Wire::NamedValues WithLastAndLogUser(Wire::NamedValues row)
{
    row.append({u"LAST_USER"_s, RunParam().UserName});
    return WithLogUser(std::move(row));
}

Wire::NamedValues WithLastUser(Wire::NamedValues row)
{
    row.append({u"LAST_USER"_s, RunParam().UserName});
    row.append({u"LAST_USER_ID"_s, RunParam().UserId});
    return row;
}

QString PostRow(const QString &manager, const QString &method, const Wire::NamedValues &values)
{
    return PostRows(manager, method, {values});
}

QString PostRows(const QString &manager, const QString &method,
                 const QList<Wire::NamedValues> &rows)
{
    TSoapCtrl &soap = DataModule().SoapCtrl();
    soap.RequestParams.Clear();
    for (const Wire::NamedValues &row : rows) {
        soap.RequestParams.NewParams();
        for (const auto &[name, value] : row)
            soap.RequestParams.AddParam(name, value);
        soap.RequestParams.PostParams();
    }
    soap.PostDataList(manager, method, soap.RequestParams, soap.ResultParams);
    return PostedCode(0);
}

int PostedCount()
{
    return DataModule().SoapCtrl().ResultParams.Count();
}

QString PostedCode(int index)
{
    return DataModule().SoapCtrl().ResultParams.GetResultCode(index);
}

QString PostedValue(QStringView name, int index)
{
    return DataModule().SoapCtrl().ResultParams.GetParamValue(index, name);
}

} // namespace Qel
