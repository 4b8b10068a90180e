#include "host/Chinese.h"

#include <QApplication>
#include <QFontDatabase>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <cstdio>

namespace Qel::Host {

using namespace Qt::StringLiterals;

namespace {

constexpr double PointSize = 10;

void TranslateQt(QApplication &application)
{
    const QLocale locale(QLocale::Chinese, QLocale::SimplifiedHanScript, QLocale::China);
    QLocale::setDefault(locale);
    auto *texts = new QTranslator(&application);
    if (texts->load(u"qtbase_zh_CN"_s, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(texts);
}

/// The first family that the machine has, before the default family for what it lacks.
void ChooseFont()
{
    const QStringList installed = QFontDatabase::families();
    QFont font = QApplication::font();
    QStringList families = font.families();
    for (const QString &family :
         {u"Microsoft YaHei UI"_s, u"PingFang SC"_s, u"Noto Sans CJK SC"_s, u"Source Han Sans SC"_s,
          u"WenQuanYi Micro Hei"_s, u"WenQuanYi Zen Hei"_s}) {
        if (installed.contains(family)) {
            families.prepend(family);
            break;
        }
    }
    font.setFamilies(families);
    font.setPointSizeF(PointSize);
    QApplication::setFont(font);
    if (QFontDatabase::families(QFontDatabase::SimplifiedChinese).isEmpty())
        std::fputs("没有中文字体，请安装 fonts-noto-cjk。\n", stderr);
}

} // namespace

void SetUpChinese(QApplication &application)
{
    TranslateQt(application);
    ChooseFont();
}

} // namespace Qel::Host
