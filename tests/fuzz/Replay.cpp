#include "Fuzz.h"

#include <QCoreApplication>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <vector>

/// Feeds files, and those of folders, to a target once each: the seeds and every input that once
/// was a finding, with any compiler. Prints each name first, so that the last one is to blame.
namespace {

void RunFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qUtf8Printable(path));
    const QByteArray bytes = file.readAll();
    std::printf("%s\n", qUtf8Printable(path));
    std::fflush(stdout);
    // exactly so long, for the sanitizers to see the end
    const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    int inputs = 0;
    for (const QString &argument : QCoreApplication::arguments().mid(1)) {
        if (QFileInfo(argument).isFile()) {
            RunFile(argument);
            ++inputs;
            continue;
        }
        QDirIterator files(argument, QDir::Files);
        for (; files.hasNext(); ++inputs)
            RunFile(files.next());
    }
    std::printf("%d inputs\n", inputs);
    return inputs > 0 ? 0 : 1;
}
