#pragma once

#include <stdexcept>

namespace nerova_zel {

/** Something the user has to know: one sentence that says what is wrong with what, and what would be right. */
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace nerova_zel
