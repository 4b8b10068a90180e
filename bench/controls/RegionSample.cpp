#include "RegionSample.h"

#include <QHash>

namespace Qel::Bench {

namespace {

constexpr std::array<int, 4> LevelSizes{31, 342, 2'978, kRegions - 31 - 342 - 2'978};
constexpr std::array<QStringView, 4> LevelSuffixes{u"省", u"市", u"县", u"镇"};
constexpr QStringView Syllables =
    u"安宝昌城大东丰福高广海河洪华吉江金康兰林龙南平青清荣山石太泰通武西新兴阳永玉云长";

QString NameOf(int number, int level)
{
    const qsizetype count = Syllables.size();
    QString name;
    name += Syllables[number % count];
    name += Syllables[(number / count + number) % count];
    name += LevelSuffixes[size_t(level)];
    return name;
}

std::vector<RegionRow> MakeRegions()
{
    std::vector<RegionRow> rows;
    rows.reserve(kRegions);
    int above = 0; // first row of the level above
    for (int level = 0; level < int(LevelSizes.size()); ++level) {
        const int first = int(rows.size());
        const int size = LevelSizes[size_t(level)];
        for (int i = 0; i < size; ++i) {
            const int number = first + i;
            const QString name = NameOf(number, level);
            const QString id = QString::number(100'000 + number);
            if (level == 0) {
                rows.push_back({id, QStringLiteral("-1"), id, name, name});
                continue;
            }
            const int parent = above + int(qint64(i) * (first - above) / size);
            rows.push_back(
                {id, rows[size_t(parent)][0], id, name, QString(rows[size_t(parent)][4] + name)});
        }
        above = first;
    }
    return rows;
}

} // namespace

const std::vector<RegionRow> &Regions()
{
    static const std::vector<RegionRow> rows = MakeRegions();
    return rows;
}

RowSet RegionTable()
{
    FieldDefs fields;
    constexpr std::array<QStringView, 5> names{u"REGION_ID", u"PARENT_ID", u"REGION_CODE",
                                               u"REGION_NAME", u"FULL_NAME"};
    for (const QStringView name : names)
        fields.append({name.toString(), FieldType::Text, 200});
    RowSetBuilder builder(fields);
    for (const RegionRow &row : Regions()) {
        for (const QString &cell : row)
            builder.AddCell(cell.toUtf8());
        builder.EndRow();
    }
    return RowSet::Load(builder.Finish());
}

void FillItemTree(QStandardItemModel &model, const std::vector<RegionRow> &rows)
{
    QHash<QString, QStandardItem *> items;
    items.reserve(qsizetype(rows.size()));
    model.setColumnCount(int(RegionRow().size()));
    for (const RegionRow &row : rows) {
        QList<QStandardItem *> cells;
        cells.reserve(qsizetype(row.size()));
        for (const QString &cell : row)
            cells.append(new QStandardItem(cell));
        QStandardItem *parent = items.value(row[1], model.invisibleRootItem());
        parent->appendRow(cells);
        items.insert(row[0], cells[0]);
    }
}

} // namespace Qel::Bench
