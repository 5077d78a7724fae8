// Leaks a platform object on purpose. The leak check must find it and its line.
#import <Cocoa/Cocoa.h>

int main()
{
    @autoreleasepool {
        [[NSMutableArray alloc] initWithCapacity:1000];
    }
}
