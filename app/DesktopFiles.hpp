/// The names and places of the files that the tool makes.
#pragma once

#import "platform/Cocoa.h"

/// The current local date and time as "yyyyMMdd-HHmmss", by the user's own calendar, locale and time zone: the
/// formatter is fresh at each call and nothing but the pattern is set. Never nil.
[[nodiscard]] NSString *timestamp();

/// The user's Desktop folder as an absolute path, or nil when the platform names none. The folder may be missing; it is
/// never made.
[[nodiscard]] NSString *desktopFolder();
