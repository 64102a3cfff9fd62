// The largest of very many files.
#pragma once

#include <cstddef>
#include <vector>

#include "Platform/Collections/NSArray.h"
#include "QZFoundation/QZFoundation.h"

namespace backup {

/// A file worth mentioning.
class File : public qz::Derives<File, qz::NSObject> {
 public:
  static void describe(qz::ClassDescription<File>& is);

  File(qz::NSString* itsPath, std::uint64_t itsSize) : path(itsPath), size(itsSize) {}

  qz::Ref<qz::NSString> path;
  std::uint64_t size;
};

/// Keeps so many of the files that it is told of, and no more.
class LargestFiles {
 public:
  explicit LargestFiles(std::size_t limit) : limit_(limit) {}

  void add(qz::NSString* path, std::uint64_t size);

  /// The Files in no particular order.
  qz::Ref<qz::NSArray> files() const;

 private:
  std::size_t limit_;
  std::vector<qz::Ref<File>> heap_;  // the smallest in front
};

}  // namespace backup
