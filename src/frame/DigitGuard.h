#pragma once

#include <QObject>
#include <QStringView>

class QLineEdit;

namespace Qel {

/// Keeps a code field to the digits 0 to 9: any other character typed is dropped, editing keys
/// pass. What is pasted or composed goes in and is reported when the field is left. Belongs to
/// the edit.
class DigitGuard : public QObject
{
    Q_OBJECT

public:
    explicit DigitGuard(QLineEdit *edit);

    static bool IsDigits(QStringView text); ///< true for an empty text

signals:
    /// The focus went to another control of the window, and there is something but digits inside.
    void LeftWithIllegal();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void Left();

    QLineEdit *edit_;
};

} // namespace Qel
