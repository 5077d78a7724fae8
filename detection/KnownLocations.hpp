/// Where the removed product keeps its files. Plain C++; the order is part of the design: present items are listed and
/// counted in it.
///
/// The cleanup script holds a list of its own; removal/CleanupScript.cpp lets nothing compile while the two differ.
#pragma once

#include <array>
#include <string_view>

namespace known_locations
{

/// System-wide, as absolute paths: the application bundle, the launch daemon's property list, the daemon's privileged
/// helper tool.
inline constexpr std::array<std::u16string_view, 3> absolute {
    u"/Applications/Quorlen.app",
    u"/Library/LaunchDaemons/com.vendrel.QuorlenDaemon.plist",
    u"/Library/PrivilegedHelperTools/com.vendrel.QuorlenDaemon",
};

/// The user's own, relative to the home directory. They follow the absolute ones.
inline constexpr std::array<std::u16string_view, 8> homeRelative {
    u"Library/Application Support/Quorlen", // holds the licence file
    u"Library/Application Support/com.vendrel.QuorlenAgent",
    u"Library/Application Support/Vendrel",
    u"Library/LaunchAgents/com.vendrel.Quorlen3.Scheduler.plist",
    u"Library/Preferences/com.vendrel.Quorlen3.plist", // of the current major version
    u"Library/Preferences/com.vendrel.Quorlen.plist",  // under the unversioned identifier
    u"Library/Caches/com.vendrel.Quorlen3",
    u"Library/Logs/Quorlen",
};

/// The licence file's name, in its own place and in every backup.
inline constexpr std::u16string_view licenceFileName = u".licence";

/// The licence file, relative to the home directory. It is no known location itself; it lies inside the fourth.
inline constexpr std::u16string_view licenceFile = u"Library/Application Support/Quorlen/.licence";
static_assert(licenceFile.starts_with(homeRelative[0]) && licenceFile.ends_with(licenceFileName));

}
