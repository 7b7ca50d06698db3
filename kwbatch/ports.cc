#include "ports.h"

#include <kwinstutil/kwinstutil.h>

#include <sstream>

#include "console.h"
#include "files.h"
#include "formats.h"
#include "refusal.h"
#include "system_files.h"

namespace {

bool IsRegistered() { return CheckEtcServices(100) == 1 && CheckEtcServices(0) == 1; }

/// Does inetd lack the daemon of the system directory?
bool NeedsDaemon(const std::string& system_dir) {
  std::string inetd = SystemFile(kInetd);
  std::string dir = system_dir;
  return CheckNeedUpdateServices(inetd.data(), dir.data()) == 1;
}

/// Takes the wanted ports, or else the next free ones.
Ports ChoosePorts(const PortWishes& wishes) {
  if (!wishes.given && IsRegistered()) return {};
  RequireWritable(SystemFile(kServices));
  const Ports& wanted = wishes.ports;
  Ports ports = wanted;
  TEVUnicodeString message;
  const int status =
      CheckK7RunPortValue(&ports.run, &ports.bulletin_board, &ports.broker, &message);
  if (status == 1) return ports;
  const bool replaced = ports.run != wanted.run || ports.bulletin_board != wanted.bulletin_board ||
                        ports.broker != wanted.broker;
  if (status == -1 || !replaced) throw Refused(message);
  Complain(message.ConvertToChar());
  return ports;
}

/// Says and logs a line.
void Tell(const std::string& text, Log& log) {
  Say(text);
  log.Write(text + "\n");
}

/// The port of a service in the services file, or 0.
int RegisteredPort(const std::string& service) {
  for (const std::string& line : LinesOf(SystemFile(kServices))) {
    std::istringstream words(line);
    std::string name;
    int port = 0;
    if (words >> name >> port && name == service) return port;
  }
  return 0;
}

bool AreRegistered(const Ports& ports) {
  return RegisteredPort("morvelk7bb") == ports.bulletin_board &&
         RegisteredPort("morvelk7run") == ports.run &&
         RegisteredPort("TEVDeviceBroker") == ports.broker;
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
  if (AreRegistered(ports)) {
    Say(message.ConvertToChar());
  } else {
    Overwrite(services);
  }
  if (!AreRegistered(ports)) throw Refusal("The ports are not in " + services + ".\n");
  Tell("  morvelk7bb " + std::to_string(ports.bulletin_board) + ", morvelk7run " +
           std::to_string(ports.run) + ", TEVDeviceBroker " + std::to_string(ports.broker),
       log);
}

void WriteDaemon(std::string daemon, Log& log) {
  TEVUnicodeString message;
  if (UpdateDemon(daemon.data(), &message) != 1) {
    throw Refusal(message.ConvertToChar() +
                  ("Make " + daemon + " the program of morvelk7run in " + SystemFile(kInetd) +
                   " by hand, and repeat the command with --no-services.\n"));
  }
  Say(message.ConvertToChar());
  Tell("  morvelk7run " + daemon, log);
}

}  // namespace

PortWishes PortWishesOf(const Options& options) {
  constexpr int kUsual = 20050;  // the others follow it
  PortWishes wishes;
  wishes.registered = !options.Has(option::kNoServices);
  wishes.given = options.Has(option::kRunPort) || options.Has(option::kBbPort) ||
                 options.Has(option::kBrokerPort);
  wishes.ports = {options.Number(option::kBbPort, kUsual),
                  options.Number(option::kRunPort, kUsual + 1),
                  options.Number(option::kBrokerPort, kUsual + 2)};
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

void Register(const Registration& registration, Log& log) {
  const bool has_ports = registration.ports.run != 0;
  const bool has_daemon = !registration.daemon.empty();
  if (has_ports) WritePorts(registration.ports, log);
  if (has_daemon && !Exists(SystemFile(kInetd))) {
    return Tell("There is no inetd on this machine, so the daemon is not registered.", log);
  }
  if (has_daemon) WriteDaemon(registration.daemon, log);
  if (has_ports || has_daemon)
    Tell("  inetd reads this once it is told to: pkill -HUP -x inetd", log);
}

void TellRegistration(const Registration& registration) {
  const Ports& ports = registration.ports;
  if (ports.run != 0) {
    Say("The ports " + std::to_string(ports.bulletin_board) + ", " + std::to_string(ports.run) +
        " and " + std::to_string(ports.broker) + " would be registered in " +
        SystemFile(kServices) + ".");
  }
  if (!registration.daemon.empty() && Exists(SystemFile(kInetd))) {
    Say("The daemon " + registration.daemon + " would be registered in " + SystemFile(kInetd) +
        ".");
  }
}
