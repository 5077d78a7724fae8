/// The declarations that the product uses of Foundation.
///
/// To add a declaration, write it under the name of the file that declares it on a Mac, with Apple's types, nullability
/// and first macOS version, and add its line to tests/macos/interface-facts.txt (a method or property) or
/// tests/macos/InterfaceFacts.mm (anything else). A class or function that the app did not use before also needs a line
/// in platform/macos/stubs/symbols.txt; the link error names it.
#pragma once

#import <objc/objc.h>
#include <stddef.h>

// NSObjCRuntime.h
typedef long NSInteger;
typedef unsigned long NSUInteger;

#define NS_ASSUME_NONNULL_BEGIN _Pragma("clang assume_nonnull begin")
#define NS_ASSUME_NONNULL_END _Pragma("clang assume_nonnull end")

#define NS_ENUM(type, name)                                                                                            \
    enum name : type name;                                                                                             \
    enum name : type
#define NS_OPTIONS(type, name)                                                                                         \
    type name;                                                                                                         \
    enum : type
#define NS_FORMAT_FUNCTION(text, first) __attribute__((format(__NSString__, text, first)))

#define FOUNDATION_EXPORT extern "C"
#define APPKIT_EXTERN extern "C" __attribute__((visibility("default")))

// API_AVAILABLE(macos(10.6)), API_DEPRECATED("what to use instead", macos(10.0, 12.0)): a call that the oldest
// supported macOS does not have is an error.
#define API_PLATFORM_AVAILABLE_macos(first) macos, introduced = first
#define API_PLATFORM_DEPRECATED_macos(first, last) macos, introduced = first, deprecated = last
#define API_AVAILABLE(platform) __attribute__((availability(API_PLATFORM_AVAILABLE_##platform)))
#define API_DEPRECATED(text, platform) __attribute__((availability(API_PLATFORM_DEPRECATED_##platform, message = text)))
#define API_TO_BE_DEPRECATED 100000

NS_ASSUME_NONNULL_BEGIN

// NSGeometry.h
typedef double CGFloat;

struct CGPoint {
    CGFloat x;
    CGFloat y;
};
typedef struct CGPoint CGPoint;

struct CGSize {
    CGFloat width;
    CGFloat height;
};
typedef struct CGSize CGSize;

struct CGRect {
    CGPoint origin;
    CGSize size;
};
typedef struct CGRect CGRect;

typedef CGRect NSRect;

inline NSRect NSMakeRect(CGFloat x, CGFloat y, CGFloat w, CGFloat h)
{
    return { { x, y }, { w, h } };
}

// NSRange.h
typedef struct _NSRange {
    NSUInteger location;
    NSUInteger length;
} NSRange;

inline NSRange NSMakeRange(NSUInteger location, NSUInteger length)
{
    return { location, length };
}

// NSEnumerator.h
typedef struct {
    unsigned long state;
    id _Nullable __unsafe_unretained *_Nullable itemsPtr;
    unsigned long *_Nullable mutationsPtr;
    unsigned long extra[5];
} NSFastEnumerationState;

@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState *)state
                                  objects:(id _Nullable __unsafe_unretained[_Nonnull])buffer
                                    count:(NSUInteger)len;
@end

@interface NSEnumerator<ObjectType> : NSObject <NSFastEnumeration>
- (nullable ObjectType)nextObject;
@end

// NSString.h
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

// NSArray.h
@interface NSArray<__covariant ObjectType> : NSObject <NSFastEnumeration>
@property (readonly) NSUInteger count;

+ (instancetype)array;
+ (instancetype)arrayWithArray:(NSArray<ObjectType> *)array;
+ (instancetype)arrayWithObjects:(const ObjectType _Nonnull[_Nonnull])objects count:(NSUInteger)cnt;

@property (nullable, nonatomic, readonly) ObjectType firstObject API_AVAILABLE(macos(10.6));
@end

@interface NSMutableArray<ObjectType> : NSArray <ObjectType>
- (void)addObject:(ObjectType)anObject;
@end

// NSDictionary.h
@interface NSDictionary<__covariant KeyType, __covariant ObjectType> : NSObject
+ (instancetype)dictionaryWithObjects:(const ObjectType _Nonnull[_Nullable])objects
                              forKeys:(const KeyType _Nonnull[_Nullable])keys
                                count:(NSUInteger)cnt;
@end

// NSDate.h
@interface NSDate : NSObject
+ (instancetype)date;
@end

// NSError.h
@interface NSError : NSObject
@property (readonly, copy) NSString *localizedDescription;
@end

