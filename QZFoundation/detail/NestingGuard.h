/// @file
/// Private: a limit for operations that go down into nested collections.
#pragma once

namespace qz::detail {

/// Counts, for the calling thread, how many such operations are under way inside one another.
class NestingGuard {
 public:
  static constexpr unsigned maximumDepth = 1000;

  /// Raises NSInternalInconsistencyException naming `operation` when there are `maximumDepth`
  /// already: the collections hold themselves, or are nested without end as far as one can tell.
  explicit NestingGuard(const char* operation);
  ~NestingGuard();
  NestingGuard(const NestingGuard&) = delete;
  NestingGuard& operator=(const NestingGuard&) = delete;
};

}  // namespace qz::detail
