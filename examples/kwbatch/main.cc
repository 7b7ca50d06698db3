// kwbatch: installs media without questions, through the public interface of libKWINSTUTIL.

#include <getopt.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "check.h"
#include "console.h"
#include "install.h"

namespace {

constexpr const char* kHelp =
    "Usage: kwbatch install MEDIUM TARGET [options]\n"
    "       kwbatch check MEDIUM TARGET [--os NAME] [--code DIR]\n"
    "       kwbatch verify TARGET\n"
    "\n"
    "install puts every package of MEDIUM that TARGET does not have yet into TARGET.\n"
    "check says whether MEDIUM may be installed on TARGET, or why not, and writes nothing.\n"
    "verify reports each installed file that is missing or damaged.\n"
    "\n"
    "  --languages LIST  languages to keep beside English: all (as without the option), none, or\n"
    "                    some of French, German, Italian, Japanese, Simplified_Chinese, Korean,\n"
    "                    separated by commas; a tree keeps what was chosen first\n"
    "  --fonts           keep the language-indexed fonts too; \"all\" implies it\n"
    "  --os NAME         one operating system of the medium only\n"
    "  --code DIR        the tree of the code that an SDK belongs to\n"
    "  --scratch DIR     keep the log, and work on copies of the system files, in DIR\n"
    "  --help            show this help\n"
    "\n"
    "Exit status: 0 done, 1 refused or failed, 2 wrong usage.\n";

struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// The bits of a comma-separated list of languages.
int LanguageMask(const std::string& list) {
  if (list == "all") return 127;
  if (list == "none") return 0;
  static const std::map<std::string, int> kBits = {
      {"French", 2}, {"German", 4}, {"Italian", 8}, {"Japanese", 16}, {"Simplified_Chinese", 32},
      {"Korean", 64}};
  int mask = 0;
  std::istringstream names(list + ",");
  for (std::string name; std::getline(names, name, ',');) {
    const auto known = kBits.find(name);
    if (known == kBits.end()) throw UsageError("unknown language \"" + name + "\"");
    mask |= known->second;
  }
  return mask;
}

/// Puts the library into its development mode: system files and log come from `dir`.
void UseScratch(const char* dir) {
  if (dir[0] == '\0') throw UsageError("--scratch needs a directory");
  setenv("VRK_ODT_IN", "1", 1);
  setenv("VRK_ODT_OUT", "1", 1);
  setenv("VRK_ODT_TMP", dir, 1);
}

/// The options of all commands, and the words that are none.
struct CommandLine {
  InstallOptions options;
  std::vector<std::string> words;
};

CommandLine Parse(int count, char** arguments) {
  static const option kOptions[] = {{"languages", required_argument, nullptr, 'l'},
                                    {"fonts", no_argument, nullptr, 'f'},
                                    {"os", required_argument, nullptr, 'o'},
                                    {"code", required_argument, nullptr, 'c'},
                                    {"scratch", required_argument, nullptr, 's'},
                                    {"help", no_argument, nullptr, 'h'},
                                    {nullptr, 0, nullptr, 0}};
  CommandLine line;
  bool fonts = false;
  int given = 0;
  opterr = 0;
  while ((given = getopt_long(count, arguments, "", kOptions, nullptr)) != -1) {
    switch (given) {
      case 'l':
        line.options.languages = LanguageMask(optarg);
        break;
      case 'f':
        fonts = true;
        break;
      case 'o':
        line.options.os = optarg;
        break;
      case 'c':
        line.options.code_tree = optarg;
        break;
      case 's':
        UseScratch(optarg);
        break;
      case 'h':
        line.words = {"help"};
        return line;
      default:
        throw UsageError(std::string("wrong option ") + arguments[optind - 1]);
    }
  }
  if (fonts) line.options.languages = line.options.languages.value_or(126) | 1;
  line.words.assign(arguments + optind, arguments + count);
  return line;
}

void Run(CommandLine line) {
  const std::string command = line.words.empty() ? "" : line.words[0];
  const size_t words = line.words.size() - 1;
  if (command == "help") {
    std::fputs(kHelp, stdout);
  } else if (command == "install" && words == 2) {
    line.options.medium = line.words[1];
    line.options.target = line.words[2];
    Install(line.options);
  } else if (command == "check" && words == 2) {
    Check(line.words[1], line.words[2], line.options.os, line.options.code_tree);
  } else if (command == "verify" && words == 1) {
    Verify(line.words[1]);
  } else {
    throw UsageError("no such command, or too few or too many words");
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Run(Parse(argc, argv));
    // Whoever reads the output must not take a part of it for the whole.
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? 0 : 1;
  } catch (const UsageError& error) {
    std::fprintf(stderr, "kwbatch: %s; see kwbatch --help\n", error.what());
    return 2;
  } catch (const std::exception& error) {
    Complain(error.what());
    return 1;
  }
}
