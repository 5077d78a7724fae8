// Makes each system call of a backup, a log file and a restore fail, once with each of its errors: the calls that open,
// read, write, rename, make, remove, fork, execute or wait, including the archiver's. After each fault the tool must
// still run, its log must show an allowed outcome, and the licence must be complete in at least one place.
#import "app/AppDelegate+ActivityLog.h"
#import "licence/AppDelegate+LicenceBackup.h"
#import "licence/AppDelegate+LicenceRestore.h"
#import "removal/AppDelegate+Completion.h"
#import "tests/faults/FaultWindow.hpp"
#import "tests/support/RoomTest.hpp"

#include <functional>

namespace fs = std::filesystem;

namespace
{

/// The tests make every Nth of the archiver's faults. N is the value of this variable; the default is 1.
constexpr const char *strideVariable = "QUORLEN_FAULTS_STRIDE";

/// Longer than a copy's buffer, so that a copy can fail in the middle.
const std::string firstLicence(20'000, 'A');
const std::string secondLicence(15'000, 'B');

/// One fault: a call and the number of its error.
struct Fault {
    unsigned long call;
    unsigned long number;
    bool ofChild;
};

bool holds(const fs::path &file, const std::string &bytes)
{
    std::error_code absent;
    return fs::is_regular_file(file, absent) && contents(file) == bytes;
}

/// Whether an archive has this licence and unpacks without an error.
bool archived(const fs::path &archive, const std::string &bytes)
{
    const auto unpacked = run({ "/usr/bin/bsdtar", "-xOf", archive });
    return unpacked.status == 0 && unpacked.output == bytes;
}

class FaultTest : public RoomTest
{
protected:
    /// Runs an operation once for each fault of each of its calls.
    /// @param prepare Sets up the first state.
    /// @param act The operation.
    /// @param judge Checks the state after a fault.
    /// @param succeeded Whether the operation succeeded. Without a fault it must.
    void everyFault(const std::function<void()> &prepare, const std::function<void()> &act,
        const std::function<void()> &judge, const std::function<bool()> &succeeded)
    {
        prepare();
        FaultWindow counting;
        act();
        const unsigned long calls = counting.close();
        judge();
        ASSERT_TRUE(succeeded()) << "the operation fails without a fault";
        EXPECT_GT(calls, 0u);
        std::vector<Fault> faults;
        for (unsigned long call = 1; call <= calls; ++call) {
            for (unsigned long fault = 0; fault < FaultWindow::faultsOf(call); ++fault) {
                faults.push_back({ call, fault, FaultWindow::isOfChild(call) });
            }
        }

        // The archiver makes many calls, mostly while it starts. A stride skips a part of them.
        const char *given = std::getenv(strideVariable);
        const unsigned long stride = given ? std::strtoul(given, nullptr, 10) : 1;
        unsigned long made = 0, ofChildren = 0;
        for (const auto &fault : faults) {
            if (fault.ofChild && ofChildren++ % stride != 0) {
                continue;
            }
            SCOPED_TRACE(testing::Message() << "call " << fault.call << " of " << calls << ", fault " << fault.number);
            @autoreleasepool {
                prepare();
                FaultWindow window(fault.call, fault.number);
                act();
                made += window.close();
                judge();
            }
            if (HasFailure()) {
                return;
            }
        }
        printf("calls: %lu, faults: %lu\n", calls, made);
        EXPECT_GT(made, 0u);
    }

    void forgetOldFiles()
    {
        for (const auto &name : filesOfTheToolOnTheDesktop()) {
            fs::remove_all(desktop() / name);
        }
        for (const auto &name : temporaryFolders()) {
            fs::remove_all(temporaryFolder() / name);
        }
        [[controller.get() logView] setString:@""];
    }

    Strings lines() const
    {
        Strings all;
        const std::string text = log();
        for (std::size_t start = 0, end; (end = text.find('\n', start)) != text.npos; start = end + 1) {
            all.push_back(text.substr(start, end - start));
        }
        return all;
    }
};

TEST_F(FaultTest, ABackupNeverReportsAnArchiveThatDoesNotExist)
{
    everyFault(
        [&] {
            forgetOldFiles();
            write(licence(), firstLicence);
            [controller.get() setLastBackupPath:nil];
        },
        [&] { [controller.get() backupLicenceIfPresent]; },
        [&] {
            EXPECT_TRUE(holds(licence(), firstLicence)) << "a backup must not change the licence";
            const auto log = lines();
            ASSERT_EQ(log.size(), 2u) << testing::PrintToString(log);
            EXPECT_EQ(log[0], "License detected.");
            const std::string created = "License backup created: ";
            if (log[1].starts_with(created)) {
                const fs::path archive = log[1].substr(created.size());
                EXPECT_TRUE(archived(archive, firstLicence)) << "the log names an incomplete archive";
                EXPECT_EQ(utf8([controller.get() lastBackupPath]), archive);
            } else {
                EXPECT_TRUE(
                    log[1] == "License backup was not created." || log[1].starts_with("License backup skipped: "))
                    << log[1];
                EXPECT_EQ([controller.get() lastBackupPath], nil);
            }
        },
        [&] { return [controller.get() lastBackupPath] != nil; });
}

TEST_F(FaultTest, ALogFileIsCompleteOrMissing)
{
    const std::string text = "Quorlen 3 removal completed.\n";
    everyFault(
        [&] {
            forgetOldFiles();
            [[controller.get() logView] setString:ns(text)];
        },
        [&] { [controller.get() writeRemovalLogToDesktop]; },
        [&] {
            EXPECT_EQ(log(), text) << "no text reports the outcome";
            for (const auto &name : filesOfTheToolOnTheDesktop()) {
                EXPECT_EQ(contents(desktop() / name), text) << name;
            }
        },
        [&] { return filesOfTheToolOnTheDesktop().size() == 1; });
}

TEST_F(FaultTest, ARestoreEndsWithACompleteLicenceOrNone)
{
    const fs::path archive = home() / "chosen.zip";
    const fs::path folder = home() / "packed";
    write(folder / ".licence", secondLicence);
    ASSERT_EQ(run({ "/usr/bin/bsdtar", "-c", "--format", "zip", "-f", archive, "-C", folder, ".licence" }).status, 0);
    BOOL restored = NO;
    unsigned withoutLicence = 0;
    everyFault(
        [&] {
            forgetOldFiles();
            write(licence(), firstLicence);
        },
        [&] { restored = [controller.get() restoreLicenseFromZip:ns(archive) toPath:ns(licence())]; },
        [&] {
            EXPECT_TRUE(archived(archive, secondLicence)) << "a restore must not change its archive";
            const auto log = lines();
            if (restored) {
                EXPECT_EQ(log, Strings {});
                EXPECT_TRUE(holds(licence(), secondLicence));
            } else if (log.empty()) {
                EXPECT_TRUE(holds(licence(), firstLicence)) << "the old licence is lost although there is no new one";
            } else {
                ASSERT_EQ(log.size(), 1u) << testing::PrintToString(log);
                EXPECT_TRUE(
                    log[0].starts_with("License copy error: ") || log[0].starts_with("License restore skipped: "))
                    << log[0];
                withoutLicence += !fs::exists(licence());
                EXPECT_TRUE(!fs::exists(licence()) || holds(licence(), firstLicence)) << "the licence is incomplete";
            }
        },
        [&] { return bool(restored); });
    EXPECT_GT(withoutLicence, 0u) << "no fault came between the removal and the copy";
    fs::remove_all(folder);
    fs::remove(archive);
}

}
