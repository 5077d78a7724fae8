// What the inspector sees: every window of the application that is on the screen, and every view in it.
#pragma once

#include <string>

/// One JSON object in UTF-8 that describes the application as it is now. Call it on the main thread. It changes
/// nothing.
///
/// Keys: `presses` and `moves`, how many presses of the pointer's first button and moves of the pointer a window has
/// got; `windows`, front to back, each with `title`, `x_window`, `modal`, `frame` (of the content, in root coordinates
/// of the X server, top-left origin) and `views`. A view has `class`, `in_window` (its bounds in the content view,
/// bottom-left origin), `on_screen` (root coordinates, top-left origin), `visible` (neither it nor an enclosing view is
/// hidden) and `views`; a button also `button`, `text`, `enabled`, `action` and `key_equivalent`; a text field `label`
/// and `text`; a text view `text`; an image view `image`; a matrix `cells`, each with `text` and `on_screen` (the part
/// that is not clipped).
std::string snapshotOfApplication();
