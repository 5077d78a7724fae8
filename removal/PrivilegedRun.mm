#import "removal/PrivilegedRun.hpp"

#import "platform/Retained.hpp"
#import "platform/Text.hpp"
#include "removal/Quoting.hpp"

PrivilegedOutcome runWithAdministratorPrivileges(NSString *literal)
{
    NSString *statement = nsString(privilegedStatement(utf16(literal)));
    const auto script = adopt([[NSAppleScript alloc] initWithSource:statement]);
    NSDictionary *error = nil;
    if ([script.get() executeAndReturnError:&error] != nil) {
        return { true, nil };
    }
    return
    {
        false, [error ?: @{ } description]
    };
}
