#pragma once

#include <QString>

namespace Qel {

/// Whose prices: what one selling member quotes to the group. Either id may be empty.
struct TQuote
{
    QString unionId = {};
    QString saleOrgId = {};
};

/// What the product list is narrowed by; every text may be empty.
struct TPriceFilter
{
    QString information = {}; ///< code, name, trade name or their initials
    QString factory = {};
    QString status = {}; ///< "0" products without a price row, "1" with one; empty: all
    QString productClass = {};
};

/// The statements of the price screen; values are quoted here.
namespace PrcUniPriceSql {
QString Unions(const QString &userId);   ///< the groups that the user is assigned to
QString Sellers(const QString &unionId); ///< members that may sell
QString PriceTypes(const TQuote &quote);
QString Products(const TQuote &quote, const TPriceFilter &filter);
/// Members that may buy, whose code, name or initials contain `org`, each with its price type.
QString Buyers(const TQuote &quote, const QString &org);
} // namespace PrcUniPriceSql

} // namespace Qel
