#include <kwinstutil/kwinstutil.h>

#include <map>
#include <string>
#include <vector>

#include "commands.h"
#include "console.h"
#include "inventory.h"
#include "json.h"
#include "lock.h"
#include "refusal.h"
#include "request.h"
#include "texts.h"
#include "tree.h"

namespace {

/// A state for people; the object for machines has the word itself.
std::string Shown(const std::string& state) {
  static const std::map<std::string, std::string> states = {
      {"complete", Text("StateComplete", "complete")},
      {"unfinished", Text("StateUnfinished", "unfinished")},
      {"uninstalling", Text("StateUninstalling", "uninstalling")},
      {"medium", Text("StateMedium", "medium")},
      {"installed", Text("StateInstalled", "installed")},
      {"pending", Text("StatePending", "pending")},
      {"committed", Text("StateCommitted", "committed")},
      {"interrupted", Text("StateInterrupted", "interrupted")},
      {"being undone", Text("StateUndoing", "being undone")},
      {"being committed", Text("StateCommitting", "being committed")},
      {"on the medium", Text("StateOnMedium", "on the medium")},
      {"required", Text("StateRequired", "required")}};
  return states.at(state);
}

/// Puts a list into the object for machines, and shows its line unless it is empty.
void ShowList(const std::string& line, const std::string& pointer,
              const std::vector<std::string>& list) {
  SetField(pointer, list);
  if (!list.empty()) Show("  " + line);
}

void ShowUpdates(const std::string& line, const std::string& pointer,
                 const std::vector<UpdateState>& updates) {
  SetField(pointer, std::vector<std::string>());
  for (size_t i = 0; i < updates.size(); ++i) {
    const std::string field = pointer + "/" + std::to_string(i);
    SetField(field + "/name", updates[i].name);
    SetField(field + "/level", int64_t{updates[i].level});
    SetField(field + "/state", updates[i].state);
  }
  if (!updates.empty()) Show("  " + line);
}

std::string Joined(const std::vector<UpdateState>& updates) {
  std::vector<std::string> texts;
  texts.reserve(updates.size());
  for (const UpdateState& update : updates) {
    texts.push_back(Text("StatusUpdate", "{1} (level {2}, {3})",
                         {update.name, update.level, Shown(update.state)}));
  }
  return CommaList(texts);
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
  std::vector<std::string> units;
  for (const auto& [name, checksum] : registered.units) units.push_back(name);
  SetField(pointer + "/units", units);
  texts.insert(texts.end(), units.begin(), units.end());
  if (texts.empty()) return;
  Show("  " + Text("StatusRegistered", "registered: {1}", {CommaList(texts)}));
  Show("  " + (current ? Text("StatusCurrent", "The system's files still say so.")
                       : Text("StatusNotCurrent", "The system's files say something else now.")));
}

void ShowSystem(const SystemInventory& system, const std::string& pointer) {
  SetField(pointer + "/name", system.name);
  SetField(pointer + "/dir", system.dir);
  SetField(pointer + "/level", system.level);
  SetField(pointer + "/state", system.state);
  SetField(pointer + "/size", system.size);
  Show(Text("StatusSystem", "{1}: {2}, level {3}, {4}, {5} KB",
            {system.dir, system.name, system.level.empty() ? "-" : system.level,
             Shown(system.state), system.size / 1024}));
  const PackageLists& packages = system.packages;
  ShowList(Text("StatusProducts", "products: {1}", {CommaList(packages.products)}),
           pointer + "/products", packages.products);
  ShowList(Text("StatusSolutions", "solutions: {1}", {CommaList(packages.solutions)}),
           pointer + "/solutions", packages.solutions);
  ShowList(Text("StatusSdk", "development kits: {1}", {CommaList(packages.sdk)}), pointer + "/sdk",
           packages.sdk);
  ShowList(Text("StatusSamples", "samples: {1}", {CommaList(packages.samples)}),
           pointer + "/samples", packages.samples);
  ShowList(Text("StatusOthers", "other packages: {1}", {CommaList(packages.others)}),
           pointer + "/others", packages.others);
  ShowUpdates(Text("StatusServicePacks", "service packs: {1}", {Joined(system.service_packs)}),
              pointer + "/service_packs", system.service_packs);
  ShowUpdates(Text("StatusHotFixes", "hot fixes: {1}", {Joined(system.hot_fixes)}),
              pointer + "/hot_fixes", system.hot_fixes);
  ShowList(Text("StatusLanguages", "languages beside English: {1}", {CommaList(system.languages)}),
           pointer + "/languages", system.languages);
  SetField(pointer + "/fonts", system.fonts);
  if (system.fonts) Show("  " + Text("StatusFonts", "The language-indexed fonts are installed."));
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
    throw NothingToDo(NothingInstalled(request.target));
  }
  if (!inventory.sdk_tree.empty()) {
    SetField("/sdk_tree", inventory.sdk_tree);
    Show(
        Text("StatusSdkTree", "The development kit of this tree is in {1}.", {inventory.sdk_tree}));
  }
  if (!inventory.code_tree.empty()) {
    SetField("/code_tree", inventory.code_tree);
    Show(Text("StatusCodeTree", "The code of this development kit is in {1}.",
              {inventory.code_tree}));
  }
}
