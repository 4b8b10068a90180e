#include "controls/CurrencyEdit.h"

#include "controls/CurrencyText.h"

#include <QToolTip>
#include <QValidator>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Qel {

/// Not the edit's own length limit: that one cuts what is pasted, and so makes another amount.
class CurrencyEdit::Validator : public QValidator
{
public:
    using QValidator::QValidator;

    void SetLongest(qsizetype longest) { longest_ = std::max<int>(CurrencyLength, int(longest)); }
    void ShrinkTo(qsizetype length) { SetLongest(std::min<qsizetype>(longest_, length)); }

    State validate(QString &input, int &position) const override
    {
        const auto text = CurrencyInput(input, longest_);
        if (!text)
            return Invalid;
        const qsizetype behindCursor = input.size() - position;
        position = int(std::max<qsizetype>(0, text->size() - behindCursor));
        input = *text;
        return Acceptable;
    }

private:
    int longest_ = CurrencyLength;
};

namespace {

QString WithoutLastZeros(QString text)
{
    while (text.endsWith(u'0'))
        text.chop(1);
    if (text.endsWith(u'.'))
        text.chop(1);
    return text;
}

} // namespace

CurrencyEdit::CurrencyEdit(QWidget *parent)
    : QLineEdit(parent)
    , validator_(new Validator(this))
{
    setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    setInputMethodHints(Qt::ImhFormattedNumbersOnly);
    setValidator(validator_);
    connect(this, &QLineEdit::textChanged, this,
            [this](const QString &text) { validator_->ShrinkTo(text.size()); });
    connect(this, &QLineEdit::inputRejected, this, &CurrencyEdit::SayWhatIsPossible);
}

void CurrencyEdit::SetValue(const QString &stored)
{
    QString text = CurrencyText(stored);
    if (text.size() > CurrencyLength && text.contains(u'.'))
        text = WithoutLastZeros(text);
    if (!CurrencyInput(text, int(text.size())))
        text.clear();
    validator_->SetLongest(text.size());
    setText(text);
    before_ = text;
}

/// Not isModified(): it forgets when the validator puts another text in place of the typed one.
bool CurrencyEdit::IsChanged() const
{
    return text() != before_;
}

QString CurrencyEdit::Value() const
{
    return CurrencyText(text());
}

void CurrencyEdit::SayWhatIsPossible()
{
    QToolTip::showText(mapToGlobal(rect().bottomLeft()),
                       u"请输入 0 至 99999999 的金额，最多 8 个字符、两位小数"_s, this);
}

} // namespace Qel
