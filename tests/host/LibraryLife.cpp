// Lives of the plug-in in one process: loaded and unloaded at times when a mistake in what it
// leaves behind crashes or leaks. One argument: the life's name. Meant for the sanitizers too.

#include "QelLibAdmin.h"

#include <QApplication>
#include <QEvent>
#include <QFile>
#include <QFontMetrics>
#include <QLibrary>
#include <QPixmap>
#include <QPointer>
#include <QStringEncoder>
#include <QTabWidget>

#include <cstdio>
#include <cstdlib>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

void Check(bool holds, const char *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::_Exit(EXIT_FAILURE);
}

QByteArray Gbk(const QString &text)
{
    return QStringEncoder("GBK").encode(text);
}

struct Module
{
    QLibrary library{QStringLiteral(QEL_MODULE)};

    template <typename Function>
    Function Get(const char *name)
    {
        const auto function = reinterpret_cast<Function>(library.resolve(name));
        Check(function, name);
        return function;
    }

    void Init(QWidget *application)
    {
        const THostInit info{
            application, nullptr, "http://127.0.0.1:9",
            QByteArray("<RunParams><RunParam UserId=\"1\"/></RunParams>").toBase64()};
        Get<TLibInit>("LibInit")(&info, 0);
    }

    QWidget *Open(const QString &caption)
    {
        const QByteArray name = Gbk(caption);
        QWidget *screen = Get<TLibOpenForm>("LibOpenForm")(&name);
        Check(screen, "the screen opens");
        return screen;
    }

    QByteArray List()
    {
        QByteArray xml;
        Get<TLibGetFormInfo>("LibGetFormInfo")(&xml);
        return xml;
    }
};

/// What the process has mapped, as the kernel says it.
bool IsMapped()
{
    QFile maps(u"/proc/self/maps"_s);
    Check(maps.open(QIODevice::ReadOnly), "the list of mappings can be read");
    return maps.readAll().contains("libQelLibAdmin");
}

void Settle()
{
    for (int i = 0; i < 20; ++i) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

/// Shows and paints screens of the module in the host's tabs.
void Use(Module &module, QTabWidget &tabs)
{
    module.Init(&tabs);
    for (const QString &caption :
         {u"营运管理－集团管理"_s, u"营运管理－公告管理"_s, u"营运管理－集团管理"_s})
        tabs.setCurrentIndex(tabs.addTab(module.Open(caption), u"屏"_s));
    tabs.show();
    Settle();
    tabs.grab();
}

/// Works with fonts and pixmaps as a host goes on to do.
void GoOn()
{
    QTabWidget tabs;
    tabs.addTab(new QWidget, u"以后"_s);
    QFont font(u"宋体"_s);
    for (int size = 8; size < 20; ++size) {
        font.setPixelSize(size);
        QFontMetrics(font).horizontalAdvance(u"继续工作"_s);
        tabs.setFont(font);
        tabs.grab();
    }
    QFont::substitutes(u"宋体"_s);
    Settle();
}

void UseAndQuitWithoutUnloading(int &argc, char **argv)
{
    QApplication application(argc, argv);
    auto *module = new Module; // as hosts do: never unloaded
    QTabWidget tabs;
    Use(*module, tabs);
    delete module;
}

void QuitWithScreensOpenBeforeLibInit(int &argc, char **argv)
{
    QApplication application(argc, argv);
    Module module;
    module.Open(u"营运管理－集团管理"_s)->show();
    Settle();
}

void LoadBeforeTheApplication(int &argc, char **argv)
{
    Module module;
    Check(module.List().contains("ADMIN09"), "the list is complete without an application");
    QApplication application(argc, argv);
    QTabWidget tabs;
    Use(module, tabs);
}

void UnloadAfterTheScreensAndGoOn(int &argc, char **argv)
{
    QApplication application(argc, argv);
    {
        Module module;
        {
            QTabWidget tabs;
            Use(module, tabs);
        }
        Settle();
        Check(IsMapped(), "the module is there while it is loaded");
        Check(module.library.unload(), "the module unloads");
    }
    Check(!IsMapped(), "the module is gone after unloading");
    GoOn();
}

void UnloadWithLivingScreens(int &argc, char **argv)
{
    QApplication application(argc, argv);
    QTabWidget tabs;
    Module module;
    Use(module, tabs);
    const QPointer<QWidget> screen = tabs.widget(0);
    Check(module.library.unload(), "the module unloads");
    Check(!screen, "living screens are freed when the module goes");
    Check(!IsMapped(), "the module is gone after unloading");
    GoOn();
}

void LoadAgainAfterUnloading(int &argc, char **argv)
{
    QApplication application(argc, argv);
    for (int round = 0; round < 3; ++round) {
        Module module;
        {
            QTabWidget tabs;
            Use(module, tabs);
        }
        Settle();
        Check(module.library.unload(), "the module unloads");
    }
    GoOn();
}

void TwoApplicationsInOneProcess(int &argc, char **argv)
{
    auto *module = new Module;
    for (int round = 0; round < 2; ++round) {
        QApplication application(argc, argv);
        QTabWidget tabs;
        Use(*module, tabs);
    }
    delete module;
}

struct Life
{
    const char *name;
    void (*live)(int &argc, char **argv);
};

constexpr Life Lives[]{
    {"UseAndQuitWithoutUnloading", UseAndQuitWithoutUnloading},
    {"QuitWithScreensOpenBeforeLibInit", QuitWithScreensOpenBeforeLibInit},
    {"LoadBeforeTheApplication", LoadBeforeTheApplication},
    {"UnloadAfterTheScreensAndGoOn", UnloadAfterTheScreensAndGoOn},
    {"UnloadWithLivingScreens", UnloadWithLivingScreens},
    {"LoadAgainAfterUnloading", LoadAgainAfterUnloading},
    {"TwoApplicationsInOneProcess", TwoApplicationsInOneProcess},
};

} // namespace

int main(int argc, char *argv[])
{
    const QByteArrayView wanted(argc > 1 ? argv[1] : "");
    for (const Life &life : Lives) {
        if (wanted == life.name) {
            life.live(argc, argv);
            return EXIT_SUCCESS;
        }
    }
    std::fprintf(stderr, "no such life\n");
    return EXIT_FAILURE;
}
