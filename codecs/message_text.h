#pragma once

#include <string>

namespace nerova_zel {

/** What a library says of an error, or what stands in a file, as part of a sentence: printable, on one line, no full
 * stop. */
inline std::string message_text(std::string message) {
  for (char& c : message) {
    c = c >= ' ' && c <= '~' ? c : ' ';
  }
  while (!message.empty() && (message.back() == '.' || message.back() == ' ')) {
    message.pop_back();
  }
  return message;
}

}  // namespace nerova_zel
