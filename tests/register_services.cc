// register_services SERVICES DAEMON PORT...: registers the daemon and its three ports, as an
// installer does, in the file SERVICES and in the inetd file.

#include <kwinstutil/services.h>

#include <cstdio>
#include <cstdlib>

int main(int count, char** arguments) {
  if (count != 6) return 2;
  TEVUnicodeString message;
  const int ports = UpdateNewPorts(std::atoi(arguments[3]), std::atoi(arguments[4]),
                                   std::atoi(arguments[5]), arguments[1], &message);
  std::fputs(message.ConvertToChar(), stdout);
  const int demon = UpdateDemon(arguments[2], &message);
  std::fputs(message.ConvertToChar(), stdout);
  return ports == 1 && demon == 1 ? 0 : 1;
}
