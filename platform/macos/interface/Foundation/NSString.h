/// Text.
#pragma once

#import <Foundation/NSRange.h>
#import <objc/NSObject.h>

NS_ASSUME_NONNULL_BEGIN

@class NSError;

typedef unsigned short unichar;

typedef NSUInteger NSStringEncoding;
enum : NSStringEncoding {
    NSUTF8StringEncoding = 4,
};

@interface NSString : NSObject

@property (readonly) NSUInteger length;

- (void)getCharacters:(unichar *)buffer range:(NSRange)range;
- (BOOL)isEqualToString:(NSString *)aString;
- (NSString *)stringByAppendingString:(NSString *)aString;
- (NSString *)stringByAppendingFormat:(NSString *)format, ... NS_FORMAT_FUNCTION(1, 2);
- (BOOL)writeToFile:(NSString *)path
         atomically:(BOOL)useAuxiliaryFile
           encoding:(NSStringEncoding)enc
              error:(NSError *_Nullable *_Nullable)error;

+ (instancetype)stringWithCharacters:(const unichar *)characters length:(NSUInteger)length;
+ (instancetype)stringWithFormat:(NSString *)format, ... NS_FORMAT_FUNCTION(1, 2);

@end

NS_ASSUME_NONNULL_END
