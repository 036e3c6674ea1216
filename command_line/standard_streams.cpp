#include "standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <initializer_list>

namespace nerova_zel {

void guard_standard_streams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) < 0) {
      // The lowest free descriptor, which is this one. Opened the wrong way round: using it fails as if it were closed.
      open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
  }
  std::signal(SIGPIPE, SIG_IGN);
}

}  // namespace nerova_zel
