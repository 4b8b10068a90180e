#pragma once

#include <QWidget>

namespace Qel {

class TitleButton;

/// The skinned title bar of every screen: 25 pixels high, the caption left in bold 13-pixel white
/// with a navy shadow, a close button (hint "关闭") right. Dragging it moves a window of its own.
/// It may have a button left of that one, which fills the screen with the window and back again
/// (hints "最大化" and "还原"); then a double click on the bar does the same.
class FormTitle : public QWidget
{
    Q_OBJECT

public:
    static constexpr int Height = 25;

    explicit FormTitle(QWidget *parent);

    const QString &Text() const { return text_; }
    void SetText(const QString &text);
    void AllowMaximize();
    QSize sizeHint() const override;

signals:
    void Clicked(); ///< the close button was pressed

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void ToggleMaximized();

    QString text_;
    TitleButton *close_;
    TitleButton *maximize_ = nullptr; ///< if the window can be maximised
    QPoint grip_;                     ///< where the window was taken hold of, from its corner
};

} // namespace Qel
