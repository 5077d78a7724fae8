/// Times the tool's operations within one process. Each line of the output is one run, in milliseconds.
///
///   operations scan RUNS             a detection's twelve tests, and twelve bare stat calls
///   operations detection RUNS        a detection with its status line and log lines, and twelve bare stat calls
///   operations backup RUNS           a licence backup, and the archiver by itself on the same file
///   operations restore RUNS          a licence restore, and the archiver by itself on the same archive
///   operations removal               a removal, from the press that confirms it to its completion alert on the screen
///   operations append LINES RUNS     one more line on an activity log of LINES lines
///   operations script                prints the cleanup script instead
#import "app/AppDelegate+ActivityLog.h"
#import "detection/AppDelegate+DetectionStatus.h"
#import "detection/AppDelegate+KnownLocations.h"
#import "licence/AppDelegate+LicenceBackup.h"
#import "licence/AppDelegate+LicenceRestore.h"
#import "licence/Archiver.hpp"
#import "platform/Retained.hpp"
#import "removal/AppDelegate+CleanupScript.h"
#import "removal/AppDelegate+RemovalFlow.h"
#import "tests/support/AlertAnswers.hpp"
#import "tests/support/Stage.hpp"
#import "ui/AppDelegate+MainWindow.h"

#include <chrono>
#include <sys/stat.h>

namespace
{

using Clock = std::chrono::steady_clock;

double milliseconds(Clock::duration duration)
{
    return std::chrono::duration<double, std::milli>(duration).count();
}

template <typename Work> double timed(const Work &work)
{
    @autoreleasepool {
        const auto begin = Clock::now();
        work();
        return milliseconds(Clock::now() - begin);
    }
}

/// Times the tool and the baseline in turns, and prints both times of each run.
template <typename Tool, typename Baseline> void compare(int runs, const Tool &tool, const Baseline &baseline)
{
    for (int run = 0; run < runs; ++run) {
        const double toolTime = timed(tool);
        printf("%.6f %.6f\n", toolTime, timed(baseline));
    }
}

void statAll(const std::vector<std::string> &paths)
{
    struct stat status;
    for (const auto &path : paths) {
        [[maybe_unused]] const int ignored = stat(path.c_str(), &status);
    }
}

std::filesystem::path newestArchive(AppDelegate *controller)
{
    [controller backupLicenceIfPresent];
    return utf8([controller lastBackupPath]);
}

void timeRemoval(AppDelegate *controller)
{
    Clock::time_point confirmed, completed;
    AlertAnswers answers({ "Remove Quorlen 3", "Restart Later" },
        [&](std::size_t panel) { (panel == 0 ? confirmed : completed) = Clock::now(); });
    [controller removeQuorlen3:nil];
    printf("%.3f\n", milliseconds(completed - confirmed));
}

void timeAppend(AppDelegate *controller, int lines, int runs)
{
    const std::string line = "Detected 11 Quorlen 3 item(s).\n";
    std::string text;
    for (int count = 0; count < lines; ++count) {
        text += line;
    }
    for (int run = 0; run < runs; ++run) {
        [[controller logView] setString:ns(text)];
        [[controller logView] scrollRangeToVisible:NSMakeRange([[[controller logView] string] length], 0)];
        printf("%.6f\n", timed([&] { [controller appendLog:@"License detected."]; }));
    }
}

}

int main(int argc, char **argv)
{
    @autoreleasepool {
        const std::string what = argc > 1 ? argv[1] : "";
        const int number = argc > 2 ? std::atoi(argv[2]) : 0;
        [[NSApplication sharedApplication] finishLaunching];
        const auto owner = adopt([[AppDelegate alloc] init]);
        AppDelegate *controller = owner.get();
        [controller buildWindow];

        std::vector<std::string> paths { utf8([controller licensePath]) };
        for (NSString *path in [controller knownQuorlenPaths]) {
            paths.push_back(utf8(path));
        }
        NSString *unpacked = [NSTemporaryDirectory() stringByAppendingPathComponent:@"bench"];
        if (what == "scan") {
            compare(
                number,
                [&] {
                    [controller existingQuorlenPaths];
                    [controller licenseExists];
                },
                [&] { statAll(paths); });
        } else if (what == "detection") {
            compare(
                number,
                [&] {
                    [[controller logView] setString:@""];
                    [controller updateDetectionStatus];
                },
                [&] { statAll(paths); });
        } else if (what == "backup") {
            compare(
                number, [&] { [controller backupLicenceIfPresent]; },
                [&] {
                    [[maybe_unused]] const int status = runArchiver(@[
                        @"-c", @"-k", @"--sequesterRsrc", @"--keepParent", [controller licensePath],
                        [unpacked stringByAppendingString:@".zip"]
                    ]);
                });
        } else if (what == "restore") {
            const auto archive = newestArchive(controller);
            compare(
                number, [&] { [controller restoreLicenseFromZip:ns(archive) toPath:[controller licensePath]]; },
                [&] { [[maybe_unused]] const int status = runArchiver(@[ @"-x", @"-k", ns(archive), unpacked ]); });
            [[NSFileManager defaultManager] removeItemAtPath:unpacked error:NULL];
        } else if (what == "removal") {
            timeRemoval(controller);
        } else if (what == "append") {
            timeAppend(controller, number, argc > 3 ? std::atoi(argv[3]) : 1);
        } else if (what == "script") {
            printf("%s", [[controller cleanupShellScript] UTF8String]);
        } else {
            fprintf(
                stderr, "operations: unknown operation: %s; the top of bench/Operations.mm lists them\n", what.c_str());
            return 2;
        }
    }
    return 0;
}
