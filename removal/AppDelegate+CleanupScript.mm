#import "removal/AppDelegate+CleanupScript.h"

#import "platform/Text.hpp"
#include "removal/CleanupScript.hpp"
#include "removal/Quoting.hpp"

@implementation AppDelegate (CleanupScript)

- (NSString *)cleanupShellScript
{
    return nsString(cleanupScript(utf16(NSHomeDirectory())));
}

- (NSString *)shellQuotedString:(NSString *)text
{
    return nsString(shellQuoted(utf16(text)));
}

- (NSString *)appleScriptQuotedString:(NSString *)text
{
    return nsString(appleScriptQuoted(utf16(text)));
}

@end
