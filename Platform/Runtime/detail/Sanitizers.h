/// @file
/// Private: which sanitizers look on, in the words of both compilers.
#pragma once

namespace qz::detail {

#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool watchesAddresses = true;
#elif defined(__has_feature)
inline constexpr bool watchesAddresses = __has_feature(address_sanitizer);
#else
inline constexpr bool watchesAddresses = false;
#endif

#if defined(__SANITIZE_THREAD__)
inline constexpr bool watchesThreads = true;
#elif defined(__has_feature)
inline constexpr bool watchesThreads = __has_feature(thread_sanitizer);
#else
inline constexpr bool watchesThreads = false;
#endif

}  // namespace qz::detail
