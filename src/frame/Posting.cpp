#include "frame/Posting.h"

#include "frame/DataModule.h"

namespace Qel {

QString PostRow(const QString &manager, const QString &method, const Wire::NamedValues &values)
{
    TSoapCtrl &soap = DataModule().SoapCtrl();
    soap.RequestParams.Clear();
    soap.RequestParams.NewParams();
    for (const auto &[name, value] : values)
        soap.RequestParams.AddParam(name, value);
    soap.RequestParams.PostParams();
    soap.PostDataList(manager, method, soap.RequestParams, soap.ResultParams);
    return soap.ResultParams.GetResultCode(0);
}

QString PostedValue(QStringView name, int index)
{
    return DataModule().SoapCtrl().ResultParams.GetParamValue(index, name);
}

} // namespace Qel
