#include "support/HangingDatabase.h"

#include <QFile>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

constexpr auto Folder = "host="_L1;

/// A socket with PostgreSQL's name in this folder, on which `call` is bind or connect.
template <typename Call>
int UnixSocket(const QString &folder, Call call)
{
    const QByteArray path = QFile::encodeName(folder + u"/.s.PGSQL.5432"_s);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.constData(), sizeof address.sun_path - 1);
    const int made = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (call(made, reinterpret_cast<const sockaddr *>(&address), socklen_t(sizeof address)) != 0)
        qFatal("%s: %s", path.constData(), std::strerror(errno));
    return made;
}

/// Passes on what has come; false: there will be no more.
bool Pass(int from, int to)
{
    std::array<char, 16'384> bytes;
    const ssize_t size = read(from, bytes.data(), bytes.size());
    return size > 0 && send(to, bytes.data(), static_cast<size_t>(size), MSG_NOSIGNAL) == size;
}

} // namespace

HangingDatabase::HangingDatabase(const QString &url)
    : url_(url)
    , listener_(UnixSocket(folder_.path(), bind))
{
    if (listen(listener_, 50) != 0 || pipe2(hang_, O_CLOEXEC) != 0)
        qFatal("%s", std::strerror(errno));
    thread_ = std::thread([this] { Relay(); });
}

HangingDatabase::~HangingDatabase()
{
    Hang();
    close(hang_[0]);
    close(listener_);
    for (const auto &[client, server] : links_) {
        close(client);
        close(server);
    }
}

QString HangingDatabase::Url() const
{
    return url_.first(url_.indexOf(Folder) + Folder.size()) + folder_.path();
}

void HangingDatabase::Hang()
{
    if (!thread_.joinable())
        return;
    close(hang_[1]);
    thread_.join();
}

void HangingDatabase::Relay()
{
    const QString target = url_.mid(url_.indexOf(Folder) + Folder.size());
    for (;;) {
        std::vector<pollfd> wait{{hang_[0], POLLIN, 0}, {listener_, POLLIN, 0}};
        for (const auto &[client, server] : links_) {
            wait.push_back({client, POLLIN, 0});
            wait.push_back({server, POLLIN, 0});
        }
        poll(wait.data(), wait.size(), -1);
        if (wait[0].revents != 0)
            return;
        // From behind: a link that ends is taken off.
        for (std::size_t link = links_.size(); link-- > 0;) {
            const auto [client, server] = links_[link];
            const bool goesOn = (wait[2 + 2 * link].revents == 0 || Pass(client, server)) &&
                                (wait[3 + 2 * link].revents == 0 || Pass(server, client));
            if (goesOn)
                continue;
            close(client);
            close(server);
            links_.erase(links_.begin() + static_cast<std::ptrdiff_t>(link));
        }
        if (wait[1].revents != 0)
            links_.emplace_back(accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC),
                                UnixSocket(target, connect));
    }
}

} // namespace Qel
