#pragma once

#include <stdexcept>
#include <string>

namespace nerova_zel {

/** What is wrong with a file, as a fact: what() is a sentence that names the file, without a full stop or advice. */
class CodecError : public std::runtime_error {
 public:
  enum class Reason {
    not_readable,    ///< the system refuses
    not_writable,    ///< the system refuses
    empty,           ///< no bytes
    unknown_format,  ///< none of the formats that are read
    damaged,         ///< or cut short
    unsupported,     ///< a sound file, but its pixels are of a kind that is not read
    too_large        ///< more pixels than are allowed
  };

  CodecError(Reason reason, const std::string& sentence) : std::runtime_error(sentence), reason_(reason) {}

  /** For a client that adds advice. */
  Reason reason() const noexcept { return reason_; }

 private:
  Reason reason_;
};

}  // namespace nerova_zel
