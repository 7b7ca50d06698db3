#include "calls.h"

#include <fcntl.h>
#include <kwinstutil/kwinstutil.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

/// The words behind the name of a call.
using Words = std::array<std::string, 3>;

bool Transfer(Words& words) {
  auto& [component, medium, tree] = words;
  TEVUnicodeString message;
  constexpr int kAllLanguages = 127;
  return TEVInsTransferCAF(component.data(), medium.data(), tree.data(), "aix_a", kAllLanguages,
                           message) == 0;
}

bool DeleteDir(Words& words) { return TEVInsDeleteDir(words[0].data(), 1) == 0; }

bool ReplacePorts(Words& words) { return UpdateNewPorts(1, 2, 3, words[0].data(), nullptr) == 1; }

bool RemoveLines(Words& words) {
  auto& [source, dest, service_pack] = words;
  TEVInsResetPresent reset;
  return reset.InitSource(source.data()) == 0 && reset.InitDest(dest.data()) == 0 &&
         reset.Remove(service_pack.data(), code) == 0 && reset.IsLineRemoved() == 1;
}

bool CopyFile(Words& words) {
  return TEVInsResetPresent::FileCopy(words[0].data(), words[1].data()) == 0;
}

bool CheckIntegrity(Words& words) {
  TEVINSInstToc table(words[0].c_str());
  TEVUnicodeString message;
  return TEVInsCheckIntegrityGA(&table, words[0].data(), std::cout, &message, 0) == 0;
}

bool CheckTask(Words& words) {
  TEVInsTaskList tasks;
  return tasks.TEVInsCheckTask(words[0].c_str(), nullptr) == 0;
}

/// Writes each line of the first file that does not begin with the third word to the second file,
/// on its own: nothing but the writes that Remove cannot do without.
bool WriteLineByLine(Words& words) {
  const auto& [source, dest, left_out] = words;
  std::ifstream file(source);
  const std::string text(std::istreambuf_iterator<char>(file), {});
  const int to = open(dest.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  for (std::string_view rest = text; !rest.empty();) {
    const std::string_view line = rest.substr(0, rest.find('\n') + 1);
    rest.remove_prefix(line.size());
    if (line.substr(0, left_out.size()) == left_out) continue;
    if (write(to, line.data(), line.size()) != static_cast<ssize_t>(line.size())) return false;
  }
  return close(to) == 0;
}

}  // namespace

void Call(const std::vector<std::string>& words) {
  const std::map<std::string_view, bool (*)(Words&)> calls = {
      {"transfer", Transfer},         {"delete-dir", DeleteDir},
      {"update-ports", ReplacePorts}, {"remove-lines", RemoveLines},
      {"copy-file", CopyFile},        {"check-integrity", CheckIntegrity},
      {"check-task", CheckTask},      {"write-line-by-line", WriteLineByLine},
  };
  Words arguments;
  std::copy(words.begin() + 1, words.end(), arguments.begin());
  if (!calls.at(words[0])(arguments)) throw std::runtime_error("failed: " + words[0]);
}
