#include "settings.h"

#include <kwinstutil/kwinstutil.h>

#include "console.h"
#include "paths.h"
#include "refusal.h"
#include "tree.h"

namespace {

/// The value of an option as the library takes it.
class OptionText {
 public:
  OptionText(const Options& options, const char* name)
      : given_(options.Has(name)), text_(options.Text(name)) {}
  /// Null when the option was not given.
  char* get() { return given_ ? text_.data() : nullptr; }

 private:
  bool given_;
  std::string text_;
};

void Require(int status, const TEVUnicodeString& message, const char* what) {
  if (status == 1) return;
  if (message.ConvertToChar()[0] != '\0') throw Refused(message);
  throw Refusal(std::string("The value of ") + what + " is too long.\n");
}

/// Finds a Java home, or checks the given one.
void ExportJava(const Options& options) {
  char home[1024] = "";
  TEVUnicodeString version;
  TEVUnicodeString message;
  const std::string given = options.Text("java-home");
  if (given == "auto") {
    if (TEVInsGetJavaHome(home) != 1) throw Refusal("No suitable Java was found.\n");
  } else {
    RequirePlainPath("Java home", given);
    if (given.size() >= sizeof(home)) throw Refusal("The value of --java-home is too long.\n");
    given.copy(home, given.size());
    if (TEVInsCheckJavaHome(home, version, message) != 1) {
      if (version.ConvertToChar()[0] != '\0') Say(version.ConvertToChar());
      throw Refused(message);
    }
  }
  Say(std::string("Java home: ") + home);
  Require(ExportJavaHome(home, &message), message, "--java-home");
}

}  // namespace

void ExportSettings(const Options& options) {
  TEVUnicodeString message;
  Require(ExportDataDirectories(OptionText(options, "metasearch-path").get(),
                                OptionText(options, "workbook-path").get(),
                                OptionText(options, "publish-path").get(), &message),
          message, "a data directory");
  if (options.Has("java-home")) ExportJava(options);
  if (options.Has("k6") || options.Has("drx")) {
    Require(ExportK6(options.Has("k6"), OptionText(options, "k6").get(),
                     options.Number("k6-library", 1), options.Has("drx"),
                     OptionText(options, "drx").get(), &message),
            message, "--k6 or --drx");
  }
  if (options.Has("tck-server")) {
    std::string mode = options.Has("tck-mode") ? options.Text("tck-mode") : "Server";
    Require(ExportTCK(mode.data(), OptionText(options, "tck-server").get(),
                      options.Number("tck-port", 20060), options.Has("tck-boot"), &message, 0),
            message, "--tck-server");
  }
  if (options.Has("information-path")) {
    Require(ExportMorvelInfo(1, OptionText(options, "information-path").get(),
                             OptionText(options, "information-env-path").get(),
                             OptionText(options, "information-env").get(), &message),
            message, "--information-path");
  }
  if (options.Has("timeout")) {
    Require(ExportServersTimeout(options.Number("timeout", 0), &message), message, "--timeout");
  }
}

void PrintEnvironment(const Options& options) {
  std::string target = TargetPath(options.words()[1]);
  std::string config = options.words()[2];
  char path[2048] = "";
  if (TEVInsEnvname(target.data(), config.data(), path) != 1) {
    throw Refusal("The configuration " + config + " in " + target +
                  " names no environment file.\n");
  }
  Show(path);
}
