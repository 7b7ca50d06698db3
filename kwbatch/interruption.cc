#include "interruption.h"

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <thread>

#include "refusal.h"
#include "texts.h"

namespace {

/// The signal that has asked for the end; a lost reader only when nothing else has.
std::atomic<int> asked_to_end = 0;

void Interrupt(int signal) {
  if (signal != SIGPIPE || asked_to_end == 0) asked_to_end = signal;
}

bool IsIgnored(int signal) {
  struct sigaction action {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

/// While a shell runs for the library, the C library ignores SIGINT in this process: no handler
/// sees it. But the kernel keeps an ignored signal for a first thread that has blocked it and waits
/// for it. Programs inherit the mask of the other thread, so Ctrl-C ends them.
int RunInterruptibly(const std::function<int()>& work) {
  const bool ignored = IsIgnored(SIGINT);
  struct sigaction action {};
  action.sa_handler = Interrupt;
  action.sa_flags = SA_RESTART;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
    if (!IsIgnored(signal)) sigaction(signal, &action, nullptr);
  }
  sigset_t waited;
  sigset_t before;
  sigemptyset(&waited);
  sigaddset(&waited, SIGINT);
  pthread_sigmask(SIG_BLOCK, &waited, &before);
  int status = 0;
  std::atomic<bool> done = false;
  std::thread worker([&, waiter = pthread_self()] {
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    status = work();
    done = true;
    pthread_kill(waiter, SIGINT);
  });
  for (int signal = 0; !done;) {
    sigwait(&waited, &signal);
    if (!done && !ignored) Interrupt(signal);
  }
  worker.join();
  return status;
}

void SafePoint() {
  if (asked_to_end != 0) throw Refusal(Text("Interrupted", "Interrupted.\n"));
}

void SafePointAfterProgram() {
  if (IsInterrupted()) SafePoint();
}

bool IsInterrupted() {
  constexpr useconds_t kMoment = 20'000;
  if (asked_to_end == 0) usleep(kMoment);
  return asked_to_end != 0;
}

void SafePointAfterFedProgram() {
  if (IsInterrupted() && asked_to_end != SIGPIPE) SafePoint();
}
