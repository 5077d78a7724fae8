/// What the tests of the backup and of the restore share.
#pragma once

#import "tests/support/RoomTest.hpp"
#import "tests/support/SwizzledMethod.hpp"

#include <map>

/// The archiver's modes in which it cannot be started, and the platform's reasons.
inline const std::map<std::string, std::string> reasonsNotToStart {
    { "missing", "could not start the launch path (/usr/bin/ditto): No such file or directory" },
    { "not-a-program", "could not start the launch path (/usr/bin/ditto): Exec format error" },
};

/// Takes the reason away from every exception until its result is destroyed.
inline SwizzledMethod noReasons()
{
    return
    {
        [NSException class], @selector(reason), +[](id, SEL) -> NSString * { return nil; }
    };
}

class LicenceTest : public RoomTest
{
protected:
    /// The log's lines since the last call.
    Strings nextLines()
    {
        auto lines = newLines();
        lines.erase(lines.begin(), lines.begin() + _linesSeen);
        _linesSeen += std::ssize(lines);
        return lines;
    }

private:
    std::ptrdiff_t _linesSeen = 0;
};
