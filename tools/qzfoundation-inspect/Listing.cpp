#include "tools/qzfoundation-inspect/Listing.h"

#include <algorithm>
#include <array>
#include <ostream>
#include <regex>
#include <vector>

#include "Platform/Runtime/ClassList.h"
#include "Platform/Runtime/NSMethodSignature.h"

namespace qz::tool {
namespace {

/// A type as the headers write it: "uint32_t" for "unsigned int", "const void*" for "void const*".
/// Only what the compiler expands is put together again; names stay as they are.
std::string spelling(const detail::ValueType& type) {
  struct Rule {
    std::regex from;
    const char* to;
  };
  static const std::array rules{
      Rule{std::regex("qz::|, 18446744073709551615ul"), ""},
      Rule{std::regex("std::(__cxx11::)?basic_string(_view)?<char, [^>]*>(, [^>]*>)? ?>"),
           "std::string$2"},
      Rule{std::regex("(\\d)ul\\b"), "$1"},
      Rule{std::regex("\\b(unsigned|signed) char\\b"), "$1 int8_t"},
      Rule{std::regex("\\bshort\\b"), "int16_t"},
      Rule{std::regex("\\bint\\b"), "int32_t"},
      Rule{std::regex("\\blong\\b"), "int64_t"},
      Rule{std::regex("\\bunsigned int"), "uint"},
      Rule{std::regex("\\bsigned int"), "int"},
      Rule{std::regex("(\\w+) const([*>,])"), "const $1$2"},
  };
  std::string text = detail::typeName(type);
  for (const Rule& rule : rules) text = std::regex_replace(text, rule.from, rule.to);
  return text;
}

struct Operation {
  const detail::Method* method;
  bool ofClass;

  char mark() const { return ofClass ? '+' : '-'; }
  std::string_view name() const { return method->selector.name(); }
  std::string answer() const { return spelling(*method->answer); }

  /// "(NSString, int)"
  std::string arguments() const {
    std::string text = "(";
    for (const detail::ValueType* each : method->arguments)
      text += (text.size() == 1 ? "" : ", ") + spelling(*each);
    return text + ")";
  }
};

/// Those described for this very class, by name; the class's own first.
std::vector<Operation> operationsOf(Class* aClass) {
  std::vector<Operation> found;
  for (const Selector each : aClass->classSelectors())
    found.push_back({aClass->classMethod(each), true});
  for (const Selector each : aClass->instanceSelectors())
    found.push_back({aClass->instanceMethod(each), false});
  std::ranges::sort(found, [](const Operation& a, const Operation& b) {
    return a.ofClass != b.ofClass ? a.ofClass : a.name() < b.name();
  });
  return found;
}

std::string ancestry(Class* aClass) {
  std::string text;
  for (Class* each = aClass->superclassObject(); each != nullptr; each = each->superclassObject())
    text += " : " + std::string(each->name());
  return text;
}

void listBelow(std::ostream& out, const std::vector<Class*>& all, Class* above, int depth) {
  for (Class* each : all) {
    if (each->superclassObject() != above) continue;
    out << std::string(2 * static_cast<std::size_t>(depth), ' ') << each->name() << '\n';
    listBelow(out, all, each, depth + 1);
  }
}

}  // namespace

std::string cppName(std::string_view selector) {
  if (selector == "class") return "classObject";  // C++ keeps the word for itself
  std::string name(selector);
  if (name.ends_with(':')) name.pop_back();
  std::ranges::replace(name, ':', '_');
  return name;
}

void list(std::ostream& out, Class* aClass) {
  out << aClass->name() << ancestry(aClass) << '\n';
  for (const std::string_view key : aClass->propertyKeys()) out << "  property " << key << '\n';
  for (const Operation& each : operationsOf(aClass)) {
    out << "  " << each.mark() << ' ' << each.name() << "  " << each.arguments() << " -> "
        << each.answer();
    if (!each.method->category.empty()) out << "  [" << each.method->category << ']';
    out << '\n';
  }
}

void listAsMarkdown(std::ostream& out, Class* aClass) {
  const auto operations = operationsOf(aClass);
  if (operations.empty()) return;
  out << "\n## " << aClass->name() << "\n\n";
  if (const std::string above = ancestry(aClass); !above.empty())
    out << "Descends from" << above.substr(2) << ".\n\n";
  out << "| | Selector | in C++ | takes | answers | added by |\n|---|---|---|---|---|---|\n";
  for (const Operation& each : operations) {
    const std::string_view category = each.method->category;
    const bool isStaticMember = each.ofClass && category.empty();
    out << "| " << each.mark() << " | `" << each.name() << "` | `"
        << (isStaticMember ? std::string(aClass->name()) + "::" : "") << cppName(each.name())
        << "` | `" << each.arguments() << "` | `" << each.answer() << "` | " << category << " |\n";
  }
}

void listTree(std::ostream& out) { listBelow(out, allClasses(), nullptr, 0); }

}  // namespace qz::tool
