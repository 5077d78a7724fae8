#import "tests/support/AlertAnswers.hpp"
#import "tests/support/Stage.hpp"
#import <Cocoa/Cocoa.h>

#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace
{

/// A panel with the tool's settings, and a folder with files to choose from.
struct AskingPanel : testing::Test {
    const fs::path folder = home() / "Panel";
    NSOpenPanel *const panel = [NSOpenPanel openPanel];
    NSButton *const confirming = [[panel contentView] viewWithTag:NSFileHandlingPanelOKButton];
    NSForm *const name = [[panel contentView] viewWithTag:NSFileHandlingPanelForm];

    AskingPanel()
    {
        write(folder / "backup.zip", "PK");
        write(folder / "text.txt", "no archive");
        [panel setTitle:@"Choose one"];
        [panel setMessage:@"Select one."];
        [panel setPrompt:@"Restore License"];
        [panel setAllowedFileTypes:@[ @"zip" ]];
    }
    ~AskingPanel() override { fs::remove_all(folder); }
};

}

TEST_F(AskingPanel, ShowsItsTitleItsMessageAndItsPrompt)
{
    NSTextField *message = [[panel contentView] viewWithTag:NSFileHandlingPanelTitleField];
    EXPECT_EQ(utf8([panel title]), "Choose one");
    EXPECT_EQ(utf8([panel message]), "Select one.");
    EXPECT_EQ(utf8([message stringValue]), "Select one.");
    EXPECT_FALSE([message isHiddenOrHasHiddenAncestor]);
    NSView *content = [panel contentView];
    EXPECT_TRUE(NSEqualSizes([content frame].size, NSMakeSize(720, 420)));
    EXPECT_EQ(NSMaxY([message convertRect:[message bounds] toView:content]), 400) << "the margin at the top";
    EXPECT_EQ(utf8([confirming title]), "Restore License");
    EXPECT_GE(NSWidth([confirming frame]), [[confirming attributedTitle] size].width + 16);
    EXPECT_EQ(utf8([[name cellAtIndex:0] title]), "Name:");
    NSOpenPanel *next = [NSOpenPanel openPanel];
    EXPECT_NE(next, panel) << "as on a Mac, each call makes a panel";
    EXPECT_EQ(utf8([next prompt]), "Open") << "the prompt of a panel for which none was set";
}

TEST_F(AskingPanel, IsCanceledByItsCloseButton)
{
    [panel performSelector:@selector(performClose:) withObject:nil afterDelay:0 inModes:@[ NSModalPanelRunLoopMode ]];
    EXPECT_EQ([panel runModal], NSModalResponseCancel);
}

TEST_F(AskingPanel, AcceptsATypedPathIfTheFileMayBeChosen)
{
    const std::pair<fs::path, bool> rows[] = {
        { folder / "text.txt", false },
        { folder / "none.zip", false },
        { folder, false },
        { folder / "backup.zip", true },
    };
    const AlertAnswers answers({ "Restore License" }, [&](std::size_t) {
        [name selectTextAtIndex:0];
        for (const auto &[path, mayBeChosen] : rows) {
            [confirming setEnabled:NO];
            [[name currentEditor] setString:@""];
            [[name currentEditor] insertText:ns(path)];
            EXPECT_EQ([confirming isEnabled], mayBeChosen) << path;
        }
    });
    EXPECT_EQ([panel runModal], NSModalResponseOK);
    EXPECT_EQ(utf8([[panel URL] path]), (folder / "backup.zip").string());
    EXPECT_EQ(utf8([[NSOpenPanel openPanel] directory]), folder.string()) << "the next panel begins there";
}
