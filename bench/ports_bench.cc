// What GetFreePort costs past 2,000 taken ports, beside a bare loop over bind(2): it should take at
// most 1.1 times as long.

#include <benchmark/benchmark.h>
#include <kwinstutil/ports.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <vector>

namespace {

constexpr int kTaken = 2'000;

bool Bind(int socket, int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  return bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

/// kTaken ports in a row, taken as long as the object lives.
class TakenPorts {
 public:
  TakenPorts() {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
    for (int port = first_; port < first_ + kTaken; ++port) {
      sockets_.push_back(socket(AF_INET, SOCK_STREAM, 0));
      // A port of somebody else is taken as well.
      complete_ = complete_ && sockets_.back() != -1;
      Bind(sockets_.back(), port);
    }
  }
  TakenPorts(const TakenPorts&) = delete;
  TakenPorts& operator=(const TakenPorts&) = delete;
  ~TakenPorts() {
    for (const int socket : sockets_) close(socket);
  }

  int first() const { return first_; }
  bool complete() const { return complete_; }

 private:
  int first_ = 20'000;
  bool complete_ = true;
  std::vector<int> sockets_;
};

void SearchPastTakenPorts(benchmark::State& state) {
  const TakenPorts taken;
  TEVUnicodeString message;
  for ([[maybe_unused]] auto _ : state) {
    const int found = GetFreePort(taken.first(), &message, 65535);
    if (!taken.complete() || found < taken.first() + kTaken) {
      state.SkipWithError("the ports could not be taken");
      break;
    }
  }
}
BENCHMARK(SearchPastTakenPorts)->Unit(benchmark::kMicrosecond);

void BareBindLoop(benchmark::State& state) {
  const TakenPorts taken;
  for ([[maybe_unused]] auto _ : state) {
    const int tried = socket(AF_INET, SOCK_STREAM, 0);
    int port = taken.first();
    while (!Bind(tried, port)) ++port;
    sockaddr_in bound{};
    socklen_t size = sizeof(bound);
    getsockname(tried, reinterpret_cast<sockaddr*>(&bound), &size);
    close(tried);
    benchmark::DoNotOptimize(ntohs(bound.sin_port));
  }
}
BENCHMARK(BareBindLoop)->Unit(benchmark::kMicrosecond);

}  // namespace
