#import <Foundation/Foundation.h>

#import "platform/gnustep/MethodExchange.h"

#include <cerrno>
#include <cstdio>

@interface NSFileManager (WholeCopies)
@end

@implementation NSFileManager (WholeCopies)

+ (void)load
{
    exchangeInstanceMethods(
        self, @selector(copyItemAtPath:toPath:error:), @selector(copyWholeItemAtPath:toPath:error:));
}

/// In the place of `copyItemAtPath:toPath:error:`. GNUstep's own leaves a part behind when a copy breaks off, on a full
/// disk or when the program is killed, and a part of a file passes for a file. Here the copy is made under another name
/// beside its destination and gets its own name when it is whole.
- (BOOL)copyWholeItemAtPath:(NSString *)source toPath:(NSString *)destination error:(NSError **)error
{
    if (!destination || [self attributesOfItemAtPath:destination error:nullptr]) {
        return [self copyWholeItemAtPath:source toPath:destination error:error]; // which refuses, with its own reason
    }
    NSString *name = [NSString stringWithFormat:@".part-%@", [[NSProcessInfo processInfo] globallyUniqueString]];
    NSString *part = [[destination stringByDeletingLastPathComponent] stringByAppendingPathComponent:name];
    BOOL copied = [self copyWholeItemAtPath:source toPath:part error:error];
    if (copied && rename([part fileSystemRepresentation], [destination fileSystemRepresentation]) != 0) {
        copied = NO;
        if (error) {
            *error = [NSError errorWithDomain:NSPOSIXErrorDomain code:errno userInfo:nil];
        }
    }
    if (!copied) {
        [self removeItemAtPath:part error:nullptr];
    }
    return copied;
}

@end
