// What the thread sanitizer is told beforehand. The name and the place are its own: it looks for this
// function.

#if defined(__SANITIZE_THREAD__)

// NOLINTNEXTLINE
extern "C" [[gnu::visibility("default")]] const char* __tsan_default_suppressions() {
    // The C library reads the time zone below a lock of its own, which the sanitizer doesn't see; the zip
    // library asks for the local time of each member.
    return "race:tzset_internal\n";
}

#endif
