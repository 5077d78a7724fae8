// A slice that tests the loader. It uses each construct that clang compiles to runtime calls or metadata once. It
// prints a line for each fact. Its exit status is the number of facts that do not hold.
#import <Cocoa/Cocoa.h>

#include <memory>
#include <stdexcept>

extern "C" int puts(const char *);

// Declarations of the platform that the product does not need.

@protocol NSCopying
@end

@interface NSObject (SelfTest)
- (Class)class;
- (BOOL)isKindOfClass:(Class)kind;
+ (BOOL)conformsToProtocol:(Protocol *)protocol;
@end

@interface NSArray (SelfTest)
- (id)objectAtIndexedSubscript:(NSUInteger)index;
- (void)enumerateObjectsUsingBlock:(void (^)(id object, NSUInteger index, BOOL *stop))block;
- (void)makeObjectsPerformSelector:(SEL)selector;
@end

@interface NSDictionary (SelfTest)
- (id)objectForKeyedSubscript:(id)key;
@end

@interface NSException (SelfTest)
+ (void)raise:(NSString *)name format:(NSString *)format, ...;
- (NSString *)name;
@end

@interface NSMutableString : NSString
- (void)appendString:(NSString *)text;
- (void)setString:(NSString *)text;
@end

@interface NSValue : NSObject
+ (NSValue *)valueWithRect:(NSRect)rect;
- (NSRect)rectValue;
@end

namespace
{

int failures;
int loads;               // The number of calls of the category's load.
NSMutableString *events; // The events, in order.

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
    [events appendString:event ?: @""];
}

bool eventsWere(NSString *expected)
{
    const bool same = [events isEqualToString:expected];
    [events setString:@""];
    return same;
}

struct Value {
};

/// Small enough to return in registers.
struct Pair {
    double first, second;
};

/// Too large to return in registers.
struct Large {
    long numbers[5];
};

using Vector = float __attribute__((vector_size(16)));

/// Records its end.
struct Guard {
    NSString *event;
    ~Guard() { record(event); }
};

}

@interface Ancestor : NSObject
@end

@implementation Ancestor

- (NSString *)name
{
    return @"ancestor";
}

+ (NSString *)kind
{
    return @"ancestors";
}

@end

@interface Descendant : Ancestor <NSApplicationDelegate> {
    BOOL _small;
    std::shared_ptr<Value> _shared;
    NSString *_text;
}
@property (nonatomic, copy) NSString *text;
@property (nonatomic, strong) NSString *sameText;
@end

@implementation Descendant {
    Guard _guard;
}

@synthesize text = _text;
@synthesize sameText = _sameText;

- (NSString *)name
{
    return [[super name] stringByAppendingString:@"'s descendant"];
}

+ (NSString *)kind
{
    return [[super kind] stringByAppendingString:@"' descendants"];
}

- (void)share:(const std::shared_ptr<Value> &)shared
{
    _small = YES;
    _shared = shared;
    _guard.event = @"(variables destroyed)";
}

- (NSString *)overridden
{
    return @"class";
}

- (long)sum:(long)a
       with:(double)b
          c:(long)c
          d:(double)d
          e:(long)e
          f:(double)f
          g:(long)g
          h:(double)h
          i:(long)i
          j:(double)j
          k:(long)k
          l:(double)l
          m:(long)m
          n:(double)n
          o:(long)o
          p:(double)p
          q:(double)q
{
    return static_cast<long>(a + 2 * b + 3 * c + 4 * d + 5 * e + 6 * f + 7 * g + 8 * h + 9 * i + 10 * j + 11 * k +
        12 * l + 13 * m + 14 * n + 15 * o + 16 * p + 17 * q);
}

- (NSRect)rectangleAt:(CGFloat)x
{
    return NSMakeRect(x, 2, 3, 4);
}

- (Large)largeFrom:(long)first
{
    return { { first, first + 1, first + 2, first + 3, first + 4 } };
}

- (float)lastOf:(Vector)vector
{
    return vector[3];
}

- (double)same:(double)number
{
    return number;
}

- (Pair)pairOf:(double)number
{
    return { number, number };
}

