#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <vector>

namespace Qel::Demo {

/// The records of a file of demo/: comma-separated, no quoting, the first line names the columns.
/// Throws EQelError if the columns are others than these or a record has not as many values.
std::vector<QStringList> ReadDemoFile(const QString &name, const QStringList &columns);

/// words.csv: lists of words, from which names are composed.
class WordLists
{
public:
    WordLists();

    /// Throws EQelError if there is no such list.
    const QStringList &operator[](const QString &list) const;

private:
    QHash<QString, QStringList> lists_;
};

} // namespace Qel::Demo
