// The sanitizers' options of every program of a sanitized build. They are compiled in because a practice Mac does not
// get the caller's environment. An environment variable overrides them.
extern "C" {
const char *__asan_default_options();
const char *__ubsan_default_options();
const char *__lsan_default_options();
const char *__lsan_default_suppressions();
}

const char *__asan_default_options()
{
    // GNUstep's libraries have no frame pointers. Without the slow unwinder the report would not have the leak's line.
    return "fast_unwind_on_malloc=0:detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1";
}

const char *__ubsan_default_options()
{
    return "print_stacktrace=1";
}

const char *__lsan_default_options()
{
    return "print_suppressions=0"; // A clean program prints nothing on standard error.
}

/// The platform's own leaks. gnustep-base and gnustep-gui are not in this list, because they allocate all our objects.
const char *__lsan_default_suppressions()
{
    return "leak:libobjc.so\n"       // method tables, which it never releases
           "leak:libfontconfig.so\n" // the configuration, which is not released at the end
           "leak:libX11.so\n"        // the connection's caches; the program does not close it
           "leak:libcairo.so\n"      // its cache of the last pattern
           // A font's name at start. Our code runs below gnustep-gui's sendEvent:, which this library does not call,
           // so this hides no leak of ours.
           "leak:libgnustep-cairo\n";
}
