#include "frame/LibrarySide.h"

#include "dataset/QelError.h"
#include "frame/MisCommon.h"

#include <QApplication>
#include <QMetaObject>

#include <memory>

namespace Qel {

using namespace Qt::StringLiterals;

namespace {

struct Globals
{
    THostObjects objects;
    THostObjects saved;
    TRunParam runParam;
    TServerURL serverUrl;
    qint32 hostValue = 0;
    std::unique_ptr<QWidget> ownApplication;
};

Globals &Side()
{
    static Globals globals;
    return globals;
}

/// Message, and after an empty line the details.
QString TextForHost(const std::exception &error)
{
    const auto *own = dynamic_cast<const EQelError *>(&error);
    const QString message = own ? own->Message() : u"程序内部错误，操作已中止。"_s;
    const QString details = own ? own->Details() : QString::fromLocal8Bit(error.what());
    return details.isEmpty() ? Detached(message) : message + u"\n\n"_s + details;
}

void Report(const QString &text)
{
    QWidget *application = Application();
    if (application->metaObject()->indexOfMethod("HandleException(QString)") >= 0) {
        QMetaObject::invokeMethod(application, "HandleException", Qt::DirectConnection,
                                  Q_ARG(QString, text));
        return;
    }
    ErrorBox(text.section(u"\n\n"_s, 0, 0), u"错误"_s);
}

} // namespace

void CreateLibrarySide()
{
    Side();
}

QWidget *Application()
{
    Globals &side = Side();
    if (side.objects.Application)
        return side.objects.Application;
    if (!side.ownApplication)
        side.ownApplication = std::make_unique<QWidget>();
    return side.ownApplication.get();
}

QScreen *Screen()
{
    QScreen *screen = Side().objects.Screen;
    return screen ? screen : QGuiApplication::primaryScreen();
}

QWidget *DialogOwner()
{
    if (QWidget *modal = QApplication::activeModalWidget())
        return modal;
    QWidget *window = Application()->window();
    return window->isVisible() ? window : nullptr;
}

const TRunParam &RunParam()
{
    return Side().runParam;
}

const TServerURL &ServerURL()
{
    return Side().serverUrl;
}

qint32 HostValue()
{
    return Side().hostValue;
}

void SetRunParam(const TRunParam &value)
{
    Side().runParam = value;
}

void SetServerURL(const QString &base)
{
    Side().serverUrl.BaseURL = base;
}

void SetHostValue(qint32 value)
{
    Side().hostValue = value;
}

void SwapHostObjects(const THostObjects &host)
{
    Globals &side = Side();
    side.saved = side.objects;
    side.objects = host;
}

void RestoreHostObjects()
{
    Globals &side = Side();
    side.objects = side.saved;
}

void FreeOwnApplication()
{
    Side().ownApplication.reset();
}

void HandleException(const std::exception &error)
{
    try {
        Report(TextForHost(error));
    } catch (...) {
        qCritical("the host's error handling failed");
    }
}

void HandleCurrentException()
{
    try {
        throw;
    } catch (const std::exception &error) {
        HandleException(error);
    } catch (...) {
        HandleException(EQelError(u"程序内部错误，操作已中止。"_s));
    }
}

void RunForHost(const std::function<void()> &work)
{
    try {
        work();
    } catch (const std::exception &error) {
        throw EQelError(TextForHost(error));
    }
}

QString Detached(const QString &text)
{
    return QString(text.constData(), text.size());
}

} // namespace Qel
