#include "results.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "failure.h"
#include "standard_streams.h"

namespace nerova_zel {

void print_result(const std::string& text) {
  errno = 0;
  if (!write_text(stdout, text)) {
    throw Failure(std::string("cannot write standard output: ") +
                  (errno != 0 ? std::strerror(errno) : "unknown reason") + ".");
  }
}

}  // namespace nerova_zel
