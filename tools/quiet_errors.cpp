#include "quiet_errors.h"

#include <fcntl.h>

#include <cstdio>
#include <iostream>
#include <mutex>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace nerova_zel {

namespace {

constexpr int error_descriptor = 2;

#if defined(_WIN32)
int duplicate(int descriptor) { return _dup(descriptor); }
void replace(int by, int descriptor) { _dup2(by, descriptor); }
void close_descriptor(int descriptor) { _close(descriptor); }
int open_nowhere() { return _open("NUL", _O_WRONLY); }
#else
int duplicate(int descriptor) { return dup(descriptor); }
void replace(int by, int descriptor) { dup2(by, descriptor); }
void close_descriptor(int descriptor) { close(descriptor); }
int open_nowhere() { return open("/dev/null", O_WRONLY | O_CLOEXEC); }
#endif

void flush_errors() {
  std::cerr.flush();
  std::fflush(stderr);
}

/** How many of them live, and the stream as it was before the first. */
struct Silence {
  std::mutex mutex;
  int count = 0;
  int saved = -1;
};

Silence& silence() {
  static Silence only;
  return only;
}

}  // namespace

QuietErrors::QuietErrors() {
  Silence& shared = silence();
  const std::lock_guard<std::mutex> lock(shared.mutex);
  if (shared.count++ > 0) {
    return;
  }
  flush_errors();
  shared.saved = duplicate(error_descriptor);
  const int nowhere = shared.saved < 0 ? -1 : open_nowhere();
  if (nowhere >= 0) {
    replace(nowhere, error_descriptor);
    close_descriptor(nowhere);
  }
}

QuietErrors::~QuietErrors() {
  Silence& shared = silence();
  const std::lock_guard<std::mutex> lock(shared.mutex);
  if (--shared.count > 0) {
    return;
  }
  flush_errors();
  if (shared.saved >= 0) {
    replace(shared.saved, error_descriptor);
    close_descriptor(shared.saved);
  }
}

}  // namespace nerova_zel
