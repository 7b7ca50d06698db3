#include "ports.h"

#include <kwinstutil/kwinstutil.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <iterator>
#include <sstream>
#include <vector>

#include "console.h"
#include "files.h"
#include "formats.h"
#include "options.h"
#include "refusal.h"
#include "system_files.h"
#include "texts.h"
#include "units.h"

namespace {

/// Does inetd lack the daemon of the system directory? Not where systemd starts a daemon instead.
bool NeedsDaemon(const std::string& system_dir) {
  if (Exists(UnitProgram(kDaemonService))) return false;
  std::string inetd = SystemFile(kInetd);
  std::string dir = system_dir;
  return CheckNeedUpdateServices(inetd.data(), dir.data()) == 1;
}

/// In the order of kOurServices.
std::array<int, 3> InOrder(const Ports& ports) {
  return {ports.bulletin_board, ports.run, ports.broker};
}
std::array<int*, 3> InOrder(Ports& ports) {
  return {&ports.bulletin_board, &ports.run, &ports.broker};
}

/// Is there nothing to register: has each service its given port, or any when none is given?
bool IsRegistered(const Ports& given) {
  const auto has = [](int port, const char* service) {
    const int registered = PortInServices(service);
    return port == 0 ? registered != 0 : registered == port;
  };
  const auto ports = InOrder(given);
  return std::equal(ports.begin(), ports.end(), std::begin(kOurServices), has);
}

/// The given ports, and for the others those that their services have, or else the usual ones. The
/// usual ones give way to all these.
Ports WantedPorts(const Ports& given) {
  Ports wanted = given;
  const auto ports = InOrder(wanted);
  for (size_t i = 0; i < ports.size(); ++i) {
    const int registered = PortInServices(kOurServices[i]);
    const bool legal = CheckValuePortMinMax(registered, nullptr) == 1;
    if (*ports[i] == 0 && legal) *ports[i] = registered;
  }
  int usual = 20050;
  for (int* port : ports) {
    if (*port != 0) continue;
    while (usual == wanted.bulletin_board || usual == wanted.run || usual == wanted.broker) ++usual;
    *port = usual;
  }
  return wanted;
}

bool IsOurs(const std::string& service) {
  return std::count(std::begin(kOurServices), std::end(kOurServices), service) > 0;
}

/// Does another service have the port in the services file?
template <typename IsOwn>
bool IsOfAnother(int port, IsOwn is_own) {
  for (const std::string& line : LinesOf(SystemFile(kServices))) {
    std::istringstream words(line.substr(0, line.find('#')));
    std::string name;
    std::string entry;
    const bool has_port = words >> name >> entry && entry == std::to_string(port) + "/tcp";
    if (has_port && !is_own(name)) return true;
  }
  return false;
}

/// Does a program listen on the port with IPv6? The library tries IPv4 only.
bool IsTakenByIPv6(int port) {
  const int tried = socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (tried == -1) return false;
  const int only = 1;
  setsockopt(tried, IPPROTO_IPV6, IPV6_V6ONLY, &only, sizeof(only));
  sockaddr_in6 address{};
  address.sin6_family = AF_INET6;
  address.sin6_port = htons(static_cast<uint16_t>(port));
  const auto* any = reinterpret_cast<const sockaddr*>(&address);
  const bool taken = bind(tried, any, sizeof(address)) != 0 && errno == EADDRINUSE;
  close(tried);
  return taken;
}

/// Says that a port is replaced. Throws a Refusal when it was given, unless another one will do.
void TellReplaced(int wanted, int chosen, bool given, bool next_free) {
  if (wanted == chosen) return;
  if (given && !next_free) {
    throw Refusal(Text(
        "PortTaken", "The port {1} is taken, or given twice. Free is {2}; --next-free takes it.\n",
        {wanted, chosen}));
  }
  Complain(Text("PortReplaced",
                "The port {1} is taken, or given twice. Free is {2}, which is used instead.\n",
                {wanted, chosen}));
}

/// The wanted port, or the next one that nobody has and that is not in `chosen`, to which it is
/// added. Throws a Refusal when there is none, or when one was given that is taken.
template <typename IsOwn>
int FreePort(int wanted, bool given, bool next_free, std::set<int>& chosen, IsOwn is_own) {
  TEVUnicodeString message;
  int port = GetFreePort(wanted, &message, UINT16_MAX);
  while (port != -1 &&
         (chosen.count(port) != 0 || IsOfAnother(port, is_own) || IsTakenByIPv6(port))) {
    port = GetFreePort(port + 1, &message, UINT16_MAX);
  }
  if (port == -1) throw Refused(message);
  chosen.insert(port);
  TellReplaced(wanted, port, given, next_free);
  return port;
}

void RequireLegal(Ports ports) {
  TEVUnicodeString message;
  bool legal = true;
  for (const int* port : InOrder(ports)) {
    legal = CheckValuePortMinMax(*port, &message) == 1 && legal;
  }
  if (!legal) throw Refused(message);
}

Ports ChoosePorts(const PortWishes& wishes) {
  if (IsRegistered(wishes.given)) return {};
  RequireWritable(SystemFile(kServices));
  Ports given = wishes.given;
  Ports chosen = WantedPorts(given);
  RequireLegal(chosen);
  // A port that its service has already stays: inetd may listen there.
  std::set<int> taken;
  std::vector<size_t> others;
  const auto ports = InOrder(chosen);
  for (size_t i = 0; i < ports.size(); ++i) {
    const bool has_it = PortInServices(kOurServices[i]) == *ports[i];
    if (!has_it || !taken.insert(*ports[i]).second) others.push_back(i);
  }
  for (const size_t i : others) {
    const bool is_given = *InOrder(given)[i] != 0;
    *ports[i] = FreePort(*ports[i], is_given, wishes.next_free, taken, IsOurs);
  }
  return chosen;
}

void WritePorts(const Ports& ports, Log& log) {
  TEVUnicodeString message;
  std::string services = SystemFile(kServices);
  FinishOverwrite(services);
  if (UpdateNewPorts(ports.bulletin_board, ports.run, ports.broker, services.data(), &message) !=
      1) {
    throw Refused(message);
  }
  // The library calls it a success too when the file could not be replaced.
  if (IsRegistered(ports)) {
    Say(message.ConvertToChar());
  } else {
    Overwrite(services);
  }
  if (!IsRegistered(ports)) {
    throw Refusal(Text("PortsNotWritten", "The ports are not in {1}.\n", {services}));
  }
  Tell("  morvelk7bb " + std::to_string(ports.bulletin_board) + ", morvelk7run " +
           std::to_string(ports.run) + ", TEVDeviceBroker " + std::to_string(ports.broker),
       log);
}

void WriteDaemon(std::string daemon, Log& log) {
  TEVUnicodeString message;
  if (UpdateDemon(daemon.data(), &message) != 1) {
    throw Refusal(Text("DaemonByHand",
                       "{1}Make {2} the program of morvelk7run in {3} by hand, and repeat the "
                       "command.\n",
                       {message.ConvertToChar(), daemon, SystemFile(kInetd)}));
  }
  Say(message.ConvertToChar());
  Tell("  morvelk7run " + daemon, log);
}

/// The port that an option gives, or 0 without it. Throws a UsageError.
int GivenPort(const Options& options, OptionName name) {
  const int port = options.Number(name, 0);
  if (options.Has(name) && port == 0) {
    throw UsageError(Text("OptionNeedsPort", "--{1} needs a port, not 0", {name.text}));
  }
  return port;
}

}  // namespace

