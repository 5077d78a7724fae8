/// Enumeration, by object and by `for … in`.
#pragma once

#import <objc/NSObject.h>

NS_ASSUME_NONNULL_BEGIN

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

NS_ASSUME_NONNULL_END
