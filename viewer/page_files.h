#pragma once

#include <string_view>

namespace nerova_zel {

/** A file of the page, as the program holds it. */
struct PageFile {
  std::string_view path;        ///< as in an address: "/", "/view.css", "/js/main.js"
  std::string_view media_type;  ///< for the header Content-Type
  std::string_view content;
};

/** NULL for a path that the page does not have. The result lives as long as the program. Thread-safe. */
const PageFile* find_page_file(std::string_view path);

}  // namespace nerova_zel
