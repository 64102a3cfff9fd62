#include "Options.h"

#include <charconv>
#include <map>

namespace backup {

using qz::NSString;

const char* const helpText =
    R"(usage: backup [options] [SOURCE [DESTINATION]]

Copies everything below the folder SOURCE (/usr/share/doc unless given) to the folder DESTINATION,
which is made if need be, and says which entries could not be copied. Each file at the destination
is at every moment either the old or the new one, whole, also when the copy is interrupted. Nothing
is removed from the destination. Owners, permissions, dates, extended attributes, holes and links
are kept; names that share one file become files of their own.

Without DESTINATION it is a trial: the copy goes to a temporary folder, is verified, overwritten
with itself, verified again, and removed.

  --update      leave out files whose copies have the same size, date and permissions
  --verify      compare the copy with the source, byte by byte
  --watch       then go on copying what changes, until Ctrl-C
  --largest=N   list the N largest files (8)
  --quiet       say nothing but what failed
  --help        show this text

Ctrl-C ends the work and leaves the file that is being copied as it was; a second one ends it at
once.
"-QZDebug progress" writes the progress to the debug log, Desktop/backup.log in the home directory,
and "-QZDebug backup" steps and failures; "-QZDebug '(progress, backup)'" both.

Exit status: 0 when everything is copied (and equal), 1 when something failed, 2 for a command line
that makes no sense, 128 and the number of the signal when the work was interrupted.
)";

namespace {

std::uint32_t number(const std::string& word, const std::string& text) {
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size())
    throw UsageError(word + ": \"" + text + "\" is no number");
  return value;
}

void setOption(Options& options, const std::string& word) {
  const std::map<std::string, bool Options::*> switches = {{"--update", &Options::update},
                                                           {"--verify", &Options::verify},
                                                           {"--watch", &Options::watch},
                                                           {"--quiet", &Options::quiet},
                                                           {"--help", &Options::help}};
  const std::string largest = "--largest=";
  if (const auto found = switches.find(word); found != switches.end())
    options.*found->second = true;
  else if (word.starts_with(largest))
    options.largest = number(word, word.substr(largest.size()));
  else
    throw UsageError("there is no option " + word);
}

}  // namespace

Options parseOptions(const std::vector<std::string>& words) {
  Options options;
  std::vector<std::string> paths;
  bool isOver = false;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (isOver || word.size() < 2 || word[0] != '-')
      paths.push_back(word);
    else if (word == "--")
      isOver = true;
    else if (word.starts_with("--"))
      setOption(options, word);
    else
      ++i;  // a user default and its value
  }
  if (paths.size() > 2) throw UsageError("there are more than two paths");
  if (options.watch && paths.size() < 2 && !options.help)
    throw UsageError("--watch needs a destination");
  options.source = NSString::stringWithFileSystemRepresentation(
      paths.empty() ? std::string("/usr/share/doc") : paths[0]);
  if (paths.size() == 2)
    options.destination = NSString::stringWithFileSystemRepresentation(paths[1]);
  return options;
}

}  // namespace backup
