#include <QelLibAdmin.h>

#include <QApplication>
#include <QLibrary>
#include <QWidget>

#include <cstdio>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QLibrary module(QStringLiteral(QEL_MODULE));
    const auto init = reinterpret_cast<TLibInit>(module.resolve("LibInit"));
    const auto list = reinterpret_cast<TLibGetFormInfo>(module.resolve("LibGetFormInfo"));
    const auto open = reinterpret_cast<TLibOpenForm>(module.resolve("LibOpenForm"));
    if (!init || !list || !open) {
        std::fprintf(stderr, "%s\n", qPrintable(module.errorString()));
        return 1;
    }
    QWidget window;
    const THostInit info{&window, nullptr, "http://127.0.0.1:9", {}};
    init(&info, 0);
    QByteArray xml;
    list(&xml);
    const QByteArray unknown("ADMIN01");
    return xml.count("<FormEntry ") == 9 && !open(&unknown) ? 0 : 1;
}
