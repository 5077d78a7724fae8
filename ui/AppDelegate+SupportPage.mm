#import "ui/AppDelegate+SupportPage.h"

namespace
{
NSString *const supportPage = @"https://www.vendrel.com/tool_qr3_legacy_removal_tool";
}

@implementation AppDelegate (SupportPage)

- (void)openSupportPage:(id)sender
{
    NSURL *url = [NSURL URLWithString:supportPage];
    if (url) {
        [[NSWorkspace sharedWorkspace] openURL:url];
    }
}

@end
