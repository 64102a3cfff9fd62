// qzplist: looks at property lists, converts and changes them.
#include <cstdint>
#include <iostream>
#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/System/NSPropertyListSerialization.h"
#include "Platform/Values/NSData.h"
#include "Platform/Values/NSError.h"
#include "Platform/Values/NSString.h"
#include "tools/Command.h"
#include "tools/qzplist/KeyPath.h"
#include "tools/qzplist/Values.h"

namespace qz::tool {
namespace {

constexpr std::string_view usage = R"(usage: qzplist COMMAND …

  qzplist print [FILE]                       show a property list
  qzplist check FILE…                        say of each file what it is, or what is wrong and where
  qzplist convert FORMAT [FILE] [-o OUT]     write it in another format, to OUT or in its place
  qzplist get FILE PATH [FORMAT]             print the value at PATH, or write it as a list
  qzplist set FILE PATH [-t TYPE] VALUE      put a value there, and write the file back
  qzplist remove FILE PATH                   take the value there away

FORMAT is xml, binary or text. TYPE is string (if none is given), integer, real, bool, date, data (in
base 64), array or dictionary (a property list). PATH is keys and indices joined by ".", such as
servers.0.name; "\." is a point within a key, "" the whole list. FILE or OUT "-" is the standard input
or output, as is a missing FILE. Files are replaced whole or not at all.

Status: 0 done; 1 a file or path is no good; 2 the command is.
)";

using Arguments = std::span<const std::string>;

// A path as the shell says it, in whatever encoding.
Ref<NSString> pathFrom(const std::string& bytes) {
  return NSString::stringWithFileSystemRepresentation(bytes);
}

// Files -------------------------------------------------------------------------------------------

struct Document {
  Ref<NSObject> list;
  NSPropertyListFormat format = NSPropertyListXMLFormat;
};

Document readStandardInput() {
  const std::string bytes(std::istreambuf_iterator<char>(std::cin), {});
  Document document;
  Ref<NSString> problem;
  document.list =
      NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
          NSData::dataWithBytes(bytes), NSPropertyListMutableContainers, &document.format,
          &problem);
  if (!document.list) fail("standard input", problem->UTF8String());
  return document;
}

Document read(const std::string& file) {
  if (file == "-") return readStandardInput();
  Document document;
  Ref<NSError> error;
  const Ref<NSData> data = NSData::dataWithContentsOfFile_options_error(pathFrom(file), 0, &error);
  if (!data) fail(file, error->errorCode().message());
  Ref<NSString> problem;
  document.list =
      NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
          data, NSPropertyListMutableContainers, &document.format, &problem);
  if (!document.list) fail(file, problem->UTF8String());
  return document;
}

void write(NSObject* list, NSPropertyListFormat format, const std::string& file) {
  Ref<NSString> problem;
  const Ref<NSData> data =
      NSPropertyListSerialization::dataFromPropertyList_format_errorDescription(list, format,
                                                                                &problem);
  if (!data) fail(file, problem->UTF8String());
  if (file == "-") {
    std::cout << data->view();
    return;
  }
  Ref<NSError> error;
  if (!data->writeToFile_options_error(pathFrom(file), NSDataWritingAtomic, &error))
    fail(file, error->errorCode().message());
}

NSPropertyListFormat formatNamed(const std::string& name) {
  if (name == "xml") return NSPropertyListXMLFormat;
  if (name == "binary") return NSPropertyListBinaryFormat;
  if (name == "text") return NSPropertyListOldStyleFormat;
  misuse("there is no format \"" + name + "\"");
}

std::string nameOf(NSPropertyListFormat format) {
  if (format == NSPropertyListXMLFormat) return "xml";
  return format == NSPropertyListBinaryFormat ? "binary" : "text";
}

// Commands ----------------------------------------------------------------------------------------

void requireCount(Arguments arguments, std::size_t least, std::size_t most) {
  if (arguments.size() < least) misuse("something is missing");
  if (arguments.size() > most) misuse("\"" + arguments[most] + "\" is too much");
}

// Takes the option and the word behind it away; "" when it is not there.
std::string takeOption(std::vector<std::string>& arguments, std::string_view option) {
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (arguments[i] != option) continue;
    if (i + 1 == arguments.size()) misuse(std::string(option) + " needs a word behind it");
    std::string word = arguments[i + 1];
    const auto place = arguments.begin() + static_cast<std::ptrdiff_t>(i);
    arguments.erase(place, place + 2);
    return word;
  }
  return "";
}

Status print(Arguments arguments) {
  requireCount(arguments, 0, 1);
  std::cout << shown(read(arguments.empty() ? "-" : arguments[0]).list) << '\n';
  return Done;
}

Status check(Arguments arguments) {
  requireCount(arguments, 1, SIZE_MAX);
  Status status = Done;
  for (const std::string& file : arguments) {
    try {
      const Document document = read(file);
      std::cout << file << ": " << nameOf(document.format) << '\n';
    } catch (const Failure& failure) {
      std::cerr << "qzplist: " << failure.what() << '\n';
      status = failure.status;
    }
  }
  return status;
}

Status convert(std::vector<std::string> arguments) {
  std::string out = takeOption(arguments, "-o");
  requireCount(arguments, 1, 2);
  const NSPropertyListFormat format = formatNamed(arguments[0]);
  const std::string in = arguments.size() > 1 ? arguments[1] : "-";
  write(read(in).list, format, out.empty() ? in : out);
  return Done;
}

Status get(Arguments arguments) {
  requireCount(arguments, 2, 3);
  const Ref<NSObject> value = valueAt(read(arguments[0]).list, parseKeyPath(arguments[1]));
  if (arguments.size() == 3)
    write(value, formatNamed(arguments[2]), "-");
  else
    std::cout << plain(value) << '\n';
  return Done;
}

Status set(std::vector<std::string> arguments) {
  // Only before the value, which may be anything.
  std::string type = "string";
  if (arguments.size() == 5 && arguments[2] == "-t") {
    type = arguments[3];
    arguments.erase(arguments.begin() + 2, arguments.begin() + 4);
  }
  requireCount(arguments, 3, 3);
  const Ref<NSObject> value = parsedValue(type, arguments[2]);
  const Document document = read(arguments[0]);
  write(settingValueAt(document.list, parseKeyPath(arguments[1]), value), document.format,
        arguments[0]);
  return Done;
}

Status remove(Arguments arguments) {
  requireCount(arguments, 2, 2);
  const Document document = read(arguments[0]);
  removeValueAt(document.list, parseKeyPath(arguments[1]));
  write(document.list, document.format, arguments[0]);
  return Done;
}

Status run(std::vector<std::string> arguments) {
  if (arguments.empty()) {
    std::cerr << usage;
    return Misused;
  }
  const std::string command = arguments[0];
  arguments.erase(arguments.begin());
  if (command == "--help" || command == "help") {
    std::cout << usage;
    return Done;
  }
  if (command == "print") return print(arguments);
  if (command == "check") return check(arguments);
  if (command == "convert") return convert(arguments);
  if (command == "get") return get(arguments);
  if (command == "set") return set(arguments);
  if (command == "remove") return remove(arguments);
  misuse("there is no command \"" + command + "\"");
}

}  // namespace
}  // namespace qz::tool

int main(int count, char** words) {
  return qz::tool::runCommand("qzplist", &qz::tool::run, count, words);
}
