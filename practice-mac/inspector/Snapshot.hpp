// What the inspector sees: every visible window of the application and every view in it.
#pragma once

#include <string>

/// One JSON object in UTF-8 that describes the application as it is now. To be called on the main thread. Changes
/// nothing.
///
/// Keys: `active`; `windows`, front to back, each with `title`, `class`, `x_window`, `level`, `modal`, `key`,
/// `style_mask`, `frame` (of the content, in root coordinates of the X server, top-left origin) and `views`. A view has
/// `class`, `frame` (in its superview, bottom-left origin), `in_window` (in the content view), `on_screen` (root
/// coordinates, top-left origin), `shown` (the part of `on_screen` that no enclosing view clips), `hidden`, `visible`
/// (neither it nor an enclosing view is hidden), what its class adds (`text`, `enabled`, `font`, …) and `views`.
std::string snapshot_of_application();
