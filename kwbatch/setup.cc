#include "setup.h"

#include <kb0core/TEVFile.h>
#include <kwinstutil/kwinstutil.h>

#include "console.h"
#include "formats.h"

bool RunSetup(std::string system_dir, Log& log) {
  TEVUnicodeString message;
  std::string program = "TEVSoftwareMgt";
  std::string arguments = "-setup";
  const bool has_start = TEVFileAccess((system_dir + "/" + kStartCommand).c_str(), 1) == 0;
  if (!has_start) return true;
  int status =
      TEVInsLaunchExe(system_dir.data(), "Setup", program.data(), arguments.data(), &message);
  log.Write(message.ConvertToChar());
  const bool done = status == 1;
  if (!done) Complain(message.ConvertToChar());
  if (TEVInsNeedQDNUpdate(system_dir.data()) == 0) return done;
  status = TEVInsQDNUpdate(system_dir.data(), &message, nullptr);
  log.Write(message.ConvertToChar());
  if (status != 1) Complain(message.ConvertToChar());
  return done && status == 1;
}
