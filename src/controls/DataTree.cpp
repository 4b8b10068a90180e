#include "controls/DataTree.h"

#include "controls/CurrentRowLink.h"
#include "controls/GridHeader.h"
#include "controls/ViewParts.h"

#include <QKeyEvent>
#include <QPainter>
#include <QPen>
#include <QStyledItemDelegate>

#include <utility>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

/// A row is as high as the tree says, whatever the style thinks of a line of text.
class RowDelegate : public QStyledItemDelegate
{
public:
    explicit RowDelegate(DataTree *tree)
        : QStyledItemDelegate(tree)
        , tree_(tree)
    {
    }

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        Q_UNUSED(option);
        Q_UNUSED(index);
        return {0, LeastRowHeight(*tree_, tree_->RowHeight())};
    }

private:
    const DataTree *tree_;
};

} // namespace

DataTree::DataTree(QWidget *parent)
    : QTreeView(parent)
    , model_(new DataSetTreeModel(this))
    , header_(new GridHeader(this))
    , rootValue_(u"-1"_s)
    , emptyHint_(u"没有记录"_s)
{
    SetUpRowView(*this);
    setHeader(header_);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setIndentation(18);
    setItemDelegate(new RowDelegate(this));
    link_ = new CurrentRowLink(
        this, model_, [this](int recNo, int column) { return model_->IndexOf(recNo, column); },
        [this](const QModelIndex &index) { return model_->RecNoOf(index); });
    connect(link_, &CurrentRowLink::Followed, this, &DataTree::FocusMayHaveChanged);
    connect(link_, &CurrentRowLink::PostFailed, this, &DataTree::EditFailed);
    connect(model_, &DataSetTreeModel::EditFailed, this, &DataTree::EditFailed);
    connect(this, &QTreeView::expanded, this,
            [this](const QModelIndex &index) { expandedMarks_.insert(MarkOf(index)); });
    connect(this, &QTreeView::collapsed, this, [this](const QModelIndex &index) {
        expandedMarks_.remove(MarkOf(index));
        FollowCollapse(index);
    });
    connect(this, &QAbstractItemView::doubleClicked, this, &DataTree::NodeDoubleClicked);
}

DataTree::~DataTree() = default;

void DataTree::SetDataSet(ClientDataSet *dataSet)
{
    link_->SetDataSet(dataSet);
    model_->SetDataSet(dataSet);
}

ClientDataSet *DataTree::DataSet() const
{
    return model_->DataSet();
}

void DataTree::SetKeyField(const QString &field)
{
    keyField_ = field;
    model_->SetKeys(keyField_, parentField_, rootValue_);
}

void DataTree::SetParentField(const QString &field)
{
    parentField_ = field;
    model_->SetKeys(keyField_, parentField_, rootValue_);
}

void DataTree::SetRootValue(const QString &value)
{
    rootValue_ = value;
    model_->SetKeys(keyField_, parentField_, rootValue_);
}

// --- Columns -------------------------------------------------------------------------------------

QStringList DataTree::Columns() const
{
    return FormatGridColumns(model_->Columns());
}

void DataTree::SetColumns(const QStringList &columns)
{
    model_->SetColumns(ParseGridColumns(columns));
    ShowColumns(*header_, model_->Columns());
    ColumnsChanged();
}

/// Lines and expand marks stand in the first visible column, and the focus enters there.
void DataTree::ColumnsChanged()
{
    const int entry = FirstVisibleColumn(*header_);
    setTreePosition(entry);
    link_->SetEntryColumn(entry);
    setCurrentIndex({});
    link_->FollowDataSet();
}

int DataTree::ColumnCount() const
{
    return model_->columnCount();
}

int DataTree::ColumnIndex(QStringView field) const
{
    return model_->ColumnIndex(field);
}

void DataTree::SetColumnVisible(QStringView field, bool visible)
{
    const int column = ColumnIndex(field);
    if (column < 0)
        return;
    header_->setSectionHidden(column, !visible);
    ColumnsChanged();
}

bool DataTree::IsColumnVisible(QStringView field) const
{
    const int column = ColumnIndex(field);
    return column >= 0 && !header_->isSectionHidden(column);
}

void DataTree::SetColumnCaption(QStringView field, const QString &caption)
{
    if (const int column = ColumnIndex(field); column >= 0)
        model_->SetCaption(column, caption);
}

void DataTree::SetValueList(QStringView field, const ValueList &values)
{
    if (const int column = ColumnIndex(field); column >= 0)
        model_->SetValueList(column, values);
}

