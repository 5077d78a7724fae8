// What is over before anyone can ask, as far as a snapshot tells of it.
#pragma once

/// How many events of the pointer the application's windows have got since it started.
struct PointerEvents {
    unsigned long presses = 0; ///< of the first button
    unsigned long moves = 0;
};

/// The count so far. To be called on the main thread.
const PointerEvents &pointer_events();
