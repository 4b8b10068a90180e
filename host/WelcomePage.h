#pragma once

#include <QList>
#include <QWidget>

class QAction;

namespace Qel::Host {

/// The first tab: every entry of the menu as a large button.
class WelcomePage : public QWidget
{
    Q_OBJECT

public:
    /// The actions stay the menu's.
    explicit WelcomePage(const QList<QAction *> &actions, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace Qel::Host