// --- Nodes ---------------------------------------------------------------------------------------

int DataTree::FocusedNode() const
{
    return model_->RecNoOf(currentIndex());
}

void DataTree::FocusNode(int node)
{
    if (node < 0 || !DataSet())
        return;
    DataSet()->SetRecNo(node);
    Reveal(currentIndex());
}

void DataTree::FocusFirstNode()
{
    FocusNode(model_->NextInTreeOrder(-1));
}

bool DataTree::HasChildren(int node) const
{
    return node >= 0 && model_->ChildCount(node) > 0;
}

bool DataTree::IsExpanded(int node) const
{
    return isExpanded(model_->IndexOf(node));
}

void DataTree::ExpandNode(int node)
{
    if (HasChildren(node))
        expand(model_->IndexOf(node));
}

void DataTree::ExpandFocused()
{
    ExpandNode(FocusedNode());
}

void DataTree::ExpandAll()
{
    if (!DataSet())
        return;
    expandAll(); // tells of no node
    for (int node = 0; node < DataSet()->RecordCount(); ++node) {
        if (HasChildren(node))
            expandedMarks_.insert(DataSet()->BookmarkAt(node));
    }
    Reveal(currentIndex());
}

void DataTree::CollapseAll()
{
    collapseAll();
    expandedMarks_.clear();
    int node = FocusedNode();
    while (model_->ParentRecNo(node) >= 0)
        node = model_->ParentRecNo(node);
    FocusNode(node);
}

int DataTree::TopLevelCount() const
{
    return model_->ChildCount(-1);
}

int DataTree::TopLevelNode(int at) const
{
    return model_->ChildRecNo(-1, at);
}

int DataTree::AbsoluteIndex(int node) const
{
    return model_->TreePosition(node);
}

int DataTree::NextNode(int node) const
{
    return model_->NextInTreeOrder(node);
}

QString DataTree::NodeText(int node, QStringView field) const
{
    const ClientDataSet *dataSet = DataSet();
    if (!dataSet || node < 0 || node >= dataSet->RecordCount())
        return {};
    const int column = dataSet->FieldIndex(field);
    return column < 0 ? QString() : dataSet->TextAt(node, column);
}

bool DataTree::NodeContains(int node, const QString &text) const
{
    if (text.isEmpty())
        return false;
    for (int column = 0; column < model_->columnCount(); ++column) {
        if (model_->IndexOf(node, column).data(RawValueRole).toString().contains(text))
            return true;
    }
    return false;
}

void DataTree::FocusMayHaveChanged()
{
    const ClientDataSet *dataSet = DataSet();
    const ClientDataSet::Bookmark mark =
        dataSet && dataSet->RecNo() >= 0 ? dataSet->GetBookmark() : ClientDataSet::NoBookmark;
    if (std::exchange(focusedMark_, mark) == mark)
        return;
    Reveal(currentIndex());
    // Not when the dataset goes away: its owner is being taken apart then.
    if (focusBlocked_ == 0 && dataSet)
        emit FocusedNodeChanged();
}

ClientDataSet::Bookmark DataTree::MarkOf(const QModelIndex &index) const
{
    return DataSet()->BookmarkAt(model_->RecNoOf(index));
}

/// The model was built anew; of the same table, the view shows the same nodes expanded.
void DataTree::reset()
{
    QTreeView::reset();
    const ClientDataSet *dataSet = DataSet();
    const QSet<ClientDataSet::Bookmark> marks = std::exchange(expandedMarks_, {});
    if (marks.isEmpty() || !dataSet)
        return;
    for (int node = 0; node < dataSet->RecordCount(); ++node) {
        if (marks.contains(dataSet->BookmarkAt(node)))
            ExpandNode(node);
    }
}

void DataTree::Reveal(const QModelIndex &index)
{
    for (QModelIndex up = index.parent(); up.isValid(); up = up.parent())
        expand(up);
    if (index.isValid())
        scrollTo(index);
}

/// A focused node that vanishes into a collapsed one hands the focus to it.
void DataTree::FollowCollapse(const QModelIndex &collapsed)
{
    const QModelIndex current = currentIndex();
    for (QModelIndex up = current.parent(); up.isValid(); up = up.parent()) {
        if (up == collapsed.siblingAtColumn(0)) {
            setCurrentIndex(collapsed.siblingAtColumn(current.column()));
            return;
        }
    }
}

// --- Look ----------------------------------------------------------------------------------------

void DataTree::SetRowHeight(int height)
{
    rowHeight_ = height;
    FitHeights();
}

