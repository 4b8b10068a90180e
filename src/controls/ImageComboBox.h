#pragma once

#include "controls/GridColumn.h"

#include <QComboBox>

#include <functional>
#include <optional>

namespace Qel {

/// A drop-down list of values shown by their texts (and icons). No selection is the empty value.
/// Adding items selects nothing. The wheel changes it only when it has the focus. A list that is
/// filled late, when it first drops down, can show a choice before it holds the item.
/// Layout properties (stdset="0"): items, each "value|text"; editValue after items; itemHeight.
class ImageComboBox : public QComboBox
{
    Q_OBJECT
    Q_PROPERTY(QStringList items READ Items WRITE SetItems)
    Q_PROPERTY(QString editValue READ EditValue WRITE SetEditValue NOTIFY EditValueChanged)
    Q_PROPERTY(int itemHeight READ ItemHeight WRITE SetItemHeight)

public:
    explicit ImageComboBox(QWidget *parent = nullptr);

    QStringList Items() const;
    void SetItems(const QStringList &items); ///< the value stays if it is among them
    void SetItems(const ValueList &items);
    void AddItem(const QString &value, const QString &text, const QIcon &icon = {});
    void ClearItems(); ///< the value becomes empty

    QString EditValue() const; ///< of the selected item or of the choice; empty when there is none
    /// Selects the first item with that value; none if there is none.
    void SetEditValue(const QString &value);
    /// The same, but a value that is not among the items is the choice, shown by `text`, until an
    /// item is selected or nothing. It is selected as soon as items with it are set.
    void SetChoice(const QString &value, const QString &text);
    QString ShownText() const; ///< of the selected item or of the choice; empty when there is none
    void ClearSelection();     ///< the items stay

    int ItemHeight() const { return itemHeight_; }
    void SetItemHeight(int height); ///< least height of a list line, device-independent pixels

    void showPopup() override; ///< the list starts at the selected item, else at the first

signals:
    /// Another value was selected, by the user or by code, or none any more. (The user's choice
    /// alone is QComboBox::activated.)
    void EditValueChanged();
    /// The list is about to drop down, with the items there are when the signal is through.
    void DroppingDown();

protected:
    void paintEvent(QPaintEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void FillAnew(const std::function<void()> &fill, const QString &value);
    int IndexOf(const QString &value) const;
    void Select(int index, const std::optional<ValueItem> &choice);
    void ReportChange();

    std::optional<ValueItem> choice_; ///< what is shown though no item is selected
    int itemHeight_ = 18;
    bool filling_ = false;
    bool reportedSelected_ = false;
    QString reportedValue_;
};

} // namespace Qel
