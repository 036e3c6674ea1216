#pragma once

#include <cstdio>
#include <string>

namespace nerova_zel {

/**
 * Keeps the standard error stream silent for as long as any of them lives: image codecs print complaints of their own
 * there, and the user is to read one sentence. What the program itself has to say goes to messages(). Thread-safe.
 */
class QuietErrors {
 public:
  QuietErrors();
  ~QuietErrors();
  QuietErrors(const QuietErrors&) = delete;
  QuietErrors& operator=(const QuietErrors&) = delete;
};

}  // namespace nerova_zel
