#import "app/DesktopFiles.hpp"

#import "platform/Retained.hpp"

NSString *timestamp()
{
    const auto formatter = adopt([[NSDateFormatter alloc] init]);
    [formatter.get() setDateFormat:@"yyyyMMdd-HHmmss"];
    return [formatter.get() stringFromDate:[NSDate date]];
}

NSString *desktopFolder()
{
    return [NSSearchPathForDirectoriesInDomains(NSDesktopDirectory, NSUserDomainMask, YES) firstObject];
}
