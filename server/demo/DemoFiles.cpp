#include "demo/DemoFiles.h"

#include "dataset/QelError.h"

#include <QFile>

using namespace Qt::StringLiterals;

// A static library's resources are linked in by whoever names them; not inside a namespace.
static void InitDemoResource()
{
    Q_INIT_RESOURCE(demo);
}

namespace Qel::Demo {

std::vector<QStringList> ReadDemoFile(const QString &name, const QStringList &columns)
{
    InitDemoResource();
    QFile file(u":/demo/"_s + name);
    if (!file.open(QIODevice::ReadOnly))
        throw EQelError(u"程序内缺少示例数据文件：%1"_s.arg(name));
    const QString text = QString::fromUtf8(file.readAll());

    std::vector<QStringList> records;
    bool header = true;
    for (const QStringView line : QStringView(text).split(u'\n', Qt::SkipEmptyParts)) {
        QStringList record = line.toString().split(u',');
        if (header ? record != columns : record.size() != columns.size())
            throw EQelError(u"示例数据文件 %1 的格式不符：%2"_s.arg(name, line));
        if (!header)
            records.push_back(std::move(record));
        header = false;
    }
    return records;
}

WordLists::WordLists()
{
    for (const QStringList &record : ReadDemoFile(u"words.csv"_s, {u"LIST"_s, u"WORD"_s}))
        lists_[record[0]] += record[1];
}

const QStringList &WordLists::operator[](const QString &list) const
{
    const auto found = lists_.constFind(list);
    if (found == lists_.cend())
        throw EQelError(u"示例数据中没有词表“%1”"_s.arg(list));
    return *found;
}

} // namespace Qel::Demo
