#include "platform/library_folder.h"

namespace nerova_zel {

void search_folder_of(const std::string& /*library*/) {}  // the library looks there itself

}  // namespace nerova_zel
