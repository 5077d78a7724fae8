// Runs a slice of a Mac executable on Debian: the one to which the link "Slice" beside this program leads, with
// this program's arguments and environment. If there is a file "Coverage" too, it gets what the slice's functions were
// entered.
#include "Slice.hpp"

#include <filesystem>
#import <Foundation/Foundation.h>
#include <unistd.h>

int main(int argc, const char *argv[])
{
    const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    const Image image(folder / "Slice");
    registerFrames(image);
    connectMetadata(image);
    recordCoverage(image, folder / "Coverage");
    // libobjc 4 finds a method that was exchanged in a class before its first message in every class before its first
    // message. The platform does so with a `defaultCenter`, so this class gets its first message here.
    [NSNotificationCenter class];
    callLoadMethods(image);
    [pool release];
    const char *fromLoader[] { argv[0], nullptr };
    const auto entry = reinterpret_cast<int (*)(int, const char **, char **, const char **)>(image.entry);
    return entry(argc, argv, environ, fromLoader);
}
