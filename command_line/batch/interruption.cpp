#include "batch/interruption.h"

#include <atomic>
#include <csignal>
#include <initializer_list>

namespace nerova_zel {

namespace {

std::atomic<int> noted{0};
static_assert(std::atomic<int>::is_always_lock_free, "signal handlers must not wait");

extern "C" void note_signal(int signal) {
  noted = signal;
  std::signal(signal, SIG_DFL);
}

}  // namespace

Interruption::Interruption() {
  noted = 0;
  for (const int signal : {SIGINT, SIGTERM}) {
    if (std::signal(signal, note_signal) == SIG_IGN) {
      std::signal(signal, SIG_IGN);  // as whoever started the program wants it
    }
  }
}

Interruption::~Interruption() {
  for (const int signal : {SIGINT, SIGTERM}) {
    if (std::signal(signal, SIG_DFL) == SIG_IGN) {
      std::signal(signal, SIG_IGN);
    }
  }
}

bool Interruption::is_requested() { return noted != 0; }

void Interruption::obey() {
  const int signal = noted;
  if (signal != 0) {
    std::signal(signal, SIG_DFL);
    std::raise(signal);
  }
}

}  // namespace nerova_zel