int DataTree::HeaderHeight() const
{
    return header_->LeastHeight();
}

void DataTree::SetHeaderHeight(int height)
{
    header_->SetLeastHeight(height);
}

void DataTree::SetEmptyHint(const QString &hint)
{
    emptyHint_ = hint;
    viewport()->update();
}

void DataTree::SetLines(TreeLines lines)
{
    lines_ = lines;
    viewport()->update();
}

void DataTree::SetLineColor(const QColor &color)
{
    lineColor_ = color;
    viewport()->update();
}

void DataTree::ApplySheet(const GridSheet &sheet)
{
    ApplySheetPalette(*this, sheet);
    header_->SetColor(sheet.header);
    background_ = sheet.background;
    hintColor_ = sheet.backgroundText;
    viewport()->update();
}

void DataTree::FitHeights()
{
    doItemsLayout();
}

void DataTree::changeEvent(QEvent *event)
{
    QTreeView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        FitHeights();
}

void DataTree::paintEvent(QPaintEvent *event)
{
    PaintEmptyArea(*this, {-horizontalOffset(), 0, header_->length(), RowsBottom()}, background_);
    QTreeView::paintEvent(event);
    if (DataSet() && DataSet()->IsActive() && model_->rowCount() == 0)
        PaintHint(*this, emptyHint_, hintColor_);
}

int DataTree::RowsBottom() const
{
    if (indexAt({0, viewport()->height() - 1}).isValid())
        return viewport()->height();
    QModelIndex last;
    for (int rows = model_->rowCount(); rows > 0;
         rows = isExpanded(last) ? model_->rowCount(last) : 0)
        last = model_->index(rows - 1, 0, last);
    return last.isValid() ? visualRect(last.siblingAtColumn(treePosition())).bottom() + 1 : 0;
}

QPen DataTree::LinePen() const
{
    const QColor color =
        lineColor_.isValid() ? lineColor_ : palette().color(QPalette::PlaceholderText);
    QPen pen(color, 1, lines_ == TreeLines::Solid ? Qt::SolidLine : Qt::CustomDashLine);
    if (lines_ == TreeLines::Dotted)
        pen.setDashPattern({1, 1});
    return pen;
}

/// `rect` is the row's indentation: one step of indentation() a level, the row's own the last.
void DataTree::drawBranches(QPainter *painter, const QRect &rect, const QModelIndex &index) const
{
    const int step = indentation();
    const int middle = rect.top() + rect.height() / 2;
    int left = rect.right() + 1 - step;
    const auto hasNext = [this](const QModelIndex &node) {
        return node.row() + 1 < model_->rowCount(node.parent());
    };
    if (lines_ != TreeLines::None) {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing, false);
        painter->setPen(LinePen());
        const int own = left + step / 2;
        const bool isFirst = index.row() == 0 && !index.parent().isValid();
        painter->drawLine(own, middle, left + step - 2, middle);
        painter->drawLine(own, isFirst ? middle : rect.top(), own,
                          hasNext(index) ? rect.bottom() : middle);
        int x = own - step;
        for (QModelIndex up = index.parent(); up.isValid(); up = up.parent(), x -= step) {
            if (hasNext(up))
                painter->drawLine(x, rect.top(), x, rect.bottom());
        }
        painter->restore();
    }
    if (!model_->hasChildren(index.siblingAtColumn(0)))
        return;
    PaintExpandMark(*painter, *this, {left + step / 2, middle},
                    isExpanded(index.siblingAtColumn(0)));
}

// --- Keys ----------------------------------------------------------------------------------------

void DataTree::keyPressEvent(QKeyEvent *event)
{
    const QModelIndex current = currentIndex();
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        event->setAccepted(current.isValid());
        if (current.isValid())
            emit NodeActivated();
        return;
    case Qt::Key_F3:
        emit SearchRequested();
        return;
    case Qt::Key_Plus: // QTreeView would ask for the column of the focus, which never expands
        expand(current.siblingAtColumn(0));
        return;
    case Qt::Key_Minus:
        collapse(current.siblingAtColumn(0));
        return;
    default:
        if (!CopyByKey(*event, VisibleColumns(*header_), current))
            QTreeView::keyPressEvent(event);
    }
}

void DataTree::CopyCell() const
{
    CopyText(CellAsText(currentIndex()));
}

void DataTree::CopyRow() const
{
    CopyText(RowAsText(VisibleColumns(*header_), currentIndex()));
}

} // namespace Qel
