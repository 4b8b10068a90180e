#pragma once

#include "controls/DataSetTreeModel.h"
#include "controls/GridSheet.h"

#include <QSet>
#include <QTreeView>

namespace Qel {

class CurrentRowLink;
class GridHeader;

/// A tree list over a dataset with a key and a parent field; the focused node and the dataset's
/// current row are kept the same. Read-only. What is expanded stays so as long as the table is not
/// opened anew. A node is named by the recNo of its row (-1: none),
/// which holds until rows are inserted or removed.
///
/// Layouts give keyField, parentField, rootValue and columns (as DataGrid) with stdset="0".
class DataTree : public QTreeView
{
    Q_OBJECT
    Q_PROPERTY(QString keyField READ KeyField WRITE SetKeyField)
    Q_PROPERTY(QString parentField READ ParentField WRITE SetParentField)
    Q_PROPERTY(QString rootValue READ RootValue WRITE SetRootValue)
    Q_PROPERTY(QStringList columns READ Columns WRITE SetColumns)
    Q_PROPERTY(int rowHeight READ RowHeight WRITE SetRowHeight)
    Q_PROPERTY(int headerHeight READ HeaderHeight WRITE SetHeaderHeight)
    Q_PROPERTY(QString emptyHint READ EmptyHint WRITE SetEmptyHint)
    Q_PROPERTY(TreeLines treeLines READ Lines WRITE SetLines)
    Q_PROPERTY(QColor treeLineColor READ LineColor WRITE SetLineColor)

public:
    enum class TreeLines { None, Dotted, Solid };
    Q_ENUM(TreeLines)

    explicit DataTree(QWidget *parent = nullptr);
    ~DataTree() override;

    void SetDataSet(ClientDataSet *dataSet); ///< not owned; nullptr: none
    ClientDataSet *DataSet() const;
    DataSetTreeModel *Model() const { return model_; }

    const QString &KeyField() const { return keyField_; }
    void SetKeyField(const QString &field);
    const QString &ParentField() const { return parentField_; }
    void SetParentField(const QString &field);
    const QString &RootValue() const { return rootValue_; }
    void SetRootValue(const QString &value); ///< default "-1"

    QStringList Columns() const;
    void SetColumns(const QStringList &columns);
    int ColumnCount() const; ///< hidden ones counted
    int ColumnIndex(QStringView field) const;
    void SetColumnVisible(QStringView field, bool visible);
    bool IsColumnVisible(QStringView field) const;
    void SetColumnCaption(QStringView field, const QString &caption);
    void SetValueList(QStringView field, const ValueList &values);

    // --- Nodes ---------------------------------------------------------------------------------
    int FocusedNode() const;
    void FocusNode(int node); ///< expands its ancestors and scrolls to it
    void FocusFirstNode();
    bool HasChildren(int node) const;
    bool IsExpanded(int node) const;
    void ExpandNode(int node); ///< not recursive
    void ExpandFocused();      ///< the focused node if it has children; not recursive
    void ExpandAll();
    void CollapseAll();
    int TopLevelCount() const;
    int TopLevelNode(int at) const;    ///< -1 outside the range
    int AbsoluteIndex(int node) const; ///< place in tree order over all nodes, expanded or not
    int NextNode(int node) const; ///< in tree order, expanded or not; of -1: the first; -1: none
    QString NodeText(int node, QStringView field) const; ///< stored text; no column needed
    /// The text of any column of the node, hidden ones included, contains `text` (case-sensitive;
    /// an empty text: false).
    bool NodeContains(int node, const QString &text) const;

    // --- Look; heights as in DataGrid ----------------------------------------------------------
    int RowHeight() const { return rowHeight_; }
    void SetRowHeight(int height);
    int HeaderHeight() const;
    void SetHeaderHeight(int height);
    const QString &EmptyHint() const { return emptyHint_; }
    void SetEmptyHint(const QString &hint);
    TreeLines Lines() const { return lines_; }
    void SetLines(TreeLines lines);
    const QColor &LineColor() const { return lineColor_; }
    void SetLineColor(const QColor &color); ///< invalid: the default colour
    void ApplySheet(const GridSheet &sheet);

    void CopyCell() const;
    void CopyRow() const;

    /// While one lives, FocusedNodeChanged is not sent; nothing is sent afterwards either.
    class FocusSignalBlocker
    {
    public:
        explicit FocusSignalBlocker(DataTree &tree)
            : tree_(tree)
        {
            ++tree_.focusBlocked_;
        }
        ~FocusSignalBlocker() { --tree_.focusBlocked_; }
        Q_DISABLE_COPY_MOVE(FocusSignalBlocker)

    private:
        DataTree &tree_;
    };

public slots:
    void reset() override;

signals:
    void FocusedNodeChanged(); ///< another row has the focus, or none any more
    void NodeActivated();      ///< Enter
    void NodeDoubleClicked();
    void SearchRequested(); ///< F3
    void EditFailed(const QString &message);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void drawBranches(QPainter *painter, const QRect &rect,
                      const QModelIndex &index) const override;
    void changeEvent(QEvent *event) override;

private:
    void FitHeights();
    void ColumnsChanged();
    void FocusMayHaveChanged();
    ClientDataSet::Bookmark MarkOf(const QModelIndex &index) const;
    void Reveal(const QModelIndex &index);
    void FollowCollapse(const QModelIndex &collapsed);
    QPen LinePen() const;
    int RowsBottom() const; ///< lower end of the last row on the viewport

    DataSetTreeModel *model_;
    GridHeader *header_;
    CurrentRowLink *link_;
    QString keyField_;
    QString parentField_;
    QString rootValue_;
    int rowHeight_ = 20;
    QString emptyHint_;
    QColor background_;
    QColor hintColor_;
    TreeLines lines_ = TreeLines::Dotted;
    QColor lineColor_;
    int focusBlocked_ = 0;
    ClientDataSet::Bookmark focusedMark_ = ClientDataSet::NoBookmark;
    QSet<ClientDataSet::Bookmark> expandedMarks_;
};

} // namespace Qel