- (void)fail
{
    Guard guard { @"(method left)" };
    [NSException raise:@"Failure" format:@"%@ number %d", @"failure", 7];
}

- (void)dealloc
{
    record(@"(deallocated)");
    [super dealloc];
}

@end

@interface Descendant (Category) <NSCopying>
@end

@implementation Descendant (Category)

- (NSString *)overridden
{
    return @"category";
}

@end

@interface Failure : NSException
@end

@implementation Failure

+ (void)raise:(NSString *)name format:(NSString *)format, ...
{
    [super raise:name format:@"%@ %d %.1f", format, 7, 2.5];
}

@end

@interface NSString (SelfTest)
- (NSString *)twice;
+ (NSString *)nothing;
@end

@implementation NSString (SelfTest)

- (NSString *)twice
{
    return [self stringByAppendingString:self];
}

+ (void)load
{
    ++loads;
}

+ (NSString *)nothing
{
    return @"";
}

@end

namespace
{

void testClasses()
{
    Descendant *object = [[Descendant alloc] init];
    expect([[object name] isEqualToString:@"ancestor's descendant"], "an instance method sends to super");
    expect([[Descendant kind] isEqualToString:@"ancestors' descendants"], "a class method sends to super");
    expect([[object overridden] isEqualToString:@"category"], "a category overrides its class");
    expect([[@"ab" twice] isEqualToString:@"abab"], "a category adds to a class of the platform");
    expect(loads == 1, "a category's load is called once, before main");
    expect([[[NSString nothing] twice] length] == 0, "a category adds a class method");
    expect([Descendant conformsToProtocol:@protocol(NSApplicationDelegate)] &&
            ![Ancestor conformsToProtocol:@protocol(NSApplicationDelegate)],
        "a class adopts a protocol");
    expect([Descendant conformsToProtocol:@protocol(NSCopying)], "a category adopts a protocol");

    const auto shared = std::make_shared<Value>();
    [object share:shared];
    expect(shared.use_count() == 2, "a C++ variable of an object takes a value");
    NSString *text = [NSString stringWithFormat:@"%d %@ %.1f", 7, @"text", 2.5];
    [object setText:text];
    [object setSameText:text];
    expect([[object text] isEqualToString:@"7 text 2.5"] && [object sameText] == text, "properties retain and copy");
    [events setString:@"a"];
    [object setText:events];
    record(@"b");
    expect([[object text] isEqualToString:@"a"], "a property copies a mutable text");
    [object setText:nil];
    [events setString:@""];
    [object setSameText:nil];
    [object release];
    expect(shared.use_count() == 1 && eventsWere(@"(deallocated)(variables destroyed)"),
        "C++ variables are destroyed last");

    @autoreleasepool {
        [[[Descendant alloc] init] autorelease];
        [events setString:@""];
    }
    expect(eventsWere(@"(deallocated)"), "a pool releases its objects");
}

void testMessages()
{
    Descendant *object = [[[Descendant alloc] init] autorelease];
    // The weights differ, so that swapped arguments change the sum.
    expect([object sum:1 with:1 c:2 d:3 e:5 f:8 g:13 h:21 i:34 j:55 k:89 l:144 m:233 n:377 o:610 p:987 q:1597] == 64314,
        "a message has 17 arguments");
    const NSRect own = [object rectangleAt:1];
    expect(own.origin.x == 1 && own.origin.y == 2 && own.size.width == 3 && own.size.height == 4,
        "a method returns a structure");
    const NSRect platforms = [[NSValue valueWithRect:own] rectValue];
    expect(platforms.origin.x == 1 && platforms.size.height == 4,
        "a method of the platform takes and returns a structure");
    const Large large = [object largeFrom:7];
    expect(large.numbers[0] == 7 && large.numbers[4] == 11, "a method returns a structure in memory");
    expect([object lastOf:Vector { 1, 2, 3, 4 }] == 4, "a method takes a vector");
    Descendant *nothing = nil;
    expect(![nothing name] && ![nothing isKindOfClass:[object class]], "a message to nil gives nothing");
    const Pair pair = [nothing pairOf:7];
    expect([nothing same:7] == 0 && pair.first == 0 && pair.second == 0 && [nothing largeFrom:7].numbers[4] == 0,
        "a message to nil gives zero, of any type");
    expect([[@"1" stringByAppendingFormat:@" %d %.1f %d %.1f %d %.1f %@ %d %.1f %.1f %.1f %.1f %.1f %.1f %@", 2, 3.5, 4,
               5.5, 6, 7.5, @"8", 9, 10.5, 11.5, 12.5, 13.5, 14.5, 15.5, @"16"]
               isEqualToString:@"1 2 3.5 4 5.5 6 7.5 8 9 10.5 11.5 12.5 13.5 14.5 15.5 16"],
        "a message has a variable number of arguments");
}

void testCollections()
{
    NSArray<NSString *> *array = @[ @"a", @"b", @"c" ];
    expect([array count] == 3 && [array[2] isEqualToString:@"c"] && [@[] count] == 0, "array literals");
    NSDictionary *dictionary = @ { @"k" : @"v", @"l" : @"w" };
    expect([dictionary[@"l"] isEqualToString:@"w"] && !(@ {})[@"k"], "dictionary literals");

    for (NSString *text in array) {
        record(text);
    }
    expect(eventsWere(@"abc"), "a loop visits the elements in order");

    NSMutableArray *changing = [NSMutableArray array];
    [changing addObject:@"a"];
    [changing addObject:@"b"];
    @try {
        for (NSString *text in changing) {
            record(text);
            [changing addObject:text];
        }
    } @catch (NSException *exception) {
        record(@"!");
    }
    expect(eventsWere(@"a!"), "a change during the loop raises");

    @try {
        NSString *missing = nil;
        expect([@[ @"a", missing ] count] == 0, "unreachable");
    } @catch (NSException *exception) {
        record([exception name]);
    }
    expect(eventsWere(@"NSInvalidArgumentException"), "nil in an array literal raises");
}

void testBlocks()
{
    auto shared = std::make_shared<Value>();
    const std::weak_ptr<Value> weak = shared;
    void (^const ask)(id, NSUInteger, BOOL *) = ^(id object, NSUInteger index, BOOL *stop) {
        record(weak.lock() ? object : @"gone");
        *stop = index == 1;
    };
    [@[ @"a", @"b", @"c" ] enumerateObjectsUsingBlock:ask];
    shared.reset();
    [@[ @"a" ] enumerateObjectsUsingBlock:ask];
    expect(eventsWere(@"abgone"), "a block reads a weak pointer at each call by the platform");

    shared = std::make_shared<Value>();
    id monitor = nil;
    @autoreleasepool {
        const auto kept = shared;
        monitor =
            [[NSEvent addLocalMonitorForEventsMatchingMask:NSEventMaskKeyDown
                                                   handler:^(NSEvent *event) { return kept ? event : nil; }] retain];
    }
    expect(shared.use_count() == 2, "the platform's copy of a block holds what the block captured");
    [NSEvent removeMonitor:monitor];
    expect(shared.use_count() == 1, "and releases it");
    [monitor release];
}

/// Calls `raise` through frames of the slice, of GNUstep and of the slice again.
void passThroughPlatform(void (*raise)())
{
    Guard outer { @"(outer)" };
    @try {
        Guard inner { @"(inner)" };
        [@[ @"x" ] enumerateObjectsUsingBlock:^(id, NSUInteger, BOOL *) {
            Guard innermost { @"(block)" };
            raise();
        }];
        record(@"unreachable");
    } @finally {
        record(@"(finally)");
    }
}

void *deleted;

/// Its memory is not freed, so that a test can compare its address.
struct Trouble : std::length_error {
    using length_error::length_error;
    [[gnu::noinline]] static void operator delete(void *memory) { deleted = memory; }
};

/// Calls `raise` and uses all registers that a function must preserve.
[[gnu::noinline]] double useRegisters(void (*raise)(), const long *n, const double *d)
{
    const long a = n[0] * 3, b = n[1] * 5, c = n[2] * 7, e = n[3] * 11, f = n[4] * 13, g = n[5] * 17, h = n[6] * 19;
    const double i = d[0] * 3, j = d[1] * 5, k = d[2] * 7, l = d[3] * 11, m = d[4] * 13, o = d[5] * 17, p = d[6] * 19;
    raise();
    return static_cast<double>(a + b + c + e + f + g + h) + i + j + k + l + m + o + p;
}

/// Whether a function's numbers are unchanged when it catches an exception. The volatile variables prevent
/// optimisation.
[[gnu::noinline]] bool keepsRegisters(const long *n, const double *d)
{
    const long a = n[0] + 1, b = n[1] + 2, c = n[2] + 3, e = n[3] + 4;
    const double f = d[0] + 1, g = d[1] + 2, h = d[2] + 3, i = d[3] + 4, j = d[4] + 5, k = d[5] + 6, l = d[6] + 7;
    try {
        void (*const volatile raise)() = [] { throw 7; };
        [[maybe_unused]] const volatile double sum = useRegisters(raise, n, d);
    } catch (int) {
    }
    return a == 2 && b == 4 && c == 6 && e == 8 && f == 2 && g == 4 && h == 6 && i == 8 && j == 10 && k == 12 &&
        l == 14;
}

void testExceptions()
{
    const long numbers[] { 1, 2, 3, 4, 5, 6, 7 };
    const double fractions[] { 1, 2, 3, 4, 5, 6, 7 };
    expect(keepsRegisters(numbers, fractions), "a handler gets the registers unchanged");

    try {
        throw std::length_error("text");
    } catch (const std::length_error &error) {
        expect([[NSString stringWithFormat:@"%s", error.what()] isEqualToString:@"text"],
            "an exception class of the C++ library constructs its objects");
    }
    auto *const memory = new Trouble("text");
    const std::exception *volatile trouble = memory;
    delete trouble; // The compiler does not know the dynamic class, so it calls one function that destroys and frees.
    expect(deleted == memory, "a destructor of the C++ library returns its object");
    ::operator delete(memory);

    @try {
        passThroughPlatform([] { [NSException raise:@"Name" format:@"reason %d", 7]; });
    } @catch (NSException *exception) {
        record([exception reason]);
    }
    expect(eventsWere(@"(block)(inner)(finally)(outer)reason 7"), "an exception passes slice, GNUstep and slice");

    @try {
        [Failure raise:@"Name" format:@"reason"];
    } @catch (NSException *exception) {
        record([exception reason]);
    }
    expect(eventsWere(@"reason 7 2.5"), "a message to super has a variable number of arguments");

    Descendant *object = [[[Descendant alloc] init] autorelease];
    @try {
        @try {
            [@[ object ] makeObjectsPerformSelector:@selector(fail)];
        } @catch (NSException *exception) {
            record([exception name]);
            @throw;
        }
    } @catch (NSException *exception) {
        record(@"again");
    }
    expect(eventsWere(@"(method left)Failureagain"), "an exception is thrown again");

    @try {
        @try {
            passThroughPlatform([] { @throw @"text"; });
        } @catch (NSException *exception) {
            record(@"wrong");
        }
    } @catch (id text) {
        record(text);
    }
    expect(eventsWere(@"(block)(inner)(finally)(outer)text"), "an object of another type passes its handlers by");

    @try {
        @throw [[[Ancestor alloc] init] autorelease];
    } @catch (id thrown) {
        record([thrown name]);
    }
    expect(eventsWere(@"ancestor"), "a handler without a type catches every object");

    try {
        @try {
            passThroughPlatform([] { throw 7; });
        } @catch (NSException *exception) {
            record(@"wrong");
        }
    } catch (int number) {
        record(number == 7 ? @"seven" : @"wrong");
    }
    expect(eventsWere(@"(block)(inner)(finally)(outer)seven"), "a C++ exception passes the handlers of objects by");
}

}

int main(int argc, const char *argv[])
{
    @autoreleasepool {
        events = [[NSMutableString alloc] init];
        expect(argc == 2 && argv[1][0] == '-', "main gets the arguments");
        testClasses();
        testMessages();
        testCollections();
        testBlocks();
        testExceptions();
    }
    return failures;
}
