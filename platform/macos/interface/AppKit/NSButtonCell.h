/// Buttons' looks.
#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

typedef NS_ENUM(NSUInteger, NSBezelStyle) {
    NSBezelStyleRounded = 1,
    NSBezelStyleCircular = 7,
};

NS_ASSUME_NONNULL_END
