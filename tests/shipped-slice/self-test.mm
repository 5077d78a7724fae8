// A slice that tests the loader: it uses each of the loader's bridges whose failure no journey of the shipped slice
// would show. It prints a line for each fact. Its exit status is the number of facts that do not hold.
#import <Cocoa/Cocoa.h>
#include <stdexcept>

extern "C" int puts(const char *);

// Declarations of the platform that the product does not need.

@interface NSObject (SelfTest)
- (NSRange)rangeLike:(NSRange)range;
- (CGPoint)pointLike:(CGPoint)point;
@end

@interface NSArray (SelfTest)
- (void)enumerateObjectsUsingBlock:(void (^)(id object, NSUInteger index, BOOL *stop))block;
@end

__attribute__((objc_exception))
@interface NSData : NSObject
@end

namespace
{

int failures;
int loads;              // The number of calls of the category's load.
NSString *events = @""; // The events, in order.

void expect(bool holds, const char *fact)
{
    if (!holds) {
        ++failures;
        puts("This does not hold:");
    }
    puts(fact);
}

void record(NSString *event)
{
    events = [[events stringByAppendingString:event] retain];
}

bool eventsWere(NSString *expected)
{
    const bool same = [events isEqualToString:expected];
    events = @"";
    return same;
}

/// Its constructor uses the result of its base's, and its handler reads its type's table in the C++ library.
struct Error : std::length_error {
    using length_error::length_error;
    const char *what() const noexcept override { return "seven"; }
};

/// Records its end.
struct Guard {
    NSString *event;
    ~Guard() { record(event); }
};

}

@interface Example : NSObject
@property (nonatomic, copy) NSString *copied;
@property (nonatomic, strong) Example *kept;
@end

@implementation Example

+ (instancetype)alloc
{
    record(@"(allocated)");
    return [super alloc];
}

- (id)copy
{
    return [@"copy" retain];
}

- (CGFloat)sumOf:(NSRange)a b:(NSRange)b c:(NSRange)c d:(CGPoint)d e:(CGPoint)e f:(CGPoint)f g:(CGPoint)g h:(CGPoint)h
{
    return a.location + 2 * a.length + 3 * b.location + 4 * b.length + 5 * c.location + 6 * c.length + 7 * d.x +
        8 * d.y + 9 * e.x + 10 * e.y + 11 * f.x + 12 * f.y + 13 * g.x + 14 * g.y + 15 * h.x + 16 * h.y +
        (_cmd == @selector(sumOf:b:c:d:e:f:g:h:) ? 0 : 1);
}

- (void)dealloc
{
    record(@"(deallocated)");
    [super dealloc];
}

@end

@interface Example (Category)
@end

@implementation Example (Category)

+ (void)load
{
    ++loads;
}

@end

