#pragma once

#include <QLineEdit>

namespace Qel {

/// Edits an amount of money in a grid cell: right-aligned, at most eight characters, from 0 to
/// 99999999 with two decimals, or empty. Takes what CurrencyInput takes; anything else leaves the
/// text as it was and says in a tooltip what is possible. An amount that came longer can be
/// overwritten digit by digit but does not grow.
class CurrencyEdit : public QLineEdit
{
    Q_OBJECT

public:
    explicit CurrencyEdit(QWidget *parent = nullptr);

    /// With two decimals if that fits into eight characters. What is no amount (letters, a sign)
    /// starts empty.
    void SetValue(const QString &stored);
    bool IsChanged() const; ///< since SetValue
    QString Value() const;  ///< with two decimals; empty if nothing is typed

private:
    class Validator;

    void SayWhatIsPossible();

    Validator *validator_;
    QString before_;
};

} // namespace Qel
