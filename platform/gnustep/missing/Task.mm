#import "platform/gnustep/missing/Task.h"

#import "platform/gnustep/missing/ChildProcess.hpp"
#import "platform/Retained.hpp"

#include <cstring>

@implementation SpawnedTask

@synthesize launchPath = _launchPath;
@synthesize arguments = _arguments;
@synthesize terminationStatus = _terminationStatus;

- (void)dealloc
{
    releaseAndClear(_arguments);
    releaseAndClear(_launchPath);
    [super dealloc];
}

- (void)launch
{
    std::vector<std::string> arguments;
    for (NSString *argument in _arguments) {
        arguments.emplace_back([argument UTF8String]);
    }
    if (const int error =
            startProcess([_launchPath fileSystemRepresentation], arguments, currentEnvironment(), { }, _process)) {
        [NSException raise:NSInvalidArgumentException
                    format:@"could not start the launch path (%@): %s", _launchPath, strerror(error)];
    }
}

- (void)waitUntilExit
{
    ProcessEnd end;
    if (const int error = waitForEnd(_process, end)) {
        [NSException raise:NSGenericException format:@"the end of (%@) is unknown: %s", _launchPath, strerror(error)];
    }
    _terminationStatus = end.value;
}

@end
