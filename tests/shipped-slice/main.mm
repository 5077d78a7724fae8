// Runs a slice of a Mac executable on Debian, with this program's arguments and environment. The link "Slice" next to
// this program points to the executable. The files "Fixups", "Frames" and "Functions" there say what LLVM's tools read
// in it. If there is also a file "Coverage", this program records there which functions of the slice were entered.
#include "Slice.hpp"

#import <Foundation/Foundation.h>

int main(int argc, const char *argv[])
{
    const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    const Image image(folder);
    registerFrames(image, folder);
    connectMetadata(image);
    recordCoverage(image, folder);
    // libobjc 4 has a bug: a method that is exchanged before its class gets its first message is also exchanged in
    // other classes that have had no message. The platform exchanges a `defaultCenter`, so this class gets a message
    // first.
    [NSNotificationCenter class];
    callLoadMethods(image);
    [pool release];
    return reinterpret_cast<int (*)(int, const char **)>(image.entry)(argc, argv);
}
