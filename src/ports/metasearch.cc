#include <kb0core/TEVEnvironment.h>

#include <cstring>
#include <string>

#include "kwinstutil/ports.h"
#include "ports/port_range.h"
#include "report/message.h"
#include "support/environment_entry.h"
#include "support/format.h"

using kwinst::MessageFrame;

namespace {

/// The variables behind the first one, which is that of the proxy domains, in the order in which
/// they are exported.
constexpr const char* kKeys[] = {
    "MetaSearchPort",          "MetaSearchServer",      "MetaSearchProxyLogin",
    "MetaSearchProxyPassword", "MetaSearchMailServer",  "MetaSearchMailPort",
    "MetaSearchLanguage",      "MetaSearchEnableProxy", "MetaSearchProxyHost",
    "MetaSearchProxyPort",     "MetaSearchEmail",       "MetaSearchTime",
    "MetaSearchSnapshotsPort"};
constexpr size_t kCount = sizeof(kKeys) / sizeof(kKeys[0]);

/// The entries. The environment points to them.
char domains_entry[1024];
char entries[kCount][128];

/// Values for the entries, empty ones at first.
struct Values {
  std::string domains;
  std::string others[kCount];
};

/// Writes the entries. False when one of them does not fit.
bool Write(const Values& values) {
  bool fits = kwinst::CopyWhole("MetaSearchProxyDomains=" + values.domains, domains_entry,
                                sizeof(domains_entry));
  for (size_t i = 0; i < kCount; ++i) {
    const std::string entry = std::string(kKeys[i]) + '=' + values.others[i];
    fits = kwinst::CopyWhole(entry, entries[i], sizeof(entries[i])) && fits;
  }
  return fits;
}

bool PublishAll() {
  bool published = TEVPutEnv(domains_entry) == 0;
  for (char* entry : entries) published = TEVPutEnv(entry) == 0 && published;
  return published;
}

std::string OrEmpty(const char* text) { return text == nullptr ? "" : text; }

Values ValuesOf(const MetaSearchData& data) {
  const std::string language(data.language, strnlen(data.language, sizeof(data.language)));
  return {OrEmpty(data.proxyDomains),
          {std::to_string(data.port), OrEmpty(data.server), OrEmpty(data.proxyLogin),
           OrEmpty(data.proxyPassword), OrEmpty(data.mailServer), std::to_string(data.mailPort),
           language, data.enableProxy != 0 ? "YES" : "NO", OrEmpty(data.proxyHost),
           std::to_string(data.proxyPort), OrEmpty(data.email), OrEmpty(data.time),
           std::to_string(data.snapshotsPort)}};
}

/// Is `port` free? Tells when it is not.
bool IsFree(int port, const MessageFrame& frame, TEVUnicodeString* message) {
  const int found = GetFreePort(port, message, kwinst::kHighestPort);
  if (found == -1) return false;
  if (found == port) return true;
  *message = frame.Build("ErrWndOrbixPortNotFree", {port, found});
  return false;
}

}  // namespace

int TEVInsCheckMetasearch(MetaSearchData* data, TEVUnicodeString* message) noexcept {
  const MessageFrame frame;
  Write({});
  if (data != nullptr) {
    if (!IsFree(data->port, frame, message)) return -1;
    if (!IsFree(data->snapshotsPort, frame, message)) return -1;
  }
  const Values values = data == nullptr ? Values() : ValuesOf(*data);
  if (Write(values) && PublishAll()) return 1;
  Write({});
  return -1;
}
