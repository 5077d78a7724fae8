// The inspector lets a test see what a user sees. GNUstep loads this bundle into an application when its defaults name
// it under GSAppKitUserBundles. The bundle then answers each connection to the Unix socket that the environment names
// with a snapshot. It only looks: the application behaves as it does without it, unless a test stops its clock.
#include "Snapshot.hpp"

#import <AppKit/AppKit.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace
{

// The path of the socket; without it the bundle does nothing.
constexpr const char *socketVariable = "PRACTICE_MAC_INSPECTOR";

/// A socket that listens at a path; -1 with errno set on failure.
int listenAt(const char *path)
{
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    const std::size_t length = std::strlen(path);
    if (length >= sizeof address.sun_path) {
        errno = ENAMETOOLONG;
        return -1;
    }
    std::memcpy(address.sun_path, path, length + 1);
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    unlink(path);
    const bool listens = listener >= 0 && !bind(listener, reinterpret_cast<sockaddr *>(&address), sizeof address) &&
        !chmod(path, 0666) && !listen(listener, SOMAXCONN);
    return listens ? listener : -1;
}

/// Sends a whole text, unless the other side has closed the connection.
void send(int connection, const std::string &text)
{
    for (std::size_t sent = 0; sent < text.size();) {
        const ssize_t count = ::send(connection, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR) {
            return;
        }
        sent += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
}

} // namespace

/// Answers on the main thread, in every mode of its run loop. While the main thread is busy, a connection waits.
@interface Inspector : NSObject <RunLoopEvents> {
    int listener;
}
@end

@implementation Inspector

- (id)init
{
    self = [super init];
    const char *path = std::getenv(socketVariable);
    if (!self || !path) {
        return self;
    }
    listener = listenAt(path);
    if (listener < 0) {
        std::perror("inspector: cannot listen on the socket that PRACTICE_MAC_INSPECTOR names");
        return self;
    }
    for (NSString *mode in @[ NSDefaultRunLoopMode, NSModalPanelRunLoopMode, NSEventTrackingRunLoopMode ]) {
        [[NSRunLoop currentRunLoop] addEvent:reinterpret_cast<void *>(static_cast<intptr_t>(listener))
                                        type:ET_RDESC
                                     watcher:self
                                     forMode:mode];
    }
    return self;
}

- (void)receivedEvent:(void *)data type:(RunLoopEventType)type extra:(void *)extra forMode:(NSString *)mode
{
    (void)data, (void)type, (void)extra, (void)mode;
    const int connection = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection >= 0) {
        send(connection, snapshotOfApplication());
        close(connection);
    }
}

@end
