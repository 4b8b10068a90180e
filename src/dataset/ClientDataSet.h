#pragma once

#include "dataset/FieldDef.h"
#include "dataset/QelError.h"
#include "dataset/RowSet.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>

namespace Qel {

class ColumnReader;

/// The in-memory table in which every screen holds its rows: a RowSet as it came from the server
/// with an overlay of what was changed since. Has a current row, edit states, filter, bookmarks
/// and counted control suspension. One thread.
///
/// Row positions ("recNo") count the visible rows (live and passing the filter) from 0 in table
/// order; -1 means no current row. NULL is kept apart from the empty text; both read as empty text.
/// Field names are matched without regard to case; of two fields with one label the first is
/// meant, the others are reached by position.
///
/// All members throw EDataSetError when used against these rules (unknown field, closed table,
/// setting a field outside Edit/Insert, bad filter text).
class ClientDataSet : public QObject
{
    Q_OBJECT

public:
    enum class State { Inactive, Browse, Edit, Insert };
    Q_ENUM(State)

    explicit ClientDataSet(QObject *parent = nullptr);
    ~ClientDataSet() override;

    // --- Structure -----------------------------------------------------------------------------
    void SetFieldDefs(const FieldDefs &fields); ///< declares fields of a closed table
    const FieldDefs &Fields() const;            ///< declared or loaded
    int FieldCount() const;
    int FieldIndex(QStringView name) const; ///< -1 if there is none
    int FieldIndexOrThrow(QStringView name) const;
    bool HasField(QStringView name) const { return FieldIndex(name) >= 0; }

    void CreateDataSet();                        ///< opens empty, from the declared fields
    void Open(const RowSet &rows);               ///< replaces rows and field definitions
    void AssignData(const ClientDataSet &other); ///< copies rows and field definitions
    void Close();                                ///< drops the rows; field definitions stay
    bool IsActive() const { return CurrentState() != State::Inactive; }
    State CurrentState() const;
    bool IsEditing() const; ///< Edit or Insert

    // --- Rows and the current row --------------------------------------------------------------
    int RecordCount() const; ///< visible rows; 0 when closed
    bool IsEmpty() const { return RecordCount() == 0; }
    int RecNo() const;
    // Every move posts a pending edit first.
    void SetRecNo(int recNo); ///< clamps to the rows there are
    void First();
    void Last();
    void Next();  ///< past the last row sets Eof() and stays
    void Prior(); ///< before the first row sets Bof() and stays
    bool Eof() const;
    bool Bof() const;

    // --- Cells ---------------------------------------------------------------------------------
    QString FieldText(QStringView name) const; ///< of the current row; empty when there is none
    bool FieldIsNull(QStringView name) const;
    void SetFieldText(QStringView name, const QString &value); ///< in Edit or Insert only
    void SetFieldNull(QStringView name);
    QString FieldTextAt(int field) const; ///< the same by position, for labels that occur twice
    void SetFieldTextAt(int field, const QString &value);
    // Any visible row, by position; empty and null where there is no such row or field, so that a
    // view that paints between two signals is never an error.
    QString TextAt(int recNo, int field) const;
    QString TextAt(int recNo, QStringView field) const { return TextAt(recNo, FieldIndex(field)); }
    QByteArrayView BytesAt(int recNo, int field) const; ///< UTF-8, valid until the next change
    bool IsNullAt(int recNo, int field) const;
    ColumnReader Column(int field) const; ///< for loops over many rows (dataset/ColumnReader.h)

    /// `function` runs after a field of the current row was set, inside the edit, and may itself
    /// set fields. Survives Close and Open as long as a field of that name exists; setting it
    /// again replaces it, an empty function removes it. Does not run again for what it sets in
    /// its own field.
    void SetFieldChangeHandler(const QString &name, std::function<void()> function);

    // --- Editing -------------------------------------------------------------------------------
    void Append(); ///< a new row at the end becomes current, in Insert
    void Edit();   ///< throws if there is no row
    void Post(); ///< nothing outside Edit/Insert; the row leaves if it no longer passes the filter
    void Cancel(); ///< undoes the pending edit; a pending inserted row vanishes
    /// The next row becomes current; if there is none, the last, with Eof(), so that a loop which
    /// deletes or steps on sees every row once. A pending inserted row just vanishes.
    void Delete();

