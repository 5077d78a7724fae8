// Every call by which a backup, a log file or a restore opens, reads, writes, renames, makes, removes, forks, executes
// or waits fails once with each error that it can have, the archiver's calls included. The tool lives, its log tells an
// outcome that is allowed, and the licence is complete in at least one place.
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

/// Of the archiver's faults, each one of so many is made; 1, and so all, by default.
constexpr const char *StrideVariable = "QUORLEN_FAULTS_STRIDE";

/// Longer than a copy's buffer, so that a copy can fail in its middle.
const std::string firstLicence(20'000, 'A');
const std::string secondLicence(15'000, 'B');

/// One thing that can go wrong.
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

/// Whether an archive holds this licence and can be unpacked without complaint.
bool archived(const fs::path &archive, const std::string &bytes)
{
    const auto unpacked = run({ "/usr/bin/bsdtar", "-xOf", archive });
    return unpacked.status == 0 && unpacked.output == bytes;
}

class FaultTest : public RoomTest
{
protected:
    /// Does something once for each fault of each of its calls.
    /// @param prepare Puts everything into its first state.
    /// @param act What is done.
    /// @param judge Judges what came of it.
    /// @param succeeded Whether it did what it is there for, as it must without a fault.
    void everyFault(const std::function<void()> &prepare, const std::function<void()> &act,
        const std::function<void()> &judge, const std::function<bool()> &succeeded)
    {
        prepare();
        FaultWindow counting;
        act();
        const unsigned long calls = counting.close();
        judge();
        ASSERT_TRUE(succeeded()) << "without a fault";
        EXPECT_GT(calls, 0u);
        std::vector<Fault> faults;
        for (unsigned long call = 1; call <= calls; ++call) {
            for (unsigned long fault = 0; fault < FaultWindow::faultsOf(call); ++fault) {
                faults.push_back({ call, fault, FaultWindow::isOfChild(call) });
            }
        }

        // The archiver's calls are many, and most of them are its start: a part of them can be left out.
        const char *given = std::getenv(StrideVariable);
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

TEST_F(FaultTest, ABackupNeverClaimsWhatItHasNot)
{
    everyFault(
        [&] {
            forgetOldFiles();
            write(licence(), firstLicence);
            [controller.get() setLastBackupPath:nil];
        },
        [&] { [controller.get() backupLicenceIfPresent]; },
        [&] {
            EXPECT_TRUE(holds(licence(), firstLicence)) << "a backup leaves the licence alone";
            const auto log = lines();
            ASSERT_EQ(log.size(), 2u) << testing::PrintToString(log);
            EXPECT_EQ(log[0], "License detected.");
            const std::string created = "License backup created: ";
            if (log[1].starts_with(created)) {
                const fs::path archive = log[1].substr(created.size());
                EXPECT_TRUE(archived(archive, firstLicence)) << "the archive that the log names is complete";
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

TEST_F(FaultTest, ALogFileIsWholeOrNotThere)
{
    const std::string text = "Quorlen 3 removal completed.\n";
    everyFault(
        [&] {
            forgetOldFiles();
            [[controller.get() logView] setString:ns(text)];
        },
        [&] { [controller.get() writeRemovalLogToDesktop]; },
        [&] {
            EXPECT_EQ(log(), text) << "the outcome is told nowhere";
            for (const auto &name : filesOfTheToolOnTheDesktop()) {
                EXPECT_EQ(contents(desktop() / name), text) << name;
            }
        },
        [&] { return filesOfTheToolOnTheDesktop().size() == 1; });
}

TEST_F(FaultTest, ARestoreEndsWithAWholeLicenceOrNone)
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
            EXPECT_TRUE(archived(archive, secondLicence)) << "a restore leaves its archive alone";
            const auto log = lines();
            if (restored) {
                EXPECT_EQ(log, Strings {});
                EXPECT_TRUE(holds(licence(), secondLicence));
            } else if (log.empty()) {
                EXPECT_TRUE(holds(licence(), firstLicence)) << "nothing is touched before there is a file to copy";
            } else {
                ASSERT_EQ(log.size(), 1u) << testing::PrintToString(log);
                EXPECT_TRUE(
                    log[0].starts_with("License copy error: ") || log[0].starts_with("License restore skipped: "))
                    << log[0];
                withoutLicence += !fs::exists(licence());
                EXPECT_TRUE(!fs::exists(licence()) || holds(licence(), firstLicence)) << "no licence or a whole one";
            }
        },
        [&] { return bool(restored); });
    EXPECT_GT(withoutLicence, 0u) << "between the old file and the new one the archive alone has a licence";
    fs::remove_all(folder);
    fs::remove(archive);
}

}
