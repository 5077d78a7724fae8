// Lets a test stop the application's clock: while the file that the environment names exists, the date is the number in
// it, in seconds since 1970.
#include <cstdlib>
#import <Foundation/Foundation.h>
#include <fstream>
#import <objc/runtime.h>

namespace
{

// The path of the file; without it the method is not replaced.
constexpr const char *clockVariable = "PRACTICE_MAC_CLOCK";

}

@interface NSDate (Clock)
@end

@implementation NSDate (Clock)

+ (void)load
{
    if (std::getenv(clockVariable)) {
        method_exchangeImplementations(class_getClassMethod([NSDate class], @selector(date)),
            class_getClassMethod([NSDate class], @selector(dateOfTheTestsClock)));
    }
}

// The two methods are exchanged, so the message calls the platform's own.
+ (NSDate *)dateOfTheTestsClock
{
    double seconds = 0;
    std::ifstream file(std::getenv(clockVariable));
    return file >> seconds ? [NSDate dateWithTimeIntervalSince1970:seconds] : [self dateOfTheTestsClock];
}

@end
