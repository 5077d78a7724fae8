#import "licence/Archiver.hpp"

#import "platform/Retained.hpp"

int runArchiver(NSArray<NSString *> *arguments)
{
    const auto task = adopt([[NSTask alloc] init]);
    [task.get() setLaunchPath:@"/usr/bin/ditto"];
    [task.get() setArguments:arguments];
    [task.get() launch];
    [task.get() waitUntilExit];
    return [task.get() terminationStatus];
}
