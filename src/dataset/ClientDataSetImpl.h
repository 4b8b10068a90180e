#pragma once

#include "dataset/ClientDataSet.h"
#include "dataset/FieldValue.h"
#include "dataset/KeyIndex.h"
#include "dataset/RowFilter.h"
#include "dataset/RowOrder.h"
#include "dataset/RowTable.h"

#include <algorithm>
#include <map>
#include <utility>

namespace Qel {

/// What a dataset consists of, for the files that implement it: ClientDataSet.cpp (structure, rows,
/// cells, file), ClientDataSetEdit.cpp (what changes rows), ClientDataSetFind.cpp (what looks for
/// rows: keys, parts, filter).
class ClientDataSet::Impl
{
public:
    explicit Impl(ClientDataSet &owner)
        : q(owner)
    {
    }

    // --- Guards ---
    void RequireActive() const;
    void RequireInactive() const;
    void RequireRow() const;
    void RequireField(int field) const;
    bool IsEditing() const { return state == State::Edit || state == State::Insert; }
    bool HasCell(int recNo, int field) const
    {
        return state != State::Inactive && recNo >= 0 && recNo < order.Size() && field >= 0 &&
               field < fields.size();
    }
    quint32 CurrentRow() const { return order.At(current); }

    // --- Telling bound controls; while they are suspended only what is owed to them is noted ---
    template <typename Signal, typename... Args>
    void Tell(Signal signal, Args... args)
    {
        if (suspended > 0)
            owed.reset = true;
        else
            emit(q.*signal)(args...);
    }
    void TellCurrent()
    {
        if (suspended > 0)
            owed.current = true;
        else
            emit q.CurrentChanged(current);
    }
    void TellChanged()
    {
        if (suspended > 0)
            owed.changed = true;
        else
            emit q.Changed();
    }

    // --- Moving ---
    void MoveTo(int recNo)
    {
        eof = bof = order.Size() == 0;
        if (std::exchange(current, recNo) != recNo)
            TellCurrent();
    }
    void MoveToClamped(int recNo)
    {
        MoveTo(std::clamp(recNo, std::min(0, order.Size() - 1), order.Size() - 1));
    }

    // --- Whole contents ---
    void ReplaceRows(RowTable newTable, FieldDefs newFields, State newState, RowFilter boundFilter);
    void ReplaceOrder(RowOrder newOrder, quint32 nearRow);
    RowOrder OrderOf(const RowTable &rows, const RowFilter *passing) const;
    void Refilter();

    // --- Cells ---
    void SetCell(int field, RowTable::CellCode code);
    void RunHandler(int field);
    RowTable::CellCode CodeOf(const FieldValue &value)
    {
        return value.isNull ? RowTable::Null : table.CodeOf(value.utf8);
    }
    void NumberRow(quint32 row);
    void RemoveCurrent(int nextRecNo, bool reachesEnd);
    void SetAllOneByOne(int field, const QString &value);

    KeyIndex &IndexOver(QStringView names);

    struct Undo
    {
        int field;
        RowTable::CellCode code;
    };
    struct Handler
    {
        std::function<void()> function;
        bool running = false;
    };
    struct Owed
    {
        bool reset = false;
        bool current = false;
        bool changed = false;
    };

    ClientDataSet &q;
    FieldDefs fields;
    State state = State::Inactive;
    RowTable table;
    RowOrder order;
    quint32 generation = 0; ///< tells bookmarks of one opening from those of the next

    int current = -1;
    bool eof = true;
    bool bof = true;

    std::vector<Undo> undo; ///< what the pending edit replaced, each field once
    int currentBeforeInsert = -1;

    QString filterText;
    RowFilter filter; ///< bound to the fields whenever it is in force
    bool filtered = false;

    std::map<QString, std::shared_ptr<Handler>> handlers; ///< by upper-case name
    std::map<int, qint64> nextNumbers;                    ///< of auto-increment fields
    std::vector<KeyIndex> indexes;

    int suspended = 0;
    Owed owed;
};

} // namespace Qel
