#import "detection/AppDelegate+KnownLocations.h"

#include "detection/KnownLocations.hpp"
#import "platform/Text.hpp"

@implementation AppDelegate (KnownLocations)

- (NSArray<NSString *> *)knownQuorlenPaths
{
    NSString *home = NSHomeDirectory();
    NSMutableArray<NSString *> *paths = [NSMutableArray array];
    for (const auto path : known_locations::absolute) {
        [paths addObject:nsString(path)];
    }
    for (const auto path : known_locations::homeRelative) {
        [paths addObject:[home stringByAppendingPathComponent:nsString(path)]];
    }
    return [NSArray arrayWithArray:paths];
}

- (NSString *)licensePath
{
    return [NSHomeDirectory() stringByAppendingPathComponent:nsString(known_locations::licenceFile)];
}

- (BOOL)licenseExists
{
    return [[NSFileManager defaultManager] fileExistsAtPath:[self licensePath]];
}

- (NSArray<NSString *> *)existingQuorlenPaths
{
    NSFileManager *fileManager = [NSFileManager defaultManager];
    NSMutableArray<NSString *> *present = [NSMutableArray array];
    for (NSString *path in [self knownQuorlenPaths]) {
        if ([fileManager fileExistsAtPath:path]) {
            [present addObject:path];
        }
    }
    return [NSArray arrayWithArray:present];
}

@end
