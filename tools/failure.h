#pragma once

#include <stdexcept>
#include <string>

namespace nerova_zel {

/** Something the user has to know: one sentence that says what is wrong with what, and what would be right. */
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/** The sentence for the exception that is being handled, whatever its kind. For use inside a catch block. */
std::string describe_current_failure();

}  // namespace nerova_zel
