#include "Samples.h"

#include "dataset/ClientDataSet.h"
#include "dataset/ColumnReader.h"
#include "support/Ratios.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QFile>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSortFilterProxyModel>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlQueryModel>
#include <QTemporaryDir>

#include <cstdio>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

using namespace Qel;
using namespace Qel::Bench;
using namespace Qt::StringLiterals;

namespace {

// --- Load
// ------------------------------------------------------------------------------------------

void LoadRowSet(benchmark::State &state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(RowSet::Load(SampleBlock()));
}

void CopyBytes(benchmark::State &state)
{
    std::vector<char> target(size_t(SampleBlock().size()), '\1'); // touched: a warm copy
    for (auto _ : state) {
        std::memcpy(target.data(), SampleBlock().constData(), target.size());
        benchmark::ClobberMemory();
    }
}

void LoadItemModel(benchmark::State &state)
{
    const StringColumns columns = StringColumnsOf(SampleRows());
    for (auto _ : state) {
        auto model = std::make_unique<QStandardItemModel>();
        FillItemModel(*model, columns);
        state.PauseTiming();
        model.reset();
        state.ResumeTiming();
    }
}

void LoadJsonStrings(benchmark::State &state)
{
    for (auto _ : state) {
        const QJsonArray rows = QJsonDocument::fromJson(SampleJson()).object()[u"rows"].toArray();
        StringColumns columns(kColumns);
        for (const QJsonValue &row : rows) {
            const QJsonArray cells = row.toArray();
            for (qsizetype i = 0; i < cells.size(); ++i)
                columns[size_t(i)].push_back(cells[i].toString());
        }
        benchmark::DoNotOptimize(columns);
    }
}

void LoadSqlModel(benchmark::State &state)
{
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"bench"_s);
        db.setDatabaseName(u":memory:"_s);
        if (!db.open()) {
            state.SkipWithError("no SQLite driver");
            return;
        }
        QStringList names;
        QStringList marks;
        for (const FieldDef &field : SampleRows().Fields()) {
            names << field.name + u" TEXT"_s;
            marks << u"?"_s;
        }
        QSqlQuery query(db);
        query.exec(u"CREATE TABLE T(%1)"_s.arg(names.join(u',')));
        db.transaction();
        query.prepare(u"INSERT INTO T VALUES(%1)"_s.arg(marks.join(u',')));
        for (int row = 0; row < kRows; ++row) {
            for (int field = 0; field < kColumns; ++field)
                query.bindValue(field, SampleRows().Text(row, field));
            query.exec();
        }
        db.commit();
        for (auto _ : state) {
            QSqlQueryModel model;
            model.setQuery(u"SELECT * FROM T"_s, db);
            while (model.canFetchMore())
                model.fetchMore();
            benchmark::DoNotOptimize(model.rowCount());
        }
    }
    QSqlDatabase::removeDatabase(u"bench"_s);
}

// --- Bulk
// ------------------------------------------------------------------------------------------

void SetAllDataSet(benchmark::State &state)
{
    ClientDataSet dataSet;
    dataSet.Open(SampleRows());
    bool on = false;
    for (auto _ : state) {
        on = !on;
        dataSet.SetAll(u"F3", on ? u"1"_s : u"0"_s);
    }
}

void SetAllStrings(benchmark::State &state)
{
    StringColumns columns = StringColumnsOf(SampleRows());
    bool on = false;
    for (auto _ : state) {
        on = !on;
        const QString value = on ? u"1"_s : u"0"_s;
        for (QString &cell : columns[3])
            cell = value;
        benchmark::ClobberMemory();
    }
}

void DeleteTenthDataSet(benchmark::State &state)
{
    for (auto _ : state) {
        state.PauseTiming();
        auto dataSet = std::make_unique<ClientDataSet>();
        dataSet->Open(SampleRows());
        state.ResumeTiming();
        const ColumnReader keys = dataSet->Column(0);
        dataSet->DeleteRows([&keys](int recNo) { return keys.Bytes(recNo).endsWith('3'); });
        state.PauseTiming();
        dataSet.reset();
        state.ResumeTiming();
    }
}

void DeleteTenthStrings(benchmark::State &state)
{
    const StringColumns original = StringColumnsOf(SampleRows());
    for (auto _ : state) {
        state.PauseTiming();
        auto columns = std::make_unique<StringColumns>(original);
        state.ResumeTiming();
        std::vector<bool> doomed(kRows);
        for (size_t row = 0; row < kRows; ++row)
            doomed[row] = (*columns)[0][row].endsWith(u'3');
        for (std::vector<QString> &column : *columns) {
            size_t row = 0;
            std::erase_if(column, [&](const QString &) { return bool(doomed[row++]); });
        }
        state.PauseTiming();
        columns.reset();
        state.ResumeTiming();
    }
}

void FilterContainsDataSet(benchmark::State &state)
{
    ClientDataSet dataSet;
    dataSet.Open(SampleRows());
    dataSet.SetFiltered(true);
    bool on = false;
    for (auto _ : state) {
        on = !on;
        dataSet.SetFilter(on ? u"F1 contains '大药房连锁77'"_s : u"F1 contains '大药房连锁78'"_s);
    }
}

