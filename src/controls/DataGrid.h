#pragma once

#include "controls/DataSetModel.h"
#include "controls/GridSheet.h"

#include <QTableView>

namespace Qel {

class CurrentRowLink;
class GridHeader;

/// A plain grid over a dataset: one line a row, whole rows selected, the view's current row and
/// the dataset's kept the same. Always has a current row when there are rows. Enter and double
/// click report the current row; Ctrl+C copies the current cell, Ctrl+Shift+C the row; the
/// blank key ticks. A click, F2, F4, Alt+Down or the blank key open the list of a cell that has
/// one. Tab in an editor goes on to the next cell that can be edited, also in the next row, and
/// opens its editor; on a tick it stops. The context menu is made of the widget's actions.
///
/// Layouts give the columns as data: <property name="columns" stdset="0"><stringlist>, each
/// "FIELD|caption|width|editor|flags" (see ParseGridColumn).
class DataGrid : public QTableView
{
    Q_OBJECT
    Q_PROPERTY(QStringList columns READ Columns WRITE SetColumns)
    Q_PROPERTY(int rowHeight READ RowHeight WRITE SetRowHeight)
    Q_PROPERTY(int headerHeight READ HeaderHeight WRITE SetHeaderHeight)
    Q_PROPERTY(QString emptyHint READ EmptyHint WRITE SetEmptyHint)

public:
    explicit DataGrid(QWidget *parent = nullptr);
    ~DataGrid() override;

    void SetDataSet(ClientDataSet *dataSet); ///< not owned; nullptr: none
    ClientDataSet *DataSet() const;
    DataSetModel *Model() const { return model_; }

    QStringList Columns() const;
    virtual void SetColumns(const QStringList &columns);
    int ColumnIndex(QStringView field) const; ///< in the model, not on the screen; -1: none
    // The following take any field; one without a column changes nothing.
    void SetColumnVisible(QStringView field, bool visible);
    bool IsColumnVisible(QStringView field) const;
    void SetColumnCaption(QStringView field, const QString &caption);
    QString ColumnCaption(QStringView field) const;
    void SetColumnReadOnly(QStringView field, bool readOnly);
    void SetValueList(QStringView field, const ValueList &values); ///< also the drop-down's items

    // Least heights in device-independent pixels; a larger font makes them grow.
    int RowHeight() const { return rowHeight_; }
    void SetRowHeight(int height);
    int HeaderHeight() const;
    void SetHeaderHeight(int height);
    const QString &EmptyHint() const { return emptyHint_; }
    void SetEmptyHint(const QString &hint); ///< shown in an open dataset without rows
    virtual void ApplySheet(const GridSheet &sheet);

    /// Takes the keyboard focus and opens the editor of a cell of the current row: of that field;
    /// without one of the current cell, or else of the row's first cell that has an editor.
    void EditCell(QStringView field = {});
    /// What is being typed into a cell goes into the dataset and the editor closes. For commands
    /// that read the dataset: whatever pressed them need not have taken the focus from the editor.
    void FinishEditing();

    void CopyCell() const;
    void CopyRow() const; ///< visible columns in their order on the screen, separated by tabs

signals:
    /// A cell was left with another value, which is about to go into the dataset's field of that
    /// name. The moment to attach a field change handler; not for ticks.
    void CellValidating(const QString &field);
    void RowActivated();     ///< Enter
    void RowDoubleClicked(); ///< on any cell
    void EditFailed(const QString &message);

protected slots:
    void closeEditor(QWidget *editor, QAbstractItemDelegate::EndEditHint hint) override;

protected:
    DataGrid(GridHeader *header, QWidget *parent); ///< takes the header

    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void FitHeights();
    bool DropDown(const QModelIndex &index);
    bool OpensEditor(const QModelIndex &index) const;
    void GoToNextEditable(int step);
    void TickRow(const QModelIndex &current);

    DataSetModel *model_;
    GridHeader *header_;
    CurrentRowLink *link_;
    int rowHeight_ = 20;
    QString emptyHint_;
    QColor background_;
    QColor hintColor_;
};

} // namespace Qel
