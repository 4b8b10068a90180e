#pragma once

#include <QStyledItemDelegate>

namespace Qel {

/// Draws and edits the cells of a DataGrid as their column says: ticks centred and toggled by a
/// click or the blank key, texts in a line edit bounded by the field's size, value lists in an
/// ImageComboBox, dates in a DateEdit, amounts in a CurrencyEdit. Shows a cell's full text as
/// tooltip when it is elided.
class CellDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model,
                      const QModelIndex &index) const override;
    bool editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                     const QModelIndex &index) override;
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;
};

} // namespace Qel
