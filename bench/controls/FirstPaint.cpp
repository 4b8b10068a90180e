#include "FirstPaint.h"

#include "controls/BandedGrid.h"
#include "controls/CurrencyText.h"
#include "support/Ratios.h"
#include "support/Timing.h"

#include <benchmark/benchmark.h>

#include <QAbstractTableModel>
#include <QHeaderView>
#include <QImage>
#include <QTableView>

using namespace Qt::StringLiterals;

namespace Qel::Bench {

namespace {

constexpr int kRounds = 21;
constexpr double kBound = 1.25;

/// What is painted: so many columns, first texts, then prices, some of them not given.
struct Page
{
    int texts;
    int prices;
    QSize size; ///< shows all columns

    int Columns() const { return texts + prices; }
};

constexpr Page kTexts{8, 0, {820, 640}};
constexpr Page kPrices{8, 9, {1'640, 640}};
constexpr int kPriceRows = 200; // the largest page
constexpr int kTextWidth = 100;
constexpr int kPriceWidth = 80;

QString CellText(const Page &page, int row, int column)
{
    if (column < page.texts)
        return u"第%1行%2"_s.arg(row).arg(column);
    const int cents = row * 1'037 + column * 59;
    return cents % 4 == 0 ? QString() : QString::number(cents / 100.0);
}

class VectorModel : public QAbstractTableModel
{
public:
    VectorModel(const Page &page, int rows)
        : page_(page)
        , cells_(size_t(rows))
    {
        for (int row = 0; row < rows; ++row) {
            for (int column = 0; column < page.Columns(); ++column) {
                const QString text = CellText(page, row, column);
                cells_[size_t(row)].push_back(column < page.texts ? text : CurrencyText(text));
            }
        }
    }
    int rowCount(const QModelIndex &parent) const override
    {
        return parent.isValid() ? 0 : int(cells_.size());
    }
    int columnCount(const QModelIndex &parent) const override
    {
        return parent.isValid() ? 0 : page_.Columns();
    }
    QVariant data(const QModelIndex &index, int role) const override
    {
        if (role == Qt::TextAlignmentRole && index.column() >= page_.texts)
            return int(Qt::AlignRight | Qt::AlignVCenter);
        return role == Qt::DisplayRole ? cells_[size_t(index.row())][size_t(index.column())]
                                       : QVariant();
    }

private:
    Page page_;
    std::vector<std::vector<QString>> cells_;
};

void OpenRows(ClientDataSet &dataSet, const Page &page, int rows)
{
    FieldDefs fields;
    for (int column = 0; column < page.Columns(); ++column)
        fields.append(
            {u"C%1"_s.arg(column), column < page.texts ? FieldType::Text : FieldType::Real, 0});
    RowSetBuilder builder(fields);
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < page.Columns(); ++column) {
            const QByteArray text = CellText(page, row, column).toUtf8();
            if (text.isEmpty())
                builder.AddNull();
            else
                builder.AddCell(text);
        }
        builder.EndRow();
    }
    dataSet.Open(RowSet::Load(builder.Finish()));
}

/// From the rows to the first picture of the view that shows them.
void PaintBare(VectorModel &model, const Page &page)
{
    QTableView view;
    view.verticalHeader()->setDefaultSectionSize(20);
    view.verticalHeader()->hide();
    view.setModel(&model);
    for (int column = 0; column < page.Columns(); ++column)
        view.setColumnWidth(column, column < page.texts ? kTextWidth : kPriceWidth);
    view.resize(page.size);
    benchmark::DoNotOptimize(view.grab());
}

QStringList ColumnLines(const Page &page)
{
    QStringList columns;
    for (int column = 0; column < page.Columns(); ++column)
        columns.append(column < page.texts
                           ? u"C%1|列%1|%2"_s.arg(column).arg(kTextWidth)
                           : u"C%1|列%1|%2|currency"_s.arg(column).arg(kPriceWidth));
    return columns;
}

void PaintGrid(ClientDataSet &dataSet)
{
    DataGrid grid;
    grid.SetColumns(ColumnLines(kTexts));
    grid.SetDataSet(&dataSet);
    grid.resize(kTexts.size);
    benchmark::DoNotOptimize(grid.grab());
}

void PaintBandedGrid(ClientDataSet &dataSet)
{
    QStringList fields;
    for (int column = 0; column < kPrices.Columns(); ++column)
        fields.append(u"C%1"_s.arg(column));
    BandedGrid grid;
    grid.SetColumns(ColumnLines(kPrices));
    grid.SetBands({u"药品|"_s + fields.mid(0, kPrices.texts).join(u','),
                   u"价格|"_s + fields.mid(kPrices.texts).join(u',')});
    grid.SetDataSet(&dataSet);
    grid.resize(kPrices.size);
    benchmark::DoNotOptimize(grid.grab());
}

/// The three are painted in turn, so that a busy moment of the machine falls on all alike.
bool MeasureTexts()
{
    VectorModel vector(kTexts, 1'000);
    ClientDataSet page;
    ClientDataSet many;
    OpenRows(page, kTexts, 1'000);
    OpenRows(many, kTexts, 100'000);
    std::vector<double> bareTimes;
    std::vector<double> pageTimes;
    std::vector<double> manyTimes;
    PaintBare(vector, kTexts); // fonts and style are loaded once
    PaintGrid(page);
    for (int round = 0; round < kRounds; ++round) {
        bareTimes.push_back(CpuMilliseconds([&] { PaintBare(vector, kTexts); }));
        pageTimes.push_back(CpuMilliseconds([&] { PaintGrid(page); }));
        manyTimes.push_back(CpuMilliseconds([&] { PaintGrid(many); }));
    }
    const double bare = Median(bareTimes);
    const double own = Median(pageTimes);
    const bool pageMet =
        PrintAtMost("first paint, 1,000 rows, against a bare view", own, bare, kBound);
    return PrintAtMost("first paint, 100,000 rows against 1,000", Median(manyTimes), own, kBound) &&
           pageMet;
}

bool MeasurePrices()
{
    VectorModel vector(kPrices, kPriceRows);
    ClientDataSet page;
    OpenRows(page, kPrices, kPriceRows);
    std::vector<double> bareTimes;
    std::vector<double> ownTimes;
    PaintBare(vector, kPrices);
    PaintBandedGrid(page);
    for (int round = 0; round < kRounds; ++round) {
        bareTimes.push_back(CpuMilliseconds([&] { PaintBare(vector, kPrices); }));
        ownTimes.push_back(CpuMilliseconds([&] { PaintBandedGrid(page); }));
    }
    return PrintAtMost("first paint, 200 x 17 under bands, bare view", Median(ownTimes),
                       Median(bareTimes), kBound);
}

} // namespace

bool MeasureFirstPaint()
{
    const bool textsMet = MeasureTexts();
    return MeasurePrices() && textsMet;
}

} // namespace Qel::Bench
