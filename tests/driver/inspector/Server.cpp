#include "Server.hpp"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

namespace
{

int bound_socket(const std::string &path)
{
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        return -1;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    unlink(path.c_str());
    const mode_t mask = umask(0); // the driver may be a user other than the tool's
    const bool failed = fd >= 0 && (bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) || listen(fd, 8));
    const int reason = errno;
    umask(mask);
    if (failed) {
        close(fd);
        errno = reason;
        return -1;
    }
    return fd;
}

void send_all(int fd, const std::string &text)
{
    for (std::size_t sent = 0; sent < text.size();) {
        const ssize_t n = send(fd, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR) {
            continue;
        }
        if (n <= 0) {
            return; // the asker went away
        }
        sent += static_cast<std::size_t>(n);
    }
}

} // namespace

Server::Server(const std::string &path) : listener(bound_socket(path)), asked(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (listener < 0) {
        std::perror(("inspector: cannot listen on " + path).c_str());
        return;
    }
    std::thread(&Server::listen_forever, this).detach();
}

void Server::accept_request()
{
    eventfd_t count;
    eventfd_read(asked, &count);
}

void Server::deliver(std::string snapshot)
{
    {
        const std::lock_guard lock(mutex);
        latest = std::move(snapshot);
        ++deliveries;
    }
    delivered.notify_all();
}

void Server::listen_forever()
{
    for (;;) {
        const int connection = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0) {
            continue;
        }
        send_all(connection, ask());
        close(connection);
    }
}

std::string Server::ask()
{
    std::unique_lock lock(mutex);
    const std::uint64_t before = deliveries;
    eventfd_write(asked, 1);
    if (!delivered.wait_for(lock, patience, [&] { return deliveries != before; })) {
        return R"({"busy":true})";
    }
    return latest;
}
