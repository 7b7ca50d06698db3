#ifndef KWBATCH_NAMES_H_
#define KWBATCH_NAMES_H_

/// \file
/// The names of commands, of the words after them and of options. Each is spelt only here: the
/// tables and the other code use these constants, so a misspelt name does not compile.

struct CommandName {
  const char* text;
};

struct WordName {
  const char* text;
  const char* field = nullptr;  ///< where it stands in the report for machines
  bool repeated = false;        ///< any number of them, at the end
  bool required = true;
};

/// Without the dashes.
struct OptionName {
  const char* text;
};

namespace command {
constexpr CommandName kInstall{"install"};
constexpr CommandName kCheck{"check"};
constexpr CommandName kVerify{"verify"};
constexpr CommandName kRepair{"repair"};
constexpr CommandName kServicePack{"service-pack"};
constexpr CommandName kCommit{"commit"};
constexpr CommandName kUndoServicePack{"undo-service-pack"};
constexpr CommandName kHotFix{"hot-fix"};
constexpr CommandName kUndoHotFix{"undo-hot-fix"};
constexpr CommandName kTasks{"tasks"};
constexpr CommandName kStatus{"status"};
constexpr CommandName kRegister{"register"};
constexpr CommandName kLanguages{"languages"};
constexpr CommandName kOwner{"owner"};
constexpr CommandName kFiles{"files"};
constexpr CommandName kUninstall{"uninstall"};
constexpr CommandName kEnvironment{"environment"};
}  // namespace command

namespace word {
constexpr WordName kMedium{"MEDIUM", "/medium"};
constexpr WordName kTarget{"TARGET", "/target"};
constexpr WordName kMore{"MORE", nullptr, true, false};
constexpr WordName kFiles{"FILE", nullptr, true};
constexpr WordName kPackage{"PACKAGE"};
constexpr WordName kSystem{"SYSTEM"};
constexpr WordName kConfig{"CONFIG"};
}  // namespace word

namespace option {
constexpr OptionName kScratch{"scratch"};
constexpr OptionName kQuiet{"quiet"};
constexpr OptionName kJson{"json"};
constexpr OptionName kLog{"log"};
constexpr OptionName kOs{"os"};
constexpr OptionName kCode{"code"};
constexpr OptionName kIfNeeded{"if-needed"};
constexpr OptionName kWait{"wait"};
constexpr OptionName kDeep{"deep"};
constexpr OptionName kKeyring{"keyring"};
constexpr OptionName kLanguages{"languages"};
constexpr OptionName kCommit{"commit"};
constexpr OptionName kAdd{"add"};
constexpr OptionName kOnly{"only"};
constexpr OptionName kFonts{"fonts"};
constexpr OptionName kSatellite{"satellite"};
constexpr OptionName kWithPack{"with-pack"};
constexpr OptionName kNoServices{"no-services"};
constexpr OptionName kBbPort{"bb-port"};
constexpr OptionName kRunPort{"run-port"};
constexpr OptionName kBrokerPort{"broker-port"};
constexpr OptionName kNextFree{"next-free"};
constexpr OptionName kSystemd{"systemd"};
constexpr OptionName kOrbPort{"orb-port"};
constexpr OptionName kOrbBase{"orb-base"};
constexpr OptionName kOrbRange{"orb-range"};
constexpr OptionName kOrbBoot{"orb-boot"};
constexpr OptionName kMetasearchServer{"metasearch-server"};
constexpr OptionName kMetasearchPort{"metasearch-port"};
constexpr OptionName kMetasearchSnapshotsPort{"metasearch-snapshots-port"};
constexpr OptionName kMetasearchMailServer{"metasearch-mail-server"};
constexpr OptionName kMetasearchMailPort{"metasearch-mail-port"};
constexpr OptionName kMetasearchProxyHost{"metasearch-proxy-host"};
constexpr OptionName kMetasearchProxyPort{"metasearch-proxy-port"};
constexpr OptionName kMetasearchProxyLogin{"metasearch-proxy-login"};
constexpr OptionName kMetasearchProxyPassword{"metasearch-proxy-password"};
constexpr OptionName kMetasearchProxyDomains{"metasearch-proxy-domains"};
constexpr OptionName kMetasearchEmail{"metasearch-email"};
constexpr OptionName kMetasearchTime{"metasearch-time"};
constexpr OptionName kMetasearchLanguage{"metasearch-language"};
constexpr OptionName kMetasearchPath{"metasearch-path"};
constexpr OptionName kWorkbookPath{"workbook-path"};
constexpr OptionName kPublishPath{"publish-path"};
constexpr OptionName kJavaHome{"java-home"};
constexpr OptionName kK6{"k6"};
constexpr OptionName kK6Library{"k6-library"};
constexpr OptionName kDrx{"drx"};
constexpr OptionName kTckServer{"tck-server"};
constexpr OptionName kTckMode{"tck-mode"};
constexpr OptionName kTckPort{"tck-port"};
constexpr OptionName kTckBoot{"tck-boot"};
constexpr OptionName kInformationPath{"information-path"};
constexpr OptionName kInformationEnvPath{"information-env-path"};
constexpr OptionName kInformationEnv{"information-env"};
constexpr OptionName kTimeout{"timeout"};
constexpr OptionName kStop{"stop"};
constexpr OptionName kPurge{"purge"};
constexpr OptionName kDryRun{"dry-run"};
}  // namespace option

/// The value of --java-home that looks for a Java home.
constexpr char kAuto[] = "auto";

#endif  // KWBATCH_NAMES_H_
