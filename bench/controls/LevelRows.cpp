#include "LevelRows.h"

namespace Qel::Bench {

using namespace Qt::StringLiterals;

namespace {

constexpr int kTexts = 4;

QString TextOf(QStringView kind, int row, int column)
{
    return u"%1%2第%3项"_s.arg(kind).arg(row).arg(column);
}

void OpenLevel(ClientDataSet &dataSet, QStringView kind, int rows, int masters)
{
    FieldDefs fields{{u"KEY"_s, FieldType::Text, 24}, {u"LINK"_s, FieldType::Text, 24}};
    for (int column = 0; column < kTexts; ++column)
        fields.append({QString(QChar(u'A' + column)), FieldType::Text, 100});
    RowSetBuilder builder(fields);
    for (int row = 0; row < rows; ++row) {
        builder.AddCell(QByteArray::number(row));
        builder.AddCell(QByteArray::number(row % masters));
        for (int column = 0; column < kTexts; ++column)
            builder.AddCell(TextOf(kind, row, column).toUtf8());
        builder.EndRow();
    }
    dataSet.Open(RowSet::Load(builder.Finish()));
}

QList<QStandardItem *> ItemsOf(QStringView kind, int row)
{
    QList<QStandardItem *> items;
    for (int column = 0; column < kTexts; ++column)
        items.append(new QStandardItem(TextOf(kind, row, column)));
    return items;
}

} // namespace

void OpenLevels(ClientDataSet &organisations, ClientDataSet &stores, ClientDataSet &users)
{
    OpenLevel(organisations, u"机构", kOrganisations, 1);
    OpenLevel(stores, u"药库", kStores, kOrganisations);
    OpenLevel(users, u"用户", kUsers, kStores);
}

void FillItemLevels(QStandardItemModel &model)
{
    for (int row = 0; row < kOrganisations; ++row)
        model.appendRow(ItemsOf(u"机构", row));
    for (int row = 0; row < kStores; ++row)
        model.item(row % kOrganisations)->appendRow(ItemsOf(u"药库", row));
    for (int row = 0; row < kUsers; ++row) {
        const int store = row % kStores;
        model.item(store % kOrganisations)
            ->child(store / kOrganisations)
            ->appendRow(ItemsOf(u"用户", row));
    }
}

} // namespace Qel::Bench