namespace
{

void testObjects()
{
    expect(loads == 1, "a category's load is called once, before main");

    Example *object = [[Example alloc] init];
    [object setCopied:static_cast<id>(object)];
    expect([[object copied] isEqualToString:@"copy"], "a property copies its value");
    Example *kept = [[Example alloc] init];
    [object setKept:kept];
    [kept release];
    record(@"(kept)");
    [object setKept:nil];
    expect(eventsWere(@"(allocated)(allocated)(kept)(deallocated)"), "a property keeps its value, and releases it");
    @autoreleasepool {
        [object autorelease];
    }
    expect(eventsWere(@"(deallocated)"), "a pool releases its objects");
    expect(@ {} != nil, "an empty dictionary is an object");
}

void testMessages()
{
    Example *object = [[[Example alloc] init] autorelease];
    expect(eventsWere(@"(allocated)"), "a class method sends to super");
    // The greatest sum that these numbers can have: swapped arguments make it less.
    const NSRange r[] { { 1, 2 }, { 3, 4 }, { 5, 6 } };
    const CGPoint p[] { { 7, 8 }, { 9, 10 }, { 11, 12 }, { 13, 14 }, { 15, 16 } };
    expect([object sumOf:r[0] b:r[1] c:r[2] d:p[0] e:p[1] f:p[2] g:p[3] h:p[4]] == 1496,
        "a message has more arguments than there are registers");
    object = nil;
    const NSRange range = [object rangeLike:r[0]];
    const CGPoint point = [object pointLike:p[0]];
    expect(range.location == 0 && range.length == 0 && point.x == 0 && point.y == 0, "a message to nil gives zero");
    NSString *text = [NSString stringWithFormat:@"%d %@ %.1f ", 7, @"text", 2.5];
    expect([[text stringByAppendingFormat:@"%d %.1f %d %.1f %d %.1f %@ %d %.1f %.1f %.1f %.1f %.1f %.1f %@", 2, 3.5, 4,
               5.5, 6, 7.5, @"8", 9, 10.5, 11.5, 12.5, 13.5, 14.5, 15.5, @"16"]
               isEqualToString:@"7 text 2.5 2 3.5 4 5.5 6 7.5 8 9 10.5 11.5 12.5 13.5 14.5 15.5 16"],
        "a message has a variable number of arguments");
}

/// Calls `raise` through frames of the slice, of GNUstep and of the slice again.
void passThroughPlatform(void (*raise)())
{
    Guard outer { @"(outer)" };
    @try {
        Guard inner { @"(inner)" };
        [[NSArray arrayWithArray:NSSearchPathForDirectoriesInDomains(NSDesktopDirectory, NSUserDomainMask, YES)]
            enumerateObjectsUsingBlock:^(id, NSUInteger, BOOL *) {
                Guard innermost { @"(block)" };
                raise();
            }];
    } @catch (NSData *data) {
        record(@"(wrong handler)");
    }
    record(@"(not passed)");
}

/// Calls `raise` and uses all registers that a function must preserve.
[[gnu::noinline]] double useRegisters(void (*raise)(), const volatile long *n, const volatile double *d)
{
    const long a = n[0] * 3, b = n[1] * 5, c = n[2] * 7, e = n[3] * 11, f = n[4] * 13, g = n[5] * 17, h = n[6] * 19;
    const double i = d[0] * 3, j = d[1] * 5, k = d[2] * 7, l = d[3] * 11, m = d[4] * 13, o = d[5] * 17, p = d[6] * 19;
    raise();
    return i / a + j / b + k / c + l / e + m / f + o / g + p / h;
}

/// Whether a function's numbers are unchanged when it catches an exception. The volatile variables prevent
/// optimisation.
[[gnu::noinline]] bool keepsRegisters(const volatile long *n, const volatile double *d)
{
    const long a = n[0] + 1, b = n[1] + 2, c = n[2] + 3, e = n[3] + 4, m = n[4] + 5;
    const double f = d[0] + 1, g = d[1] + 2, h = d[2] + 3, i = d[3] + 4, j = d[4] + 5, k = d[5] + 6, l = d[6] + 7;
    try {
        void (*const volatile raise)() = [] { throw 7; };
        [[maybe_unused]] const volatile double sum = useRegisters(raise, n, d);
    } catch (int) {
    }
    return a == 2 && b == 4 && c == 6 && e == 8 && m == 10 && f == 2 && g == 4 && h == 6 && i == 8 && j == 10 &&
        k == 12 && l == 14;
}

void testExceptions()
{
    const long numbers[] { 1, 2, 3, 4, 5, 6, 7 };
    const double fractions[] { 1, 2, 3, 4, 5, 6, 7 };
    expect(keepsRegisters(numbers, fractions), "a handler gets the registers unchanged");

    for (int i = 0; i < 2; ++i) { // The second shows that the first has ended.
        @try {
            passThroughPlatform([] { [[NSMutableArray array] addObject:static_cast<id _Nonnull>(nil)]; });
        } @catch (NSException *exception) {
            record([exception reason] ? @"caught" : @"no reason");
        }
    }
    expect(eventsWere(@"(block)(inner)(outer)caught(block)(inner)(outer)caught"),
        "the platform's exception passes slice, GNUstep and slice");

    try {
        @try {
            passThroughPlatform([] { throw Error(""); });
        } @catch (NSException *exception) {
            record(@"(wrong handler)");
        }
    } catch (const std::length_error &error) {
        record([NSString stringWithFormat:@"%s", error.what()]);
    }
    expect(eventsWere(@"(block)(inner)(outer)seven"), "a C++ exception passes the handlers of objects by");
}

}

int main(int argc, const char *argv[])
{
    @autoreleasepool {
        expect(argc == 2 && argv[1][0] == '-', "main gets the arguments");
        testObjects();
        testMessages();
        testExceptions();
    }
    return failures;
}
