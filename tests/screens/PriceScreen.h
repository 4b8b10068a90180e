#pragma once

#include "controls/BandedGrid.h"
#include "controls/ImageComboBox.h"
#include "remote/PageGuide.h"
#include "screens/PrcUniPrice.h"
#include "screens/ScreenFixture.h"

#include <QPointer>

namespace Qel::Test {

RowSet Unions();                           ///< 10, 20
RowSet Sellers(const QStringList &orgIds); ///< by their ids
/// "31 01 一级价 1": a price type's id, slot, name and whether it is switched on.
RowSet PriceTypes(const QStringList &types);
/// Product 91 with the price row 71, 92 without one, 93 with the price row 73.
RowSet PricedProducts();
/// Buyers 801, 802 (with type 31), 803.
RowSet PriceBuyers();

/// The screen of a class of products: nothing but a test sets the form's parameter.
class ClassScreen : public TFrmPrcUniPrice
{
public:
    explicit ClassScreen(const QString &productClass) { SetFormParam(productClass); }
};

/// The price screen, shown; the server knows group 10 with the sellers 501 (the price types
/// 34 slot 04, 31 slot 01, 33 slot 03 switched off) and 502 (none), and group 20 with the seller
/// 601 (61 slot 02); three products, 120 in all. Questions are answered with their default button.
class PriceScreen : public ScreenFixture
{
public:
    explicit PriceScreen(const QString &productClass = {});
    ~PriceScreen();

    void AnswerPost(const QString &method, const QString &code);
    void AnswerSavedPrices(const QStringList &priceIds); ///< "92 72": PRODUCT_ID and its PRICE_ID

    void ShowTypes(); ///< brings the other tab to the front
    void Query();     ///< the products
    void QueryBuyers();
    void Select(const QString &box, const QString &value); ///< as a user chooses
    /// Opens the cell's editor, types and presses Enter; the text in the editor before that.
    QString EditPrice(int row, QStringView field, const QString &text);
    QString ShownPrice(int row, QStringView field) const;
    QStringList ShownPriceColumns() const; ///< "PRICE_01 一级价"

    BandedGrid &Products() const;
    DataGrid &Types() const;
    DataGrid &Buyers() const;
    TPageGuide &Pages() const;
    bool CanSave() const;
    int Tab() const;

    QPointer<TFrmPrcUniPrice> form;
};

} // namespace Qel::Test
