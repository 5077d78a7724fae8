/// GNUstep's NSAppleScript is an empty class. This file makes it run one statement,
/// `do shell script "…" with administrator privileges`. This file is unnecessary when GNUstep's class runs it.
#pragma once

#import <Foundation/Foundation.h>

/// The keys of an error record, named as on macOS. The record always holds all of them.
extern NSString *const NSAppleScriptErrorMessage;      ///< NSString: what happened.
extern NSString *const NSAppleScriptErrorBriefMessage; ///< NSString: the same in short.
extern NSString *const NSAppleScriptErrorNumber;       ///< NSNumber: see `executeAndReturnError:`.

@interface NSAppleScript (ShellStatement)

/// Makes a script from a source text. The text is parsed only when the script is run.
///
/// @param source the statement; ShellStatementParser.hpp says which statements it accepts.
/// @return the script; not nil if the source is not nil, even if the source is wrong.
- (instancetype)initWithSource:(NSString *)source;

/// Asks the user for administrator rights in polkit's prompt, and then runs the statement's shell text as root.
/// Returns when the shell has ended, or when the rights are refused.
///
/// @param errorInfo receives the error record after a failure; is not changed after a success; may be null. The number
/// of the record is
///     -2741 if the source is not such a statement,
///     -1700 if the text has a null character or half a surrogate pair, which cannot be passed to a shell,
///     -128 ("User canceled.") if the prompt was dismissed or the rights were refused,
///     the shell's exit status if that is not 0,
///     pkexec's exit status if pkexec could not start the shell,
///     100000 plus the error number if a system call failed.
/// @return the shell's standard output; nil after a failure. As on macOS, line feeds become carriage returns, and
/// one at the end is dropped.
- (NSAppleEventDescriptor *)executeAndReturnError:(NSDictionary **)errorInfo;

@end

@interface NSAppleEventDescriptor (Text)

/// The text of a result.
- (NSString *)stringValue;

@end
