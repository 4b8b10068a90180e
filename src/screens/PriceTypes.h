#pragma once

#include "controls/GridColumn.h"
#include "screens/PrcUniPriceSql.h"
#include "wire/Wire.h"

#include <QString>

#include <optional>

namespace Qel {

class ClientDataSet;

// A quoting organisation's prices besides the retail price: nine slots, each named and switched
// on by a price type of its own (a row of PRC_UNI_PRICE_TYPE, PRICE_FIELD is the slot).

constexpr int PriceSlots = 9;

QString PriceSlot(int number); ///< 1 to 9 as "01" to "09"
QString
PriceColumn(const QString &slot); ///< "PRICE_01": where a product's price of the slot stands

/// The caption of a slot's price column: the name of its type. None for a slot that has no type or
/// one that is switched off; its column is hidden.
std::optional<QString> EnabledPriceName(const ClientDataSet &types, const QString &slot);

/// Fills `table` anew with the nine slots in their order, named or not: SNO, Price_name,
/// enable_flag, PRICE_TYPE_ID (empty: no type yet). The first is current.
void BuildPriceTypeTable(const ClientDataSet &types, ClientDataSet &table);

/// What a buyer can be given: nothing, or one of the types that are switched on. Without any type
/// there is no choice at all.
ValueList PriceTypeChoices(const ClientDataSet &types);

/// What is posted for the table: a named slot is stored, one that had a type and lost its name is
/// deleted, an empty one is passed over. The operator is named by his code.
QList<Wire::NamedValues> PostedPriceTypes(const ClientDataSet &table, const TQuote &quote);

} // namespace Qel
