// GNUstep looks for each named image under some 250 file types, and makes an image smaller by leaving pixels out.
// This file is unnecessary when GNUstep's launch and its scaled images are as good without it (docs/speed.md).
#import <AppKit/AppKit.h>

#import "platform/gnustep/Swizzling.hpp"

// The methods below replace GNUstep's.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

@interface NSImage (Images)
@end

@implementation NSImage (Images)

+ (void)load
{
    swizzleInstanceMethod(self, @selector(drawInRect:fromRect:operation:fraction:respectFlipped:hints:),
        @selector(drawSmoothlyInRect:fromRect:operation:fraction:respectFlipped:hints:));
}

/// The file types under which GNUstep looks for a named image. GNUstep's own answer has some 250 types. It loads the
/// modules of an image library to list them, and looks for each name under all of them in several folders. The images
/// of this program and of the platform are bitmaps, so this returns the types of bitmaps only.
+ (NSArray *)imageUnfilteredFileTypes
{
    return [NSBitmapImageRep imageUnfilteredFileTypes];
}

/// The same types, because no filter service adds any. GNUstep calls this for each image that it reads.
+ (NSArray *)imageFileTypes
{
    return [self imageUnfilteredFileTypes];
}

/// Replaces the method that draws all images. Sets the interpolation that GNUstep does not use by default.
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
