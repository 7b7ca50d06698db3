// kwbatch: installs media without questions, through the public interface of libKWINSTUTIL.

#include <getopt.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>

#include "console.h"
#include "install.h"

namespace {

constexpr const char* kHelp =
    "Usage: kwbatch install MEDIUM TARGET [options]\n"
    "\n"
    "Installs every package of MEDIUM that TARGET does not have yet.\n"
    "\n"
    "  --languages LIST  languages to keep beside English: all (as without the option), none, or\n"
    "                    some of French, German, Italian, Japanese, Simplified_Chinese, Korean,\n"
    "                    separated by commas\n"
    "  --fonts           keep the language-indexed fonts too; \"all\" implies it\n"
    "  --os NAME         install for one operating system of the medium only\n"
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

InstallOptions ParseInstall(int count, char** arguments) {
  static const option kOptions[] = {{"languages", required_argument, nullptr, 'l'},
                                    {"fonts", no_argument, nullptr, 'f'},
                                    {"os", required_argument, nullptr, 'o'},
                                    {"scratch", required_argument, nullptr, 's'},
                                    {nullptr, 0, nullptr, 0}};
  InstallOptions options;
  bool fonts = false;
  int given = 0;
  opterr = 0;
  while ((given = getopt_long(count, arguments, "", kOptions, nullptr)) != -1) {
    switch (given) {
      case 'l':
        options.languages = LanguageMask(optarg);
        break;
      case 'f':
        fonts = true;
        break;
      case 'o':
        options.os = optarg;
        break;
      case 's':
        UseScratch(optarg);
        break;
      default:
        throw UsageError(std::string("wrong option ") + arguments[optind - 1]);
    }
  }
  if (count - optind != 2) throw UsageError("install needs a MEDIUM and a TARGET");
  if (fonts) options.languages = options.languages.value_or(126) | 1;
  options.medium = arguments[optind];
  options.target = arguments[optind + 1];
  return options;
}

int Run(int count, char** arguments) {
  const std::string command = count > 1 ? arguments[1] : "";
  for (int i = 1; i < count; ++i) {
    if (std::strcmp(arguments[i], "--help") == 0) {
      std::fputs(kHelp, stdout);
      return 0;
    }
  }
  if (command != "install") throw UsageError("unknown command \"" + command + "\"");
  Install(ParseInstall(count - 1, arguments + 1));
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const int status = Run(argc, argv);
    // Whoever reads the output must not take a part of it for the whole.
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? status : 1;
  } catch (const UsageError& error) {
    std::fprintf(stderr, "kwbatch: %s; see kwbatch --help\n", error.what());
    return 2;
  } catch (const std::exception& error) {
    Complain(error.what());
    return 1;
  }
}
