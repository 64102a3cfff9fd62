// Errors and messages in the user's language.
#include <string>
#include <unordered_map>

#include "Platform/System/NSBundle.h"
#include "QZFoundation/NSError-QZFoundation.h"
#include "QZFoundation/QZFunctions.h"

#include "bench/support/Comparison.h"
#include "bench/support/Families.h"
#include "bench/support/People.h"

namespace qz::bench {
namespace {

NSString* const description = "Could not create directory at /tmp/x"_ns;
NSString* const key = "Could not create directory at %@"_ns;

void makeAndReadError(benchmark::State& state) {
  for (auto _ : state) {
    Ref<NSError> error = POSIXError_description(2, description);
    Ref<NSString> text = error->localizedDescription();
    benchmark::DoNotOptimize(text);
  }
}

void makeObject(benchmark::State& state) {
  for (auto _ : state) {
    Ref<Person> person = make<Person>(36);
    benchmark::DoNotOptimize(person);
  }
}

void lookUpMessage(benchmark::State& state) {
  const Ref<NSBundle> bundle = NSBundle::bundleWithIdentifier("qz.QZFoundation"_ns);
  for (auto _ : state) {
    Ref<NSString> text = bundle->localizedStringForKey_value_table(key, ""_ns, nullptr);
    benchmark::DoNotOptimize(text);
  }
}

void formatMessage(benchmark::State& state) {
  const Ref<NSBundle> bundle = NSBundle::bundleWithIdentifier("qz.QZFoundation"_ns);
  for (auto _ : state) {
    Ref<NSString> text = QZLocalizedStringFromTableInBundle(
        key, nullptr, bundle, "Directory creation error"_ns, "/tmp/x"_ns);
    benchmark::DoNotOptimize(text);
  }
}

// The library's own messages, as many C++ programs keep theirs.
std::unordered_map<std::string, std::string> messages() {
  std::unordered_map<std::string, std::string> texts;
  const Ref<NSBundle> bundle = NSBundle::bundleWithIdentifier("qz.QZFoundation"_ns);
  for (const char* each :
       {"Illegal value for search kind (%d)", "Illegal milliseconds value",
        "Illegal extra characters", "Unable to move from %@ to %@ (%@)",
        "Could not create directory at %@", "Could not link %@ to %@ (%@)",
        "Source file does not exist", "Destination folder does not exist",
        "Destination parent is not a folder", "File already exists at destination",
        "Cannot overwrite a folder with a file", "Unable to copy from %@ to %@ (%@)",
        "The directory %@ could not be read"})
    texts[each] = bundle
                      ->localizedStringForKey_value_table(NSString::stringWithUTF8String(each),
                                                          ""_ns, nullptr)
                      ->UTF8String();
  return texts;
}

void findText(benchmark::State& state) {
  const auto texts = messages();
  std::string wanted = key->UTF8String();
  for (auto _ : state) {
    benchmark::DoNotOptimize(wanted);
    const std::string* text = &texts.find(wanted)->second;
    benchmark::DoNotOptimize(text);
  }
}

}  // namespace

void compareMessages() {
  compare("MakeError",
          {"make an Error and read its description", "create and destroy an Object", 5},
          &makeAndReadError, &makeObject);
  compare("LookUpMessage", {"look a message up", "std::unordered_map::find of the key", 0},
          &lookUpMessage, &findText);
  compare("FormatMessage",
          {"look a message up and format it", "std::unordered_map::find of the key", 4},
          &formatMessage, &findText);
}

}  // namespace qz::bench
