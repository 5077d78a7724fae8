/// Lets a test replace the folders that the platform reports. PlatformFolders.mm replaces the platform's functions in
/// the test program. They return the platform's own results unless a test sets another.
#pragma once

#include <string>

/// Reports another home directory of the user during its own lifetime. Only one may exist at a time.
class ReportedHome
{
public:
    explicit ReportedHome(const std::string &path);
    ~ReportedHome();
    ReportedHome(const ReportedHome &) = delete;
    ReportedHome &operator=(const ReportedHome &) = delete;

    /// How often the home directory was requested.
    int timesAsked() const;
};

/// Makes the search for the Desktop folder find none during its own lifetime. Only one may exist at a time.
class NoDesktopFound
{
public:
    NoDesktopFound();
    ~NoDesktopFound();
    NoDesktopFound(const NoDesktopFound &) = delete;
    NoDesktopFound &operator=(const NoDesktopFound &) = delete;
};
