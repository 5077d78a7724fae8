/// Runs a shell text as root through the platform's script runner.
#pragma once

#import <Cocoa/Cocoa.h>

/// The outcome of a privileged run.
struct PrivilegedOutcome {
    /// Whether the run returned a result. It is false after a refused or cancelled administrator prompt, too.
    bool succeeded;
    /// After a failure, the platform's error record as text, or an empty record as text if there is none. Nil after
    /// success.
    NSString *errorText;
};

/// Asks for administrator rights, runs the text, and returns when it has ended or the rights were refused.
/// @param literal The shell text as an AppleScript string literal, quotes included; not nil.
[[nodiscard]] PrivilegedOutcome runWithAdministratorPrivileges(NSString *literal);
