#include "host/ErrorDialog.h"

#include <QApplication>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace Qel::Host {

using namespace Qt::StringLiterals;

namespace {

const auto Separator = u"\n\n"_s;
constexpr int MessageWidth = 420;
constexpr int DetailsHeight = 160;

} // namespace

ErrorDialog::ErrorDialog(const QString &text, QWidget *parent)
    : QDialog(parent)
    , text_(text)
    , details_(new QPlainTextEdit(text.section(Separator, 1)))
{
    setObjectName(u"ErrorDialog"_s);
    setWindowTitle(u"错误"_s);

    auto *icon = new QLabel;
    const int size = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxCritical).pixmap(size, size));
    auto *message = new QLabel(text.section(Separator, 0, 0));
    message->setObjectName(u"lbMessage"_s);
    message->setTextFormat(Qt::PlainText);
    message->setTextInteractionFlags(Qt::TextSelectableByMouse);
    message->setWordWrap(true);
    message->setMinimumWidth(MessageWidth);

    auto *details = static_cast<QPlainTextEdit *>(details_);
    details->setObjectName(u"memoDetails"_s);
    details->setReadOnly(true);
    details->setMinimumHeight(DetailsHeight);
    details->hide();

    auto *buttons = new QDialogButtonBox;
    if (!details->toPlainText().isEmpty()) {
        auto *unfold = buttons->addButton(u"详细信息"_s, QDialogButtonBox::ActionRole);
        unfold->setObjectName(u"BtnDetails"_s);
        unfold->setCheckable(true);
        connect(unfold, &QPushButton::toggled, this, &ErrorDialog::ShowDetails);
    }
    auto *copy = buttons->addButton(u"复制"_s, QDialogButtonBox::ActionRole);
    copy->setObjectName(u"BtnCopy"_s);
    auto *ok = buttons->addButton(u"确定"_s, QDialogButtonBox::AcceptRole);
    ok->setObjectName(u"BtnOk"_s);
    ok->setDefault(true);
    connect(copy, &QPushButton::clicked, this, &ErrorDialog::Copy);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);

    auto *head = new QHBoxLayout;
    head->addWidget(icon, 0, Qt::AlignTop);
    head->addSpacing(8);
    head->addWidget(message, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(head);
    layout->addSpacing(8);
    layout->addWidget(details_, 1);
    layout->addWidget(buttons);
    ok->setFocus();
}

void ErrorDialog::ShowDetails(bool shown)
{
    details_->setVisible(shown);
    adjustSize();
}

void ErrorDialog::Copy() const
{
    QApplication::clipboard()->setText(text_);
}

} // namespace Qel::Host
