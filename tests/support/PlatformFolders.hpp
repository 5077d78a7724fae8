/// Has the platform report other folders than this machine's: a test program that compiles PlatformFolders.mm answers
/// for the platform, with the platform's own answer unless a test asks for another.
#pragma once

#include <string>

/// While it lives, the user's home directory is reported as this one. One at a time.
class ReportedHome
{
public:
    explicit ReportedHome(const std::string &path);
    ~ReportedHome();
    ReportedHome(const ReportedHome &) = delete;
    ReportedHome &operator=(const ReportedHome &) = delete;

    /// How often it has been asked for.
    int timesAsked() const;
};

/// While it lives, the search for the Desktop folder finds none. One at a time.
class NoDesktopFound
{
public:
    NoDesktopFound();
    ~NoDesktopFound();
    NoDesktopFound(const NoDesktopFound &) = delete;
    NoDesktopFound &operator=(const NoDesktopFound &) = delete;
};
