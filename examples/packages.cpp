// Imports the machine's package table, a delimited text, into Objects; asks it by key path, groups
// and sums it up; then sorts it into a map and replays that map on Arrays kept beside it.
//
//     packages [table]     (default: what dpkg-query lists)
//
// A table has a line for each package, each field of it followed by a tab: name, version, section,
// installed size in KiB, and whether it is "installed".
#include <algorithm>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <string>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Collections/NSSortDescriptor.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSNumber.h"
#include "QZFoundation/QZFoundation.h"

using namespace qz;

namespace {

class Package : public Derives<Package, NSObject> {
 public:
  static void describe(ClassDescription<Package>& is) {
    is.named("Package")
        .field<&Package::name>("name")
        .field<&Package::version>("version")
        .field<&Package::section>("section")
        .field<&Package::installedSize>("installedSize")
        .field<&Package::status>("status")
        .method<&Package::isInstalled>("isInstalled")
        .method<&Package::isLibrary>("isLibrary");
  }

  bool isInstalled() const { return status->isEqualToString("installed"_ns); }
  bool isLibrary() const {
    return section->hasSuffix("libs"_ns) || section->hasSuffix("libdevel"_ns);
  }

  Ref<NSString> name = ""_ns;
  Ref<NSString> version = ""_ns;
  Ref<NSString> section = ""_ns;
  std::uint64_t installedSize = 0;  // KiB
  Ref<NSString> status = ""_ns;
};

Ref<NSString> listOfInstalledPackages() {
  constexpr auto format =
      "--showformat=${Package}\\t${Version}\\t${Section}\\t${Installed-Size}\\t"
      "${db:Status-Status}\\t\\n";
  auto arguments = NSArray::arrayWithObjects({"--show"_ns, NSString::stringWithUTF8String(format)});
  Ref<NSData> output = dataByRunningTask_withArguments("/usr/bin/dpkg-query"_ns, arguments);
  return NSString::initWithData_encoding(output, NSUTF8StringEncoding);
}

Ref<NSString> contentsOf(const char* path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return nullptr;
  return NSString::stringWithUTF8String(
      std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()));
}

// Every field is set by key: a size arrives as text and is stored as a number.
Ref<NSMutableArray> readPackages(NSString* table) {
  auto keys = NSArray::arrayWithObjects(
      {"name"_ns, "version"_ns, "section"_ns, "installedSize"_ns, "status"_ns});
  auto packages = arrayWithDelimitedText_objectDelimiter_fieldDelimiter_keys_objectClass(
      table, "\n"_ns, "\t"_ns, keys, classOf<Package>());
  filterObjectsWithSelector(packages, "isInstalled"_sel);
  return packages;
}

std::string megabytes(NSObject* kilobytes) {
  const double value = as<NSNumber>(kilobytes)->doubleValue() / 1024;
  return to_string(NSString::stringWithFormat("%.1f MB"_ns, value));
}

void printRow(const std::string& size, const std::string& name, const std::string& section) {
  std::cout << std::setw(10) << std::right << size << "  " << std::left << std::setw(34) << name
            << section << '\n';
}

void printTable(const std::string& title, NSArray* sizes, NSArray* names, NSArray* sections,
                std::uint32_t rows) {
  std::cout << '\n' << title << '\n';
  for (std::uint32_t i = 0; i < std::min(rows, names->count()); ++i)
    printRow(megabytes(sizes->objectAtIndex(i)), to_string(names->objectAtIndex(i)),
             to_string(sections->objectAtIndex(i)));
}

// The first three positions, in the order of `names`, whose section ends in "libdevel".
Ref<NSMutableArray> someDevelopmentLibraries(NSArray* sections) {
  auto found = make<NSMutableArray>();
  for (std::uint32_t i = 0; i < sections->count() && found->count() < 3; ++i)
    if (as<NSString>(sections->objectAtIndex(i))->hasSuffix("libdevel"_ns))
      found->addObject(NSNumber::numberWithUnsignedInt(i));
  return found;
}

std::uint64_t numberAt(NSArray* array, NSString* keyPath) {
  return as<NSNumber>(array->valueForKeyPath(keyPath))->unsignedLongLongValue();
}

