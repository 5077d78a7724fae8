/// Moments as text.
#pragma once

#import <Foundation/NSDate.h>
#import <Foundation/NSString.h>

NS_ASSUME_NONNULL_BEGIN

@interface NSFormatter : NSObject

@end

@interface NSDateFormatter : NSFormatter

@property (null_resettable, copy) NSString *dateFormat;

- (NSString *)stringFromDate:(NSDate *)date;

@end

NS_ASSUME_NONNULL_END
