#pragma once

namespace nerova_zel {

/**
 * Keeps the standard error stream silent for as long as it lives: image codecs print complaints of their own there,
 * and the user is to read one sentence. Not for use by several threads at once.
 */
class QuietErrors {
 public:
  QuietErrors();
  ~QuietErrors();
  QuietErrors(const QuietErrors&) = delete;
  QuietErrors& operator=(const QuietErrors&) = delete;

 private:
  int saved_;
};

}  // namespace nerova_zel
