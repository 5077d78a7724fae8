/// Ordered collections.
#pragma once

#import <Foundation/NSEnumerator.h>

NS_ASSUME_NONNULL_BEGIN

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

NS_ASSUME_NONNULL_END
