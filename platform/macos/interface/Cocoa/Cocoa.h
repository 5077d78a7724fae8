/// The platform's interface as far as the product uses it: what a Mac's own headers declare in files of these names, in
/// their words, and no more. Debian builds the Mac app against these; a Mac builds it against its own.
///
/// A new platform call takes one declaration, in the file that declares it on a Mac, with its exact types, nullability
/// and first system, and its line in tests/macos/interface-facts.txt. A class or function that no call used before
/// takes its name in stubs/symbols.txt too; the link error says which.
#pragma once

#import <Foundation/Foundation.h>

#import <AppKit/AppKit.h>
