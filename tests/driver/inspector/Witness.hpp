// Counts events that are over before a snapshot can show them.
#pragma once

/// How many pointer events the application's windows have received since it started.
struct PointerEvents {
    unsigned long presses = 0; ///< of the first button
    unsigned long moves = 0;
};

/// The count so far. Call it on the main thread.
const PointerEvents &pointerEvents();
