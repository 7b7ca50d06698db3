// Measures the library beside programs and bare loops that do the same work, and prints a table of
// the ratios.

#include <benchmark/benchmark.h>
#include <kwinstutil/ports.h>
#include <netinet/in.h>
#include <qtoclib/TEVINSToc.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <unordered_map>
#include <utility>
#include <vector>

#include "calls.h"
#include "process.h"
#include "table.h"

namespace {

namespace fs = std::filesystem;
using std::to_string;

/// The current directory, empty, as long as the object lives.
class ScratchDir {
 public:
  ScratchDir() {
    std::string name = fs::temp_directory_path() / "kwinst-bench-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("there is no scratch directory");
    path_ = name;
    fs::current_path(path_);
  }
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;
  ~ScratchDir() {
    std::error_code ignored;
    fs::current_path("/", ignored);
    fs::remove_all(path_, ignored);
  }

 private:
  fs::path path_;
};

void Write(const std::string& path, const std::string& content) {
  std::ofstream file(path);
  file << content;
  file.close();
  if (!file) throw std::runtime_error("cannot be written: " + path);
}

std::string Read(const std::string& path) {
  std::ifstream file(path);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

/// A side that is a program. What it prints goes to the file `output`.
Side Program(const std::vector<std::string>& words, const std::string& output = "/dev/null") {
  return {[words, output] { RunProgram(words, output); }};
}

/// A call of the library (see calls.h), also as a process of its own, beside something else.
Pair Compare(int items, std::vector<std::string> words, Side alternative,
             const std::function<void()>& prepare = nullptr) {
  Pair pair = {items, {[words] { Call(words); }}, std::move(alternative)};
  words.insert(words.begin(), CALL_PROGRAM);
  pair.process = Program(words);
  for (Side* side : {&pair.library, &pair.alternative, &pair.process}) side->prepare = prepare;
  return pair;
}

std::string FileName(int i) { return "code/" + to_string(i / 100) + "/file" + to_string(i); }

/// Makes `count` files below `tree`, a hundred in each directory.
void MakeTree(const std::string& tree, int count, const std::string& content) {
  for (int i = 0; i < count; ++i) {
    const fs::path path = fs::path(tree) / FileName(i);
    if (i % 100 == 0) fs::create_directories(path.parent_path());
    Write(path, content);
  }
}

// The lines of the table.

Pair Transfer(int files) {
  MakeTree("content/aix_a", files, std::string(1000, 'x'));
  fs::create_directory("content/aix_a/control");
  Write("content/aix_a/control/Product.toc", "code:PRD:Product\n");
  RunProgram({"tar", "-C", "content", "-cf", "Product", "aix_a"});
  fs::remove_all("content");
  const auto clear = [] {
    fs::remove_all("tree");
    fs::create_directory("tree");
  };
  const fs::path here = fs::current_path();
  return Compare(files, {"transfer", "Product", here, here / "tree"},
                 Program({"tar", "-C", "tree", "-xf", "Product"}), clear);
}

Pair DeleteDir(int files) {
  return Compare(files, {"delete-dir", "tree"}, Program({"rm", "-rf", "tree"}),
                 [files] { MakeTree("tree", files, "text\n"); });
}

/// Replaces the product's three lines, with sed too.
Pair ReplacePorts(int lines) {
  const std::string comment = "#Brovik Communication ports|";
  return Compare(lines, {"update-ports", "services"},
                 Program({"sed", "-i",
                          "s|^morvelk7bb.*|morvelk7bb       1/tcp   " + comment +
                              ";s|^morvelk7run.*|morvelk7run      2/tcp   " + comment +
                              ";s|^TEVDeviceBroker.*|TEVDeviceBroker 3/tcp     " + comment,
                          "services"}));
}

constexpr const char* kProductPorts =
    "morvelk7bb 1/tcp\nmorvelk7run 2/tcp\nTEVDeviceBroker 3/tcp\n";

Pair MadeServices(int lines) {
  std::string text;
  for (int i = 0; i < lines; ++i) {
    if (i == lines / 2) text += kProductPorts;
    text += "service" + to_string(i) + "\t\t" + to_string(i) + "/tcp\t\talias" + to_string(i) +
            "  # a comment\n";
  }
  Write("services", text);
  return ReplacePorts(lines);
}

/// This machine's services, so many times.
Pair OwnServices(int times) {
  const std::string own = Read("/etc/services");
  std::string text = kProductPorts;
  for (int i = 0; i < times; ++i) text += own;
  Write("services", text);
  return ReplacePorts(static_cast<int>(std::count(text.begin(), text.end(), '\n')));
}

/// A table of contents in which one line of ten is that of a service pack.
void WritePresent(int lines) {
  std::string text;
  for (int i = 0; i < lines; ++i) {
    text += i % 10 == 0 ? "code:SPK:SP3:level=3\n"
                        : "code:PRD:Package" + to_string(i) + ":os=aix:ga=R12\n";
  }
  Write("PRESENT", text);
}

Pair RemoveBesideGrep(int lines) {
  WritePresent(lines);
  return Compare(lines, {"remove-lines", "PRESENT", "pruned", "SP3"},
                 Program({"grep", "-v", "^code:SPK:SP3", "PRESENT"}, "pruned.grep"));
}

Pair RemoveBesideWrites(int lines) {
  WritePresent(lines);
  return {lines,
          {[] {
            Call({"remove-lines", "PRESENT", "pruned", "SP3"});
          }},
          {[] {
            Call({"write-line-by-line", "PRESENT", "pruned.bare", "code:SPK:SP3"});
          }}};
}

Pair CopyLines(int lines) {
  WritePresent(lines);
  return Compare(lines, {"copy-file", "PRESENT", "copy"}, Program({"cp", "PRESENT", "copy.cp"}));
}

/// Opens a table and asks for each of its packages.
Pair AskTable(int lines) {
  auto names = std::make_shared<std::vector<std::string>>();
  std::string text;
  for (int i = 0; i < lines; ++i) {
    names->push_back("Package" + to_string(i));
    text += "code:PRD:" + names->back() + ":os=aix:ga=R12\n";
  }
  Write("PRESENT", text);
  const auto library = [names] {
    const TEVINSInstToc table("PRESENT");
    for (const std::string& name : *names) {
      if (table.IsInstalled(name.c_str(), code) != 0) throw std::runtime_error("not found");
    }
  };
  const auto bare_loop = [names] {
    std::unordered_map<std::string, size_t> table;
    std::ifstream file("PRESENT");
    for (std::string line; std::getline(file, line);) {
      const size_t name = line.find(':', line.find(':') + 1) + 1;
      table.emplace(line.substr(name, line.find(':', name) - name), table.size());
    }
    for (const std::string& name : *names) {
      if (table.find(name) == table.end()) throw std::runtime_error("not found");
    }
  };
  return {lines, {library}, {bare_loop}};
}

/// Makes an installed tree with its manifest, and gives the names of its files.
std::vector<std::string> MakeInstalledTree(int files) {
  MakeTree(".", files, std::string(16'000, '\0'));
  std::vector<std::string> names;
  std::string manifest;
  for (int i = 0; i < files; ++i) {
    names.push_back(FileName(i));
    chmod(names.back().c_str(), 0644);
    manifest += names.back() + "\n0644 16000 2513431293\n";
  }
  fs::create_directory("control");
  Write("control/PRESENT", "code:PRD:Product\n");
  Write("control/Product", manifest);
  return names;
}

Pair IntegrityBesideMd5sum(int files) {
  std::vector<std::string> words = MakeInstalledTree(files);
  words.insert(words.begin(), "md5sum");
  RunProgram(words, "sums");
  return Compare(files, {"check-integrity", "."}, Program({"md5sum", "-c", "sums"}));
}

Pair IntegrityBesideCksum(int files) {
  std::vector<std::string> words = MakeInstalledTree(files);
  words.insert(words.begin(), "cksum");
  return Compare(files, {"check-integrity", "."}, Program(words));
}

bool Bind(int socket, int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  return bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

/// A row of ports that are taken as long as the object lives.
class TakenPorts {
 public:
  static constexpr int kFirst = 20'000;

  explicit TakenPorts(int count) {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
    for (int port = kFirst; port < kFirst + count; ++port) {
      sockets_.push_back(socket(AF_INET, SOCK_STREAM, 0));
      if (sockets_.back() == -1) throw std::runtime_error("too few sockets may be opened");
      // A port of somebody else is taken as well.
      Bind(sockets_.back(), port);
    }
  }
  TakenPorts(const TakenPorts&) = delete;
  TakenPorts& operator=(const TakenPorts&) = delete;
  ~TakenPorts() {
    for (const int socket : sockets_) close(socket);
  }

 private:
  std::vector<int> sockets_;
};

Pair SearchPort(int ports) {
  const auto library = [ports] {
    TEVUnicodeString message;
    if (GetFreePort(TakenPorts::kFirst, &message, 65535) < TakenPorts::kFirst + ports) {
      throw std::runtime_error("a port that was taken is free");
    }
  };
  const auto bare_loop = [] {
    const int tried = socket(AF_INET, SOCK_STREAM, 0);
    int port = TakenPorts::kFirst;
    while (!Bind(tried, port)) ++port;
    sockaddr_in bound{};
    socklen_t size = sizeof(bound);
    getsockname(tried, reinterpret_cast<sockaddr*>(&bound), &size);
    close(tried);
    benchmark::DoNotOptimize(bound.sin_port);
  };
  return {ports, {library}, {bare_loop}, {}, std::make_shared<TakenPorts>(ports)};
}

Pair ListTasks(int processes) {
  const auto sleepers = std::make_shared<Sleepers>(processes);
  Pair pair = Compare(CountProcesses(), {"check-task", "/nowhere"}, Program({"ps", "-ef"}));
  pair.needed = sleepers;
  return pair;
}

Pair Load(int times) {
  const auto repeat = [times](const std::vector<std::string>& words) {
    return [times, words] {
      for (int i = 0; i < times; ++i) RunProgram(words);
    };
  };
  return {times, {repeat({LOAD_PROGRAM, LIBRARY})}, {repeat({LOAD_PROGRAM})}};
}

std::vector<Line> Lines() {
  return {
      {"`TEVInsTransferCAF`", "`tar -xf`", "files", 1.02, {200, 2'000, 20'000}, Transfer},
      {"`TEVInsDeleteDir`", "`rm -rf`", "files", 1.0, {500, 5'000, 50'000}, DeleteDir},
      {"`UpdateNewPorts`", "`sed -i`", "lines", 0.5, {200, 2'000, 20'000}, MadeServices},
      {"`UpdateNewPorts`, `/etc/services`", "`sed -i`", "lines", 0.5, {1, 10, 100}, OwnServices},
      {"`Remove`", "`grep -v`", "lines", 0, {1'000, 10'000, 100'000}, RemoveBesideGrep},
      {"`Remove`", "its writes alone", "lines", 0, {1'000, 10'000, 100'000}, RemoveBesideWrites},
      {"`FileCopy`", "`cp`", "lines", 0, {1'000, 10'000, 100'000}, CopyLines},
      {"table of contents",
       "`getline`, `unordered_map`",
       "packages",
       1.5,
       {400, 4'000, 40'000},
       AskTable},
      {"`TEVInsCheckIntegrityGA`",
       "`md5sum -c`",
       "files",
       1.0 / 3,
       {200, 2'000, 20'000},
       IntegrityBesideMd5sum},
      {"`TEVInsCheckIntegrityGA`",
       "`cksum`",
       "files",
       1.0,
       {200, 2'000, 20'000},
       IntegrityBesideCksum},
      {"`GetFreePort`", "`bind` loop", "ports", 1.05, {20, 200, 2'000}, SearchPort},
      {"`TEVInsCheckTask`", "`ps -ef`", "processes", 1.05, {20, 200, 2'000}, ListTasks},
      {"loading", "nothing loaded", "starts", 0, {1, 10, 100}, Load},
  };
}

}  // namespace

/// Its arguments are those of Google Benchmark, and go before these.
int main(int argc, char** argv) try {
  std::vector<std::string> words = {argv[0], "--benchmark_repetitions=21",
                                    "--benchmark_enable_random_interleaving=true",
                                    "--benchmark_min_time=0.03"};
  words.insert(words.end(), argv + 1, argv + argc);
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  int count = static_cast<int>(words.size());
  benchmark::Initialize(&count, arguments.data());
  const std::string wanted = count > 1 ? arguments[1] : "";

  setenv("TEVMsgCatalogPath", SOURCE_DIR "/resources/msgcatalog", 1);
  umask(022);
  std::string table = TableHead();
  for (const Line& line : Lines()) {
    if (line.library.find(wanted) == std::string::npos) continue;
    const ScratchDir scratch;
    table += TableRow(line);
  }
  std::fputs(table.c_str(), stdout);
  return 0;
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
