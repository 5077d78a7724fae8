/// Lets a test replace the folders that the platform reports. PlatformFolders.mm replaces the platform's functions in
/// the test program. They return the platform's own results unless a test sets another.
#pragma once

#include <string>
#include <utility>

/// Reports another home directory of the user during its own lifetime. Only one may exist at a time.
struct ReportedHome {
    explicit ReportedHome(std::string home) : path(std::move(home)) { current = this; }
    ~ReportedHome() { current = nullptr; }
    ReportedHome(ReportedHome &&) = delete;

    /// How often the home directory was requested.
    int timesAsked() const { return requests; }

    static inline ReportedHome *current;
    const std::string path;
    int requests = 0;
};

/// Makes the search for the Desktop folder find none during its own lifetime. Only one may exist at a time.
struct NoDesktopFound {
    NoDesktopFound() { current = true; }
    ~NoDesktopFound() { current = false; }
    NoDesktopFound(NoDesktopFound &&) = delete;

    static inline bool current;
};
