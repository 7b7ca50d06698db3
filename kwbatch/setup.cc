#include "setup.h"

#include <fcntl.h>
#include <kb0core/TEVFile.h>
#include <kwinstutil/kwinstutil.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "console.h"
#include "files.h"
#include "formats.h"
#include "interruption.h"
#include "paths.h"
#include "refusal.h"
#include "texts.h"

namespace {

/// While it exists, what programs print goes to a file: a log that is full must not end them.
class OutputToFile {
 public:
  explicit OutputToFile(const std::string& path) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (file == -1) throw CannotWrite(path);
    dup2(file, STDOUT_FILENO);
    dup2(file, STDERR_FILENO);
    close(file);
  }
  ~OutputToFile() {
    dup2(output_, STDOUT_FILENO);
    dup2(errors_, STDERR_FILENO);
    close(output_);
    close(errors_);
  }
  OutputToFile(const OutputToFile&) = delete;
  OutputToFile& operator=(const OutputToFile&) = delete;

 private:
  const int output_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
  const int errors_ = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
};

/// Lets the library run a program, and reports whether that went well: the result of `run` is 1.
template <typename Run>
bool RunProgram(Log& log, Run run) {
  const TemporaryDirectory temp;
  const std::string printed = temp.path() + "/output";
  TEVUnicodeString message;
  int status = 0;
  {
    const OutputToFile output(printed);
    status = run(&message);
  }
  log.Write(TextOf(printed));
  log.Write(message.ConvertToChar());
  SafePointAfterProgram();
  if (status != 1) Complain(message.ConvertToChar());
  return status == 1;
}

}  // namespace

bool RunSetup(std::string system_dir, Log& log) {
  std::string program = "TEVSoftwareMgt";
  std::string arguments = "-setup";
  const bool has_start = TEVFileAccess((system_dir + "/" + kStartCommand).c_str(), 1) == 0;
  if (!has_start) return true;
  const bool done = RunProgram(log, [&](TEVUnicodeString* message) {
    return TEVInsLaunchExe(system_dir.data(), "Setup", program.data(), arguments.data(), message);
  });
  if (TEVInsNeedQDNUpdate(system_dir.data()) == 0) return done;
  return RunProgram(log,
                    [&](TEVUnicodeString* message) {
                      return TEVInsQDNUpdate(system_dir.data(), message, nullptr);
                    }) &&
         done;
}

/// As TEVInsSPK does, which returns the status of the last program only.
bool RunPostInstall(const std::string& system_dir, const std::string& pack, Log& log) {
  setenv("LD_LIBRARYN32_PATH", (system_dir + "/code/bin").c_str(), 1);
  setenv("TEVInstallPath", system_dir.c_str(), 1);
  bool done = true;
  std::ifstream list(system_dir + "/" + kPackPrograms);
  for (std::string word; list >> word;) {
    std::string program = system_dir;
    program.append("/code/bin/").append(word).append("_").append(pack);
    RequirePlainPath(Text("NounPostInstall", "post-install program"), program);
    if (!Exists(program)) continue;
    program.insert(0, "unset SRCDIR STARTDIR TEVMsgCatalogPath TEVGraphicPath TEVReffilesPath; ");
    done = RunProgram(log,
                      [&](TEVUnicodeString* message) {
                        return TEVInsCommande(program.data(), message);
                      }) &&
           done;
  }
  return done;
}
