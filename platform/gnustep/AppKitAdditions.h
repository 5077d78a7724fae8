/// GNUstep's AppKit together with what it lacks of Apple's, under Apple's names: what `#import <Cocoa/Cocoa.h>` is on a
/// Mac.
///
/// Beside the declarations below, this folder makes existing methods do what they do on a Mac: the keys held now
/// (ModifierFlags.mm), `-[NSWorkspace openURL:]` (Workspace.mm), alerts and panels under a window manager
/// (ModalWindows.mm), text beside a scroller (ScrolledText.mm), and a quiet start (Startup.mm). A copied file is whole
/// or not there (FileCopies.mm), and the home directory is kept once found (HomeDirectory.mm). Finding
/// images, text, and hiding cost less (Images.mm, TextAttachments.mm, HiddenViews.mm). What all looks like is in
/// Appearance.mm, AlertLayout.mm, OpenPanel.mm and ToolTips.mm.
#pragma once

#import <AppKit/AppKit.h>

#import "platform/gnustep/AppleScript.h"
#import "platform/gnustep/EventMonitors.h"
#import "platform/gnustep/Names.h"
#import "platform/gnustep/Task.h"
#import "platform/gnustep/WindowRestoration.h"
