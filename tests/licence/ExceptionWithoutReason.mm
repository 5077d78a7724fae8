#import "tests/licence/ExceptionWithoutReason.h"

@implementation ExceptionWithoutReason
- (NSString *)reason
{
    return nil;
}
@end
