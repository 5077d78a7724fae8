// Leaks an object of the platform's on purpose: the leak check must find it, with its line.
#import <Cocoa/Cocoa.h>

int main()
{
    @autoreleasepool {
        [[NSMutableArray alloc] initWithCapacity:1000];
    }
}
