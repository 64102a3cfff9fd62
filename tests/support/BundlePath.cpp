// Programs with the library inside find its resources through the environment; set before main, so
// that whatever asks first finds them.
#include <cstdlib>

namespace {
[[maybe_unused]] const int bundlePath = ::setenv("QZ_BUNDLE_PATH", QZ_TEST_BUNDLE_PATH, 0);
}  // namespace
