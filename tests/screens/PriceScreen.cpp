#include "screens/PriceScreen.h"

#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>

namespace Qel::Test {

using namespace Qt::StringLiterals;

namespace {

QStringList ProductColumns()
{
    QStringList columns{u"PRODUCT_SERIAL"_s, u"PRODUCT_NAME"_s, u"ProductID"_s, u"TRADE_NAME"_s,
                        u"FULL_SPEC"_s,      u"DOSE_NAME"_s,    u"WRAP_NAME"_s, u"FACTORY_NAME"_s,
                        u"PRODUCT_LEVEL"_s,  u"SELECTED"_s,     u"PRICE_ID"_s,  u"PRODUCT_ID"_s,
                        u"COST_PRICE"_s};
    for (int slot = 1; slot <= 9; ++slot)
        columns << u"PRICE_0%1"_s.arg(slot);
    return columns;
}

/// A product and what its price row holds: key, retail price and the first slots' prices. Without
/// a price row all of that is NULL.
QStringList Product(const QString &id, const QStringList &priceRow)
{
    QStringList row{u"P"_s + id, u"阿莫西林胶囊"_s, id,        u"阿莫仙"_s, u"0.25g*24粒"_s,
                    u"胶囊剂"_s, u"铝塑"_s,         u"齐鲁"_s, u"一级"_s,   u"0"_s};
    const bool priced = !priceRow.isEmpty();
    row << (priced ? priceRow[0] : Null()) << (priced ? id : Null()) << priceRow.mid(1);
    while (row.size() < 22)
        row << Null();
    return row;
}

} // namespace

RowSet Unions()
{
    return Rows({u"UNION_ID"_s, u"UNION_NAME"_s},
                {{u"10"_s, u"华东采购联合体"_s}, {u"20"_s, u"华南采购联合体"_s}});
}

RowSet Sellers(const QStringList &orgIds)
{
    QList<QStringList> rows;
    for (const QString &id : orgIds)
        rows << QStringList{id, u"医药公司"_s + id};
    return Rows({u"ORG_ID"_s, u"ORG_NAME"_s}, rows);
}

RowSet PriceTypes(const QStringList &types)
{
    QList<QStringList> rows;
    for (const QString &type : types)
        rows << type.split(u' ');
    return Rows({u"PRICE_TYPE_ID"_s, u"PRICE_FIELD"_s, u"PRICE_NAME"_s, u"ENABLE_FLAG"_s}, rows);
}

RowSet PricedProducts()
{
    return Rows(ProductColumns(),
                {Product(u"91"_s, {u"71"_s, u"12.5"_s, u"11"_s, u"10.8"_s, u"9"_s}),
                 Product(u"92"_s, {}), Product(u"93"_s, {u"73"_s, u"3"_s, u"2.5"_s})});
}

RowSet PriceBuyers()
{
    return Rows({u"SELECTED"_s, u"ORG_ID"_s, u"ORG_NAME"_s, u"PRICE_TYPE_ID"_s, u"PRICE_NAME"_s},
                {{u"0"_s, u"801"_s, u"市第一医院"_s, Null(), Null()},
                 {u"0"_s, u"802"_s, u"市第二医院"_s, u"31"_s, u"一级价"_s},
                 {u"0"_s, u"803"_s, u"市第三医院"_s, Null(), Null()}});
}

PriceScreen::PriceScreen(const QString &productClass)
{
    server.OnQueryExact(Expected(u"prices.unions"_s)).Answer(Unions());
    server.OnQueryExact(Expected(u"prices.sellers"_s)).Answer(Sellers({u"501"_s, u"502"_s}));
    server.OnQueryExact(Expected(u"prices.sellers.20"_s)).Answer(Sellers({u"601"_s}));
    server.OnQueryExact(Expected(u"prices.types"_s))
        .Answer(PriceTypes({u"34 04 四级价 1"_s, u"31 01 一级价 1"_s, u"33 03 三级价 0"_s}));
    server.OnQueryExact(Expected(u"prices.types.502"_s)).Answer(PriceTypes({}));
    server.OnQueryExact(Expected(u"prices.types.601"_s)).Answer(PriceTypes({u"61 02 华南价 1"_s}));
    server.OnQuery(u" SELECT A.PRODUCT_SERIAL, "_s).Answer(PricedProducts(), 120);
    server.OnQuery(u" select '0' as selected,"_s).Answer(PriceBuyers());
    form = productClass.isEmpty() ? new TFrmPrcUniPrice : new ClassScreen(productClass);
    ShowScreen(*form);
}

PriceScreen::~PriceScreen()
{
    delete form;
}

void PriceScreen::AnswerPost(const QString &method, const QString &code)
{
    server.OnPost(u"com.business.admin.UniPrice"_s, method).Code(code);
}

void PriceScreen::AnswerSavedPrices(const QStringList &priceIds)
{
    QList<Wire::ResultRow> rows;
    for (const QString &ids : priceIds)
        rows << Wire::ResultRow{
            u"1"_s,
            {{u"PRODUCT_ID"_s, ids.section(u' ', 0, 0)}, {u"PRICE_ID"_s, ids.section(u' ', 1)}}};
    server.OnPost(u"com.business.admin.UniPrice"_s, u"insertUpdatePrcUniPriceProduct"_s)
        .Results(rows);
}

void PriceScreen::ShowTypes()
{
    Child<QTabWidget>(form, u"cxPageControl2"_s)->setCurrentIndex(1);
}

void PriceScreen::Query()
{
    Click(form, u"BtnQuery"_s);
}

void PriceScreen::QueryBuyers()
{
    ShowTypes();
    Click(form, u"btnOrgQuery"_s);
}

void PriceScreen::Select(const QString &box, const QString &value)
{
    Child<ImageComboBox>(form, box)->SetEditValue(value);
}

QString PriceScreen::EditPrice(int row, QStringView field, const QString &text)
{
    Products().DataSet()->SetRecNo(row);
    Products().EditCell(field);
    auto *editor = qobject_cast<QLineEdit *>(QApplication::focusWidget());
    if (!editor)
        FailTest(u"no editor opens for "_s + field.toString());
    Type(editor, text);
    const QString typed = editor->text();
    Press(editor, Qt::Key_Return);
    QCoreApplication::processEvents();
    return typed;
}

QString PriceScreen::ShownPrice(int row, QStringView field) const
{
    return Products().model()->index(row, Products().ColumnIndex(field)).data().toString();
}

QStringList PriceScreen::ShownPriceColumns() const
{
    QStringList columns;
    for (int slot = 1; slot <= 9; ++slot) {
        const QString column = u"PRICE_0%1"_s.arg(slot);
        if (Products().IsColumnVisible(column))
            columns << column + u' ' + Products().ColumnCaption(column);
    }
    return columns;
}

BandedGrid &PriceScreen::Products() const
{
    return *Child<BandedGrid>(form, u"UniPriceGrid"_s);
}

DataGrid &PriceScreen::Types() const
{
    return *Child<DataGrid>(form, u"GridPriceType"_s);
}

DataGrid &PriceScreen::Buyers() const
{
    return *Child<DataGrid>(form, u"GridUniOrg"_s);
}

TPageGuide &PriceScreen::Pages() const
{
    return *Child<TPageGuide>(form, u"PageGuide1"_s);
}

bool PriceScreen::CanSave() const
{
    return Child<QPushButton>(form, u"btnSave"_s)->isEnabled();
}

int PriceScreen::Tab() const
{
    return Child<QTabWidget>(form, u"cxPageControl2"_s)->currentIndex();
}

} // namespace Qel::Test
