// Some tests fork on purpose, to see several processes at work on one file; their children start
// threads, which the thread sanitizer refuses unless told otherwise.
extern "C" const char* __tsan_default_options();  // NOLINT: the sanitizer's name
extern "C" const char* __tsan_default_options() { return "die_after_fork=0"; }

// ICU is not instrumented: of the objects that it makes when they are first needed, and that
// threads then share, the thread sanitizer sees the bytes being copied but not the atomic pointers
// and counts by which they are published. What else several threads do with ICU's objects is
// documented to be safe (const functions), or under a lock of ours (rules that spell numbers out).
//
// An exception that threads share is counted by the C++ library, whose atomic operations it does
// not see either: to it, the last owner destroys what another thread has just read.
extern "C" const char* __tsan_default_suppressions();  // NOLINT: the sanitizer's name
extern "C" const char* __tsan_default_suppressions() {
  return "called_from_lib:libicui18n.so\ncalled_from_lib:libicuuc.so\nrace:qz::Raised::~Raised\n";
}
