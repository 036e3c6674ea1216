#pragma once

#include <string>

namespace CLI {
class App;
}

namespace nerova_zel {

/** The manual page of section 1, in the macros of man(7). */
std::string manual_page(const CLI::App& app);

}  // namespace nerova_zel
