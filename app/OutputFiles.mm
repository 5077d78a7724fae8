#import "app/OutputFiles.hpp"

#import "platform/Retained.hpp"

namespace
{

NSString *timestamp()
{
    // A fresh formatter with nothing set but the pattern follows the user's current settings.
    const auto formatter = adopt([[NSDateFormatter alloc] init]);
    [formatter.get() setDateFormat:@"yyyyMMdd-HHmmss"];
    return [formatter.get() stringFromDate:[NSDate date]];
}

}

NSString *removalLogFileName()
{
    return [NSString stringWithFormat:@"Quorlen-3-Removal-Log-%@.txt", timestamp()];
}

NSString *licenceBackupName()
{
    return [NSString stringWithFormat:@"Quorlen-License-Backup-%@", timestamp()];
}

NSString *licenceRestoreFolderName()
{
    return [NSString stringWithFormat:@"Quorlen-License-Restore-%@", timestamp()];
}

NSString *desktopFolder()
{
    return [NSSearchPathForDirectoriesInDomains(NSDesktopDirectory, NSUserDomainMask, YES) firstObject];
}
