// Asks whether a directory is fit to be the target of an installation.

#include <kwinstutil/kwinstutil.h>

#include <cstdio>

int main() {
  TEVUnicodeString message;
  const int status = TEVInsCheckEmptyDir("/opt/suite", "aix_a", &message);
  std::printf("%d %s\n", status, message.ConvertToChar());
  return status > 0 ? 0 : 1;
}
