#include "messages.h"

namespace nerova_zel {

namespace {

Verbosity chosen = Verbosity::usual;

}  // namespace

void set_verbosity(Verbosity verbosity) { chosen = verbosity; }

Verbosity verbosity() { return chosen; }

std::FILE* messages() { return stderr; }

void note(const std::string& sentence) {
  if (chosen != Verbosity::quiet) {
    std::fprintf(messages(), "nerova-polarize: note: %s\n", sentence.c_str());
  }
}

void remark(const std::string& sentence) {
  if (chosen == Verbosity::verbose) {
    std::fprintf(messages(), "nerova-polarize: %s\n", sentence.c_str());
  }
}

}  // namespace nerova_zel
