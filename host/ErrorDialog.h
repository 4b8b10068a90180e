#pragma once

#include <QDialog>

namespace Qel::Host {

/// Tells an error in words. Details, if there are any, unfold below and can be copied together
/// with the message. Text is shown as it is, never as rich text.
class ErrorDialog : public QDialog
{
    Q_OBJECT

public:
    /// `text` is a message and, after an empty line, details.
    explicit ErrorDialog(const QString &text, QWidget *parent = nullptr);

private:
    void ShowDetails(bool shown);
    void Copy() const;

    QString text_;
    QWidget *details_;
};

} // namespace Qel::Host
