/// How a window keeps its picture.
#pragma once

#import <Foundation/Foundation.h>

NS_ASSUME_NONNULL_BEGIN

typedef NS_ENUM(NSUInteger, NSBackingStoreType) {
    NSBackingStoreBuffered = 2,
};

NS_ASSUME_NONNULL_END
