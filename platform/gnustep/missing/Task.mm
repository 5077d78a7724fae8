#import "platform/gnustep/missing/Task.h"

#import "platform/gnustep/missing/ChildProcess.hpp"
#import "platform/Retained.hpp"

#include <cstring>

@implementation SpawnedTask

@synthesize launchPath = _launchPath;
@synthesize arguments = _arguments;

- (void)dealloc
{
    releaseAndClear(_arguments);
    releaseAndClear(_launchPath);
    [super dealloc];
}

- (void)launch
{
    if (_process) {
        [NSException raise:NSInvalidArgumentException format:@"task already launched"];
    }
    if (!_launchPath) {
        [NSException raise:NSInvalidArgumentException format:@"must provide a launch path"];
    }
    std::vector<std::string> arguments;
    for (NSString *argument in _arguments) {
        arguments.emplace_back([argument UTF8String]);
    }
    pid_t process = 0;
    if (const int error =
            startProcess([_launchPath fileSystemRepresentation], arguments, currentEnvironment(), { }, process)) {
        [NSException raise:NSInvalidArgumentException
                    format:@"could not start the launch path (%@): %s", _launchPath, strerror(error)];
    }
    _process = process;
}

- (void)waitUntilExit
{
    if (!_process) {
        [NSException raise:NSInvalidArgumentException format:@"task not launched"];
    }
    if (_ended) {
        return;
    }
    ProcessEnd end;
    if (const int error = waitForEnd(_process, end)) {
        [NSException raise:NSGenericException format:@"the end of (%@) is unknown: %s", _launchPath, strerror(error)];
    }
    _ended = YES;
    _terminationStatus = end.value;
}

- (int)terminationStatus
{
    if (!_process) {
        [NSException raise:NSInvalidArgumentException format:@"task not launched"];
    }
    if (!_ended) {
        [NSException raise:NSInvalidArgumentException format:@"task still running"];
    }
    return _terminationStatus;
}

@end
