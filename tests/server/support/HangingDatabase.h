#pragma once

#include <QString>
#include <QTemporaryDir>

#include <thread>
#include <utility>
#include <vector>

namespace Qel {

/// On the way to a PostgreSQL database, until Hang: from then on nothing comes through and nothing
/// is refused, as if its machine had gone without a word.
class HangingDatabase
{
public:
    /// `url` names a socket's folder, as TestDatabase::Url does.
    explicit HangingDatabase(const QString &url);
    ~HangingDatabase();
    Q_DISABLE_COPY_MOVE(HangingDatabase)

    QString Url() const;
    void Hang();

private:
    void Relay();

    QString url_;
    QTemporaryDir folder_;
    int listener_ = -1;
    int hang_[2] = {-1, -1};                 ///< a pipe: closed at one end to hang
    std::vector<std::pair<int, int>> links_; ///< clients and what they are connected to
    std::thread thread_;
};

} // namespace Qel
