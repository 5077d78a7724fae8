/// How this program looks on GNUstep.
#pragma once

/// Shows everything drawn from now on light and flat, unless the person has chosen a theme of GNUstep's. Called once,
/// before the application object exists.
void showInLightTheme();
