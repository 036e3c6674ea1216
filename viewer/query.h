#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "frames/raw_frame.h"

namespace nerova_zel {

/** A request that makes no sense; what() says why, in a sentence. */
class BadRequest : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/** The names and values of an address. Every value that is read is checked; BadRequest says what is wrong. */
class Query {
 public:
  /** `text` is what follows the question mark. Each name is known and comes at most once. */
  Query(const std::string& text, const std::vector<const char*>& names);

  std::optional<std::string> text(const std::string& name) const;
  /** A whole number from `least` to `greatest`. */
  std::optional<std::int64_t> number(const std::string& name, std::int64_t least, std::int64_t greatest) const;
  /** So many of them, separated by commas. */
  std::optional<std::vector<std::int64_t>> numbers(const std::string& name, std::size_t count, std::int64_t least,
                                                   std::int64_t greatest) const;
  std::vector<std::string> list(const std::string& name) const;

 private:
  std::map<std::string, std::string> values_;
};

}  // namespace nerova_zel
