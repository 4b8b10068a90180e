#pragma once

#include "DataSetSamples.h"

#include <functional>

namespace Qel::Test {

/// What ClientDataSet promises, written down the simplest way: a vector of rows that is walked for
/// every question. No index, no overlay, no order that is kept.
class PlainTable
{
public:
    using Row = std::vector<Cell>;
    struct Filter
    {
        QString text;
        std::function<bool(const Row &)> passes;
    };

    void Open(std::vector<Row> rows);

    std::vector<int> Visible() const; ///< ids of rows in table order
    int RecNo() const;
    int IdAt(int recNo) const { return Visible()[size_t(recNo)]; }
    const Row &Cells(int id) const { return rows_[size_t(id)].cells; }
    bool IsVisible(int id) const;
    ClientDataSet::State State() const { return state_; }
    std::vector<Row> Posted() const; ///< all rows, hidden ones too, without the pending edit

    void MoveTo(int recNo); ///< clamps
    void Next();
    void Prior();
    bool GoTo(int id);

    void Append(int fieldCount);
    void Edit();
    void Set(int field, const Cell &value);
    void Post();
    void Cancel();
    void Delete();

    void SetFilter(const Filter &filter);
    void SetFiltered(bool on);
    void SetAll(int field, const Cell &value);
    int DeleteRows(const std::function<bool(const Row &)> &doomed);

    int Find(const std::vector<int> &fields, const QStringList &values) const;
    int FindContaining(int field, const QString &part, int from) const;

private:
    struct Entry
    {
        Row cells;
        bool live = true;
    };

    bool Passes(const Entry &entry) const { return !filtered_ || filter_.passes(entry.cells); }
    void Leave(int wasRecNo); ///< the row there is gone; the one in its place becomes current
    void StayNear(int id);

    std::vector<Entry> rows_;
    int current_ = -1; ///< id
    ClientDataSet::State state_ = ClientDataSet::State::Inactive;
    Row before_; ///< of the row in Edit
    int recNoBeforeInsert_ = -1;
    Filter filter_{{}, [](const Row &) { return true; }};
    bool filtered_ = false;
};

} // namespace Qel::Test
