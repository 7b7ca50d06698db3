#include "transfer.h"

#include "console.h"
#include "refusal.h"

void Transfer(const Medium& medium, std::string name, std::string target, int languages, Log& log) {
  std::string source = medium.dir;
  const char* os = IsSdk(medium) ? nullptr : medium.os.c_str();
  TEVUnicodeString message;
  const int status =
      TEVInsTransferCAF(name.data(), source.data(), target.data(), os, languages, message);
  log.Write(name + " (" + medium.os + "): " + (status == 0 ? "installed" : "failed") + "\n" +
            message.ConvertToChar());
  if (status == 0) {
    if (message.ConvertToChar()[0] != '\0') Say(message.ConvertToChar());
    return;
  }
  log.TakeErrors(target);
  throw Refused(message);
}
