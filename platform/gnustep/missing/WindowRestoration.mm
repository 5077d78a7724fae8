#import "platform/gnustep/missing/WindowRestoration.h"

@implementation NSWindow (Restoration)

- (void)setRestorable:(BOOL)restorable
{
}

@end
