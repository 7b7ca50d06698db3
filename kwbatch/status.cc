#include <kwinstutil/kwinstutil.h>

#include <string>
#include <vector>

#include "commands.h"
#include "console.h"
#include "inventory.h"
#include "json.h"
#include "lock.h"
#include "refusal.h"
#include "request.h"

namespace {

std::string Joined(const std::vector<std::string>& texts) {
  std::string line;
  for (const std::string& text : texts) line += (line.empty() ? "" : ", ") + text;
  return line.empty() ? "none" : line;
}

/// Shows a list for people and puts it into the object for machines.
void ShowList(const std::string& label, const std::string& pointer,
              const std::vector<std::string>& list) {
  SetField(pointer, list);
  if (!list.empty()) Show("  " + label + ": " + Joined(list));
}

void ShowUpdates(const std::string& label, const std::string& pointer,
                 const std::vector<UpdateState>& updates) {
  SetField(pointer, std::vector<std::string>());
  std::vector<std::string> texts;
  for (const UpdateState& update : updates) {
    const std::string field = pointer + "/" + std::to_string(texts.size());
    SetField(field + "/name", update.name);
    SetField(field + "/level", int64_t{update.level});
    SetField(field + "/state", update.state);
    texts.push_back(update.name + " (level " + std::to_string(update.level) + ", " + update.state +
                    ")");
  }
  if (!texts.empty()) Show("  " + label + ": " + Joined(texts));
}

/// Shows what was registered for a system, and whether the system's files still say so.
void ShowRegistered(const Registered& registered, const std::string& pointer) {
  const bool current = registered.IsCurrent();
  SetField(pointer + "/current", current);
  SetField(pointer + "/daemon", registered.daemon);
  SetField(pointer + "/satellite", registered.satellite);
  std::vector<std::string> texts;
  for (const auto& [service, port] : registered.ports) {
    SetField(pointer + "/ports/" + service, int64_t{port});
    texts.push_back(service + " " + std::to_string(port));
  }
  if (!registered.daemon.empty()) texts.push_back(registered.daemon);
  if (!registered.satellite.empty()) texts.push_back(registered.satellite);
  if (texts.empty()) return;
  Show("  registered: " + Joined(texts));
  Show(current ? "  The system's files still say so."
               : "  The system's files say something else now.");
}

void ShowSystem(const SystemInventory& system, const std::string& pointer) {
  SetField(pointer + "/name", system.name);
  SetField(pointer + "/dir", system.dir);
  SetField(pointer + "/level", system.level);
  SetField(pointer + "/state", system.state);
  SetField(pointer + "/size", system.size);
  Show(system.dir + ": " + system.name + ", level " + (system.level.empty() ? "-" : system.level) +
       ", " + system.state + ", " + std::to_string(system.size / 1024) + " KB");
  ShowList("products", pointer + "/products", system.packages.products);
  ShowList("solutions", pointer + "/solutions", system.packages.solutions);
  ShowList("development kits", pointer + "/sdk", system.packages.sdk);
  ShowList("samples", pointer + "/samples", system.packages.samples);
  ShowList("other packages", pointer + "/others", system.packages.others);
  ShowUpdates("service packs", pointer + "/service_packs", system.service_packs);
  ShowUpdates("hot fixes", pointer + "/hot_fixes", system.hot_fixes);
  ShowList("languages beside English", pointer + "/languages", system.languages);
  SetField(pointer + "/fonts", system.fonts);
  if (system.fonts) Show("  The language-indexed fonts are installed.");
  if (system.registered) ShowRegistered(*system.registered, pointer + "/registered");
}

}  // namespace

void Status(const Options& options) {
  const Request request = RequestOf(options);
  const Lock lock(request.target, Lock::Kind::kReading, request);
  const Inventory inventory = InventoryOf(request.target, request.os);
  SetField("/kind", inventory.systems.empty() ? "none" : inventory.kind);
  SetField("/systems", std::vector<std::string>());
  int number = 0;
  for (const SystemInventory& system : inventory.systems) {
    ShowSystem(system, "/systems/" + std::to_string(number++));
  }
  if (inventory.systems.empty()) {
    throw NothingToDo("Nothing is installed in " + request.target + ".\n");
  }
  if (!inventory.sdk_tree.empty()) {
    SetField("/sdk_tree", inventory.sdk_tree);
    Show("The development kit of this tree is in " + inventory.sdk_tree + ".");
  }
  if (!inventory.code_tree.empty()) {
    SetField("/code_tree", inventory.code_tree);
    Show("The code of this development kit is in " + inventory.code_tree + ".");
  }
}
