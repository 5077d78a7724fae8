/// Keyed collections.
#pragma once

#import <objc/NSObject.h>

NS_ASSUME_NONNULL_BEGIN

@interface NSDictionary<__covariant KeyType, __covariant ObjectType> : NSObject

+ (instancetype)dictionaryWithObjects:(const ObjectType _Nonnull[_Nullable])objects
                              forKeys:(const KeyType _Nonnull[_Nullable])keys
                                count:(NSUInteger)cnt;

@end

NS_ASSUME_NONNULL_END
