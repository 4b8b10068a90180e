#include "http/Notify.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace Qel::Http {

void NotifyServiceManager(std::string_view state)
{
    const char *path = std::getenv("NOTIFY_SOCKET");
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (!path || !*path || std::strlen(path) >= sizeof address.sun_path)
        return;
    const std::size_t size = std::strlen(path);
    std::memcpy(address.sun_path, path, size);
    if (address.sun_path[0] == '@')
        address.sun_path[0] = '\0'; // a name that is in no file system
    const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (socket < 0)
        return;
    sendto(socket, state.data(), state.size(), MSG_NOSIGNAL,
           reinterpret_cast<const sockaddr *>(&address),
           static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + size));
    close(socket);
}

} // namespace Qel::Http
