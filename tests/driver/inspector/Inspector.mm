// The inspector lets a test see what a person sees. GNUstep loads this bundle into an application when its defaults
// name it under GSAppKitUserBundles; it then answers on the Unix socket that the environment names. It only looks: it
// presses nothing, sets nothing and replaces nothing. The application knows nothing of it.
#include "Server.hpp"
#include "Snapshot.hpp"

#import <AppKit/AppKit.h>
#include <cstdlib>

namespace
{

// The path of the socket to answer on; without it the bundle stays silent.
constexpr const char *socket_variable = "PRACTICE_MAC_INSPECTOR";

} // namespace

/// Owns the server and takes a snapshot on the main thread, whatever mode its run loop is in, whenever one is asked
/// for.
@interface Inspector : NSObject <RunLoopEvents> {
    Server *server;
}
@end

@implementation Inspector

- (id)init
{
    self = [super init];
    const char *path = std::getenv(socket_variable);
    if (!self || !path) {
        return self;
    }
    server = new Server(path); // lives as long as the process, as its thread does
    if (server->listening()) {
        for (NSString *mode in @[ NSDefaultRunLoopMode, NSModalPanelRunLoopMode, NSEventTrackingRunLoopMode ]) {
            [[NSRunLoop currentRunLoop] addEvent:reinterpret_cast<void *>(static_cast<intptr_t>(server->requests()))
                                            type:ET_RDESC
                                         watcher:self
                                         forMode:mode];
        }
    }
    return self;
}

- (void)receivedEvent:(void *)data type:(RunLoopEventType)type extra:(void *)extra forMode:(NSString *)mode
{
    (void)data, (void)type, (void)extra, (void)mode;
    server->accept_request();
    server->deliver(snapshot_of_application());
}

@end
