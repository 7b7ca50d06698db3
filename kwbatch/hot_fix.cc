#include "commands.h"
#include "console.h"
#include "files.h"
#include "integrity.h"
#include "interruption.h"
#include "languages.h"
#include "lock.h"
#include "log.h"
#include "medium.h"
#include "pack.h"
#include "request.h"
#include "transfer.h"
#include "tree.h"

void HotFix(const Options& options) {
  const Request request = RequestOf(options);
  const Lock lock(request.target, Lock::Kind::kWriting, request);
  const std::string& target = request.target;
  const Medium medium = InstallableUpdate(OpenMedium(request.medium, request.os), request, true);
  const std::string name = UpdateName(medium);
  Log log(request.log, " hot fix " + name + " in " + target + "\n");
  Transfer(medium, name, target, InstalledLanguages(medium, target), log);
  SafePoint();
  RequireWritten(SystemDir(medium, target), false, {name}, log);
  SyncFileSystem(SystemDir(medium, target));
  log.Succeeded();
  Say("Hot fix " + name + " is installed in " + SystemDir(medium, target) + ".");
}
