// qzfoundation-inspect: prints what the run-time knows of classes.
#include <dlfcn.h>

#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Runtime/ClassList.h"
#include "QZFoundation/QZFoundation.h"
#include "tools/Command.h"
#include "tools/qzfoundation-inspect/Listing.h"

namespace qz::tool {
namespace {

constexpr std::string_view usage = R"(usage: qzfoundation-inspect [OPTION…] [CLASS…]

  CLASS…           what each of these classes has: its properties, and its operations with what
                   they take and answer; all classes without any
  --load LIBRARY   loads a shared library first, whose classes are then known too
  --tree           the names alone, each below the class that it descends from
  --markdown       a page with a table for each class

Status: 0 done; 1 there is no such class or library; 2 the command is not.
)";

constexpr std::string_view pageHead = R"(# Operations

Every operation that can be sent by Selector, class by class, as the run-time has it: those of a class are marked +, those of its Objects -. Classes below have it too.

Objects are taken as pointers and answered as a `Ref`. What NSFileAttributes and QZFoundation have added to a class is a function in C++, whose first argument is the receiver, unless that is a class.
)";

enum class Form { List, Tree, Markdown };

void print(Form form, const std::vector<Class*>& classes) {
  if (form == Form::Tree) return listTree(std::cout);
  if (form == Form::Markdown) std::cout << pageHead;
  for (Class* each : classes)
    form == Form::Markdown ? listAsMarkdown(std::cout, each) : list(std::cout, each);
}

Status run(std::vector<std::string> words) {
  Form form = Form::List;
  std::vector<std::string> names;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (word == "--tree") {
      form = Form::Tree;
    } else if (word == "--markdown") {
      form = Form::Markdown;
    } else if (word == "--help") {
      std::cout << usage;
      return Done;
    } else if (word == "--load" && i + 1 < words.size()) {
      // Never closed: classes stay for ever.
      if (::dlopen(words[++i].c_str(), RTLD_NOW) == nullptr) fail(::dlerror());
    } else if (word.starts_with('-')) {
      misuse("there is no option " + word);
    } else {
      names.push_back(word);
    }
  }
  std::vector<Class*> classes;
  for (const std::string& name : names) {
    Class* found = Class::named(name);
    if (found == nullptr) fail(name, "there is no such class");
    classes.push_back(found);
  }
  print(form, names.empty() ? allClasses() : classes);
  return Done;
}

}  // namespace
}  // namespace qz::tool

int main(int count, char** words) {
  return qz::tool::runCommand("qzfoundation-inspect", &qz::tool::run, count, words);
}
