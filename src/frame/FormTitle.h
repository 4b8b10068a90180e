#pragma once

#include <QWidget>

class QAbstractButton;

namespace Qel {

/// The skinned title bar of every screen: 25 pixels high, the caption left in bold 13-pixel white
/// with a navy shadow, a close button (hint "关闭") right. Dragging it moves a window of its own.
class FormTitle : public QWidget
{
    Q_OBJECT

public:
    static constexpr int Height = 25;

    explicit FormTitle(QWidget *parent);

    const QString &Text() const { return text_; }
    void SetText(const QString &text);
    QSize sizeHint() const override;

signals:
    void Clicked(); ///< the close button was pressed

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    QString text_;
    QAbstractButton *close_;
    QPoint grip_; ///< where the window was taken hold of, from its corner
};

} // namespace Qel