void FilterContainsProxy(benchmark::State &state)
{
    QStandardItemModel model;
    FillItemModel(model, StringColumnsOf(SampleRows()));
    QSortFilterProxyModel proxy;
    proxy.setSourceModel(&model);
    proxy.setFilterKeyColumn(1);
    bool on = false;
    for (auto _ : state) {
        on = !on;
        proxy.setFilterFixedString(on ? u"大药房连锁77"_s : u"大药房连锁78"_s);
        benchmark::DoNotOptimize(proxy.rowCount());
    }
}

void IndexDataSet(benchmark::State &state)
{
    for (auto _ : state) {
        state.PauseTiming();
        auto dataSet = std::make_unique<ClientDataSet>();
        dataSet->Open(SampleRows());
        state.ResumeTiming();
        benchmark::DoNotOptimize(dataSet->Find(u"F0", {u"100050000"_s}));
        state.PauseTiming();
        dataSet.reset();
        state.ResumeTiming();
    }
}

void IndexHash(benchmark::State &state)
{
    const StringColumns columns = StringColumnsOf(SampleRows());
    for (auto _ : state) {
        auto index = std::make_unique<QHash<QString, int>>();
        for (int row = 0; row < kRows; ++row)
            index->insert(columns[0][size_t(row)], row);
        benchmark::DoNotOptimize(index->value(u"100050000"_s));
        state.PauseTiming();
        index.reset();
        state.ResumeTiming();
    }
}

// --- Cache file
// ------------------------------------------------------------------------------------

void LoadCacheFile(benchmark::State &state)
{
    // 44,703 rows of nine columns, as many as the divisions down to townships.
    QTemporaryDir folder;
    const QString path = folder.filePath(u"cache.dat"_s);
    ClientDataSet dataSet;
    dataSet.Open(SampleRows());
    dataSet.DeleteRows([](int recNo) { return recNo >= 44'703; });
    dataSet.SaveToFile(path);
    for (auto _ : state)
        dataSet.LoadFromFile(path);
}

constexpr Goal kGoals[] = {
    {"load: check against warm copy", "LoadRowSet", "CopyBytes", 2, false},
    {"load: QStandardItemModel", "LoadRowSet", "LoadItemModel", 80, true},
    {"load: QSqlQueryModel, SQLite in memory", "LoadRowSet", "LoadSqlModel", 80, true},
    {"load: QJsonDocument into QStrings", "LoadRowSet", "LoadJsonStrings", 50, true},
    {"set one column on every row: QStrings", "SetAllDataSet", "SetAllStrings", 0.05, false},
    {"delete a tenth of the rows: QStrings", "DeleteTenthDataSet", "DeleteTenthStrings", 0.05,
     false},
    {"filter by part: QSortFilterProxyModel", "FilterContainsDataSet", "FilterContainsProxy", 0.03,
     false},
    {"key index: QHash", "IndexDataSet", "IndexHash", 0.1, false},
};

/// Not a time, so measured once and beside the benchmarks.
bool PrintMemory()
{
    const QByteArray &block = SampleBlock();
    SampleRows();
    qint64 before = BytesInUse();
    auto dataSet = std::make_unique<ClientDataSet>();
    QByteArray body = block;
    body.detach();
    dataSet->Open(RowSet::Load(body));
    body.clear();
    const qint64 own = BytesInUse() - before;
    const double ownRatio = double(own) / double(block.size());
    dataSet.reset();

    before = BytesInUse();
    QStandardItemModel model;
    FillItemModel(model, StringColumnsOf(SampleRows())); // afterwards it alone owns the strings
    const qint64 peer = BytesInUse() - before;
    const double peerRatio = double(peer) / double(own);
    std::printf("\nmemory: untouched dataset %.1f MB = %.3f of its body (goal <= 1.1)\n",
                double(own) / 1e6, ownRatio);
    std::printf("memory: QStandardItemModel %.1f MB = %.1f times the dataset (goal >= 12)\n",
                double(peer) / 1e6, peerRatio);
    return ownRatio <= 1.1 && peerRatio >= 12;
}

} // namespace

#define QEL_BENCH(function) BENCHMARK(function)->Unit(benchmark::kMillisecond)
QEL_BENCH(LoadRowSet);
QEL_BENCH(CopyBytes);
QEL_BENCH(LoadItemModel);
QEL_BENCH(LoadSqlModel);
QEL_BENCH(LoadJsonStrings);
QEL_BENCH(SetAllDataSet);
QEL_BENCH(SetAllStrings);
QEL_BENCH(DeleteTenthDataSet);
QEL_BENCH(DeleteTenthStrings);
QEL_BENCH(FilterContainsDataSet);
QEL_BENCH(FilterContainsProxy);
QEL_BENCH(IndexDataSet);
QEL_BENCH(IndexHash);
QEL_BENCH(LoadCacheFile);

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const bool timesMet = MeasureGoals(argc, argv, kGoals);
    const bool memoryMet = PrintMemory();
    return timesMet && memoryMet ? 0 : 2;
}
