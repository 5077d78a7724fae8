/// Where the removed product keeps its files. Plain C++. A scan returns the locations in this order.
///
/// The cleanup script has its own list. A static_assert in removal/CleanupScript.cpp fails when the two lists differ.
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

/// Relative to the home directory. They come after the absolute ones.
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

/// The licence file, relative to the home directory. It lies inside the fourth location and is not a location itself.
inline constexpr std::u16string_view licenceFile = u"Library/Application Support/Quorlen/.licence";
static_assert(licenceFile.starts_with(homeRelative[0]) && licenceFile.ends_with(licenceFileName));

}
