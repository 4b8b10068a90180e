#pragma once

#include "controls/GridColumn.h"
#include "dataset/ClientDataSet.h"

#include <QAbstractTableModel>
#include <QPointer>

namespace Qel {

/// Roles beside Qt's that the models of this layer answer.
enum CellRole : int {
    RawValueRole = Qt::UserRole + 1, ///< the stored text of the cell, also under a value list
    EditorRole,                      ///< GridEditor of the column, as int
    FieldSizeRole,                   ///< largest number of characters of the field; 0: unlimited
};

/// What a list of columns says about the cells of a dataset; shared by the table and the tree.
/// Rows are recNos. Answers nothing for rows and fields that the dataset does not have (any more),
/// so that a view may repaint while the dataset's controls are suspended.
class DataSetCells
{
public:
    ClientDataSet *DataSet() const { return dataSet_; }
    void SetDataSet(ClientDataSet *dataSet);
    const QList<GridColumn> &Columns() const { return columns_; }
    void SetColumns(const QList<GridColumn> &columns);
    void SetValueList(int column, const ValueList &values);
    void SetCaption(int column, const QString &caption);
    void SetBand(int column, const QString &band);
    void SetReadOnly(int column, bool readOnly);
    int ColumnIndex(QStringView field) const; ///< first column of that field; -1 if there is none

    int FieldOf(int column) const; ///< position in the dataset, -1 if it has no such field
    QString RawText(int recNo, int column) const;
    /// Empty for a value outside the value list; a date-time of midnight without its time.
    QString ShownText(int recNo, int column) const;
    QVariant Data(int recNo, int column, int role) const;
    QVariant Header(int column, int role) const;
    Qt::ItemFlags Flags(int column) const; ///< beside selectable and enabled

    /// Makes `recNo` current, edits, sets and posts. Inside an edit that somebody else began only
    /// a tick is posted. False with `error` set when the dataset refuses.
    bool Write(int recNo, int column, const QVariant &value, int role, QString *error);

private:
    bool IsDate(int column) const;
    void Resolve() const;

    QPointer<ClientDataSet> dataSet_;
    QList<GridColumn> columns_;
    mutable FieldDefs resolvedFor_;
    mutable QList<int> fields_;
};

/// A dataset as a table: its visible rows, one column for each GridColumn. Sends the precise row
/// signals of the dataset on. The dataset is not owned.
class DataSetModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    explicit DataSetModel(QObject *parent = nullptr);

    ClientDataSet *DataSet() const { return cells_.DataSet(); }
    void SetDataSet(ClientDataSet *dataSet); ///< nullptr: no rows
    const QList<GridColumn> &Columns() const { return cells_.Columns(); }
    void SetColumns(const QList<GridColumn> &columns);
    void SetValueList(int column, const ValueList &values);
    void SetCaption(int column, const QString &caption);
    void SetBand(int column, const QString &band); ///< caption of the band above the column
    void SetReadOnly(int column, bool readOnly);
    int ColumnIndex(QStringView field) const { return cells_.ColumnIndex(field); }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

signals:
    /// A value from an editor is about to go into the field of the row; before the dataset edits.
    void CellValidating(const QString &field);
    void EditFailed(const QString &message); ///< the dataset refused; the cell keeps its value

private:
    void RefreshColumn(int column);
    void RefreshRowNumbers();

    DataSetCells cells_;
    int rows_ = 0; ///< as told to the views; the dataset may be ahead while it is suspended
};

} // namespace Qel
