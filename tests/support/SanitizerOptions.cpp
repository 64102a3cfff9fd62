// Some tests fork on purpose, to see several processes at work on one file; their children start
// threads, which the thread sanitizer refuses unless told otherwise.
extern "C" const char* __tsan_default_options();  // NOLINT: the sanitizer's name
extern "C" const char* __tsan_default_options() { return "die_after_fork=0"; }
