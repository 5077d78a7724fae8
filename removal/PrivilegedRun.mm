#import "removal/PrivilegedRun.hpp"

#import "platform/Retained.hpp"
#import "platform/Text.hpp"
#include "removal/PrivilegedStatement.hpp"

PrivilegedOutcome runWithAdministratorPrivileges(NSString *literal)
{
    NSString *statement = nsString(privilegedStatement(utf16(literal)));
    const auto script = adopt([[NSAppleScript alloc] initWithSource:statement]);
    NSDictionary *error = nil;
    if ([script.get() executeAndReturnError:&error]) {
        return { true, nil };
    }
    NSDictionary *record = error ?: @ {};
    return { false, [record description] };
}
