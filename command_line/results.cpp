#include "results.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "failure.h"

namespace nerova_zel {

void print_result(const std::string& text) {
  errno = 0;
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
    throw Failure(std::string("cannot write standard output: ") +
                  (errno != 0 ? std::strerror(errno) : "unknown reason") + ".");
  }
}

}  // namespace nerova_zel
