#pragma once

#include <string>

namespace nerova_zel {

/**
 * The sentence for the exception that is being handled, whatever its kind, with the option that would help. For use
 * inside a catch block.
 */
std::string describe_current_failure();

}  // namespace nerova_zel
