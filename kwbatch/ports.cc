#include "ports.h"

#include <kwinstutil/kwinstutil.h>

#include <sstream>

#include "console.h"
#include "files.h"
#include "formats.h"
#include "options.h"
#include "refusal.h"
#include "system_files.h"

namespace {

/// Does inetd lack the daemon of the system directory?
bool NeedsDaemon(const std::string& system_dir) {
  std::string inetd = SystemFile(kInetd);
  std::string dir = system_dir;
  return CheckNeedUpdateServices(inetd.data(), dir.data()) == 1;
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

/// Is there nothing to register: has each service its given port, or any when none is given?
bool IsRegistered(const Ports& given) {
  const auto has = [](const char* service, int port) {
    const int registered = RegisteredPort(service);
    return port == 0 ? registered != 0 : registered == port;
  };
  return has("morvelk7bb", given.bulletin_board) && has("morvelk7run", given.run) &&
         has("TEVDeviceBroker", given.broker);
}

/// The given ports, and for the others the usual ones. Those give way to the given ones.
Ports WantedPorts(const Ports& given) {
  int usual = 20050;
  const auto next_usual = [&] {
    while (usual == given.bulletin_board || usual == given.run || usual == given.broker) ++usual;
    return usual++;
  };
  Ports wanted = given;
  for (int* port : {&wanted.bulletin_board, &wanted.run, &wanted.broker}) {
    if (*port == 0) *port = next_usual();
  }
  return wanted;
}

/// Throws a Refusal when a given port is not the chosen one.
void RequireGiven(int given, int chosen) {
  if (given == 0 || given == chosen) return;
  throw Refusal("The port " + std::to_string(given) + " is taken, or given twice. Free is " +
                std::to_string(chosen) + "; --next-free takes it.\n");
}

Ports ChoosePorts(const PortWishes& wishes) {
  const Ports& given = wishes.given;
  if (IsRegistered(given)) return {};
  RequireWritable(SystemFile(kServices));
  const Ports wanted = WantedPorts(given);
  Ports ports = wanted;
  TEVUnicodeString message;
  const int status =
      CheckK7RunPortValue(&ports.run, &ports.bulletin_board, &ports.broker, &message);
  if (status == 1) return ports;
  const bool replaced = ports.run != wanted.run || ports.bulletin_board != wanted.bulletin_board ||
                        ports.broker != wanted.broker;
  if (status == -1 || !replaced) throw Refused(message);
  if (!wishes.next_free) {
    RequireGiven(given.bulletin_board, ports.bulletin_board);
    RequireGiven(given.run, ports.run);
    RequireGiven(given.broker, ports.broker);
  }
  Complain(message.ConvertToChar());
  return ports;
}

/// Says and logs a line.
void Tell(const std::string& text, Log& log) {
  Say(text);
  log.Write(text + "\n");
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

/// The port that an option gives, or 0 without it. Throws a UsageError.
int GivenPort(const Options& options, OptionName name) {
  const int port = options.Number(name, 0);
  if (options.Has(name) && port == 0) {
    throw UsageError(std::string("--") + name.text + " needs a port, not 0");
  }
  return port;
}

}  // namespace

PortWishes PortWishesOf(const Options& options) {
  PortWishes wishes;
  wishes.registered = !options.Has(option::kNoServices);
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

void Register(const Registration& registration, Log& log) {
  const bool has_ports = registration.ports.run != 0;
  const bool has_daemon = !registration.daemon.empty();
  if (has_ports) WritePorts(registration.ports, log);
  if (has_daemon && !Exists(SystemFile(kInetd))) {
    return Tell("There is no inetd on this machine, so the daemon is not registered.", log);
  }
  if (has_daemon) WriteDaemon(registration.daemon, log);
  if (has_ports || has_daemon) {
    Tell("  inetd reads this when it gets the signal HUP: pkill -HUP -x inetd", log);
  }
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
