#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <initializer_list>
#include <string>

#include "batch/interruption.h"
#include "codec_error.h"

namespace nerova_zel {

namespace {

std::atomic<int> noted{0};
static_assert(std::atomic<int>::is_always_lock_free, "signal handlers must not wait");

/**
 * A byte in this pipe wakes whoever waits for input, in whatever thread: a signal would only interrupt the thread that
 * the system gives it to. -1 where there is none.
 */
std::array<std::atomic<int>, 2> bell{-1, -1};

void note_request(int signal) {
  const int reason = errno;
  noted = signal;
  if (bell[1] >= 0) {
    const ssize_t ignored = write(bell[1], "", 1);
    static_cast<void>(ignored);
  }
  errno = reason;
}

extern "C" void note_signal(int signal) {
  std::signal(signal, SIG_DFL);
  note_request(signal);
}

/**
 * Waits until standard input can be read from, or is at its end; false when an interruption is noted first, or was. At
 * once true when nobody notes them.
 */
bool wait_for_input() {
  std::array<pollfd, 2> waiting = {{{STDIN_FILENO, POLLIN, 0}, {bell[0], POLLIN, 0}}};
  while (bell[0] >= 0 && noted == 0) {
    if (poll(waiting.data(), waiting.size(), -1) < 0 && errno != EINTR) {
      break;  // reading will say what is wrong
    }
    if (waiting[0].revents != 0 && waiting[1].revents == 0) {
      break;
    }
  }
  return noted == 0;
}

}  // namespace

Interruption::Interruption() {
  noted = 0;
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) == 0) {  // else a read is only interrupted by what is read
    bell[0] = ends[0];
    bell[1] = ends[1];
  }
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
  for (std::atomic<int>& end : bell) {
    close(end.exchange(-1));
  }
}

bool Interruption::is_requested() { return noted != 0; }

std::optional<std::size_t> Interruption::read_standard_input(void* room, std::size_t count) {
  while (wait_for_input()) {
    const ssize_t got = read(STDIN_FILENO, room, count);
    if (got >= 0) {
      return static_cast<std::size_t>(got);
    }
    if (errno != EINTR && errno != EAGAIN) {
      throw CodecError(CodecError::Reason::not_readable,
                       std::string("cannot read standard input: ") + std::strerror(errno));
    }
  }
  return std::nullopt;
}

void Interruption::request() { note_request(SIGINT); }

void Interruption::forget() { noted = 0; }

void Interruption::obey() {
  const int signal = noted;
  if (signal != 0) {
    std::signal(signal, SIG_DFL);
    std::raise(signal);
  }
}

}  // namespace nerova_zel
