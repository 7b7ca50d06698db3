#include "log.h"

#include <fcntl.h>
#include <kb0core/TEVFile.h>
#include <kwinstutil/files.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "console.h"
#include "files.h"
#include "formats.h"
#include "interruption.h"
#include "json.h"
#include "paths.h"
#include "refusal.h"
#include "texts.h"

namespace fs = std::filesystem;

namespace {

bool all_is_logged = true;
std::string log_path;

/// What `print` prints on standard output: it does not appear there.
std::string Printed(const std::function<void()>& print) {
  std::fflush(stdout);
  const int screen = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const int memory = memfd_create("printed", MFD_CLOEXEC);
  dup2(memory, STDOUT_FILENO);
  print();
  std::fflush(stdout);
  const off_t size = std::max<off_t>(lseek(memory, 0, SEEK_CUR), 0);
  std::string printed(static_cast<size_t>(size), '\0');
  if (pread(memory, printed.data(), printed.size(), 0) != size) printed.clear();
  close(memory);
  // It stays closed if it was.
  screen < 0 ? close(STDOUT_FILENO) : dup2(screen, STDOUT_FILENO);
  if (screen >= 0) close(screen);
  return printed;
}

void RequireLogPath(const std::string& path) { RequirePlainPath(Text("NounLog", "log"), path); }

}  // namespace

Log::Log(const std::string& path, const std::string& header)
    : name_(fs::path(path).filename()), log_(path.empty() ? nullptr : name_.data()) {
  if (path.empty()) {
    OpenUsual(header);
  } else {
    OpenFile(path, header);
  }
  log_path = FileName();
}

void Log::OpenUsual(const std::string& header) {
  TEVUnicodeString text = AsShown(" " + header + "\n").c_str();
  TEVUnicodeString message;
  int status = 0;
  Keep([&] { status = log_.OpenLogFile(text, message); });
  if (status != 0) throw Refused(message);
  RequireLogPath(log_.GetLogFileName());
}

void Log::OpenFile(const std::string& path, const std::string& header) {
  RequireLogPath(path);
  std::string directory = fs::absolute(path).parent_path();
  TEVUnicodeString message;
  if (log_.OpenLogFile(directory.data(), message) != 1) throw Refused(message);
  // Only the usual log gets its banner from the library.
  Write(std::string(58, '=') + "\n[" + log_.TheTime() + "] " + header + "\n");
}

/// Lets the library write; what it cannot, it prints.
void Log::Keep(const std::function<void()>& write) {
  const std::string rest = Printed(write);
  if (rest.empty()) return;
  all_is_logged = false;
  Show(rest);
}

Log::~Log() {
  const std::string trailer = " " + (succeeded_        ? Text("LogDone", "done")
                                     : IsInterrupted() ? Text("LogInterrupted", "interrupted")
                                                       : Text("LogFailed", "failed"));
  TEVUnicodeString text = trailer.c_str();
  Keep([&] { log_.CloseLogFile(text); });
}

void Log::Write(const std::string& text) {
  TEVUnicodeString entry = AsShown(text).c_str();
  Keep([&] { log_.WriteLogFile(entry); });
}

void Log::TakeErrors(std::string target) {
  const std::string output = target + "/" + kTarErrors;
  Write(TextOf(output));
  TEVDeleteFile(output.c_str());
  // The library names the copy of a medium that was verified, and so does its side log.
  const std::string side_log = target + "/" + kTransferErrors;
  const std::string text = TextOf(side_log);
  try {
    if (AsShown(text) != text) ::Write(side_log, AsShown(text));
  } catch (const Refusal&) {
    // The failure to be told is that of the transfer.
  }
  // The side log lies in the target itself, which is where it is looked for with this type.
  Keep([&] { TEVInsTransferLogInfo(target.data(), "", zeb2, &log_); });
}

void Log::Succeeded() { succeeded_ = true; }

void Tell(const std::string& text, Log& log) {
  SayDone(text);
  log.Write(text + "\n");
}

const std::string& LogPath() { return log_path; }

std::string WhereLogIs() { return Text("WhereLogIs", "The log is {1}", {log_path}); }

bool AllIsLogged() { return all_is_logged; }
