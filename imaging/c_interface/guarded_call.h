#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "nerova_zel/imaging.h"

namespace nerova_zel {

/** Code NV_IMAGING_ERROR_ARGUMENT. */
class ArgumentError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/** Throws ArgumentError unless the condition holds. */
inline void require(bool condition, const char* sentence) {
  if (!condition) {
    throw ArgumentError(sentence);
  }
}

/** Keeps the sentence of the exception that is being handled for nv_imaging_error_text, and returns its code. */
std::int32_t code_of_current_exception() noexcept;

/** Calls a function's body; nothing that it throws leaves. */
template <class Body>
std::int32_t guarded_call(const Body& body) noexcept {
  try {
    body();
    return NV_IMAGING_SUCCESS;
  } catch (...) {
    return code_of_current_exception();
  }
}

}  // namespace nerova_zel
