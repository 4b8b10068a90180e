// The region tree, the first page of a grid and a level grid expanded, beside what Qt alone does
// with the same rows.

#include "FirstPaint.h"
#include "LevelRows.h"
#include "RegionSample.h"
#include "controls/DataSetTreeModel.h"
#include "controls/LevelGrid.h"
#include "support/Ratios.h"
#include "support/Timing.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QImage>
#include <QTemporaryDir>
#include <QTreeView>

using namespace Qt::StringLiterals;
using namespace Qel;
using namespace Qel::Bench;

namespace {

const QStringView NoSuchRegion = u"蓬莱仙岛";

const QString &CacheFile()
{
    static const QTemporaryDir folder;
    static const QString path = [] {
        QString file = folder.filePath(u"regions.dat"_s);
        ClientDataSet regions;
        regions.Open(RegionTable());
        regions.SaveToFile(file);
        return file;
    }();
    return path;
}

// --- Region tree ---------------------------------------------------------------------------------

void TreeFromCacheFile(benchmark::State &state)
{
    const QString &file = CacheFile();
    for (auto _ : state) {
        auto regions = std::make_unique<ClientDataSet>();
        regions->LoadFromFile(file);
        auto tree = std::make_unique<DataSetTreeModel>();
        tree->SetColumns(ParseGridColumns({u"REGION_NAME"_s, u"FULL_NAME"_s}));
        tree->SetKeys(u"REGION_ID"_s, u"PARENT_ID"_s, u"-1"_s);
        tree->SetDataSet(regions.get());
        benchmark::DoNotOptimize(tree->rowCount());
        state.PauseTiming(); // taking it down is not part of building
        if (tree->rowCount() != 31 || regions->RecordCount() != kRegions)
            state.SkipWithError("the tree is not the regions'");
        tree.reset();
        regions.reset();
        state.ResumeTiming();
    }
}

void TreeInItemModel(benchmark::State &state)
{
    const std::vector<RegionRow> &rows = Regions();
    for (auto _ : state) {
        auto model = std::make_unique<QStandardItemModel>();
        FillItemTree(*model, rows);
        benchmark::DoNotOptimize(model->rowCount());
        state.PauseTiming(); // taking it down is not part of filling
        model.reset();
        state.ResumeTiming();
    }
}

void MissInDataSet(benchmark::State &state)
{
    ClientDataSet regions;
    regions.LoadFromFile(CacheFile());
    for (auto _ : state) {
        if (regions.FindContaining(u"FULL_NAME", NoSuchRegion) >= 0)
            state.SkipWithError("found what is not there");
    }
}

bool ContainedBelow(const QAbstractItemModel &model, const QModelIndex &parent)
{
    const int rows = model.rowCount(parent);
    for (int row = 0; row < rows; ++row) {
        if (model.index(row, 4, parent).data().toString().contains(NoSuchRegion) ||
            ContainedBelow(model, model.index(row, 0, parent)))
            return true;
    }
    return false;
}

void MissInItemModel(benchmark::State &state)
{
    QStandardItemModel model;
    FillItemTree(model, Regions());
    for (auto _ : state) {
        if (ContainedBelow(model, {}))
            state.SkipWithError("found what is not there");
    }
}

// --- Expanding every level -----------------------------------------------------------------------

constexpr int kColumnWidth = 100;
constexpr int kExpandRounds = 21;
constexpr QSize kGridSize(820, 640);

void SetUpLevels(LevelGrid &grid)
{
    grid.SetLevels({u"OrgView|KEY"_s, u"StoreView|KEY|LINK"_s, u"UserView|KEY|LINK"_s});
    QStringList columns;
    for (const GridLevel *level : grid.AllLevels()) {
        for (const QChar field : u"ABCD"_s)
            columns.append(
                u"%1.%2|列%2|%3"_s.arg(level->objectName()).arg(field).arg(kColumnWidth));
    }
    grid.SetColumns(columns);
}

/// From the press of the button to the picture with all rows open.
bool MeasureExpandAll()
{
    QStandardItemModel model;
    FillItemLevels(model);
    QTreeView view;
    view.setUniformRowHeights(true);
    view.setModel(&model);
    view.resize(kGridSize);

    ClientDataSet organisations;
    ClientDataSet stores;
    ClientDataSet users;
    OpenLevels(organisations, stores, users);
    LevelGrid grid;
    SetUpLevels(grid);
    grid.Level(u"OrgView")->SetDataSet(&organisations);
    grid.Level(u"StoreView")->SetDataSet(&stores);
    grid.Level(u"UserView")->SetDataSet(&users);
    grid.resize(kGridSize);

    std::vector<double> bareTimes;
    std::vector<double> ownTimes;
    benchmark::DoNotOptimize(view.grab());
    benchmark::DoNotOptimize(grid.grab());
    for (int round = 0; round < kExpandRounds; ++round) {
        bareTimes.push_back(CpuMilliseconds([&] {
            view.expandAll();
            benchmark::DoNotOptimize(view.grab());
        }));
        ownTimes.push_back(CpuMilliseconds([&] {
            grid.ExpandAll();
            benchmark::DoNotOptimize(grid.grab());
        }));
        view.collapseAll();
        grid.CollapseAll();
    }
    return PrintAtMost("expand all, 6,200 rows, against a bare tree", Median(ownTimes),
                       Median(bareTimes), 3);
}

constexpr Goal kGoals[] = {
    {"region tree from its file (item model filled)", "TreeFromCacheFile", "TreeInItemModel", 25,
     true},
    {"locate that misses (item model scanned)", "MissInDataSet", "MissInItemModel", 5, true},
};

} // namespace

BENCHMARK(TreeFromCacheFile)->Unit(benchmark::kMillisecond);
BENCHMARK(TreeInItemModel)->Unit(benchmark::kMillisecond);
BENCHMARK(MissInDataSet)->Unit(benchmark::kMillisecond);
BENCHMARK(MissInItemModel)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const bool timesMet = MeasureGoals(argc, argv, kGoals);
    const bool paintMet = MeasureFirstPaint();
    const bool expandMet = MeasureExpandAll();
    return timesMet && paintMet && expandMet ? 0 : 2;
}
