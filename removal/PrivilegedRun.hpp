/// Runs a shell text as root through the platform's script runner.
#pragma once

#import <Cocoa/Cocoa.h>

/// How a privileged run ended.
struct PrivilegedOutcome {
    /// Whether the run returned a result. A refused or cancelled administrator prompt is a failure like any other.
    bool succeeded;
    /// After a failure, the platform's error record as text, or an empty record's where there is none; nil after
    /// success.
    NSString *errorText;
};

/// Asks for administrator rights, runs the text and waits until it has ended or the request was refused.
/// @param literal The shell text as an AppleScript string literal, quotes included; not nil.
[[nodiscard]] PrivilegedOutcome runWithAdministratorPrivileges(NSString *literal);
