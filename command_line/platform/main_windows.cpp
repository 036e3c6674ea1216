#include <windows.h>

#include <string>
#include <vector>

#include "batch/interruption.h"
#include "command_line.h"
#include "standard_streams.h"

// The startup code would replace patterns by the files that fit; the program does, with rules of its own.
extern "C" {
extern int _dowildcard;
int _dowildcard = 0;
}

namespace {

/** In UTF-8. What is no proper UTF-16 becomes U+FFFD, and names no file. */
std::string utf8(const wchar_t* text) {
  std::string result(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr)),
                     '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, -1, result.data(), static_cast<int>(result.size()), nullptr, nullptr);
  result.resize(result.empty() ? 0 : result.size() - 1);  // its final zero
  return result;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  nerova_zel::guard_standard_streams();
  const std::vector<std::wstring> given(argv, argv + argc);
  std::vector<std::string> arguments;
  std::vector<const char*> pointers;
  arguments.reserve(given.size());
  pointers.reserve(given.size());
  for (const std::wstring& argument : given) {
    pointers.push_back(arguments.emplace_back(utf8(argument.c_str())).c_str());
  }
  const int code = nerova_zel::run_command_line(argc, pointers.data());
  nerova_zel::Interruption::obey();
  return code;
}
