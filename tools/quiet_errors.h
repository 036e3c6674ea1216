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

/**
 * The standard error stream as it was when this was first called, which no QuietErrors silences: to be called once
 * before the first of them.
 */
std::FILE* messages();

/** Tells the user what is good to know though nothing fails. */
void note(const std::string& sentence);

}  // namespace nerova_zel
