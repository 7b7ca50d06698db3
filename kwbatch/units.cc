#include "units.h"

#include <filesystem>

#include "files.h"
#include "formats.h"

namespace fs = std::filesystem;

namespace {

struct Template {
  const char* name;
  const char* text;
};

constexpr Template kTemplates[] = {
#include "unit_templates.inc"
};

std::string Replaced(std::string text, const std::string& what, const std::string& by) {
  for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
    text.replace(at, what.size(), by);
  }
  return text;
}

/// The system directory or that of the satellite, which a template calls the tree.
std::string TreeOf(const std::string& program) {
  const std::string daemon = std::string("/") + kDaemon;
  const size_t end = program.size() - daemon.size();
  const bool is_daemon =
      program.size() > daemon.size() && program.compare(end, std::string::npos, daemon) == 0;
  return is_daemon ? program.substr(0, end) : fs::path(program).parent_path().string();
}

}  // namespace

std::string UnitDirectory() { return SystemFile("systemd/system"); }

std::map<std::string, std::string> UnitTexts(const std::string& service, const std::string& program,
                                             int port) {
  std::map<std::string, std::string> units;
  // systemd puts values in the place of a single one.
  const std::string tree = Replaced(TreeOf(program), "%", "%%");
  for (const auto& [name, text] : kTemplates) {
    const std::string unit = name;
    if (unit != service + ".socket" && unit != service + "@.service") continue;
    units[unit] = Replaced(Replaced(text, "@PORT@", std::to_string(port)), "@TREE@", tree);
  }
  return units;
}

std::string UnitProgram(const std::string& service) {
  const std::string key = "ExecStart=";
  for (const std::string& line : LinesOf(UnitDirectory() + "/" + service + "@.service")) {
    if (line.rfind(key, 0) != 0) continue;
    const size_t begin = line.find_first_not_of("-@:+!", key.size());
    if (begin == std::string::npos) continue;
    return Replaced(line.substr(begin, line.find_first_of(" \t", begin) - begin), "%%", "%");
  }
  return "";
}

bool HasUnitText(const std::string& name, const std::string& text) {
  return TextOf(UnitDirectory() + "/" + name) == text;
}

void DeleteUnit(const std::string& name) {
  Delete(UnitDirectory() + "/" + name);
  DeleteUnwritten(UnitDirectory() + "/" + name);
  const std::string link = UnitDirectory() + "/sockets.target.wants/" + name;
  if (fs::is_symlink(link) && !Exists(link)) Delete(link);
}
