#include "transfer.h"

#include <cstring>

#include "console.h"
#include "formats.h"
#include "refusal.h"
#include "texts.h"

namespace {

/// The message without the file to which tar has printed: that goes to the log, and is deleted.
std::string WithoutTarErrors(const TEVUnicodeString& message, const std::string& target) {
  std::string text = message.ConvertToChar();
  const size_t begin = text.find(" >" + target + "/" + kTarErrors);
  constexpr char kRedirection[] = "2>&1";
  const size_t end = text.find(kRedirection, begin);
  return end == std::string::npos ? text
                                  : text.erase(begin, end + std::strlen(kRedirection) - begin);
}

}  // namespace

void Transfer(const Medium& medium, std::string name, std::string target, int languages, Log& log) {
  std::string source = medium.dir;
  const char* os = IsSdk(medium) ? nullptr : medium.os.c_str();
  TEVUnicodeString message;
  const int status =
      TEVInsTransferCAF(name.data(), source.data(), target.data(), os, languages, message);
  log.Write((status == 0 ? Text("LogInstalled", "{1} ({2}): installed\n", {name, medium.os})
                         : Text("LogNotInstalled", "{1} ({2}): failed\n", {name, medium.os})) +
            WithoutTarErrors(message, target));
  if (status == 0) {
    if (message.ConvertToChar()[0] != '\0') Say(message.ConvertToChar());
    return;
  }
  log.TakeErrors(target);
  throw Refusal(WithoutTarErrors(message, target));
}
