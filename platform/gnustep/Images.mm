#import <AppKit/AppKit.h>

#import "platform/gnustep/MethodExchange.h"

// The override of GNUstep's method below is meant.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

@interface NSImage (Images)
@end

@implementation NSImage (Images)

+ (void)load
{
    exchangeInstanceMethods(self, @selector(drawInRect:fromRect:operation:fraction:respectFlipped:hints:),
        @selector(drawSmoothlyInRect:fromRect:operation:fraction:respectFlipped:hints:));
}

/// The types of files in which GNUstep looks for an image by its name. Its own answer names some 250, and each name, of
/// a scroller's arrow for instance, is sought under all of them in several folders; only to list them, the modules of
/// an image library are loaded. The images of this program and of the platform are bitmaps, which is what this answers.
+ (NSArray *)imageUnfilteredFileTypes
{
    return [NSBitmapImageRep imageUnfilteredFileTypes];
}

/// The same with the types that filter services would add; there are none. Asked for at each image that is read.
+ (NSArray *)imageFileTypes
{
    return [self imageUnfilteredFileTypes];
}

/// In the place of the method that draws all images. By default GNUstep makes an image smaller by leaving pixels out.
- (void)drawSmoothlyInRect:(NSRect)destination
                  fromRect:(NSRect)source
                 operation:(NSCompositingOperation)operation
                  fraction:(CGFloat)fraction
            respectFlipped:(BOOL)respectFlipped
                     hints:(NSDictionary *)hints
{
    [[NSGraphicsContext currentContext] setImageInterpolation:NSImageInterpolationHigh];
    [self drawSmoothlyInRect:destination
                    fromRect:source
                   operation:operation
                    fraction:fraction
              respectFlipped:respectFlipped
                       hints:hints];
}

@end
