/// GNUstep's NSAppleScript is an empty class: this makes it run one statement,
/// `do shell script "…" with administrator privileges`. This file is unnecessary when GNUstep's class runs it.
#pragma once

#import <Foundation/Foundation.h>

/// The keys of an error record, named as on macOS. The record always holds all of them.
extern NSString *const NSAppleScriptErrorMessage;      ///< NSString: what happened.
extern NSString *const NSAppleScriptErrorBriefMessage; ///< NSString: the same in short.
extern NSString *const NSAppleScriptErrorNumber;       ///< NSNumber: see `executeAndReturnError:`.

@interface NSAppleScript (ShellStatement)

/// Makes a script of a source text, which is read only when the script is run.
///
/// @param source the statement; ShellStatementParser.hpp says what is understood.
/// @return the script; never nil for a source that is not nil, however wrong.
- (instancetype)initWithSource:(NSString *)source;

/// Runs the statement's shell text as root, once the user has granted administrator rights in polkit's prompt.
/// Returns when the shell has ended, or the rights were refused.
///
/// @param errorInfo receives the error record when there is no result, and is left alone when there is one; may be
/// null. The record's number
///     is -2741 for a source that is no such statement, -1700 for a text that no shell can be given (a null character
///     or half a surrogate pair in it), -128 ("User canceled.") when the prompt was dismissed or the rights refused,
///     the shell's exit status when that is not 0, pkexec's status when it could not start the shell, and 100000 plus
///     the error number when a system call failed.
/// @return the shell's standard output, with line ends and the last of them treated as macOS does; nil after a failure.
- (NSAppleEventDescriptor *)executeAndReturnError:(NSDictionary **)errorInfo;

@end

@interface NSAppleEventDescriptor (Text)

/// The text of a result.
- (NSString *)stringValue;

@end
