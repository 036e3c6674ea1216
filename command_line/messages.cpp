#include "messages.h"

#include "standard_streams.h"

namespace nerova_zel {

namespace {

Verbosity chosen = Verbosity::usual;

}  // namespace

void set_verbosity(Verbosity verbosity) { chosen = verbosity; }

Verbosity verbosity() { return chosen; }

std::FILE* messages() { return stderr; }

void print_message(const std::string& text) { write_text(messages(), text); }

void note(const std::string& sentence) {
  if (chosen != Verbosity::quiet) {
    print_message("nerova-polarize: note: " + sentence + "\n");
  }
}

void remark(const std::string& sentence) {
  if (chosen == Verbosity::verbose) {
    print_message("nerova-polarize: " + sentence + "\n");
  }
}

}  // namespace nerova_zel
