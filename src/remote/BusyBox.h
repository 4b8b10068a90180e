#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <chrono>
#include <memory>

class QDialog;
class QLabel;

namespace Qel {

class InputShield;

/// The modal box of a call that takes longer: what is being done, the seconds so far and, where
/// `cancellable`, a button (or Esc) that cancels. Appears after `delay`; an object that is gone
/// sooner never shows anything. Takes its input through `shield`.
///
/// Object names: "BusyBox", in it "LabelBusy", "LabelSeconds", "BtnCancel".
class BusyBox : public QObject
{
    Q_OBJECT

public:
    BusyBox(const QString &text, bool cancellable, std::chrono::milliseconds delay,
            InputShield &shield);
    ~BusyBox() override;

signals:
    void Cancelled();

private:
    void Appear();
    void ShowSeconds();

    QString text_;
    bool cancellable_;
    InputShield &shield_;
    QElapsedTimer elapsed_;
    QTimer delay_;
    QTimer second_;
    std::unique_ptr<QDialog> box_;
    QLabel *seconds_ = nullptr; ///< inside box_
};

} // namespace Qel
