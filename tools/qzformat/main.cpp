// qzformat: shows durations, sizes and versions, and what value transformers make of values.
#include <functional>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Runtime/NSException.h"
#include "Platform/Text/NSFormatter.h"
#include "Platform/Text/NSValueTransformer.h"
#include "Platform/Values/NSNumber.h"
#include "Platform/Values/NSScanner.h"
#include "QZFoundation/NSValueTransformer-QZFoundation.h"
#include "QZFoundation/QZHMSFormatter.h"
#include "QZFoundation/QZStorageSizeFormatter.h"
#include "QZFoundation/QZVersionNumber.h"
#include "QZFoundation/QZWordSeparator.h"
#include "tools/Command.h"

namespace qz::tool {
namespace {

constexpr std::string_view usage = R"(usage: qzformat KIND [OPTION…] [--] [VALUE…]

  qzformat duration [-r]         seconds as 1:02:05
  qzformat size [-b] [-r]        bytes as 1.5 MB; with -b a kilobyte is 1024 bytes
  qzformat version               version numbers as 1.0b3
  qzformat transform NAME [-r]   what a value transformer makes of a value, such as
                                 QZMath-multiply-100; values that look like numbers are numbers

With -r it goes the other way round. Without values, each line of the standard input is one. Values
that cannot be shown are reported and left out.

Status: 0 done; 1 some values are no good; 2 the command is not.
)";

// Options and values of the command line.
struct Request {
  bool isReverse = false;
  bool isBinary = false;
  std::string name;  // of a transformer
  std::vector<std::string> values;
};

// What a value is shown as; nil, or an exception, when it cannot be.
using Show = std::function<Ref<NSObject>(NSString* text)>;

Ref<NSNumber> numberFrom(NSString* text) {
  const auto scanner = NSScanner::scannerWithString(text);
  std::int64_t whole = 0;
  std::uint64_t great = 0;
  double real = 0;
  if (scanner->scanLongLong(&whole) && scanner->isAtEnd() && whole != INT64_MAX)
    return NSNumber::of(whole);
  scanner->setScanLocation(0);
  if (scanner->scanUnsignedLongLong(&great) && scanner->isAtEnd() && whole == INT64_MAX)
    return NSNumber::of(great);
  scanner->setScanLocation(0);
  if (scanner->scanDouble(&real) && scanner->isAtEnd()) return NSNumber::of(real);
  return nullptr;
}

Show formatting(const Ref<NSFormatter>& formatter, bool isReverse) {
  if (isReverse)
    return [formatter](NSString* text) {
      Ref<NSObject> value;
      Ref<NSString> error;
      if (!formatter->getObjectValue_forString_errorDescription(&value, text, &error))
        fail(error->UTF8String());
      return value;
    };
  return [formatter](NSString* text) -> Ref<NSObject> {
    const Ref<NSNumber> number = numberFrom(text);
    if (!number) fail("not a number");
    return formatter->stringForObjectValue(number);
  };
}

Show transforming(const std::string& name, bool isReverse) {
  classOf<QZWordSeparator>()->ensureInitialized();  // which registers its name
  const Ref<NSValueTransformer> transformer =
      valueTransformerWithDynamicName(NSString::stringWithUTF8String(name));
  if (!transformer) misuse("there is no value transformer \"" + name + "\"");
  return [transformer, isReverse](NSString* text) {
    const Ref<NSNumber> number = numberFrom(text);
    const Ref<NSObject> value = number ? Ref<NSObject>(number) : Ref<NSObject>(text);
    return isReverse ? transformer->reverseTransformedValue(value)
                     : transformer->transformedValue(value);
  };
}

Show showFor(std::string_view kind, const Request& request) {
  if (kind == "duration") return formatting(QZHMSFormatter::init(), request.isReverse);
  if (kind == "size") {
    const auto sizes = QZStorageSizeFormatter::init();
    sizes->setFormat("#,##0.0;0;#,##0.0"_ns);
    if (request.isBinary) sizes->setStorageSizeMode(0);
    return formatting(sizes, request.isReverse);
  }
  if (kind == "version" && !request.isReverse)
    return [](NSString* text) -> Ref<NSObject> {
      return QZVersionNumber::versionWithString(text)->versionString();
    };
  if (kind == "transform") return transforming(request.name, request.isReverse);
  misuse("there is no \"" + std::string(kind) + "\" like this");
}

Request requestFrom(std::string_view kind, std::vector<std::string> arguments) {
  Request request;
  std::size_t at = 0;
  for (bool isOption = true; at < arguments.size() && isOption; ++at) {
    const std::string& word = arguments[at];
    if (word == "-r") {
      request.isReverse = true;
    } else if (word == "-b" && kind == "size") {
      request.isBinary = true;
    } else if (word == "--") {
      isOption = false;
    } else if (kind == "transform" && request.name.empty()) {
      request.name = word;
    } else {
      break;
    }
  }
  if (kind == "transform" && request.name.empty()) misuse("a name is missing");
  request.values.assign(arguments.begin() + static_cast<std::ptrdiff_t>(at), arguments.end());
  return request;
}

bool print(const Show& show, const std::string& value) {
  std::string reason = "cannot be shown";
  try {
    const Ref<NSString> text = NSString::stringWithUTF8String(value);
    if (const Ref<NSObject> shown = show(text)) {
      std::cout << shown << '\n';
      return true;
    }
  } catch (const Failure& failure) {
    reason = failure.what();
  } catch (const Raised& raised) {
    reason = to_string(raised->reason());
  }
  std::cerr << "qzformat: " << value << ": " << reason << '\n';
  return false;
}

Status run(std::vector<std::string> arguments) {
  if (arguments.empty() || arguments[0] == "--help") {
    (arguments.empty() ? std::cerr : std::cout) << usage;
    return arguments.empty() ? Misused : Done;
  }
  const std::string kind = arguments[0];
  arguments.erase(arguments.begin());
  const Request request = requestFrom(kind, std::move(arguments));
  Show show;
  try {
    show = showFor(kind, request);
  } catch (const Raised& raised) {  // by a transformer that does not take these arguments
    misuse(to_string(raised->reason()));
  }
  bool isDone = true;
  for (const std::string& value : request.values) isDone &= print(show, value);
  if (request.values.empty())
    for (std::string line; std::getline(std::cin, line);) isDone &= print(show, line);
  return isDone ? Done : Failed;
}

}  // namespace
}  // namespace qz::tool

int main(int count, char** words) {
  return qz::tool::runCommand("qzformat", &qz::tool::run, count, words);
}
