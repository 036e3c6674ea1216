#pragma once

#include <string>

namespace nerova_zel {

/**
 * Lets the plugins and the logger of a library that the user named be found beside it, where the system's search does
 * not begin there. Called before the library is loaded.
 */
void search_folder_of(const std::string& library);

}  // namespace nerova_zel