// NSException.h
__attribute__((objc_exception))
@interface NSException : NSObject
@property (nullable, readonly, copy) NSString *reason;
@end

// NSURL.h
@interface NSURL : NSObject
+ (nullable instancetype)URLWithString:(NSString *)URLString;

@property (nullable, readonly, copy) NSString *path;
@end

// NSPathUtilities.h
@interface NSString (NSStringPathExtensions)
@property (readonly, copy) NSString *lastPathComponent;
@property (readonly, copy) NSString *stringByDeletingLastPathComponent;
- (NSString *)stringByAppendingPathComponent:(NSString *)str;
@end

FOUNDATION_EXPORT NSString *NSHomeDirectory(void);
FOUNDATION_EXPORT NSString *NSTemporaryDirectory(void);

typedef NS_ENUM(NSUInteger, NSSearchPathDirectory) {
    NSDesktopDirectory = 12,
};

typedef NS_OPTIONS(NSUInteger, NSSearchPathDomainMask) {
    NSUserDomainMask = 1,
};

FOUNDATION_EXPORT NSArray<NSString *> *NSSearchPathForDirectoriesInDomains(
    NSSearchPathDirectory directory, NSSearchPathDomainMask domainMask, BOOL expandTilde);

// NSBundle.h
@interface NSBundle : NSObject
@property (class, readonly, strong) NSBundle *mainBundle;

- (nullable id)objectForInfoDictionaryKey:(NSString *)key;
@end

// NSDateFormatter.h
@interface NSFormatter : NSObject
@end

@interface NSDateFormatter : NSFormatter
@property (null_resettable, copy) NSString *dateFormat;

- (NSString *)stringFromDate:(NSDate *)date;
@end

// NSFileManager.h
typedef NSString *NSFileAttributeKey;

@interface NSDirectoryEnumerator<ObjectType> : NSEnumerator <ObjectType>
@end

@interface NSFileManager : NSObject
@property (class, readonly, strong) NSFileManager *defaultManager;

- (BOOL)createDirectoryAtPath:(NSString *)path
    withIntermediateDirectories:(BOOL)createIntermediates
                     attributes:(nullable NSDictionary<NSFileAttributeKey, id> *)attributes
                          error:(NSError *_Nullable *_Nullable)error API_AVAILABLE(macos(10.5));
- (BOOL)copyItemAtPath:(NSString *)srcPath
                toPath:(NSString *)dstPath
                 error:(NSError *_Nullable *_Nullable)error API_AVAILABLE(macos(10.5));
- (BOOL)removeItemAtPath:(NSString *)path error:(NSError *_Nullable *_Nullable)error API_AVAILABLE(macos(10.5));
- (BOOL)fileExistsAtPath:(NSString *)path;
- (nullable NSDirectoryEnumerator<NSString *> *)enumeratorAtPath:(NSString *)path;
@end

// NSNotification.h
@class NSOperationQueue;

typedef NSString *NSNotificationName;

@interface NSNotification : NSObject
@end

@interface NSNotificationCenter : NSObject
@property (class, readonly, strong) NSNotificationCenter *defaultCenter;
- (id<NSObject>)addObserverForName:(nullable NSNotificationName)name
                            object:(nullable id)obj
                             queue:(nullable NSOperationQueue *)queue
                        usingBlock:(void (^)(NSNotification *note))block API_AVAILABLE(macos(10.6));
@end

// NSProcessInfo.h
@interface NSProcessInfo : NSObject
@property (class, readonly, strong) NSProcessInfo *processInfo;
@property (copy) NSString *processName;
@end

// NSTask.h
@interface NSTask : NSObject
@property (nullable, copy) NSArray<NSString *> *arguments;
@property (readonly) int terminationStatus;
@end

@interface NSTask (NSTaskConveniences)
- (void)waitUntilExit;
@end

@interface NSTask (NSDeprecated)
@property (nullable, copy) NSString *launchPath API_DEPRECATED("executableURL", macos(10.0, API_TO_BE_DEPRECATED));
- (void)launch API_DEPRECATED("launchAndReturnError:", macos(10.0, API_TO_BE_DEPRECATED));
@end

// NSAppleScript.h
@class NSAppleEventDescriptor;

@interface NSAppleScript : NSObject
- (nullable instancetype)initWithSource:(NSString *)source;
- (NSAppleEventDescriptor *)executeAndReturnError:(NSDictionary<NSString *, id> *_Nullable *_Nullable)errorInfo;
@end

NS_ASSUME_NONNULL_END
