#include "settings.h"

#include <kwinstutil/kwinstutil.h>

#include <cstring>
#include <set>
#include <vector>

#include "console.h"
#include "options.h"
#include "paths.h"
#include "ports.h"
#include "refusal.h"
#include "texts.h"

namespace {

/// The value of an option as the library takes it.
class OptionText {
 public:
  OptionText(const Options& options, OptionName name)
      : given_(options.Has(name)), text_(options.Text(name)) {}
  /// Null when the option was not given.
  char* get() { return given_ ? text_.data() : nullptr; }

 private:
  bool given_;
  std::string text_;
};

Refusal TooLong(const char* options) {
  return Refusal(Text("ValueTooLong", "The value of {1} is too long.\n", {options}));
}

void Require(int status, const TEVUnicodeString& message, const char* what) {
  if (status == 1) return;
  if (message.ConvertToChar()[0] != '\0') throw Refused(message);
  throw TooLong(what);
}

/// Finds a Java home, or checks the given one.
void ExportJava(const Options& options) {
  char home[1024] = "";
  TEVUnicodeString version;
  TEVUnicodeString message;
  const std::string given = options.Text(option::kJavaHome);
  if (given == kAuto) {
    if (TEVInsGetJavaHome(home) != 1) {
      throw Refusal(Text("NoJava", "No suitable Java was found.\n"));
    }
  } else {
    RequirePlainPath(Text("NounJavaHome", "Java home"), given);
    if (given.size() >= sizeof(home)) throw TooLong("--java-home");
    given.copy(home, given.size());
    if (TEVInsCheckJavaHome(home, version, message) != 1) {
      if (version.ConvertToChar()[0] != '\0') Say(version.ConvertToChar());
      throw Refused(message);
    }
  }
  Say(Text("JavaHome", "Java home: {1}", {home}));
  Require(ExportJavaHome(home, &message), message, "--java-home");
}

/// The port that an option gives, or the usual one.
int PortOf(const Options& options, OptionName name, int usual, std::set<int>& chosen) {
  return UsablePort(options.Number(name, usual), options.Has(name), options.Has(option::kNextFree),
                    chosen);
}

MetaSearchData MetaSearchSettings(const Options& options, std::vector<std::string>& texts) {
  const auto text = [&](OptionName name) -> const char* {
    if (!options.Has(name)) return nullptr;
    texts.push_back(options.Text(name));
    return texts.back().c_str();
  };
  MetaSearchData data{};
  const std::string language =
      options.Has(option::kMetasearchLanguage) ? options.Text(option::kMetasearchLanguage) : "en";
  if (language.size() >= sizeof(data.language)) {
    throw UsageError(Text("LanguageTooLong", "--metasearch-language is too long"));
  }
  std::strcpy(data.language, language.c_str());
  data.server = text(option::kMetasearchServer);
  std::set<int> ports;
  data.port = PortOf(options, option::kMetasearchPort, 20060, ports);
  data.mailServer = text(option::kMetasearchMailServer);
  data.mailPort = options.Number(option::kMetasearchMailPort, 25);
  data.proxyHost = text(option::kMetasearchProxyHost);
  data.enableProxy = data.proxyHost != nullptr ? 1 : 0;
  data.proxyLogin = text(option::kMetasearchProxyLogin);
  data.proxyPassword = text(option::kMetasearchProxyPassword);
  data.proxyPort = options.Number(option::kMetasearchProxyPort, 8080);
  data.proxyDomains = text(option::kMetasearchProxyDomains);
  data.snapshotsPort = PortOf(options, option::kMetasearchSnapshotsPort, 20061, ports);
  data.email = text(option::kMetasearchEmail);
  data.time = text(option::kMetasearchTime);
  return data;
}

void ExportOrb(const Options& options) {
  TEVUnicodeString message;
  std::set<int> ports;
  const int port = PortOf(options, option::kOrbPort, 0, ports);
  const int base = options.Number(option::kOrbBase, port + 1);
  if (TEVInsCheckOrbixValue(port, base, options.Number(option::kOrbRange, 50),
                            options.Has(option::kOrbBoot), &message) != 1) {
    throw Refused(message);
  }
}

void ExportMetaSearch(const Options& options) {
  TEVUnicodeString message;
  // The record points into these texts, which must not move.
  std::vector<std::string> texts;
  texts.reserve(16);
  MetaSearchData data = MetaSearchSettings(options, texts);
  if (TEVInsCheckMetasearch(&data, &message) != 1) {
    const bool told = message.ConvertToChar()[0] != '\0';
    throw told ? Refused(message) : TooLong("--metasearch-...");
  }
}

/// The trees beside the product.
void ExportTrees(const Options& options) {
  TEVUnicodeString message;
  Require(ExportK6(options.Has(option::kK6), OptionText(options, option::kK6).get(),
                   options.Number(option::kK6Library, 1), options.Has(option::kDrx),
                   OptionText(options, option::kDrx).get(), &message),
          message, "--k6, --drx");
}

void ExportTck(const Options& options) {
  TEVUnicodeString message;
  std::string mode = options.Has(option::kTckMode) ? options.Text(option::kTckMode) : "Server";
  Require(ExportTCK(mode.data(), OptionText(options, option::kTckServer).get(),
                    options.Number(option::kTckPort, 20060), options.Has(option::kTckBoot),
                    &message, 0),
          message, "--tck-server");
}

}  // namespace

void ExportSettings(const Options& options) {
  if (options.Has(option::kOrbPort)) ExportOrb(options);
  if (options.Has(option::kMetasearchServer)) ExportMetaSearch(options);
  TEVUnicodeString message;
  Require(ExportDataDirectories(OptionText(options, option::kMetasearchPath).get(),
                                OptionText(options, option::kWorkbookPath).get(),
                                OptionText(options, option::kPublishPath).get(), &message),
          message, "--metasearch-path, --workbook-path, --publish-path");
  if (options.Has(option::kJavaHome)) ExportJava(options);
  if (options.Has(option::kK6) || options.Has(option::kDrx)) ExportTrees(options);
  if (options.Has(option::kTckServer)) ExportTck(options);
  if (options.Has(option::kInformationPath)) {
    Require(ExportMorvelInfo(1, OptionText(options, option::kInformationPath).get(),
                             OptionText(options, option::kInformationEnvPath).get(),
                             OptionText(options, option::kInformationEnv).get(), &message),
            message, "--information-path");
  }
  if (options.Has(option::kTimeout)) {
    Require(ExportServersTimeout(options.Number(option::kTimeout, 0), &message), message,
            "--timeout");
  }
}
