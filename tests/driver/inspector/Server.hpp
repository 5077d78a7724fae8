// The inspector's ear: a thread that answers on a Unix socket with a snapshot which another thread takes.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>

/// Answers every connection to one Unix socket with one text and closes it. The thread behind it calls no platform
/// class: it asks for a snapshot by making `requests()` readable and takes what the main thread then hands to
/// `deliver`.
class Server
{
public:
    /// Binds `path` (replacing an older socket there) and starts listening. `listening()` tells whether that worked.
    explicit Server(const std::string &path);

    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;

    /// Whether the socket could be bound; the reason of a failure went to standard error.
    bool listening() const { return listener >= 0; }

    /// A descriptor that is readable while a snapshot is asked for; for the main thread's run loop.
    int requests() const { return asked; }

    /// Takes the request off `requests()`, so that it is no longer readable.
    void accept_request();

    /// Hands over the snapshot that answers everyone who is waiting now.
    void deliver(std::string snapshot);

private:
    void listen_forever();
    std::string ask();

    // How long the main thread may take before it counts as busy: far longer than a snapshot, far shorter than a wait.
    static constexpr auto patience = std::chrono::milliseconds(500);

    int listener = -1;
    int asked = -1;
    std::mutex mutex;
    std::condition_variable delivered;
    std::uint64_t deliveries = 0;
    std::string latest;
};
