#import <AppKit/AppKit.h>

#import "platform/gnustep/MethodExchange.h"

@interface NSMutableAttributedString (TextAttachments)
@end

@implementation NSMutableAttributedString (TextAttachments)

+ (void)load
{
    exchangeInstanceMethods(
        self, @selector(fixAttachmentAttributeInRange:), @selector(fixAttachmentAttributeIfAnyInRange:));
}

/// In the place of `fixAttachmentAttributeInRange:`, which comes after each change of a text. GNUstep's own first makes
/// 400 KB of character sets for other purposes; a text without attachments has nothing to be fixed.
- (void)fixAttachmentAttributeIfAnyInRange:(NSRange)range
{
    NSString *attachment = [NSString stringWithFormat:@"%C", static_cast<unichar>(NSAttachmentCharacter)];
    if ([[self string] rangeOfString:attachment options:NSLiteralSearch range:range].length > 0 ||
        [self hasAttachmentAttributeInRange:range]) {
        [self fixAttachmentAttributeIfAnyInRange:range];
    }
}

- (BOOL)hasAttachmentAttributeInRange:(NSRange)range
{
    NSRange run = NSMakeRange(range.location, 0);
    for (NSUInteger index = range.location; index < NSMaxRange(range); index = NSMaxRange(run)) {
        if ([self attribute:NSAttachmentAttributeName atIndex:index effectiveRange:&run]) {
            return YES;
        }
    }
    return NO;
}

@end
