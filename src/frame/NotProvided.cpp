#include "frame/NotProvided.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace Qel {

using namespace Qt::StringLiterals;

TFrmNotProvided::TFrmNotProvided(QWidget *owner, const QString &caption)
    : TFrmBaseForm(owner)
{
    setObjectName(u"TFrmNotProvided"_s);
    setWindowTitle(caption);
    resize(360, 160);
    auto *layout = new QVBoxLayout(this);
    auto *text = new QLabel(u"尚未提供"_s);
    text->setObjectName(u"lbNotProvided"_s);
    text->setAlignment(Qt::AlignCenter);
    layout->addWidget(text, 1);
    auto *close = new QPushButton(u"返回"_s);
    close->setObjectName(u"BtnClose"_s);
    layout->addWidget(close, 0, Qt::AlignRight);
    Handle(close, &QPushButton::clicked, &TFrmNotProvided::close);
}

} // namespace Qel
