// Every operation is bound to the function that its name calls for.
#include <cxxabi.h>
#include <dlfcn.h>

#include <regex>

#include "Platform/Runtime/ClassList.h"
#include "QZFoundation/QZFoundation.h"
#include "tests/support/Test.h"

namespace qz::test {
namespace {

// "NSArray::objectAtIndex": what the linker calls the function behind a method; empty for one that
// only its own file can see.
std::string functionBehind(const detail::Method& method) {
  Dl_info info{};
  auto* const address = reinterpret_cast<void*>(method.imp);
  if (::dladdr(address, &info) == 0 || info.dli_saddr != address) return {};
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> name(
      abi::__cxa_demangle(info.dli_sname, nullptr, nullptr, &status), &std::free);
  if (!name) return {};
  static const std::regex function("&\\(?qz::((?:\\w+::)*\\w+)");
  std::cmatch found;
  return std::regex_search(name.get(), found, function) ? found[1].str() : std::string();
}

std::string cppName(std::string_view selector) {
  std::string name(selector);
  if (name.ends_with(':')) name.pop_back();
  std::ranges::replace(name, ':', '_');
  return name;
}

// The few that C++ calls by another name, on purpose.
bool isOtherwiseNamed(const std::string& selector, const std::string& function) {
  static const std::map<std::string, std::string> others{
      {"formattingBehavior", "formatterBehavior"},
      {"setFormattingBehavior:", "setFormatterBehavior"},
      {"lenient", "isLenient"},
      {"class", "classObject"},
      {"isMainThread", "isMain"}};
  const auto other = others.find(selector);
  if (other != others.end()) return function.ends_with("::" + other->second);
  // What takes the place of `alloc` is made by the class as well: numberWithInt for initWithInt:.
  return selector.starts_with("initWith") &&
         function.ends_with(cppName(selector).substr(std::string("init").size()));
}

TEST(Bindings, EveryOperationIsBoundToItsFunction) {
  int seen = 0;
  const auto check = [&seen](const detail::Method* method) {
    const std::string function = functionBehind(*method);
    if (function.empty()) return;
    ++seen;
    const std::string selector(method->selector.name());
    const std::string name = cppName(selector);
    if (function != name && !function.ends_with("::" + name)) {
      EXPECT_TRUE(isOtherwiseNamed(selector, function))
          << method->owner->name() << " " << selector << " is " << function;
    }
  };
  for (Class* each : allClasses()) {
    for (const Selector selector : each->instanceSelectors()) check(each->instanceMethod(selector));
    for (const Selector selector : each->classSelectors()) check(each->classMethod(selector));
  }
  EXPECT_GT(seen, 1000);
}

}  // namespace
}  // namespace qz::test
