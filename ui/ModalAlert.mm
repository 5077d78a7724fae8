#import "ui/ModalAlert.hpp"

#import "platform/Retained.hpp"

bool runModalAlert(NSString *message, NSString *informativeText, NSArray<NSString *> *buttons)
{
    const auto alert = adopt([[NSAlert alloc] init]);
    [alert.get() setMessageText:message];
    [alert.get() setInformativeText:informativeText];
    for (NSString *title in buttons) {
        [alert.get() addButtonWithTitle:title];
    }
    return [alert.get() runModal] == NSAlertFirstButtonReturn;
}
