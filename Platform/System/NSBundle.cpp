#include "Platform/System/NSBundle.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Collections/NSArray.h"
#include "Platform/Collections/NSDictionary.h"
#include "Platform/Runtime/Describe.h"
#include "Platform/System/Diagnostics.h"
#include "Platform/System/detail/BundlePlaces.h"
#include "Platform/System/detail/DirectoryReader.h"
#include "Platform/System/detail/FileBytes.h"
#include "Platform/System/detail/Languages.h"
#include "Platform/System/detail/PropertyListReader.h"
#include "Platform/System/detail/StringTables.h"
#include "Platform/Values/detail/PathText.h"
#include "Platform/Values/detail/PosixError.h"

namespace qz {
namespace {

constexpr std::uint64_t largestInfo = std::uint64_t{16} << 20;

Ref<NSString> toString(std::string_view bytes) {
  return NSString::stringWithFileSystemRepresentation(bytes);
}

Ref<NSArray> toArray(const std::vector<std::string>& texts) {
  std::vector<Ref<NSString>> strings;
  for (const std::string& each : texts) strings.push_back(toString(each));
  return NSArray::fromRange(strings);
}

bool isEmpty(NSString* text) { return text == nullptr || text->length() == 0; }

// Empty for what no file can be called. A path with a zero in it would name another file than it
// says.
std::string bytesOf(std::u16string_view path) {
  const auto bytes = detail::bytesOfPath(path);
  return bytes && bytes->find('\0') == std::string::npos ? *bytes : "";
}

std::vector<std::string> namesInDirectory(const std::string& path) {
  std::vector<std::string> names;
  detail::Descriptor directory(detail::os::openat(AT_FDCWD, path.c_str(), O_RDONLY | O_DIRECTORY));
  if (!directory) return names;
  detail::DirectoryReader reader(std::move(directory));
  while (const auto* entry = reader.next())
    if (!entry->name().starts_with('.')) names.emplace_back(entry->name());
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace

// What a bundle knows of its directory ------------------------------------------------------------

class NSBundle::Contents {
 public:
  Contents(std::string directory, bool isThere)
      : path(std::move(directory)),
        hasResources(isThere),
        tables([this](const std::string& table) { return tableFiles(table); }) {}

  const std::string path;
  const bool hasResources;
  detail::StringTables tables;

  Ref<NSDictionary> info() {
    std::string complaint;
    std::call_once(infoRead_, [&] { info_ = readInfo(complaint); });
    // Whoever takes it may come back for the information.
    if (!complaint.empty()) detail::diagnose(complaint);
    return info_;
  }

  std::string developmentLocalization() {
    auto region = as<NSString>(info()->objectForKey("CFBundleDevelopmentRegion"_ns));
    return isEmpty(region) ? "en" : region->UTF8String();
  }

  std::vector<std::string> localizations() const {
    std::vector<std::string> found;
    if (!hasResources) return found;
    const std::string directory = path + "/locale";
    for (std::string& name : namesInDirectory(directory))
      if (detail::isDirectory(directory + "/" + name)) found.push_back(std::move(name));
    return found;
  }

  std::vector<std::string> preferredLocalizations() {
    const std::vector<std::string> available = localizations();
    std::vector<std::string> wanted = detail::preferredLanguages(), chosen;
    wanted.push_back(developmentLocalization());
    for (const std::string& language : wanted)
      for (std::string& fitting : detail::fittingLocalizations(language, available))
        if (std::find(chosen.begin(), chosen.end(), fitting) == chosen.end())
          chosen.push_back(std::move(fitting));
    return chosen;
  }

  std::string resource(const std::string& name, const std::vector<std::string>& languages) const {
    if (!hasResources) return "";
    for (const std::string& language : languages) {
      std::string candidate = path + "/locale/" + language + "/" + name;
      if (detail::fileExists(candidate)) return candidate;
    }
    std::string candidate = path + "/" + name;
    return detail::fileExists(candidate) ? candidate : "";
  }

 private:
  std::vector<std::string> tableFiles(const std::string& table) {
    std::vector<std::string> files;
    if (!hasResources || table.find('\0') != table.npos) return files;
    for (const std::string& language : preferredLocalizations())
      files.push_back(path + "/locale/" + language + "/" + table + ".strings");
    files.push_back(path + "/" + table + ".strings");
    return files;
  }

  Ref<NSDictionary> readInfo(std::string& complaint) const {
    if (!hasResources) return NSDictionary::dictionary();
    const std::string file = path + "/" + detail::bundleInfoFile;
    if (const auto bytes = detail::bytesOfFile(file, largestInfo)) {
      NSPropertyListFormat format;
      detail::PropertyListFault fault;
      const auto list = detail::readPropertyList(*bytes, {}, &format, &fault);
      if (auto info = as<NSDictionary>(list)) return info;
      if (list) fault = {"this is no dictionary", 1, 1};
      complaint = "The bundle information " + file + " cannot be used: " + fault.text();
    } else if (errno != ENOENT) {
      complaint =
          "The bundle information " + file + " cannot be read: " + detail::posixErrorText(errno);
    }
    return NSDictionary::dictionary();
  }

  std::once_flag infoRead_;
  Ref<NSDictionary> info_;
};

NSBundle::NSBundle(std::unique_ptr<Contents> contents) : contents_(std::move(contents)) {}
NSBundle::~NSBundle() = default;

// Finding bundles ---------------------------------------------------------------------------------

namespace {

struct Registry {
  std::mutex mutex;
  std::map<std::string, Ref<NSBundle>> byPath;
  std::vector<Ref<NSBundle>> all;
};
Registry& registry() {
  static auto* const common = new Registry;
  return *common;
}

std::vector<Ref<NSBundle>> madeSoFar() {
  const std::lock_guard lock(registry().mutex);
  return registry().all;
}

Ref<NSBundle> bundleAt(const std::string& path) {
  return path.empty() ? nullptr : NSBundle::bundleWithPath(toString(path));
}

}  // namespace

Ref<NSBundle> NSBundle::bundleWithPath(NSString* path) {
  if (path == nullptr) return nullptr;
  const std::string directory = detail::realPath(bytesOf(path->view()).c_str());
  if (directory.empty() || !detail::isDirectory(directory)) return nullptr;
  const std::lock_guard lock(registry().mutex);
  Ref<NSBundle>& bundle = registry().byPath[directory];
  if (!bundle) {
    bundle = make<NSBundle>(std::make_unique<Contents>(directory, true));
    registry().all.push_back(bundle);
  }
  return bundle;
}

Ref<NSBundle> NSBundle::mainBundle() {
  static NSBundle* const main = [] {
    const std::string& program = detail::executablePath();
    Ref<NSBundle> found =
        bundleAt(detail::findBundle(program, detail::bundleNameOfModule(program)));
    if (!found) {
      const std::string directory = program.substr(0, program.rfind('/'));
      found = make<NSBundle>(
          std::make_unique<Contents>(directory.empty() ? "/" : directory, /*isThere=*/false));
    }
    const std::lock_guard lock(registry().mutex);
    auto& all = registry().all;
    all.erase(std::remove(all.begin(), all.end(), found), all.end());
    all.insert(all.begin(), found);
    return found.leak();
  }();
  return Ref<NSBundle>(main);
}

Ref<NSBundle> NSBundle::bundleForClass(Class* aClass) {
  // The class's name is a literal of the file that describes the class.
  const auto library = aClass == nullptr ? std::nullopt : detail::libraryAt(aClass->name().data());
  Ref<NSBundle> found;
  if (library) found = bundleAt(detail::findBundle(*library, detail::bundleNameOfModule(*library)));
  return found ? found : mainBundle();
}

Ref<NSBundle> NSBundle::bundleWithIdentifier(NSString* identifier) {
  if (isEmpty(identifier)) return nullptr;
  mainBundle();
  for (const Ref<NSBundle>& bundle : madeSoFar())
    if (equal(bundle->bundleIdentifier(), identifier)) return bundle;

  const std::string whole = bytesOf(identifier->view());
  std::vector<std::string> modules = detail::loadedLibraries();
  modules.insert(modules.begin(), detail::executablePath());
  std::set<std::string> seen;
  for (const std::string& module : modules) {
    for (const std::string& name : {whole, whole.substr(whole.rfind('.') + 1)}) {
      for (const std::string& candidate : detail::bundleCandidates(module, name)) {
        if (!seen.insert(candidate).second ||
            !detail::fileExists(candidate + "/" + detail::bundleInfoFile))
          continue;
        Ref<NSBundle> bundle = bundleAt(candidate);
        if (bundle && equal(bundle->bundleIdentifier(), identifier)) return bundle;
      }
    }
  }
  return nullptr;
}

Ref<NSArray> NSBundle::allBundles() {
  mainBundle();
  return NSArray::fromRange(madeSoFar());
}

// What it is --------------------------------------------------------------------------------------

Ref<NSString> NSBundle::bundlePath() const { return toString(contents_->path); }

Ref<NSString> NSBundle::resourcePath() const {
  return contents_->hasResources ? bundlePath() : nullptr;
}

Ref<NSDictionary> NSBundle::infoDictionary() const { return contents_->info(); }

Ref<NSObject> NSBundle::objectForInfoDictionaryKey(NSString* key) const {
  return contents_->info()->objectForKey(key);
}

Ref<NSString> NSBundle::bundleIdentifier() const {
  return as<NSString>(objectForInfoDictionaryKey("CFBundleIdentifier"_ns));
}

Ref<NSString> NSBundle::description() const {
  return NSString::stringWithFormat("NSBundle %@"_ns, bundlePath());
}

// Resources ---------------------------------------------------------------------------------------

namespace {

std::string resourceName(NSString* name, NSString* type, NSString* directory) {
  if (isEmpty(name)) return "";
  std::u16string file;
  if (!isEmpty(directory)) file.append(directory->view()) += u'/';
  file += name->view();
  if (!isEmpty(type)) (file += u'.') += type->view();
  return bytesOf(file);
}

Ref<NSString> pathOrNil(const std::string& path) { return path.empty() ? nullptr : toString(path); }

}  // namespace

Ref<NSString> NSBundle::pathForResource_ofType(NSString* name, NSString* type) const {
  return pathForResource_ofType_inDirectory(name, type, nullptr);
}

Ref<NSString> NSBundle::pathForResource_ofType_inDirectory(NSString* name, NSString* type,
                                                           NSString* directory) const {
  const std::string file = resourceName(name, type, directory);
  if (file.empty()) return nullptr;
  return pathOrNil(contents_->resource(file, contents_->preferredLocalizations()));
}

Ref<NSString> NSBundle::pathForResource_ofType_inDirectory_forLocalization(
    NSString* name, NSString* type, NSString* directory, NSString* localization) const {
  const std::string file = resourceName(name, type, directory);
  if (file.empty()) return nullptr;
  std::vector<std::string> languages;
  if (!isEmpty(localization)) languages.push_back(bytesOf(localization->view()));
  std::erase(languages, "");
  return pathOrNil(contents_->resource(file, languages));
}

Ref<NSArray> NSBundle::localizations() const { return toArray(contents_->localizations()); }

Ref<NSArray> NSBundle::preferredLocalizations() const {
  return toArray(contents_->preferredLocalizations());
}

Ref<NSString> NSBundle::developmentLocalization() const {
  return toString(contents_->developmentLocalization());
}

Ref<NSString> NSBundle::localizedStringForKey_value_table(NSString* key, NSString* value,
                                                          NSString* table) const {
  if (key == nullptr) return value != nullptr ? Ref<NSString>(value) : NSString::string();
  if (Ref<NSString> text = contents_->tables.textForKey(key, table)) return text;
  return isEmpty(value) ? key : value;
}

Ref<NSArray> NSBundle::preferredLanguages() { return toArray(detail::preferredLanguages()); }

void NSBundle::setPreferredLanguages(NSArray* languages) {
  if (languages == nullptr) {
    detail::setPreferredLanguages(std::nullopt);
  } else {
    std::vector<std::string> tags;
    for (NSObject* each : *languages)
      if (auto* text = as<NSString>(each))
        tags.push_back(detail::languageOfLocale(text->UTF8String()));
    std::erase(tags, "");
    detail::setPreferredLanguages(std::move(tags));
  }
  for (const Ref<NSBundle>& bundle : madeSoFar()) bundle->contents_->tables.forgetOrder();
}

namespace {
// A function's first Class would be the one that the message was sent to.
Ref<NSBundle> bundleForItsArgument(Class*, Class* aClass) {
  return NSBundle::bundleForClass(aClass);
}
}  // namespace

void NSBundle::describe(ClassDescription<NSBundle>& is) {
  using Self = NSBundle;
  is.named("NSBundle")
      .classMethod<&Self::mainBundle>("mainBundle")
      .classMethod<&Self::bundleWithPath>("bundleWithPath:")
      .classMethod<&bundleForItsArgument>("bundleForClass:")
      .classMethod<&Self::bundleWithIdentifier>("bundleWithIdentifier:")
      .classMethod<&Self::allBundles>("allBundles")
      .classMethod<&Self::preferredLanguages>("preferredLanguages")
      .classMethod<&Self::setPreferredLanguages>("setPreferredLanguages:")
      .method<&Self::bundlePath>("bundlePath")
      .method<&Self::resourcePath>("resourcePath")
      .method<&Self::infoDictionary>("infoDictionary")
      .method<&Self::objectForInfoDictionaryKey>("objectForInfoDictionaryKey:")
      .method<&Self::bundleIdentifier>("bundleIdentifier")
      .method<&Self::pathForResource_ofType>("pathForResource:ofType:")
      .method<&Self::pathForResource_ofType_inDirectory>("pathForResource:ofType:inDirectory:")
      .method<&Self::pathForResource_ofType_inDirectory_forLocalization>(
          "pathForResource:ofType:inDirectory:forLocalization:")
      .method<&Self::localizations>("localizations")
      .method<&Self::preferredLocalizations>("preferredLocalizations")
      .method<&Self::developmentLocalization>("developmentLocalization")
      .method<&Self::localizedStringForKey_value_table>("localizedStringForKey:value:table:");
}

}  // namespace qz
