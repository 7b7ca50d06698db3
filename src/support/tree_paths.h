#ifndef KWINSTUTIL_SUPPORT_TREE_PATHS_H_
#define KWINSTUTIL_SUPPORT_TREE_PATHS_H_

#include <cstddef>
#include <string>

namespace kwinst {

constexpr size_t kPathSize = 1024;  ///< of the buffers for paths that callers pass

// Files in the top directory of a tree.
constexpr const char* kSystemList = "OSUNIX";  ///< the tree's operating systems
constexpr const char* kCodePointer = "CodeDir.txt";
constexpr const char* kSdkPointer = "ZEBDir.txt";
constexpr const char* kEnvironmentPointer = "EnvDir.txt";
constexpr const char* kTarLog = "ErrorTar.log";
constexpr const char* kPeopleDataEnvironment = "PALOMIR_QDN.lp";

// Files in a system directory.
constexpr const char* kLanguageChoice = "NLS.txt";
constexpr const char* kTransferLog = "TEVInsErrorTransfer.log";
constexpr const char* kOrbDaemonScript = "code/command/InitOrbixDaemon";
constexpr const char* kStarter = "code/command/tevstart";  ///< starts the product's programs

// Directories in a system directory.
constexpr const char* kControlDir = "control";
constexpr const char* kProgramDir = "code/bin";
constexpr const char* kOrbLibraryDir = "code/patchOrbixIRIX";
constexpr const char* kOrbConfigDir = "startup/orbix";
constexpr const char* kCatalogDir = "resources/msgcatalog";
constexpr const char* kStrokeFontDir = "resources/fonts/Stroke";

// Files in its control directory: see ControlFile.
constexpr const char* kPresent = "PRESENT";  ///< the table of contents
constexpr const char* kPendingPack = "SPK.list";
constexpr const char* kInterruption = "SPKInterrupted.txt";
constexpr const char* kPostInstallList = "CAFPost.list";
constexpr const char* kPeopleDataManifest = "Q8M.prd";  ///< it exists if the product is installed

// Programs in its program directory: see ProgramFile.
constexpr const char* kPeopleDataUpdate = "DRXPeopleUpdate";
constexpr const char* kOrbDaemon = "orbixd";
constexpr const char* kOrbQuery = "lsit";
constexpr const char* kSystemDaemon = "TEVSysDemon";  ///< also names the daemon's inetd line

// Files on the medium of the rendering satellite.
constexpr const char* kSatelliteArchive = "LumaforgeSatellite.Z";
constexpr const char* kSatelliteSpace = "LFSFS";

// Suffixes of file and package names.
constexpr const char* kSavedFile = ".beforeSPK";
constexpr const char* kComponentTable = ".toc";
constexpr const char* kEnvironmentName = ".lp";
constexpr const char* kSdkPackage = ".zeb2";

/// Does `path` exist? Symbolic links are followed. A null path does not exist.
bool Exists(const char* path);
inline bool Exists(const std::string& path) { return Exists(path.c_str()); }

/// DIR/NAME. Nothing is normalised: if `dir` ends in '/', the result has two of them.
std::string JoinPath(const std::string& dir, const std::string& name);

/// The system directory INSTALLDIR/OSDIR, or INSTALLDIR itself when `osDir` is null.
std::string SystemDir(const char* installDir, const char* osDir);

/// The file `name` in the control directory of a system directory.
std::string ControlFile(const std::string& systemDir, const std::string& name);

/// The file `name` in the program directory of a system directory.
std::string ProgramFile(const std::string& systemDir, const std::string& name);

/// An archive on a medium.
struct Archive {
  std::string path;
  bool compressed;
};

/// The compressed archive PLAIN.Z if it exists, otherwise the archive `plain`.
Archive FindArchive(const std::string& plain);

}  // namespace kwinst

#endif  // KWINSTUTIL_SUPPORT_TREE_PATHS_H_
