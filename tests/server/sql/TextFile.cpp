#include "TextFile.h"

#include <QFile>

#include <stdexcept>

namespace Qel::Test {

using namespace Qt::StringLiterals;

namespace {

/// The lines of a file with the number of the one that was read last.
class Lines
{
public:
    explicit Lines(const QString &path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            throw std::runtime_error(qPrintable(u"cannot read "_s + path));
        lines_ = QString::fromUtf8(file.readAll()).split(u'\n');
    }

    bool AtEnd() const { return at_ >= lines_.size(); }
    QString Next() { return AtEnd() ? QString() : lines_.at(at_++); }
    QString Peek() const { return AtEnd() ? QString() : lines_.at(at_); }
    int Number() const { return int(at_); }
    [[noreturn]] void Fail(const QString &why) const
    {
        throw std::runtime_error(qPrintable(u"line %1: %2"_s.arg(at_).arg(why)));
    }

private:
    QStringList lines_;
    qsizetype at_ = 0;
};

Row SplitRow(const QString &line)
{
    Row row = line.split(u'|');
    for (QString &cell : row) {
        if (cell == u"<null>")
            cell = QString();
        else if (cell.isNull())
            cell = u""_s;
    }
    return row;
}

QList<Row> ReadRows(Lines &lines)
{
    QList<Row> rows;
    while (!lines.AtEnd() && !lines.Peek().isEmpty())
        rows << SplitRow(lines.Next());
    return rows;
}

QString ReadStatement(Lines &lines)
{
    const QString line = lines.Next();
    if (line.size() < 2 || !line.startsWith(u'"') || !line.endsWith(u'"'))
        lines.Fail(u"a statement in double quotes expected"_s);
    return line.mid(1).chopped(1);
}

TableBlock ReadTable(Lines &lines, const QString &name)
{
    TableBlock block{.table = name, .columns = lines.Next().split(u'|'), .rows = ReadRows(lines)};
    for (const Row &row : block.rows) {
        if (row.size() != block.columns.size())
            lines.Fail(u"a row of %1 with %2 cells"_s.arg(name).arg(row.size()));
    }
    return block;
}

void ReadClause(Lines &lines, SqlCase &test, const QString &line)
{
    const QString word = line.section(u' ', 0, 0);
    const QString rest = line.section(u' ', 1);
    if (word == u"sql") {
        test.sql = ReadStatement(lines);
    } else if (word == u"error") {
        test.error = rest;
    } else if (word == u"labels") {
        test.labels = rest.split(u'|');
    } else if (word == u"columns") {
        test.columns = rest.split(u'|');
    } else if (word == u"count") {
        test.count = rest.toLongLong();
    } else if (word == u"page") {
        test.page = rest.section(u' ', 0, 0).toInt();
        test.pageSize = rest.section(u' ', 1).toInt();
    } else if (word == u"rows" || word == u"unordered") {
        test.ordered = word == u"rows";
        test.rows = ReadRows(lines);
    } else {
        lines.Fail(u"unknown word "_s + word);
    }
}

} // namespace

TextFile ReadTextFile(const QString &path)
{
    TextFile file;
    Lines lines(path);
    while (!lines.AtEnd()) {
        const QString line = lines.Next();
        if (line.isEmpty() || line.startsWith(u'#'))
            continue;
        if (line.startsWith(u"table "))
            file.tables << ReadTable(lines, line.mid(6));
        else if (line.startsWith(u"case "))
            file.cases << SqlCase{.name = line.mid(5), .line = lines.Number()};
        else if (file.cases.isEmpty())
            lines.Fail(u"a case expected"_s);
        else
            ReadClause(lines, file.cases.last(), line);
    }
    return file;
}

} // namespace Qel::Test
