#pragma once

#include "failure.h"

namespace nerova_zel {

/** A command line that makes no sense, whatever is in the files that it names: the program's exit code is another. */
class UsageError : public Failure {
 public:
  explicit UsageError(const std::string& sentence) : Failure(sentence) {}
};

}  // namespace nerova_zel
