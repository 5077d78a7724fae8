#import "platform/Retained.hpp"
#import "tests/platform/TestWindow.hpp"
#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace
{

/// A panel with the tool's settings, and two folders with files to choose from.
struct AskingPanel : testing::Test {
    fs::path folder = home() / "Panel";
    int panels = 0;

    AskingPanel()
    {
        write(folder / "backup.zip", "PK");
        write(folder / "text.txt", "no archive");
    }

    ~AskingPanel() override { fs::remove_all(folder); }

    /// Each panel has its own title, so that a test does not mistake a closing panel for the next one.
    NSOpenPanel *panel()
    {
        NSOpenPanel *panel = [NSOpenPanel openPanel];
        [panel setTitle:[NSString stringWithFormat:@"Choose %d", ++panels]];
        [panel setMessage:@"Select one."];
        [panel setPrompt:@"Restore License"];
        [panel setAllowedFileTypes:@[ @"zip" ]];
        return panel;
    }

    [[nodiscard]] bool hasTheKeyboard() const { return focusedTitle() == "Choose " + std::to_string(panels) + "\n"; }

    /// Types a path and Return once the panel is focused.
    bool type(const std::string &path)
    {
        if (!eventually([this] { return hasTheKeyboard(); })) {
            return false;
        }
        letManagerFinish(); // A busy manager may still be moving the focus.
        return eventually([this] { return hasTheKeyboard(); }) &&
            run({ "xdotool", "type", "--delay", "20", path }).status == 0 &&
            run({ "xdotool", "key", "Return" }).status == 0;
    }

    static NSView *viewTagged(NSOpenPanel *panel, NSInteger tag) { return [[panel contentView] viewWithTag:tag]; }
};

/// The red component of a pixel on the screen, from 0 to 255.
int redOnScreen(int x, int y)
{
    const std::string place = "1x1+" + std::to_string(x) + "+" + std::to_string(y);
    const std::string value = run({ "import", "-window", "root", "-crop", place, "-depth", "8", "rgb:-" }).output;
    return value.empty() ? -1 : static_cast<unsigned char>(value[0]);
}

}

TEST_F(AskingPanel, ShowsItsMessage)
{
    NSOpenPanel *asking = panel();
    EXPECT_EQ(utf8([asking message]), "Select one.");
    NSTextField *shown = static_cast<NSTextField *>(viewTagged(asking, NSFileHandlingPanelTitleField));
    EXPECT_EQ(utf8([shown stringValue]), "Select one.");
    EXPECT_FALSE([shown isHiddenOrHasHiddenAncestor]);
    EXPECT_EQ(utf8([asking title]), "Choose 1");
}

TEST_F(AskingPanel, HasItsPromptAsTheTitleOfTheConfirmingButton)
{
    NSOpenPanel *asking = panel();
    NSButton *confirming = static_cast<NSButton *>(viewTagged(asking, NSFileHandlingPanelOKButton));
    EXPECT_EQ(utf8([confirming title]), "Restore License");
    EXPECT_GE(NSWidth([confirming frame]), [[confirming attributedTitle] size].width + 16);
    NSForm *name = static_cast<NSForm *>(viewTagged(asking, NSFileHandlingPanelForm));
    EXPECT_EQ(utf8([[name cellAtIndex:0] title]), "Name:");
    EXPECT_EQ(utf8([[NSOpenPanel openPanel] prompt]), "Open") << "the prompt of a panel for which none was set";
}

TEST_F(AskingPanel, IsDrawnUpToItsTopAtEachOpening)
{
    const TestWindow shown;
    for (int opening = 1; opening <= 2; ++opening) {
        NSOpenPanel *asking = panel();
        int topmost = -1;
        runModalWhile(asking, [&] {
            if (!eventually([this] { return hasTheKeyboard(); })) {
                return false;
            }
            const std::string place = run({ "xdotool", "getwindowfocus", "getwindowgeometry", "--shell" }).output;
            const int x = std::stoi(place.substr(place.find("X=") + 2));
            const int y = std::stoi(place.substr(place.find("Y=") + 2));
            eventually([&] { return (topmost = redOnScreen(x + 10, y + 3)) > 200; });
            pressKey("Escape");
            return true;
        });
        EXPECT_GT(topmost, 200) << "opening " << opening;
    }
}

TEST_F(AskingPanel, AcceptsATypedPathWithReturn)
{
    const TestWindow shown;
    for (const char *path : { "/Panel/backup.zip", "~/Panel/backup.zip" }) {
        NSOpenPanel *asking = panel();
        const std::string typed = path[0] == '~' ? path : home().string() + path;
        EXPECT_EQ(
            runModalWhile(asking, [&] { return type(typed) && eventually([this] { return !hasTheKeyboard(); }); }),
            NSModalResponseOK)
            << path;
        EXPECT_EQ(utf8([[asking URL] path]), (folder / "backup.zip").string());
    }
}

TEST_F(AskingPanel, ConfirmsATypedPathOnlyIfTheFileMayBeChosen)
{
    NSOpenPanel *asking = panel();
    NSForm *name = static_cast<NSForm *>(viewTagged(asking, NSFileHandlingPanelForm));
    NSButton *confirming = static_cast<NSButton *>(viewTagged(asking, NSFileHandlingPanelOKButton));
    const auto editor = adopt([[NSText alloc] init]);
    const std::pair<fs::path, bool> cases[] = {
        { folder / "backup.zip", true },
        { folder / "text.txt", false },
        { folder / "none.zip", false },
        { folder, false },
    };
    for (const auto &[path, mayBeChosen] : cases) {
        [editor.get() setString:ns(path)];
        [[name cellAtIndex:0] setStringValue:ns(path)];
        [confirming setEnabled:NO];
        NSDictionary *info = @ { @"NSFieldEditor" : editor.get() };
        [asking controlTextDidChange:[NSNotification notificationWithName:NSControlTextDidChangeNotification
                                                                   object:name
                                                                 userInfo:info]];
        EXPECT_EQ([confirming isEnabled], mayBeChosen) << path;
    }
}
