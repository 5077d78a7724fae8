#import "detection/AppDelegate+DetectionStatus.h"

#import "app/AppDelegate+ActivityLog.h"
#import "detection/AppDelegate+KnownLocations.h"
#include "detection/DetectionReport.hpp"
#import "platform/Text.hpp"
#import "ui/AppDelegate+OverrideReveal.h"

@implementation AppDelegate (DetectionStatus)

- (void)updateDetectionStatus
{
    const std::size_t presentLocations = [[self existingQuorlenPaths] count];
    const bool licencePresent = [self licenseExists];
    [self setQuorlenDetected:presentLocations > 0];
    [[self removeButton] setEnabled:[self quorlenDetected]];

    const auto report = detectionReport(presentLocations, licencePresent);
    [[self statusLabel] setStringValue:nsString(report.statusLine)];
    for (const auto &line : report.logLines) {
        [self appendLog:nsString(line)];
    }
    [self updateOverrideButtonVisibility];
}

@end
