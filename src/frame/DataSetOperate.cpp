#include "frame/DataSetOperate.h"

#include "dataset/ClientDataSet.h"

namespace Qel {

namespace {

void PostValues(ClientDataSet &dataSet, const Wire::NamedValues &values)
{
    try {
        for (const auto &[name, value] : values) {
            if (dataSet.HasField(name))
                dataSet.SetFieldText(name, value);
        }
        dataSet.Post();
    } catch (...) {
        dataSet.Cancel();
        throw;
    }
}

void CreateFor(ClientDataSet &dataSet, const Wire::NamedValues &values)
{
    FieldDefs fields;
    for (const auto &[name, value] : values)
        fields.append({.name = name, .type = FieldType::WideText});
    dataSet.SetFieldDefs(fields);
    dataSet.CreateDataSet();
}

} // namespace

void AppendRow(ClientDataSet &dataSet, const Wire::NamedValues &values)
{
    if (!dataSet.IsActive())
        CreateFor(dataSet, values);
    dataSet.Append();
    PostValues(dataSet, values);
}

void EditRow(ClientDataSet &dataSet, const Wire::NamedValues &values)
{
    dataSet.Edit();
    PostValues(dataSet, values);
}

} // namespace Qel
