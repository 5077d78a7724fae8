#import "app/AppDelegate+ActivityLog.h"

namespace
{
NSString *const fallbackVersion = @"1.0";
/// Belongs to the version in CMakeLists.txt: change both together.
NSString *const updatedDate = @"2026.06.14";
}

@implementation AppDelegate (ActivityLog)

- (NSString *)appVersionString
{
    NSString *version = [[NSBundle mainBundle] objectForInfoDictionaryKey:@"CFBundleShortVersionString"];
    return [version length] > 0 ? version : fallbackVersion;
}

- (NSString *)appUpdatedString
{
    return updatedDate;
}

- (void)appendLog:(NSString *)message
{
    NSTextView *logView = [self logView];
    NSString *text = [logView string] ?: @"";
    [logView setString:[text stringByAppendingFormat:@"%@\n", message ?: @""]];
    [logView scrollRangeToVisible:NSMakeRange([[logView string] length], 0)];
}

@end
