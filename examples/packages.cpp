// Reads the machine's package database, sorts it into a map by size, and replays that map on Arrays
// kept beside it.
//
//     packages [database]     (default: /var/lib/dpkg/status)
#include <fstream>
#include <iomanip>
#include <iostream>
#include <string>

#include "Platform/Collections/NSMutableArray.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/Runtime/NSException.h"
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
        .field<&Package::installedSize>("installedSize");
  }

  std::string name;
  std::string version;
  std::string section;
  std::uint64_t installedSize = 0;  // KiB
};

// The database is a sequence of records, each a run of "Field: value" lines, parted by empty lines.
// Fields are set by key, so a size arrives as text and is stored as a number.
Ref<NSMutableArray> readPackages(std::istream& database) {
  auto packages = make<NSMutableArray>();
  auto package = make<Package>();
  bool installed = false;
  auto finish = [&] {
    if (installed && !package->name.empty()) packages->addObject(package);
    package = make<Package>();
    installed = false;
  };
  for (std::string line; std::getline(database, line);) {
    if (line.empty()) {
      finish();
      continue;
    }
    const std::size_t colon = line.find(": ");
    if (line.front() == ' ' || colon == std::string::npos) continue;  // more of the field before
    const std::string field = line.substr(0, colon);
    auto value = NSString::stringWithUTF8String(line.substr(colon + 2));
    if (field == "Status")
      installed = value->isEqualToString("install ok installed"_ns);
    else if (field == "Package")
      package->setValue_forKey(value, "name"_ns);
    else if (field == "Version")
      package->setValue_forKey(value, "version"_ns);
    else if (field == "Section")
      package->setValue_forKey(value, "section"_ns);
    else if (field == "Installed-Size")
      package->setValue_forKey(value, "installedSize"_ns);
  }
  finish();
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

int show(const char* path) {
  std::ifstream database(path);
  if (!database) {
    std::cerr << "packages: cannot read " << path
              << "; name a package database in the format of dpkg's status file\n";
    return 1;
  }
  Ref<NSMutableArray> packages = readPackages(database);
  const auto count = static_cast<std::int32_t>(packages->count());
  std::cout << count << " packages are installed (" << path << ").\n";

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
    return show(argc > 1 ? argv[1] : "/var/lib/dpkg/status");
  } catch (const std::exception& error) {
    std::cerr << "packages: " << error.what() << '\n';
    return 1;
  }
}
