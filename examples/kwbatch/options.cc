#include "options.h"

#include <getopt.h>

#include <charconv>

namespace {

struct Spec {
  const char* name;   ///< or a heading of the help, when there is no help
  const char* value;  ///< what the value is; null for an option without one
  const char* help;
};

constexpr Spec kSpecs[] = {
    {"For every command", nullptr, nullptr},
    {"scratch", "DIR", "keep the log, and work on copies of the system files, in DIR"},
    {"os", "NAME", "one operating system of the medium or the target only"},
    {"code", "DIR", "the tree of the code that an SDK belongs to"},
    {"help", nullptr, "show this help"},
    {"For install", nullptr, nullptr},
    {"languages", "LIST", "languages beside English: all, none, or some with commas between"},
    {"fonts", nullptr, "keep the language-indexed fonts too; all languages imply it"},
    {"no-services", nullptr, "leave the system's services and inetd files alone"},
    {"bb-port", "N", "port of the bulletin board; as the next two, the next free one if taken"},
    {"run-port", "N", "port of the product's daemon"},
    {"broker-port", "N", "port of the device broker"},
    {"satellite", "MEDIUM", "install the rendering satellite of MEDIUM too"},
    {"ORB daemon, exported for the product's setup programs", nullptr, nullptr},
    {"orb-port", "N", "its port"},
    {"orb-base", "N", "first port that it hands out; the one after its own if not given"},
    {"orb-range", "N", "number of ports that it hands out, 50 if not given"},
    {"orb-boot", nullptr, "it is started at boot"},
    {"Meta-search, exported likewise", nullptr, nullptr},
    {"metasearch-server", "HOST", "its server; the others count only with this one"},
    {"metasearch-port", "N", "its port"},
    {"metasearch-snapshots-port", "N", "port of the snapshots service"},
    {"metasearch-mail-server", "HOST", "mail server"},
    {"metasearch-mail-port", "N", "port of the mail server"},
    {"metasearch-proxy-host", "HOST", "proxy"},
    {"metasearch-proxy-port", "N", "port of the proxy"},
    {"metasearch-proxy-login", "NAME", "user at the proxy"},
    {"metasearch-proxy-password", "TEXT", "password at the proxy"},
    {"metasearch-proxy-domains", "LIST", "domains reached without the proxy"},
    {"metasearch-email", "ADDRESS", "contact"},
    {"metasearch-time", "TIME", "schedule"},
    {"metasearch-language", "CODE", "language, en if not given"},
    {"Other settings, exported likewise", nullptr, nullptr},
    {"metasearch-path", "DIR", "data directory of the meta-search"},
    {"workbook-path", "DIR", "data directory of shared workbooks"},
    {"publish-path", "DIR", "data directory of publications"},
    {"java-home", "DIR", "home of the Java runtime; auto to look for one"},
    {"k6", "DIR", "tree of the previous generation"},
    {"k6-library", "N", "1 for libK623, 2 for libK6243"},
    {"drx", "DIR", "DRX tree"},
    {"tck-server", "HOST", "TCK server"},
    {"tck-mode", "MODE", "TCK mode, Server if not given"},
    {"tck-port", "N", "port of the TCK server"},
    {"tck-boot", nullptr, "the TCK server is started at boot"},
    {"information-path", "DIR", "where the product information is unloaded"},
    {"information-env-path", "DIR", "its environment directory"},
    {"information-env", "NAME", "its environment"},
    {"timeout", "MINUTES", "time-out of the servers"},
    {"For tasks", nullptr, nullptr},
    {"stop", nullptr, "stop what was listed"},
};

}  // namespace

Options::Options(int count, char** arguments) {
  std::vector<option> known;
  for (const Spec& spec : kSpecs) {
    if (spec.help == nullptr) continue;
    known.push_back({spec.name, spec.value == nullptr ? no_argument : required_argument, nullptr,
                     static_cast<int>(known.size())});
  }
  known.push_back({});
  // What getopt would print is said in our own words.
  opterr = 0;
  for (int given = 0; (given = getopt_long(count, arguments, "", known.data(), nullptr)) != -1;) {
    if (given == '?') throw UsageError(std::string("wrong option ") + arguments[optind - 1]);
    const option& found = known[static_cast<size_t>(given)];
    values_[found.name] = found.has_arg == no_argument ? "" : optarg;
    if (found.has_arg != no_argument && (*optarg == '\0' || *optarg == '-')) {
      throw UsageError(std::string("--") + found.name + " needs a value");
    }
  }
  words_.assign(arguments + optind, arguments + count);
}

std::string Options::Text(const std::string& name) const {
  const auto value = values_.find(name);
  return value == values_.end() ? "" : value->second;
}

int Options::Number(const std::string& name, int otherwise) const {
  if (!Has(name)) return otherwise;
  const std::string text = Text(name);
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) {
    throw UsageError("--" + name + " needs a number, not \"" + text + "\"");
  }
  return number;
}

void Options::RequireWith(const std::string& lead, const std::vector<std::string>& others) const {
  for (const std::string& other : others) {
    if (Has(other) && !Has(lead)) throw UsageError("--" + other + " needs --" + lead);
  }
}

std::string Options::Help() {
  std::string help;
  for (const Spec& spec : kSpecs) {
    if (spec.help == nullptr) {
      help += std::string("\n") + spec.name + ":\n";
      continue;
    }
    std::string left = std::string("  --") + spec.name;
    if (spec.value != nullptr) left += std::string(" ") + spec.value;
    left.resize(left.size() < 30 ? 30 : left.size() + 1, ' ');
    help += left + spec.help + "\n";
  }
  return help;
}
