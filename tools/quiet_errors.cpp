#include "quiet_errors.h"

#include <fcntl.h>

#include <cstdio>
#include <iostream>

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

}  // namespace

QuietErrors::QuietErrors() : saved_(duplicate(error_descriptor)) {
  flush_errors();
  const int nowhere = saved_ < 0 ? -1 : open_nowhere();
  if (nowhere >= 0) {
    replace(nowhere, error_descriptor);
    close_descriptor(nowhere);
  }
}

QuietErrors::~QuietErrors() {
  flush_errors();
  if (saved_ >= 0) {
    replace(saved_, error_descriptor);
    close_descriptor(saved_);
  }
}

}  // namespace nerova_zel
