#include "host/Plugin.h"

#include "dataset/QelError.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QStringEncoder>
#include <QWidget>
#include <QXmlStreamReader>

namespace Qel::Host {

using namespace Qt::StringLiterals;

namespace {

constexpr QChar MenuHyphen = u'－';

QByteArray ToGbk(const QString &text)
{
    QStringEncoder encoder("GBK");
    const QByteArray bytes = encoder.encode(text);
    if (!encoder.isValid() || encoder.hasError())
        throw EQelError(u"“%1”里有 GBK 没有的字符。"_s.arg(text));
    return bytes;
}

} // namespace

QString FormInfo::Menu() const
{
    return name.section(MenuHyphen, 0, 0);
}

QString FormInfo::Title() const
{
    return name.contains(MenuHyphen) ? name.section(MenuHyphen, 1) : name;
}

QList<FormInfo> ParseFormList(const QByteArray &xml)
{
    QList<FormInfo> forms;
    QXmlStreamReader reader(xml);
    if (!reader.readNextStartElement() || reader.name() != u"FormEntrys")
        throw EQelError(u"插件的窗体清单不是 FormEntrys 文档。"_s);
    while (reader.readNextStartElement()) {
        const QXmlStreamAttributes attributes = reader.attributes();
        if (reader.name() == u"FormEntry")
            forms.append({.code = attributes.value(u"FormCode"_s).toString(),
                          .name = attributes.value(u"FormName"_s).toString(),
                          .beginGroup = attributes.value(u"BeginGroup"_s) == u"1"});
        reader.skipCurrentElement();
    }
    if (reader.hasError())
        throw EQelError(
            u"插件的窗体清单第 %1 行有错：%2"_s.arg(reader.lineNumber()).arg(reader.errorString()));
    return forms;
}

QString Plugin::Find()
{
    const QString fixed = qEnvironmentVariable("QEL_PLUGIN");
    if (!fixed.isEmpty())
        return fixed;
    const QDir here(QCoreApplication::applicationDirPath());
    for (const QString &folder : {u"."_s, u"../src"_s, u"../lib/qel"_s,
                                  u"../"_s + QStringLiteral(QEL_LIBDIR) + u"/qel"_s}) {
        const QFileInfo candidate(here.filePath(folder + u"/libQelLibAdmin.so"_s));
        if (candidate.exists())
            return candidate.canonicalFilePath();
    }
    return {};
}

Plugin::Plugin(const QString &file)
    : library_(file)
    , init_(Resolve<TLibInit>("LibInit"))
    , getFormInfo_(Resolve<TLibGetFormInfo>("LibGetFormInfo"))
    , openForm_(Resolve<TLibOpenForm>("LibOpenForm"))
{
}

template <typename Function>
Function Plugin::Resolve(const char *symbol)
{
    if (library_.fileName().isEmpty())
        throw EQelError(u"找不到插件 libQelLibAdmin.so。"_s);
    if (!library_.isLoaded() && !library_.load())
        throw EQelError(u"无法装入插件 %1：%2"_s.arg(library_.fileName(), library_.errorString()));
    const auto function = reinterpret_cast<Function>(library_.resolve(symbol));
    if (!function)
        throw EQelError(
            u"插件 %1 没有函数 %2。"_s.arg(library_.fileName(), QString::fromLatin1(symbol)));
    return function;
}

void Plugin::Init(QWidget *application, const QUrl &server, const QByteArray &runParams) const
{
    const THostInit init{.Application = application,
                         .Screen = QGuiApplication::primaryScreen(),
                         .ServerUrl = ToGbk(server.toString(QUrl::FullyEncoded)),
                         .RunParams = runParams};
    init_(&init, 0);
}

QList<FormInfo> Plugin::Forms() const
{
    QByteArray xml;
    getFormInfo_(&xml);
    return ParseFormList(xml);
}

QWidget *Plugin::OpenForm(const QString &name) const
{
    const QByteArray bytes = ToGbk(name);
    QWidget *screen = openForm_(&bytes);
    if (!screen)
        throw EQelError(u"插件没有窗体“%1”。"_s.arg(name));
    return screen;
}

} // namespace Qel::Host
