// When a copy fails half-way, GNUstep leaves a part of the file under the whole file's name.
// This file is unnecessary when GNUstep's `copyItemAtPath:` leaves no file after a failure.
#import <Foundation/Foundation.h>

#import "platform/gnustep/Swizzling.hpp"

#include <cerrno>
#include <cstdio>

@interface NSFileManager (WholeCopies)
@end

@implementation NSFileManager (WholeCopies)

+ (void)load
{
    swizzleInstanceMethod(self, @selector(copyItemAtPath:toPath:error:), @selector(copyWholeItemAtPath:toPath:error:));
}

/// Replaces `copyItemAtPath:toPath:error:`. On a full disk, or when the program is killed, GNUstep leaves a part of the
/// file, which looks like a whole file. This makes the copy under another name in the same folder, and renames it when
/// it is whole.
- (BOOL)copyWholeItemAtPath:(NSString *)source toPath:(NSString *)destination error:(NSError **)error
{
    if (!destination || [self attributesOfItemAtPath:destination error:nullptr]) {
        return [self copyWholeItemAtPath:source toPath:destination error:error]; // refuses with its own reason
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
