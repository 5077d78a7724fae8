#import "platform/gnustep/missing/AppleScript.h"

#import "platform/gnustep/missing/PrivilegedShell.hpp"
#import "platform/gnustep/missing/ShellStatementParser.hpp"
#import "platform/Retained.hpp"
#import "platform/Text.hpp"

#include <cstring>

// The keys and numbers of macOS: NSAppleScript.h, OSA.h, MacErrors.h (where kPOSIXErrorBase is 100000).
NSString *const NSAppleScriptErrorMessage = @"NSAppleScriptErrorMessage";
NSString *const NSAppleScriptErrorBriefMessage = @"NSAppleScriptErrorBriefMessage";
NSString *const NSAppleScriptErrorNumber = @"NSAppleScriptErrorNumber";

namespace
{

constexpr int userCanceled = -128;
constexpr int cannotCoerce = -1700;
constexpr int syntaxErrorNumber = -2741;
constexpr int posixErrorBase = 100000;

NSDictionary *errorRecord(int number, NSString *message)
{
    return @{
        NSAppleScriptErrorNumber : @(number),
        NSAppleScriptErrorMessage : message,
        NSAppleScriptErrorBriefMessage : message,
    };
}

/// A shell's output as `do shell script` returns it: line feeds become carriage returns, and one at the end is
/// removed.
NSString *stringFromShell(const std::string &bytes)
{
    NSData *data = [NSData dataWithBytes:bytes.data() length:bytes.size()];
    NSString *text = [[[NSString alloc] initWithData:data encoding:NSUTF8StringEncoding] autorelease];
    if (!text) {
        text = [[[NSString alloc] initWithData:data encoding:NSISOLatin1StringEncoding] autorelease];
    }
    text = [text stringByReplacingOccurrencesOfString:@"\n" withString:@"\r"];
    return [text hasSuffix:@"\r"] ? [text substringToIndex:[text length] - 1] : text;
}

/// The error record of a failed run.
NSDictionary *failureRecord(const ShellResult &run)
{
    using Outcome = ShellResult::Outcome;
    if (run.outcome == Outcome::Refused) {
        return errorRecord(userCanceled, @"User canceled.");
    }
    if (run.outcome == Outcome::SystemError) {
        return errorRecord(
            posixErrorBase + run.code, [NSString stringWithFormat:@"%s: %s.", run.error.c_str(), strerror(run.code)]);
    }
    NSString *words = stringFromShell(run.error);
    if ([words length] == 0) {
        words = @"The command exited with a non-zero status.";
    }
    return errorRecord(run.code, words);
}

}

/// A descriptor with a text. GNUstep's class has no instance variables, and a category cannot add any.
@interface TextDescriptor : NSAppleEventDescriptor {
    Retained<NSString> _text;
}
@end

@implementation TextDescriptor

- (instancetype)initWithText:(NSString *)text
{
    if ((self = [super init])) {
        _text = Retained<NSString>::sharing(text);
    }
    return self;
}

- (NSString *)stringValue
{
    return _text.get();
}

@end

/// The class of the objects of `+[NSAppleScript alloc]`: a script that stores its source.
@interface ShellStatementScript : NSAppleScript {
    Retained<NSString> _source;
}
@end

@implementation ShellStatementScript

- (instancetype)initWithSource:(NSString *)source
{
    if ((self = [super init])) {
        _source = Retained<NSString>::adopting([source copy]);
    }
    return self;
}

- (NSAppleEventDescriptor *)executeAndReturnError:(NSDictionary **)errorInfo
{
    NSDictionary *unread = nil;
    NSDictionary **const failure = errorInfo ?: &unread;
    const auto text = parseShellStatement(utf16(_source.get()));
    if (!text) {
        *failure =
            errorRecord(syntaxErrorNumber, @"The source is not a shell statement with administrator privileges.");
        return nil;
    }
    if (!canReachTheShell(*text)) {
        *failure = errorRecord(cannotCoerce, @"The command holds a character that no shell can be given.");
        return nil;
    }
    const ShellResult run = runAsRoot([nsString(*text) UTF8String]);
    if (run.outcome != ShellResult::Outcome::Succeeded) {
        *failure = failureRecord(run);
        return nil;
    }
    return [[[TextDescriptor alloc] initWithText:stringFromShell(run.output)] autorelease];
}

@end

@implementation NSAppleScript (ShellStatementAllocation)

+ (instancetype)allocWithZone:(NSZone *)zone
{
    return NSAllocateObject(self == [NSAppleScript class] ? [ShellStatementScript class] : self, 0, zone);
}

@end
