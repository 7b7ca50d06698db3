#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <initializer_list>

#include "kwinstutil/ports.h"
#include "ports/free_port.h"
#include "report/message.h"

using kwinst::kHighestPort;
using kwinst::kLowestPort;
using kwinst::MessageFrame;

namespace {

sockaddr_in AnyAddress(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_ANY);
  address.sin_port = htons(static_cast<uint16_t>(port));
  return address;
}

/// Binds `socket` to the first port from `start` to `max` that is free. Returns false if there is
/// none.
bool BindFirstFree(int socket, int start, int max) {
  const int last = std::min(max, kHighestPort);
  for (int port = std::max(start, 0); port <= last; ++port) {
    const sockaddr_in address = AnyAddress(port);
    if (bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0) {
      return true;
    }
  }
  return false;
}

/// The first free port from `*port` on that equals no other one of `ports`, or -1.
int SearchApart(const int* port, std::initializer_list<int*> ports, TEVUnicodeString* message) {
  int found = GetFreePort(*port, message, kHighestPort);
  const auto is_found = [&](const int* other) { return other != port && *other == found; };
  while (std::any_of(ports.begin(), ports.end(), is_found)) {
    found = GetFreePort(found + 1, message, kHighestPort);
  }
  return found;
}

int CheckRunPorts(std::initializer_list<int*> ports, TEVUnicodeString* message) {
  if (std::find(ports.begin(), ports.end(), nullptr) != ports.end()) return -1;
  const MessageFrame frame;
  bool legal = true;
  for (const int* port : ports) legal = CheckValuePortMinMax(*port, message) == 1 && legal;
  if (!legal) return 0;

  int status = 1;
  for (int* port : ports) {
    const int found = SearchApart(port, ports, message);
    if (found == -1) return -1;
    if (found == *port) continue;
    message->Append(frame.Build("ErrWndK7RunPortNotFree", {*port, found}));
    *port = found;
    status = 0;
  }
  return status;
}

}  // namespace

int GetFreePort(int start, TEVUnicodeString* message, int max) noexcept {
  if (message == nullptr) return -1;
  const MessageFrame frame;
  if (max < start) {
    *message = frame.Build("ErrValuePortTooBig", {start, max});
    return -1;
  }
  const int tried = socket(AF_INET, SOCK_STREAM, 0);
  if (tried == -1) {
    const char* reason = std::strerror(errno);
    *message = frame.Build("ErrCreateSocket", {start, reason});
    return -1;
  }
  // Deliberate: the socket stays open when no port is free or the bound one cannot be read.
  if (!BindFirstFree(tried, start, max)) {
    *message = frame.Build("ErrSearchFreePort", {start, max});
    return -1;
  }
  sockaddr_in bound{};
  socklen_t size = sizeof(bound);
  if (getsockname(tried, reinterpret_cast<sockaddr*>(&bound), &size) != 0) {
    const char* reason = std::strerror(errno);
    *message = frame.Build("Errgetsockname", {start, reason});
    return -1;
  }
  close(tried);
  return ntohs(bound.sin_port);
}

int CheckValuePortMinMax(int port, TEVUnicodeString* message) noexcept {
  const MessageFrame frame;
  if (port < kLowestPort) {
    if (message != nullptr) {
      message->Append(frame.Build("ErrWndK7RunPort", {port, kLowestPort}));
    }
    return 0;
  }
  if (port > kHighestPort) {
    if (message != nullptr) {
      message->Append(frame.Build("ErrWndK7RunPortMax", {port, kHighestPort}));
    }
    return 0;
  }
  return 1;
}

int CheckK7RunPortValue(int* port, TEVUnicodeString* message) noexcept {
  return CheckRunPorts({port}, message);
}

int CheckK7RunPortValue(int* port1, int* port2, TEVUnicodeString* message) noexcept {
  return CheckRunPorts({port1, port2}, message);
}

int CheckK7RunPortValue(int* port1, int* port2, int* port3, TEVUnicodeString* message) noexcept {
  return CheckRunPorts({port1, port2, port3}, message);
}
