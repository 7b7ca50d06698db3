#include "ports.h"

#include <kwinstutil/kwinstutil.h>

#include "console.h"
#include "files.h"
#include "formats.h"
#include "refusal.h"
#include "system_files.h"

namespace {

bool IsRegistered() { return CheckEtcServices(100) == 1 && CheckEtcServices(0) == 1; }

std::string DaemonOf(const std::string& system_dir) { return system_dir + "/" + kDaemon; }

bool NeedsDaemon(const std::string& system_dir) {
  std::string inetd = SystemFile(kInetd);
  std::string dir = system_dir;
  return Exists(inetd) && CheckNeedUpdateServices(inetd.data(), dir.data()) == 1;
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

Ports ChoosePorts(const PortWishes& wishes) {
  if (!wishes.registered) return {};
  if (!wishes.given && IsRegistered()) return {};
  RequireWritable(SystemFile(kServices));
  const std::string inetd = SystemFile(kInetd);
  if (Exists(inetd)) RequireWritable(inetd);
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

void RegisterPorts(const Ports& ports, const std::string& system_dir, Log& log) {
  if (ports.run == 0) return;
  const auto tell = [&log](const std::string& text) {
    Say(text);
    log.Write(text + "\n");
  };
  TEVUnicodeString message;
  std::string services = SystemFile(kServices);
  if (UpdateNewPorts(ports.bulletin_board, ports.run, ports.broker, services.data(), &message) !=
      1) {
    throw Refused(message);
  }
  Say(message.ConvertToChar());
  tell("  morvelk7bb " + std::to_string(ports.bulletin_board) + ", morvelk7run " +
       std::to_string(ports.run) + ", TEVDeviceBroker " + std::to_string(ports.broker));
  if (!Exists(SystemFile(kInetd))) {
    tell("There is no inetd on this machine, so the daemon is not registered.");
    return;
  }
  if (!NeedsDaemon(system_dir)) return;
  if (UpdateDemon(DaemonOf(system_dir).data(), &message) != 1) throw Refused(message);
  Say(message.ConvertToChar());
  tell("  morvelk7run " + DaemonOf(system_dir));
}

void TellRegistration(const Ports& ports, const std::string& system_dir) {
  if (ports.run == 0) return;
  Say("The ports " + std::to_string(ports.bulletin_board) + ", " + std::to_string(ports.run) +
      " and " + std::to_string(ports.broker) + " would be registered in " + SystemFile(kServices) +
      ".");
  if (NeedsDaemon(system_dir)) {
    Say("The daemon " + DaemonOf(system_dir) + " would be registered in " + SystemFile(kInetd) +
        ".");
  }
}
