#include "messages.h"

namespace nerova_zel {

std::FILE* messages() { return stderr; }

void note(const std::string& sentence) { std::fprintf(messages(), "nerova-polarize: note: %s\n", sentence.c_str()); }

}  // namespace nerova_zel