ServicePorts ByService(const Ports& ports) {
  return {{kOurServices[0], ports.bulletin_board},
          {kOurServices[1], ports.run},
          {kOurServices[2], ports.broker}};
}

int UsablePort(int wanted, bool given, bool next_free, std::set<int>& chosen) {
  TEVUnicodeString message;
  if (CheckValuePortMinMax(wanted, &message) != 1) return wanted;
  const auto none = [](const std::string& /*service*/) { return false; };
  return FreePort(wanted, given, next_free, chosen, none);
}

PortWishes PortWishesOf(const Options& options) {
  PortWishes wishes;
  wishes.registered = !options.Takes(option::kNoServices) || !options.Has(option::kNoServices);
  wishes.next_free = options.Has(option::kNextFree);
  wishes.given = {GivenPort(options, option::kBbPort), GivenPort(options, option::kRunPort),
                  GivenPort(options, option::kBrokerPort)};
  return wishes;
}

Registration PlanRegistration(const PortWishes& wishes, const std::string& system_dir) {
  Registration registration;
  if (!wishes.registered) return registration;
  registration.ports = ChoosePorts(wishes);
  if (!NeedsDaemon(system_dir)) return registration;
  const std::string inetd = SystemFile(kInetd);
  if (Exists(inetd)) RequireWritable(inetd);
  registration.daemon = system_dir + "/" + kDaemon;
  return registration;
}

bool LacksRegistration(const PortWishes& wishes, const std::string& system_dir) {
  if (!wishes.registered) return false;
  if (!IsRegistered(wishes.given)) return true;
  if (!Exists(SystemFile(kInetd)) || !NeedsDaemon(system_dir)) return false;
  return !Exists(InetdProgram(kDaemonService));
}

void Register(const Registration& registration, Log& log) {
  const bool has_ports = registration.ports.run != 0;
  const bool has_daemon = !registration.daemon.empty();
  if (has_ports) WritePorts(registration.ports, log);
  if (has_daemon && !Exists(SystemFile(kInetd))) {
    Say(Text("NoInetd", "There is no inetd on this machine, so the daemon is not registered."));
    if (Exists(UnitDirectory())) {
      Say(Text("RegisterForSystemd",
               "To register it for systemd: kwbatch register TARGET --systemd"));
    }
    return SyncSystemFiles();
  }
  if (has_daemon) WriteDaemon(registration.daemon, log);
  if (has_ports || has_daemon) SyncSystemFiles();
  if ((has_ports || has_daemon) && Exists(SystemFile(kInetd))) TellHowInetdReads();
}

void TellRegistration(const Registration& registration) {
  const Ports& ports = registration.ports;
  if (ports.run != 0) {
    Say(Text("WouldRegisterPorts", "The ports {1}, {2} and {3} would be registered in {4}.",
             {ports.bulletin_board, ports.run, ports.broker, SystemFile(kServices)}));
  }
  if (!registration.daemon.empty() && Exists(SystemFile(kInetd))) {
    Say(Text("WouldRegisterDaemon", "The daemon {1} would be registered in {2}.",
             {registration.daemon, SystemFile(kInetd)}));
  }
}
