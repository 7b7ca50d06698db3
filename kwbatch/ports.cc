#include "ports.h"

#include <kb0core/TEVFile.h>
#include <kwinstutil/kwinstutil.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "console.h"
#include "files.h"
#include "medium.h"
#include "paths.h"
#include "refusal.h"

namespace fs = std::filesystem;

namespace {

constexpr int kUsualPort = 20050;  ///< of the bulletin board; the others follow it

/// The path of a system file: in the scratch directory, or below /etc.
std::string SystemFile(const std::string& name) {
  const char* scratch = std::getenv("VRK_ODT_TMP");
  const bool development = std::getenv("VRK_ODT_IN") != nullptr &&
                           std::getenv("VRK_ODT_OUT") != nullptr && scratch != nullptr;
  return (development ? std::string(scratch) : "/etc") + "/" + name;
}

bool IsRegistered() { return CheckEtcServices(100) == 1 && CheckEtcServices(0) == 1; }

std::string DaemonOf(const std::string& system_dir) { return system_dir + "/code/bin/TEVSysDemon"; }

bool NeedsDaemon(const std::string& system_dir) {
  std::string inetd = SystemFile("inetd.conf");
  std::string dir = system_dir;
  return Exists(inetd) && CheckNeedUpdateServices(inetd.data(), dir.data()) == 1;
}

void RequireWritable(const std::string& path) {
  if (fs::is_regular_file(path) && TEVFileAccess(path.c_str(), 2) == 0) return;
  throw Refusal("The file " + path +
                " cannot be written. Be root, or use --scratch DIR or --no-services.\n");
}

MetaSearchData MetaSearchSettings(const Options& options, std::vector<std::string>& texts) {
  const auto text = [&](const char* name) -> const char* {
    if (!options.Has(name)) return nullptr;
    texts.push_back(options.Text(name));
    return texts.back().c_str();
  };
  MetaSearchData data{};
  const std::string language =
      options.Has("metasearch-language") ? options.Text("metasearch-language") : "en";
  if (language.size() >= sizeof(data.language)) {
    throw UsageError("--metasearch-language is too long");
  }
  std::strcpy(data.language, language.c_str());
  data.server = text("metasearch-server");
  data.port = options.Number("metasearch-port", kUsualPort + 10);
  data.mailServer = text("metasearch-mail-server");
  data.mailPort = options.Number("metasearch-mail-port", 25);
  data.proxyHost = text("metasearch-proxy-host");
  data.enableProxy = data.proxyHost != nullptr ? 1 : 0;
  data.proxyLogin = text("metasearch-proxy-login");
  data.proxyPassword = text("metasearch-proxy-password");
  data.proxyPort = options.Number("metasearch-proxy-port", 8080);
  data.proxyDomains = text("metasearch-proxy-domains");
  data.snapshotsPort = options.Number("metasearch-snapshots-port", kUsualPort + 11);
  data.email = text("metasearch-email");
  data.time = text("metasearch-time");
  return data;
}

}  // namespace

Ports ChoosePorts(const Options& options) {
  if (options.Has("no-services")) return {};
  const bool given =
      options.Has("run-port") || options.Has("bb-port") || options.Has("broker-port");
  const std::string services = SystemFile("services");
  if (!given && IsRegistered()) return {};
  RequireWritable(services);
  const std::string inetd = SystemFile("inetd.conf");
  if (Exists(inetd)) RequireWritable(inetd);
  const Ports wanted{options.Number("bb-port", kUsualPort),
                     options.Number("run-port", kUsualPort + 1),
                     options.Number("broker-port", kUsualPort + 2)};
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

void RestoreSystemFiles() {
  for (const char* name : {"services", "inetd.conf"}) {
    const std::string file = SystemFile(name);
    if (!Exists(file)) TEVRenameFile((file + ".tmp").c_str(), file.c_str());
  }
  const std::string inetd = SystemFile("inetd.conf");
  if (!Exists(inetd + ".tmp")) return;
  throw Refusal("An earlier run may have been interrupted while it rewrote " + inetd +
                ", which was " + inetd +
                ".tmp before: compare the two, put the good one in the place of " + inetd +
                ", remove the other, and run the command again.\n");
}

void RegisterPorts(const Ports& ports, const std::string& system_dir, Log& log) {
  if (ports.run == 0) return;
  const auto tell = [&log](const std::string& text) {
    Say(text);
    log.Write(text + "\n");
  };
  TEVUnicodeString message;
  std::string services = SystemFile("services");
  if (UpdateNewPorts(ports.bulletin_board, ports.run, ports.broker, services.data(), &message) !=
      1) {
    throw Refused(message);
  }
  Say(message.ConvertToChar());
  tell("  morvelk7bb " + std::to_string(ports.bulletin_board) + ", morvelk7run " +
       std::to_string(ports.run) + ", TEVDeviceBroker " + std::to_string(ports.broker));
  if (!Exists(SystemFile("inetd.conf"))) {
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
      " and " + std::to_string(ports.broker) + " would be registered in " + SystemFile("services") +
      ".");
  if (NeedsDaemon(system_dir)) {
    Say("The daemon " + DaemonOf(system_dir) + " would be registered in " +
        SystemFile("inetd.conf") + ".");
  }
}

void ExportPortSettings(const Options& options) {
  TEVUnicodeString message;
  if (options.Has("orb-port")) {
    const int port = options.Number("orb-port", 0);
    const int base = options.Number("orb-base", port + 1);
    if (TEVInsCheckOrbixValue(port, base, options.Number("orb-range", 50), options.Has("orb-boot"),
                              &message) != 1) {
      throw Refused(message);
    }
  }
  if (options.Has("metasearch-server")) {
    // The record points into these texts, which must not move.
    std::vector<std::string> texts;
    texts.reserve(16);
    MetaSearchData data = MetaSearchSettings(options, texts);
    if (TEVInsCheckMetasearch(&data, &message) != 1) {
      const bool told = message.ConvertToChar()[0] != '\0';
      throw told ? Refused(message) : Refusal("A value of --metasearch-... is too long.\n");
    }
  }
}

void RequireSatellite(const std::string& medium, const std::string& target) {
  std::string source = MediumPath(medium);
  TEVUnicodeString message;
  if (TEVInsCheckMediaSAT(source.data(), &message) != 0) throw Refused(message);
  const auto required = static_cast<unsigned int>(SatComputeRequired(source.data(), message));
  unsigned int available = 0;
  if (TEVInsComputeAvailSpace(target.c_str(), &available, &message) != 0) throw Refused(message);
  if (available / 1024 < required) {
    throw Refusal("The satellite needs " + std::to_string(required) + " MB in " + target + ".\n");
  }
  RequireWritable(SystemFile("services"));
  RequireWritable(SystemFile("inetd.conf"));
}

void InstallSatellite(const std::string& medium, const std::string& target) {
  std::string dir = target + "/satellite";
  std::string created = dir;
  if (TEVInsCreateDirectory(created.data()) != 0) {
    throw Refusal("The directory " + dir + " cannot be made.\n");
  }
  std::string command = "cd " + dir + " && compress -d -c " + MediumPath(medium) +
                        "/LumaforgeSatellite.Z | tar -xf -";
  TEVUnicodeString message;
  if (TEVInsCommande(command.data(), &message) != 1) throw Refused(message);
  if (SatUpdateService(message) < 0) {
    throw Refusal("The satellite cannot be registered in " + SystemFile("services") + ".\n");
  }
  if (SatUpdateInet(dir.data(), message) < 0) throw Refused(message);
  Say("The rendering satellite is installed in " + dir + " and registered.");
}
