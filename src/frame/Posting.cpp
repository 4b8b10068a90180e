#include "frame/Posting.h"

#include "frame/DataModule.h"

namespace Qel {

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
