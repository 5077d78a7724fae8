// Makes many removals and restores in one process. After them the process must not have more memory, descriptors,
// threads or temporary files than before.
#import "detection/AppDelegate+KnownLocations.h"
#import "licence/AppDelegate+LicenceRestore.h"
#import "removal/AppDelegate+RemovalFlow.h"
#import "tests/support/AlertAnswers.hpp"
#import "tests/support/RoomTest.hpp"

#import <objc/runtime.h>

#include <malloc.h>
#include <map>

namespace fs = std::filesystem;

// <Foundation/NSDebug.h> declares these only without NDEBUG. The library always has them.
extern "C" {
BOOL GSDebugAllocationActive(BOOL active);
Class *GSDebugAllocationClassList(void);
int GSDebugAllocationCount(Class type);
}

namespace
{

/// The number of removals and restores.
constexpr const char *cyclesVariable = "QUORLEN_LOAD_CYCLES";
constexpr int fewCycles = 8;
/// The bytes of heap by which the end may exceed the beginning. A leaked string in each cycle exceeds this after a few
/// hundred cycles, a leaked window after a few.
constexpr long allowedExtraBytes = 64 * 1024;
/// The bytes of heap that GNUstep leaks in each cycle. For each of the two alerts it stores the window's display server
/// twice and never removes it (counted in calls of NSMapInsert and NSMapRemove; 200 bytes were measured).
constexpr long bytesKeptByThePlatform = 208;

long entriesOf(const char *folder)
{
    const fs::directory_iterator entries(folder);
    return std::distance(begin(entries), end(entries));
}

/// The number of new objects of each class since counting began.
std::map<std::string, int> countObjects()
{
    std::map<std::string, int> counts;
    Class *const types = GSDebugAllocationClassList();
    for (Class *type = types; *type; ++type) {
        counts[class_getName(*type)] = GSDebugAllocationCount(*type);
    }
    std::free(types);
    return counts;
}

/// The resources that must not grow.
struct Holdings {
    int cycle = 0;
    long heap = static_cast<long>(mallinfo2().uordblks);
    long descriptors = entriesOf("/proc/self/fd");
    long threads = entriesOf("/proc/self/task");
    std::map<std::string, int> objects = countObjects();
};

using LoadTest = RoomTest;

TEST_F(LoadTest, ManyRemovalsAndRestoresLeakNothing)
{
    const char *given = std::getenv(cyclesVariable);
    const int cycles = given ? std::atoi(given) : fewCycles;
    GSDebugAllocationActive(YES);
    Holdings early;
    for (int cycle = 1; cycle <= cycles; ++cycle) {
        @autoreleasepool {
            stage({ "plant", "--no-agent", "--no-daemon" });
            const auto licenceOfCycle = contents(licence());
            AlertAnswers answers({ "Remove Quorlen 3", "Restart Later" });
            [controller.get() removeQuorlen3:nil];
            ASSERT_FALSE(fs::exists(licence()));
            const auto archive = onlyArchive();
            ASSERT_TRUE([controller.get() restoreLicenseFromZip:ns(archive) toPath:[controller.get() licensePath]]);
            ASSERT_EQ(contents(licence()), licenceOfCycle);
            ASSERT_EQ(temporaryFolders(), Strings {});

            [[controller.get() logView] setString:@""];
            for (const auto &name : filesOfTheToolOnTheDesktop()) {
                fs::remove(desktop() / name);
            }
        }
        if (cycle == (cycles + 3) / 4) {
            early = { .cycle = cycle }; // now the objects that are made once exist, except a few entries of caches
        }
    }
    const Holdings late;
    printf("cycles: %d, heap: %+ld bytes, descriptors: %+ld, threads: %+ld\n", cycles, late.heap - early.heap,
        late.descriptors - early.descriptors, late.threads - early.threads);
    EXPECT_LT(late.heap - early.heap, allowedExtraBytes + bytesKeptByThePlatform * (cycles - early.cycle));
    for (const auto &[type, count] : late.objects) {
        EXPECT_LT(count - early.objects[type], cycles - early.cycle) << "a " << type << " is leaked in each cycle";
    }
    EXPECT_EQ(late.descriptors, early.descriptors);
    EXPECT_EQ(late.threads, early.threads);
}

}