// One line for each section, the largest first: what is in it, by operators of key paths.
void printSections(NSArray* packages, std::uint32_t rows) {
  auto groups = make<NSMutableArray>();
  for (NSObject* section :
       as<NSArray>(packages->valueForKeyPath("@distinctUnionOfObjects.section"_ns)))
    groups->addObject(arrayByMatchingValue_forKeyPath(packages, section, "section"_ns));
  groups->sortUsingComparator(
      [](NSObject* a, NSObject* b) { return compare_usingKeyPath(b, a, "@sum.installedSize"_ns); });
  std::cout << "\nThe largest of " << groups->count() << " sections:\n";
  for (NSArray* group : elements<NSArray>(groups)) {
    if (rows-- == 0) break;
    auto largest = as<Package>(objectMatchingValue_forKeyPath(
        group, group->valueForKeyPath("@max.installedSize"_ns), "installedSize"_ns));
    std::cout << std::setw(10) << std::right
              << megabytes(group->valueForKeyPath("@sum.installedSize"_ns)) << "  " << std::setw(5)
              << numberAt(group, "@count"_ns) << " packages in " << std::left << std::setw(20)
              << to_string(firstObject(group)->valueForKey("section"_ns)) << "the largest is "
              << largest->name << '\n';
  }
}

void printAnswers(NSArray* packages) {
  Ref<NSArray> libraries = arrayByFilteringWithSelector(packages, "isLibrary"_sel);
  std::cout << libraries->count() << " of them are libraries, the first by name "
            << to_string(firstObject(
                   arrayForKeyPath(sortedArrayUsingKeyPath(libraries, "name"_ns), "name"_ns)))
            << ".\n";
  auto byName = dictionaryIndexedByKeyPath(packages->objectEnumerator(), "name"_ns);
  if (auto shell = as<Package>(byName->objectForKey("bash"_ns)))
    std::cout << "bash is " << shell->version << ", in the section " << shell->section << ".\n";
}

int show(const char* path) {
  Ref<NSString> table = path == nullptr ? listOfInstalledPackages() : contentsOf(path);
  if (!table) {
    std::cerr << "packages: cannot read " << (path == nullptr ? "the list of packages" : path)
              << '\n';
    return 1;
  }
  Ref<NSMutableArray> packages = readPackages(table);
  const auto count = static_cast<std::int32_t>(packages->count());
  std::cout << count << " packages are installed.\n";
  printAnswers(packages);
  printSections(packages, 6);

  // Three Arrays in parallel; only the packages are sorted, the others follow by the map.
  auto sizes = as<NSArray>(packages->valueForKey("installedSize"_ns));
  auto names = as<NSArray>(packages->valueForKey("name"_ns));
  auto sections = as<NSArray>(packages->valueForKey("section"_ns));
  Ref<QZIndexMap> largestFirst = sortMapUsingKeyPath(packages, "installedSize"_ns)->reverseMap();
  Ref<NSArray> sortedSizes = arrayUsingMap(sizes, largestFirst);
  Ref<NSArray> sortedNames = arrayUsingMap(names, largestFirst);
  Ref<NSArray> sortedSections = arrayUsingMap(sections, largestFirst);
  printTable("The largest:", sortedSizes, sortedNames, sortedSections, 10);

  // A few entries are moved to the front; the maps combine into one.
  Ref<NSMutableArray> chosen = someDevelopmentLibraries(sortedSections);
  Ref<QZIndexMap> toFront = QZIndexMap::mapToMoveIndices_toIndex_count(chosen, 0, count);
  Ref<QZIndexMap> both = largestFirst->mapByApplyingMap(toFront);
  printTable(
      "With the largest development libraries moved to the front:", arrayUsingMap(sizes, both),
      arrayUsingMap(names, both), arrayUsingMap(sections, both), 6);

  // And everything is undone.
  Ref<NSArray> back = arrayUsingMap(arrayUsingMap(names, both), both->inverseMap());
  const bool same = back->isEqual(names);
  std::cout << "\nThe inverse map puts all " << count << " names "
            << (same ? "back where they were.\n" : "somewhere else!\n");
  return same ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return show(argc > 1 ? argv[1] : nullptr);
  } catch (const std::exception& error) {
    std::cerr << "packages: " << error.what() << '\n';
    return 1;
  }
}
