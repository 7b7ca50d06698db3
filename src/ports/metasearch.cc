#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "kwinstutil/ports.h"
#include "ports/free_port.h"
#include "report/message.h"
#include "support/environment_entry.h"
#include "support/format.h"

using kwinst::EnvironmentEntry;
using kwinst::MessageFrame;

namespace {

/// The variables, in the order in which they are exported.
constexpr std::array kKeys = {
    "MetaSearchProxyDomains", "MetaSearchPort",          "MetaSearchServer",
    "MetaSearchProxyLogin",   "MetaSearchProxyPassword", "MetaSearchMailServer",
    "MetaSearchMailPort",     "MetaSearchLanguage",      "MetaSearchEnableProxy",
    "MetaSearchProxyHost",    "MetaSearchProxyPort",     "MetaSearchEmail",
    "MetaSearchTime",         "MetaSearchSnapshotsPort"};

/// One for each variable, empty at first.
using Values = std::array<std::string, kKeys.size()>;

// The environment points to these: to the longer one for the proxy domains.
char domains_entry[1024];
char other_entries[kKeys.size() - 1][128];

std::string OrEmpty(const char* text) { return text == nullptr ? "" : text; }

Values ValuesOf(const MetaSearchData& data) {
  const std::string language(data.language, strnlen(data.language, sizeof(data.language)));
  return {OrEmpty(data.proxyDomains),
          std::to_string(data.port),
          OrEmpty(data.server),
          OrEmpty(data.proxyLogin),
          OrEmpty(data.proxyPassword),
          OrEmpty(data.mailServer),
          std::to_string(data.mailPort),
          language,
          data.enableProxy != 0 ? "YES" : "NO",
          OrEmpty(data.proxyHost),
          std::to_string(data.proxyPort),
          OrEmpty(data.email),
          OrEmpty(data.time),
          std::to_string(data.snapshotsPort)};
}

std::vector<EnvironmentEntry> Entries(const Values& values) {
  const auto text = [&values](size_t i) { return std::string(kKeys[i]) + '=' + values[i]; };
  std::vector<EnvironmentEntry> entries = {{domains_entry, text(0)}};
  for (size_t i = 1; i < kKeys.size(); ++i) entries.emplace_back(other_entries[i - 1], text(i));
  return entries;
}

/// Empties the values of an earlier export.
void Reset() {
  for (const EnvironmentEntry& empty : Entries({})) {
    kwinst::CopyWhole(empty.text, empty.buffer, empty.size);
  }
}

/// Is `port` free? Reports a port that is not.
bool IsFree(int port, const MessageFrame& frame, TEVUnicodeString* message) {
  return kwinst::IsPortFree(port, kwinst::kHighestPort, message, [&](int next) {
    return frame.Build("ErrWndOrbixPortNotFree", {port, next});
  });
}

}  // namespace

int TEVInsCheckMetasearch(MetaSearchData* data, TEVUnicodeString* message) noexcept {
  const MessageFrame frame;
  // A text may lie in an entry of an earlier export: it is copied before that is emptied.
  const std::vector<EnvironmentEntry> entries =
      Entries(data == nullptr ? Values() : ValuesOf(*data));
  Reset();
  if (data != nullptr) {
    if (!IsFree(data->port, frame, message)) return -1;
    if (!IsFree(data->snapshotsPort, frame, message)) return -1;
  }
  if (kwinst::Publish(entries)) return 1;
  Reset();
  return -1;
}