    // --- Finding -------------------------------------------------------------------------------
    /// Finds the first visible row whose fields ("USER_ID" or "USER_ID;CATALOG_ID") equal the
    /// texts and makes it current. Exact, case-sensitive; an empty text finds NULL too. Uses a
    /// hash index that is built on first use. False, and nothing moves, if there is none.
    bool Locate(QStringView fields, const QStringList &values);
    int Find(QStringView fields, const QStringList &values) const; ///< the same, as recNo or -1

    /// First visible row at or after `from` whose field holds `part` (case-sensitive); -1 if there
    /// is none. An empty part is found nowhere. Searches bytes: some gigabytes a second.
    int FindContaining(QStringView field, QStringView part, int from = 0) const;

    /// A mark on a row that survives changes and deletions around it, until the table is closed or
    /// opened anew.
    using Bookmark = qint64;
    static constexpr Bookmark NoBookmark = -1;
    Bookmark GetBookmark() const; ///< of the current row
    Bookmark BookmarkAt(int recNo) const;
    bool BookmarkValid(Bookmark mark) const; ///< the row still exists and is visible
    bool GotoBookmark(Bookmark mark);        ///< false, and nothing moves, if it is not valid

    // --- Filter --------------------------------------------------------------------------------
    /// Comparisons (=, <>, <, <=, >, >=) of a field with a quoted text, a number or NULL, with
    /// "and", "or", "not" and parentheses. "= NULL" means is null; a comparison of a null field
    /// with a text is false, except "<>", which is true. "NAME contains 'x'" is a case-sensitive
    /// part of the text. Texts compare by code point; numbers, and texts with a numeric field, as
    /// numbers. Throws at once if it cannot be read or, in an open table, names no field.
    void SetFilter(const QString &text);
    const QString &Filter() const;
    void SetFiltered(bool on);
    bool IsFiltered() const;

    // --- Bulk ----------------------------------------------------------------------------------
    /// One column of every visible row. Sent as a reset. A change handler of the field runs for
    /// every row with that row current.
    void SetAll(QStringView field, const QString &value);
    /// Deletes every visible row for which `doomed` is true; the current row stays current or
    /// gives way to the nearest row after it. Returns how many. Sent as a reset.
    int DeleteRows(const std::function<bool(int recNo)> &doomed);

    // --- Bound controls ------------------------------------------------------------------------
    void DisableControls(); ///< counted
    void EnableControls();  ///< the last one tells bound controls to look anew
    bool ControlsDisabled() const;

    // --- File ----------------------------------------------------------------------------------
    /// The live rows (filter not applied) as a finished table, without what is not yet posted.
    RowSet ToRowSet() const;
    /// Whole or not at all: written beside the target and renamed. Throws if it cannot.
    void SaveToFile(const QString &path) const;
    /// Reads the file and checks it (format, length, checksum, contents) before anything changes.
    /// Throws an error that names the file.
    void LoadFromFile(const QString &path);

signals:
    // For models; not sent while controls are disabled. Every pair brackets the change.
    void ResetBegin();
    void ResetEnd();
    void RowsAboutToBeInserted(int first, int last);
    void RowsInserted();
    void RowsAboutToBeRemoved(int first, int last);
    void RowsRemoved();
    void RowChanged(int recNo);
    void CurrentChanged(int recNo);

    /// After any change of content or of emptiness (open, close, append, edit, delete, filter);
    /// once after EnableControls if something changed meanwhile.
    void Changed();

private:
    class Impl;
    std::unique_ptr<Impl> d_;
};

/// Suspends a dataset's bound controls for a scope, on every path.
class ControlsSuspender
{
public:
    explicit ControlsSuspender(ClientDataSet &dataSet)
        : dataSet_(dataSet)
    {
        dataSet_.DisableControls();
    }
    ~ControlsSuspender() { dataSet_.EnableControls(); }
    Q_DISABLE_COPY_MOVE(ControlsSuspender)

private:
    ClientDataSet &dataSet_;
};

} // namespace Qel
