#ifndef KWBATCH_FORMATS_H_
#define KWBATCH_FORMATS_H_

#include <sys/types.h>

#include <string>

/// \file
/// What kwbatch must know of the library's formats, because no public function returns it: the
/// names of files on a medium, in a tree and in the system, and the bits of a language mask. Each
/// is defined only here. docs/formats.md describes the files.

// On a medium.
constexpr char kMediumTable[] = "TOC";
constexpr char kSatelliteArchive[] = "LumaforgeSatellite.Z";
constexpr char kChecksums[] = "SHA256SUMS";      ///< of all other files of a signed medium
constexpr char kSignature[] = "SHA256SUMS.sig";  ///< of that list
constexpr char kSdkSuffix[] = ".zeb2";  ///< an SDK package's name is its code package's plus this

/// The path of a component's archive in the directory of a medium, compressed or not; empty when
/// there is none.
std::string ArchiveOf(const std::string& medium_dir, const std::string& component);

bool IsCompressed(const std::string& archive);

// On a medium or in a tree: the list of its operating systems.
constexpr char kSystemList[] = "OSUNIX";
constexpr size_t kMostSystems = 4;
constexpr size_t kSystemNameLength = 15;

constexpr size_t kPathSize = 1024;             ///< of the library's buffers for paths
constexpr size_t kEnvironmentPathSize = 2048;  ///< for the path of an environment file

// In a tree.
constexpr char kCodePointer[] = "CodeDir.txt";  ///< in an SDK tree: the path of its code
constexpr char kSdkPointer[] = "ZEBDir.txt";    ///< in the code tree: the path of its SDK
constexpr char kTarErrors[] = "ErrorTar.log";   ///< what tar printed in a failed transfer
constexpr char kTransferErrors[] = "TEVInsErrorTransfer.log";  ///< its side log

constexpr char kSatelliteDirectory[] = "satellite";
constexpr char kSatelliteProgram[] = "ray.sh";            ///< in it: what inetd starts
constexpr char kSatelliteList[] = "kwbatch.list";         ///< in it: kwbatch's list of its files
constexpr char kUninstalling[] = "Uninstall.unfinished";  ///< kwbatch's own record

// In a system directory of a tree.
constexpr char kControl[] = "control";
constexpr char kPresent[] = "control/PRESENT";  ///< the table of what is installed
constexpr char kPresentCopy[] = "PRESENT.";     ///< how the names of its copies beside it begin
constexpr char kUnfinished[] = "control/Install.unfinished";  ///< kwbatch's own record
constexpr char kPackJournal[] = "control/SPK.journal";        ///< likewise, of a service pack
constexpr char kRegistered[] = "control/Registered";          ///< likewise, of the system's files
constexpr char kUndoFiles[] = "control/undo";                 ///< of hot fixes: kwbatch's own, too
constexpr char kPendingPacks[] = "control/SPK.list";
constexpr char kInterruptedPack[] = "control/SPKInterrupted.txt";
constexpr char kPackPrograms[] = "control/CAFPost.list";  ///< a pack's post-install programs
constexpr char kPackTableSuffix[] = ".toc";               ///< of the table that a pack brings
constexpr char kSavedSuffix[] = ".beforeSPK";             ///< of a file that a pack replaces
constexpr char kSiteSuffix[] =
    ".site";  ///< of a file that the site had changed, and a pack replaced
constexpr char kLanguageRecord[] = "NLS.txt";
constexpr char kCatalogs[] = "resources/msgcatalog";
constexpr char kStartCommand[] = "code/command/tevstart";
constexpr char kDaemon[] = "code/bin/TEVSysDemon";

/// A line of a table of contents: the component that it names.
struct TableLine {
  explicit TableLine(const std::string& line);

  bool IsUpdate() const { return kind == "SPK" || kind == "FSP" || IsHotFix(); }
  bool IsHotFix() const { return kind == "HFX"; }

  std::string type;
  std::string kind;
  std::string name;
  int level = 1;             ///< of a service pack or a hot fix
  std::string level_of_all;  ///< of the general availability, where the line has it
};

/// The one of `files` that a line of the library's report of damaged files, "FILE: DAMAGE", is
/// about, or an empty text. A file may have a colon in its name.
template <typename Files>
std::string DamagedFileIn(const std::string& line, const Files& files) {
  for (size_t end = line.find(": "); end != std::string::npos; end = line.find(": ", end + 1)) {
    if (files.count(line.substr(0, end)) != 0) return line.substr(0, end);
  }
  return "";
}

/// A language that is not always there, and its bit in a language mask.
struct Language {
  const char* name;
  int bit;
};

constexpr Language kLanguages[] = {
    {"French", 2}, {"German", 4}, {"Italian", 8}, {"Japanese", 16}, {"Simplified_Chinese", 32},
    {"Korean", 64}};
constexpr char kFontPackage[] = "Visualization";  ///< brings the language-indexed fonts
constexpr const char* kIndexedFontFiles[] = {
    "resources/fonts/Stroke/SICH.font", "resources/fonts/Stroke/TRCH.font",
    "resources/fonts/Stroke/KANJ.font", "resources/fonts/Stroke/KOHG.font",
    "resources/fonts/Stroke/SSS4.font"};
constexpr int kIndexedFonts = 1;  ///< the bit of the language-indexed fonts
constexpr int kEverything = 127;  ///< all languages and the fonts

/// Does the path belong to a language or to its fonts? An installation leaves out those that
/// nobody chose, so no manifest lists them.
bool IsOfLanguage(const std::string& path);

/// Why a service pack or a hot fix cannot bring a file; empty when it can.
std::string WhyNotInUpdate(const std::string& path, mode_t mode);

// In the system.
constexpr char kServices[] = "services";
constexpr char kInetd[] = "inetd.conf";
constexpr char kDaemonService[] = "morvelk7run";
constexpr const char* kOurServices[] = {"morvelk7bb", kDaemonService, "TEVDeviceBroker"};
constexpr char kSatelliteService[] = "mi-ray";
constexpr char kServiceComment[] = "#Brovik Communication ports";  ///< in lines of kOurServices
constexpr char kSatelliteComment[] = "# Rendering slave";          ///< in that of the satellite
constexpr char kRewritten[] = ".tmp";  ///< suffix of one of the two while it is rewritten
constexpr char kWhole[] = ".whole";    ///< of what is being written over a file in its place

/// The path of a system file: below /etc, or in the directory of UseSystemFilesIn.
std::string SystemFile(const std::string& name);

/// Turns on the library's development mode: system files and log are in `dir` from now on.
void UseSystemFilesIn(const std::string& dir);

#endif  // KWBATCH_FORMATS_H_
