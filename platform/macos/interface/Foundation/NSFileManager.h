/// Files and folders.
#pragma once

#import <Foundation/NSDictionary.h>
#import <Foundation/NSEnumerator.h>
#import <Foundation/NSString.h>

NS_ASSUME_NONNULL_BEGIN

@class NSError;

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

NS_ASSUME_NONNULL_END
