#include "setup.h"

#include <kb0core/TEVFile.h>
#include <kwinstutil/kwinstutil.h>

#include "console.h"
#include "formats.h"

void RunSetup(std::string system_dir, Log& log) {
  TEVUnicodeString message;
  std::string program = "TEVSoftwareMgt";
  std::string arguments = "-setup";
  const bool has_start = TEVFileAccess((system_dir + "/" + kStartCommand).c_str(), 1) == 0;
  if (!has_start) return;
  int status =
      TEVInsLaunchExe(system_dir.data(), "Setup", program.data(), arguments.data(), &message);
  log.Write(message.ConvertToChar());
  if (status != 1) Complain(message.ConvertToChar());
  if (TEVInsNeedQDNUpdate(system_dir.data()) == 0) return;
  status = TEVInsQDNUpdate(system_dir.data(), &message, nullptr);
  log.Write(message.ConvertToChar());
  if (status != 1) Complain(message.ConvertToChar());
}
