// What every program of a sanitized build is set to, so that it holds in a practice Mac as well, where the environment
// of the outside does not reach. An environment variable overrides it.
extern "C" {
const char *__asan_default_options();
const char *__ubsan_default_options();
const char *__lsan_default_options();
const char *__lsan_default_suppressions();
}

const char *__asan_default_options()
{
    // GNUstep's libraries have no frame pointers: without the slow unwinder a leak's own line would not be told.
    return "fast_unwind_on_malloc=0:detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1";
}

const char *__ubsan_default_options()
{
    return "print_stacktrace=1";
}

const char *__lsan_default_options()
{
    return "print_suppressions=0"; // A clean program says nothing on its standard error.
}

/// Leaks of the platform's own. gnustep-base and gnustep-gui are not among them: what is allocated there includes every
/// object of ours.
const char *__lsan_default_suppressions()
{
    return "leak:libobjc.so\n"       // method tables, which it keeps for good
           "leak:libfontconfig.so\n" // the configuration, which nobody lets go at the end
           "leak:libX11.so\n"        // the connection's caches; the program ends without closing it
           "leak:libcairo.so\n"      // its cache of the last pattern, likewise
           // A font's name at start. What it draws and hears comes back to our code only through gnustep-gui's
           // sendEvent:, whose stack does not lead through it.
           "leak:libgnustep-cairo\n";
}
