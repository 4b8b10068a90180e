#include "screens/PriceTypes.h"

#include "dataset/ClientDataSet.h"
#include "frame/DataSetOperate.h"
#include "frame/LibrarySide.h"

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

constexpr int NameSize = 10; // characters

FieldDefs PriceTypeTableFields()
{
    return {
        {.name = u"SNO"_s, .size = 2},
        {.name = u"Price_name"_s, .size = NameSize},
        {.name = u"enable_flag"_s, .size = 1},
        {.name = u"PRICE_TYPE_ID"_s, .size = 10},
    };
}

/// The slot's type as a recNo; -1 if it has none.
int TypeOf(const ClientDataSet &types, const QString &slot)
{
    return types.IsEmpty() ? -1 : types.Find(u"PRICE_FIELD", {slot});
}

Wire::NamedValues SlotRow(const ClientDataSet &types, const QString &slot)
{
    Wire::NamedValues row{{u"SNO"_s, slot}};
    const int type = TypeOf(types, slot);
    if (type < 0)
        return row + Wire::NamedValues{{u"enable_flag"_s, u"0"_s}};
    // A longer name, which another program gave, would not fit into the table.
    row.append({u"Price_name"_s, types.TextAt(type, u"PRICE_NAME").left(NameSize)});
    for (const QString &field : {u"enable_flag"_s, u"PRICE_TYPE_ID"_s})
        row.append({field, types.TextAt(type, field)});
    return row;
}

} // namespace

QString PriceSlot(int number)
{
    return QString::number(number).rightJustified(2, u'0');
}

QString PriceColumn(const QString &slot)
{
    return u"PRICE_"_s + slot;
}

std::optional<QString> EnabledPriceName(const ClientDataSet &types, const QString &slot)
{
    const int type = TypeOf(types, slot);
    if (type < 0 || types.TextAt(type, u"ENABLE_FLAG") != u"1")
        return std::nullopt;
    return types.TextAt(type, u"PRICE_NAME");
}

void BuildPriceTypeTable(const ClientDataSet &types, ClientDataSet &table)
{
    const ControlsSuspender suspend(table);
    table.Close();
    table.SetFieldDefs(PriceTypeTableFields());
    table.CreateDataSet();
    for (int number = 1; number <= PriceSlots; ++number)
        AppendRow(table, SlotRow(types, PriceSlot(number)));
    table.First();
}

ValueList PriceTypeChoices(const ClientDataSet &types)
{
    ValueList choices;
    if (types.IsEmpty())
        return choices;
    choices.append(ValueItem());
    for (int recNo = 0; recNo < types.RecordCount(); ++recNo) {
        if (types.TextAt(recNo, u"ENABLE_FLAG") == u"1")
            choices.append(
                {types.TextAt(recNo, u"PRICE_TYPE_ID"), types.TextAt(recNo, u"PRICE_NAME")});
    }
    return choices;
}

QList<Wire::NamedValues> PostedPriceTypes(const ClientDataSet &table, const TQuote &quote)
{
    QList<Wire::NamedValues> rows;
    for (int recNo = 0; recNo < table.RecordCount(); ++recNo) {
        const auto text = [&](QStringView field) { return table.TextAt(recNo, field).trimmed(); };
        const QString id = text(u"PRICE_TYPE_ID");
        const QString name = text(u"Price_name");
        if (name.isEmpty() && id.isEmpty())
            continue;
        const bool isCleared = name.isEmpty();
        rows.append({{u"PRICE_TYPE_ID"_s, id},
                     {u"UNION_ID"_s, quote.unionId},
                     {u"SALE_ORGID"_s, quote.saleOrgId},
                     {u"PRICE_NAME"_s, isCleared ? u"删除"_s : name},
                     {u"PRICE_FIELD"_s, text(u"SNO")},
                     {u"ENABLE_FLAG"_s, isCleared ? u"0"_s : text(u"enable_flag")},
                     {u"LAST_USER"_s, RunParam().UserCode},
                     {u"LAST_OPERATE"_s, isCleared ? u"D"_s : u"1"_s}});
    }
    return rows;
}

} // namespace Qel
