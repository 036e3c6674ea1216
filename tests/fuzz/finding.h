#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace nerova_zel::test {

/** Ends the program, as a sanitizer would: the input is kept as a finding. */
[[noreturn]] inline void report_finding(const std::string& what) {
  std::fprintf(stderr, "finding: %s\n", what.c_str());
  std::abort();
}

inline void require(bool truth, const char* what) {
  if (!truth) {
    report_finding(what);
  }
}

}  // namespace nerova_zel::test
