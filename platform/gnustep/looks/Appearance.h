/// The appearance of this program on GNUstep.
#pragma once

/// Makes everything that is drawn from now on light and flat, unless the user has chosen a GNUstep theme. Called once,
/// before the application object exists.
void showInLightTheme();
