/// @file
/// Telling files of the same name apart by as little of their paths as possible.
#pragma once

#include "Platform/Runtime/Derives.h"
#include "Platform/Values/NSString.h"
#include "QZFoundation/detail/Registration.h"

#pragma GCC visibility push(default)

namespace qz {

class NSMutableDictionary;

/// Collects paths, and says by how much of its folder a file is to be shown beside its name.
///
///     auto indexer = make<QZPathIndexer>();
///     indexer->addPath("/a/x/f.txt"_ns);
///     indexer->addPath("/b/x/f.txt"_ns);
///     indexer->prefixForPath("/a/x/f.txt"_ns);   // "…/a/x"
///     indexer->prefixForPath("/c/y/f.txt"_ns);   // "y"
///
/// Paths count by their text; nothing asks the file system. Nil raises NSInvalidArgumentException.
/// One thread at a time may use an indexer.
class QZPathIndexer : public Derives<QZPathIndexer, NSObject> {
 public:
  static void describe(ClassDescription<QZPathIndexer>& is);

  /// Without paths.
  QZPathIndexer();
  ~QZPathIndexer() override;
  static Ref<QZPathIndexer> init();

  /// Constant time. A path that was added before changes nothing, nor does removing one that was
  /// not.
  void addPath(NSString* path);
  void removePath(NSString* path);

  /// False for every path: the folder's text is looked for among folders that are kept in parts.
  /// Kept as it is, for callers that have come to rely on it.
  bool containsPath(NSString* path);

  /// The path's folder by its last name, as far as that tells all collected folders apart which
  /// have this name and hold a file of the path's name; else with as many names before it as it
  /// takes, behind "…/"; the whole folder when it takes all of it. The path need not have been
  /// added. Linear in the number of those folders.
  Ref<NSString> prefixForPath(NSString* path);

  /// "<QZPathIndexer: 0xaddress>: [pathsByFilename = {…}]"
  Ref<NSString> description() const override;

  /// By the file's name, then by the folder's: a Set of folders, each as the Array of its parts.
  Ref<NSMutableDictionary> pathsByFilename() const;

 private:
  Ref<NSMutableDictionary> pathsByFilename_;
};

}  // namespace qz

#pragma GCC visibility pop
