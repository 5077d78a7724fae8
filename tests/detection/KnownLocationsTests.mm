#import "detection/AppDelegate+KnownLocations.h"
#import "tests/support/PlatformFolders.hpp"
#import "tests/support/RoomTest.hpp"

namespace fs = std::filesystem;

namespace
{

class KnownLocations : public RoomTest
{
protected:
    Strings known() const { return strings([controller.get() knownQuorlenPaths]); }
    Strings existing() const { return strings([controller.get() existingQuorlenPaths]); }
    bool licenceExists() const { return [controller.get() licenseExists]; }

private:
    static Strings strings(NSArray<NSString *> *array)
    {
        EXPECT_NE(array, nil);
        EXPECT_FALSE([array isKindOfClass:[NSMutableArray class]]);
        Strings result;
        for (NSString *string in array) {
            result.push_back(utf8(string));
        }
        return result;
    }
};

}

TEST_F(KnownLocations, AllElevenInstalledAreFoundInTheirOrder)
{
    const auto list = locations();
    const Strings eleven(list.begin(), list.end());
    stage({ "plant", "--no-agent", "--no-daemon" });

    EXPECT_EQ(known(), eleven);
    EXPECT_EQ(existing(), eleven);
    EXPECT_TRUE(licenceExists());
}

TEST_F(KnownLocations, AreJoinedByOneSlashToTheHomeThatEachCallReadsOnce)
{
    for (const char *reported : { "/Users/bob", "/Users/bob/" }) {
        const ReportedHome home(reported);

        const auto paths = known();
        EXPECT_EQ(home.timesAsked(), 1);
        EXPECT_EQ(paths[3], "/Users/bob/Library/Application Support/Quorlen");
        EXPECT_EQ(paths[10], "/Users/bob/Library/Logs/Quorlen");
        EXPECT_EQ(utf8([controller.get() licensePath]), "/Users/bob/Library/Application Support/Quorlen/.licence");
        EXPECT_EQ(home.timesAsked(), 2);
    }
}

TEST_F(KnownLocations, EachIsFoundAlone)
{
    for (std::size_t index = 3; index < 11; ++index) {
        const auto location = locations()[index];
        write(location, "a file");
        EXPECT_EQ(existing(), Strings { location });
        fs::remove(location);
    }
    for (const char *number : { "1", "2", "3" }) {
        stage({ "plant", "--locations", number, "--no-daemon" });
    }
    EXPECT_EQ(existing(), (Strings { locations()[0], locations()[1], locations()[2] }));
}

TEST_F(KnownLocations, AreLookedUpAgainAtEveryCallWithoutTheUserSeeingAnything)
{
    const auto status = statusLine();
    EXPECT_EQ(existing(), Strings());
    EXPECT_FALSE(licenceExists());

    write(licence(), "a licence");
    EXPECT_EQ(existing(), Strings { locations()[3] });
    EXPECT_TRUE(licenceExists());

    fs::remove_all(locations()[3]);
    EXPECT_EQ(existing(), Strings());
    EXPECT_FALSE(licenceExists());

    EXPECT_EQ(newLines(), Strings());
    EXPECT_EQ(statusLine(), status);
    EXPECT_FALSE([controller.get() quorlenDetected]);
}

TEST_F(KnownLocations, ALinkToNothingIsAbsentAndALinkToSomethingIsPresent)
{
    const auto target = temporaryFolder() / "target";
    fs::create_directories(licence().parent_path());
    fs::create_symlink(target, licence());
    fs::create_symlink(target, locations()[10]);

    EXPECT_FALSE(licenceExists());
    EXPECT_EQ(existing(), Strings { locations()[3] });

    fs::create_directories(target);
    EXPECT_TRUE(licenceExists());
    EXPECT_EQ(existing(), (Strings { locations()[3], locations()[10] }));
    fs::remove(target);
}

TEST_F(KnownLocations, AnUnreadableItemIsPresentAndAnUnreachableItemIsAbsent)
{
    write(licence(), "a licence");
    fs::permissions(licence(), fs::perms::none);
    EXPECT_TRUE(licenceExists());

    fs::permissions(licence().parent_path(), fs::perms::none);
    EXPECT_FALSE(licenceExists());
    EXPECT_EQ(existing(), Strings { locations()[3] });
    fs::permissions(licence().parent_path(), fs::perms::owner_all);
}
