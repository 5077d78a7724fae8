#import "platform/gnustep/WindowRestoration.h"

@implementation NSWindow (Restoration)

- (void)setRestorable:(BOOL)restorable
{
}

@end
